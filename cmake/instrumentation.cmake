# Builds for other eyes: sanitizers, coverage, clang-tidy; and ccache where it is installed.
option(OST_SANITIZE "Build with address and undefined-behaviour sanitizers" OFF)
option(OST_COVERAGE "Count executed lines for gcov" OFF)
option(OST_TIDY "Run clang-tidy on every source" OFF)

if(OST_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-sanitize-recover=undefined -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
endif()
if(OST_COVERAGE)
  add_compile_options(--coverage)
  add_link_options(--coverage)
endif()
if(OST_TIDY)
  find_program(OST_CLANG_TIDY clang-tidy REQUIRED)
  set(CMAKE_CXX_CLANG_TIDY ${OST_CLANG_TIDY})
endif()

find_program(OST_CCACHE ccache)
if(OST_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  set(CMAKE_CXX_COMPILER_LAUNCHER ${OST_CCACHE})
endif()

# A name that nothing defines is an error of the build, not of the first `package require`; only a host that is not at
# hand can define its own.
if(NOT OST_SANITIZE AND (OST_PLATFORM OR OST_HOST_LIBRARIES))
  add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,SHARED_LIBRARY>:LINKER:-z,defs>)
endif()
