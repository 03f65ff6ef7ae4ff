# What the build needs: Tcl 8 headers, stub library and tclsh of one version, and Qt Core; for the embedded libraries
# RapidJSON, too.
set(OST_TCL_PREFIX "" CACHE PATH "Where Tcl is installed; empty for the system's")
set(OST_QT 5 CACHE STRING "Major version of Qt: 5 or 6, or 4 for a host of that time")
set(OST_QT_PREFIX "" CACHE PATH "Where Qt 4 is installed: include/QtCore and lib/libQtCore.so are below it")

if(OST_TCL_PREFIX)
  set(tcl_where PATHS ${OST_TCL_PREFIX} NO_DEFAULT_PATH)
endif()
find_path(OST_TCL_INCLUDE tcl.h ${tcl_where} PATH_SUFFIXES include include/tcl8.6 include/tcl8.5 include/tcl8.4
  include/tcl tcl8.6 tcl8.5 tcl REQUIRED)
file(STRINGS ${OST_TCL_INCLUDE}/tcl.h tcl_version REGEX "#[ \t]*define[ \t]+TCL_VERSION")
string(REGEX MATCH "[0-9]+[.][0-9]+" OST_TCL_VERSION "${tcl_version}")
# The stub library may have the version in its name or not: what is found must be of the headers' version.
set(tcl_libraries PATH_SUFFIXES lib lib/${CMAKE_LIBRARY_ARCHITECTURE} lib/tcl${OST_TCL_VERSION})
find_library(OST_TCL_STUB NAMES tclstub${OST_TCL_VERSION} ${tcl_where} ${tcl_libraries})
find_program(OST_TCLSH NAMES tclsh${OST_TCL_VERSION} tclsh ${tcl_where} PATH_SUFFIXES bin)
if(NOT OST_TCL_STUB)
  message(FATAL_ERROR "The headers in ${OST_TCL_INCLUDE} are of Tcl ${OST_TCL_VERSION}, but there is no stub library "
    "libtclstub${OST_TCL_VERSION}.a beside them: install one version of Tcl in full, or name its prefix in OST_TCL_PREFIX.")
endif()
if(OST_PLATFORM AND NOT OST_TCLSH)
  message(FATAL_ERROR "No tclsh was found: the build writes the references with it.")
elseif(OST_TCLSH)
  file(WRITE ${CMAKE_BINARY_DIR}/tcl_version.tcl "puts [info tclversion]\n")
  execute_process(COMMAND ${OST_TCLSH} ${CMAKE_BINARY_DIR}/tcl_version.tcl OUTPUT_VARIABLE tclsh_version
    OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT tclsh_version VERSION_EQUAL OST_TCL_VERSION)
    message(FATAL_ERROR "${OST_TCLSH} is Tcl ${tclsh_version}, but the headers in ${OST_TCL_INCLUDE} are of Tcl "
      "${OST_TCL_VERSION}: install one version of Tcl in full, or name its prefix in OST_TCL_PREFIX.")
  endif()
endif()

# Tcl through its stubs table; const-correct declarations as the handlers use them.
add_library(ost_tcl INTERFACE)
target_include_directories(ost_tcl SYSTEM INTERFACE ${OST_TCL_INCLUDE})
target_compile_definitions(ost_tcl INTERFACE USE_TCL_STUBS)
target_link_libraries(ost_tcl INTERFACE ${OST_TCL_STUB})

# Qt Core without silent conversions from and to 8-bit text. Qt 4 is known by its headers and its library alone.
add_library(ost_qt INTERFACE)
target_compile_definitions(ost_qt INTERFACE QT_NO_CAST_FROM_ASCII QT_NO_CAST_TO_ASCII QT_NO_KEYWORDS)
if(OST_QT EQUAL 5)
  find_package(Qt5Core REQUIRED)
  add_library(ost_qt_core ALIAS Qt5::Core)
elseif(OST_QT EQUAL 6)
  # The handlers keep to what Qt 4 has, of which Qt 6 holds a part apart.
  find_package(Qt6 REQUIRED COMPONENTS Core Core5Compat)
  add_library(ost_qt_core INTERFACE)
  target_link_libraries(ost_qt_core INTERFACE Qt6::Core Qt6::Core5Compat)
  target_compile_definitions(ost_qt_core INTERFACE QT_NO_KEYWORDS)  # Else "slots" is a word of Qt's.
elseif(OST_QT EQUAL 4)
  find_path(OST_QT4_INCLUDE QtCore/qglobal.h HINTS ${OST_QT_PREFIX} PATH_SUFFIXES include include/qt4 REQUIRED)
  find_library(OST_QT4_CORE NAMES QtCore HINTS ${OST_QT_PREFIX} PATH_SUFFIXES lib lib/qt4
    lib/${CMAKE_LIBRARY_ARCHITECTURE} REQUIRED)
  file(STRINGS ${OST_QT4_INCLUDE}/QtCore/qglobal.h qt_version REGEX "#define QT_VERSION_STR")
  if(NOT qt_version MATCHES "\"4[.]")
    message(FATAL_ERROR "The headers in ${OST_QT4_INCLUDE} are not of Qt 4 (${qt_version}): name the prefix of Qt 4 in "
      "OST_QT_PREFIX, or build with OST_QT=5 or 6.")
  endif()
  add_library(ost_qt_core INTERFACE)
  target_include_directories(ost_qt_core SYSTEM INTERFACE ${OST_QT4_INCLUDE} ${OST_QT4_INCLUDE}/QtCore)
  target_link_libraries(ost_qt_core INTERFACE ${OST_QT4_CORE})
else()
  message(FATAL_ERROR "OST_QT is ${OST_QT}: it must be 4, 5 or 6.")
endif()
target_link_libraries(ost_qt INTERFACE ost_qt_core)

if(OST_PLATFORM)
  if(OST_QT LESS 5)
    message(FATAL_ERROR "The embedded libraries need Qt 5 or 6: build the command package alone (OST_PLATFORM=OFF) for Qt 4.")
  endif()
  find_path(OST_RAPIDJSON_INCLUDE rapidjson/document.h REQUIRED)

  # A program that brings its own interpreter (unit tests, benches): libtcl itself, no stubs.
  find_library(OST_TCL_LIBRARY NAMES tcl${OST_TCL_VERSION} ${tcl_where} ${tcl_libraries} REQUIRED)
  add_library(ost_tcl_embedded INTERFACE)
  target_include_directories(ost_tcl_embedded SYSTEM INTERFACE ${OST_TCL_INCLUDE})
  target_link_libraries(ost_tcl_embedded INTERFACE ${OST_TCL_LIBRARY})
endif()

# Every source includes project headers from the root of the tree.
include_directories(${CMAKE_SOURCE_DIR})
