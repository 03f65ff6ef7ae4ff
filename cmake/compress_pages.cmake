# Run by CPack on what is packed: manual pages are compressed, as Debian has them.
file(GLOB_RECURSE pages ${CPACK_TEMPORARY_DIRECTORY}${CPACK_PACKAGING_INSTALL_PREFIX}/share/man/*)
foreach(page ${pages})
  execute_process(COMMAND gzip -9n ${page} RESULT_VARIABLE status)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "gzip did not compress \"${page}\": ${status}")
  endif()
endforeach()
