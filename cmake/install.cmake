# <build>/lib is the package, its libraries find each other by $ORIGIN; installing copies it. With it come the contract
# of the host's libraries, for writing another data service, and, with the embedded libraries, the reader, the JTAG
# model for a user's own test bench and what the build wrote about commands and options.
set(package_folder lib/ost_tclwrapper${PROJECT_VERSION})
install(DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/ DESTINATION ${package_folder}
  USE_SOURCE_PERMISSIONS PATTERN "*.a" EXCLUDE)

set(contract_folder include/ost_tclwrapper${PROJECT_VERSION})
install(FILES framework/hlp_help.h framework/ist_com_data.h framework/ist_data.h framework/tcl_cmdex.h
  DESTINATION ${contract_folder}/framework)
include(CMakePackageConfigHelpers)
configure_package_config_file(cmake/ost_tclwrapper-config.cmake.in ost_tclwrapper-config.cmake
  INSTALL_DESTINATION lib/cmake/ost_tclwrapper PATH_VARS contract_folder package_folder)
write_basic_package_version_file(ost_tclwrapper-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ost_tclwrapper-config.cmake ${CMAKE_BINARY_DIR}/ost_tclwrapper-config-version.cmake
  DESTINATION lib/cmake/ost_tclwrapper)
configure_file(cmake/ost_tclwrapper.pc.in ost_tclwrapper.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/ost_tclwrapper.pc DESTINATION lib/pkgconfig)

if(OST_PLATFORM)
  set_target_properties(ost_capture PROPERTIES INSTALL_RPATH $ORIGIN/../${package_folder})
  install(TARGETS ost_capture DESTINATION bin)
  install(FILES platform/jtag/sim/ostrel_jtag_sim.v platform/jtag/sim/ostrel_jtag_sim.h DESTINATION share/ost_tclwrapper)
  install(DIRECTORY ${CMAKE_BINARY_DIR}/docs/ DESTINATION share/doc/ost_tclwrapper FILES_MATCHING PATTERN "*.md")
endif()
