# Warnings for all C++ of the project; fatal where OST_WERROR is set, as CI does.
option(OST_WERROR "Treat warnings as errors" OFF)
add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Wall> $<$<COMPILE_LANGUAGE:CXX>:-Wextra>
                    $<$<COMPILE_LANGUAGE:CXX>:-Wpedantic>)
if(OST_WERROR)
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-Werror>)
endif()
