# One static library per folder, all with the same warnings.

add_library(tornel_warnings INTERFACE)
target_compile_options(tornel_warnings INTERFACE
  -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Wnon-virtual-dtor -Woverloaded-virtual -Wno-psabi
  $<$<BOOL:${TORNEL_WERROR}>:-Werror>
  $<$<CXX_COMPILER_ID:Clang>:-Wthread-safety -Wthread-safety-beta>)

# tornel_add_library(name SOURCES ... LINK ...): a layer, with the root as its include path.
function(tornel_add_library name)
  cmake_parse_arguments(ARG "" "" "SOURCES;LINK" ${ARGN})
  add_library(${name} STATIC ${ARG_SOURCES})
  target_include_directories(${name} PUBLIC $<BUILD_INTERFACE:${CMAKE_SOURCE_DIR}>)
  target_link_libraries(${name} PUBLIC ${ARG_LINK} PRIVATE $<BUILD_INTERFACE:tornel_warnings>)
endfunction()
