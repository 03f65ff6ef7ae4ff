# A Debian package of what is installed: `cpack -G DEB` in the build folder, `make deb` from a release build.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME ost-tclwrapper)
set(OST_MAINTAINER "ost_tclwrapper developers <ost-tclwrapper@localhost>" CACHE STRING
  "Who builds the Debian package, with a mail address")
set(CPACK_PACKAGE_CONTACT ${OST_MAINTAINER})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Tcl commands that put logic analyzers into FPGA designs")
set(CPACK_PACKAGE_DESCRIPTION
  "A Tcl package whose scripts name the nets of a Verilog or VHDL design to watch
and the condition to wait for. It inserts debug cores into a copy of the
design, checks and proves the insertion, and reads captures back over JTAG.")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_PRE_BUILD_SCRIPTS ${CMAKE_CURRENT_LIST_DIR}/compress_pages.cmake)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION electronics)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The package's own libraries, which no other package provides.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${CMAKE_LIBRARY_OUTPUT_DIRECTORY})
# What the libraries do not tell: the interpreter, and the program that reads designs; then front end, cable and prompt.
set(CPACK_DEBIAN_PACKAGE_DEPENDS "tcl (>= 8.5), yosys")
set(CPACK_DEBIAN_PACKAGE_RECOMMENDS "ghdl, openocd, tcl-tclreadline")
set(CPACK_DEBIAN_PACKAGE_SUGGESTS "iverilog, gtkwave, sigrok-cli")
include(CPack)
