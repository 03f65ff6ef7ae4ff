# The command package alone, for a host that brings the four libraries which it calls. Where they are not at hand, empty
# libraries of their names replace them for the link: what the module calls is then checked when the host loads it.
set(OST_HOST_LIBRARIES "" CACHE PATH "Folder of the host's libtclcmdex, libhlp_help, libistdata and libistcomdata")

if(NOT OST_HOST_LIBRARIES)
  message(STATUS "No OST_HOST_LIBRARIES: linking against empty libraries of the host's names.")
  file(WRITE ${CMAKE_BINARY_DIR}/host_stub.cpp "")
endif()
foreach(library tclcmdex hlp_help istdata istcomdata)
  if(OST_HOST_LIBRARIES)
    find_library(found_${library} NAMES ${library} PATHS ${OST_HOST_LIBRARIES} NO_DEFAULT_PATH NO_CACHE REQUIRED)
    add_library(${library} SHARED IMPORTED)
    set_target_properties(${library} PROPERTIES IMPORTED_LOCATION ${found_${library}})
  else()
    add_library(${library} SHARED ${CMAKE_BINARY_DIR}/host_stub.cpp)
    set_target_properties(${library} PROPERTIES LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/host_stubs)
  endif()
endforeach()
