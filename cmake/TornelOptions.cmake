# What a builder may choose.

set(TEVRA_PLATFORM_LIBRARY "" CACHE STRING
    "The device maker's library with the platform functions; empty: platform/host")
option(TORNEL_STATIC "Link programs with archives alone, the C library's among them; needs TEVRA_PLATFORM_LIBRARY" OFF)
option(TORNEL_BUILD_TOOL "Build tornelctl" ON)
option(TORNEL_BUILD_TESTS "Build the tests" ON)
option(TORNEL_EMULATE_ALL "In a cross build, build and run every test, not only those that a change must pass" OFF)
option(TORNEL_FUZZ "Build the libFuzzer programs; needs clang" OFF)
option(TORNEL_WERROR "Treat warnings as errors" ON)
set(TORNEL_SANITIZE "" CACHE STRING "Sanitizers, as for -fsanitize=: address,undefined or thread")
option(TORNEL_COVERAGE "Instrument for gcov" OFF)

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE RelWithDebInfo CACHE STRING "" FORCE)
endif()

find_program(CCACHE ccache)
if(CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # Without these ccache leaves alone what uses a precompiled header.
  set(CMAKE_CXX_COMPILER_LAUNCHER ${CMAKE_COMMAND} -E env CCACHE_SLOPPINESS=pch_defines,time_macros ${CCACHE})
endif()

if(TORNEL_SANITIZE)
  add_compile_options(-fsanitize=${TORNEL_SANITIZE} -fno-omit-frame-pointer
                      -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TORNEL_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    add_compile_options(-fsanitize-ignorelist=${CMAKE_CURRENT_LIST_DIR}/sanitizer_ignores.txt)
  endif()
endif()
if(TORNEL_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link)  # each program links libFuzzer itself
endif()
if(TORNEL_COVERAGE)
  add_compile_options(--coverage -O0)
  add_link_options(--coverage)
endif()

# 40-bit DVB times and files over 2 GiB on 32-bit boards.
add_compile_definitions(_FILE_OFFSET_BITS=64 _TIME_BITS=64)
