# Where things are installed: below GNUInstallDirs' folders, and the package itself where Tcl looks without being told.
# <build>/lib is the package, its libraries find each other by $ORIGIN; installing copies it. With it come the contract
# of the host's libraries, for writing another data service, and, with the embedded libraries, the reader, the JTAG
# model for a user's own test bench, the references with what the build wrote about commands and options, and a design to
# start from.
include(GNUInstallDirs)

# Debian's tclsh looks into lib/tcltk below /usr and /usr/local, others into the folder of libtcl.
set(default_tcl_folder ${CMAKE_INSTALL_LIBDIR})
if(OST_TCLSH)
  file(WRITE ${CMAKE_BINARY_DIR}/tcl_folders.tcl "puts \$auto_path\n")
  execute_process(COMMAND ${CMAKE_COMMAND} -E env --unset=TCLLIBPATH ${OST_TCLSH} ${CMAKE_BINARY_DIR}/tcl_folders.tcl
    OUTPUT_VARIABLE tcl_folders)
  if(tcl_folders MATCHES "/lib/tcltk[ \n]")
    set(default_tcl_folder lib/tcltk)
  endif()
endif()
set(OST_TCL_FOLDER ${default_tcl_folder} CACHE STRING
  "Folder of Tcl packages that tclsh searches, relative to the prefix")
set(package_folder ${OST_TCL_FOLDER}/ost_tclwrapper${PROJECT_VERSION})
set(package_libraries ost_tclwrapper)
if(OST_PLATFORM)
  list(APPEND package_libraries tclcmdex hlp_help istdata istcomdata ost_platform ost_capture_package)
endif()
install(TARGETS ${package_libraries} LIBRARY DESTINATION ${package_folder})
install(DIRECTORY ${CMAKE_LIBRARY_OUTPUT_DIRECTORY}/ DESTINATION ${package_folder}
  PATTERN "*.so" EXCLUDE PATTERN "*.a" EXCLUDE)

set(contract_folder ${CMAKE_INSTALL_INCLUDEDIR}/ost_tclwrapper${PROJECT_VERSION})
install(FILES framework/hlp_help.h framework/ist_com_data.h framework/ist_data.h framework/tcl_cmdex.h
  DESTINATION ${contract_folder}/framework)
set(cmake_folder ${CMAKE_INSTALL_LIBDIR}/cmake/ost_tclwrapper)
include(CMakePackageConfigHelpers)
configure_package_config_file(cmake/ost_tclwrapper-config.cmake.in ost_tclwrapper-config.cmake
  INSTALL_DESTINATION ${cmake_folder} PATH_VARS contract_folder package_folder)
write_basic_package_version_file(ost_tclwrapper-config-version.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${CMAKE_BINARY_DIR}/ost_tclwrapper-config.cmake ${CMAKE_BINARY_DIR}/ost_tclwrapper-config-version.cmake
  DESTINATION ${cmake_folder})
set(pkgconfig_folder ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH prefix_from_pkgconfig /${pkgconfig_folder} /)
string(REGEX REPLACE "/$" "" prefix_from_pkgconfig ${prefix_from_pkgconfig})
configure_file(cmake/ost_tclwrapper.pc.in ost_tclwrapper.pc @ONLY)
install(FILES ${CMAKE_BINARY_DIR}/ost_tclwrapper.pc DESTINATION ${pkgconfig_folder})

if(OST_PLATFORM)
  file(RELATIVE_PATH package_from_bin /${CMAKE_INSTALL_BINDIR} /${package_folder})
  set_target_properties(ost_capture PROPERTIES INSTALL_RPATH $ORIGIN/${package_from_bin})
  install(TARGETS ost_capture DESTINATION ${CMAKE_INSTALL_BINDIR})
  set(package_from_program ${package_from_bin})
  configure_file(platform/ost_shell/ostsh.in installed_ostsh @ONLY)
  install(PROGRAMS ${CMAKE_BINARY_DIR}/installed_ostsh DESTINATION ${CMAKE_INSTALL_BINDIR} RENAME ostsh)
  install(FILES platform/jtag/sim/ostrel_jtag_sim.v platform/jtag/sim/ostrel_jtag_sim.h
    DESTINATION ${CMAKE_INSTALL_DATADIR}/ost_tclwrapper)
  # A page of the build replaces the page of the sources that it was made from.
  install(DIRECTORY docs/ ${CMAKE_BINARY_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR}
    FILES_MATCHING PATTERN "*.md" PATTERN CMakeFiles EXCLUDE)
  # Of `make docs`, where it was called.
  install(FILES ${CMAKE_BINARY_DIR}/docs/manual.html DESTINATION ${CMAKE_INSTALL_DOCDIR} OPTIONAL)
  install(DIRECTORY ${CMAKE_BINARY_DIR}/man/ DESTINATION ${CMAKE_INSTALL_MANDIR})
  install(DIRECTORY examples/frame_link DESTINATION ${CMAKE_INSTALL_DOCDIR}/examples)
endif()
