# What the build needs: Tcl 8 headers and stub library, Qt Core (5.15, or 4.8 for the mission's pair), RapidJSON.
find_package(Qt5Core REQUIRED)

find_path(OST_TCL_INCLUDE tcl.h PATHS /usr/include/tcl8.6 /usr/include/tcl8.5 /usr/include/tcl REQUIRED)
find_library(OST_TCL_STUB NAMES tclstub8.6 tclstub8.5 tclstub REQUIRED)
find_path(OST_RAPIDJSON_INCLUDE rapidjson/document.h REQUIRED)

# Tcl through its stubs table; const-correct declarations as the handlers use them.
add_library(ost_tcl INTERFACE)
target_include_directories(ost_tcl SYSTEM INTERFACE ${OST_TCL_INCLUDE})
target_compile_definitions(ost_tcl INTERFACE USE_TCL_STUBS)
target_link_libraries(ost_tcl INTERFACE ${OST_TCL_STUB})

# A program that brings its own interpreter (unit tests, benches): libtcl itself, no stubs.
find_library(OST_TCL_LIBRARY NAMES tcl8.6 tcl8.5 tcl REQUIRED)
add_library(ost_tcl_embedded INTERFACE)
target_include_directories(ost_tcl_embedded SYSTEM INTERFACE ${OST_TCL_INCLUDE})
target_link_libraries(ost_tcl_embedded INTERFACE ${OST_TCL_LIBRARY})

# Qt Core without silent conversions from and to 8-bit text.
add_library(ost_qt INTERFACE)
target_link_libraries(ost_qt INTERFACE Qt5::Core)
target_compile_definitions(ost_qt INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)

# Every source includes project headers from the root of the tree.
include_directories(${CMAKE_SOURCE_DIR})
