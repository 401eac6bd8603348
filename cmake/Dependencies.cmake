# Everything here is a Debian package; scripts/install-dependencies names them.

find_package(PkgConfig REQUIRED)
find_package(Threads REQUIRED)
pkg_check_modules(THRIFT REQUIRED IMPORTED_TARGET thrift>=0.17)
pkg_check_modules(DVBPSI REQUIRED IMPORTED_TARGET libdvbpsi>=1.3)
find_program(THRIFT_COMPILER thrift REQUIRED)

if(TORNEL_STATIC)
  if(NOT TEVRA_PLATFORM_LIBRARY)
    message(FATAL_ERROR "TORNEL_STATIC needs TEVRA_PLATFORM_LIBRARY: platform/host uses libsystemd, of which there is no archive")
  endif()
  # By name the linker finds the archive, where the path is that of the shared library.
  set_property(TARGET PkgConfig::THRIFT PROPERTY INTERFACE_LINK_LIBRARIES thrift)
  set_property(TARGET PkgConfig::DVBPSI PROPERTY INTERFACE_LINK_LIBRARIES dvbpsi)
  add_link_options(-static)
endif()

# tornel_thrift_generate(out_sources IDL...): one *_types.cpp per IDL file, one .cpp per service in SERVICES.
# Static dispatch and no ostream operators: smaller code, and the fast protocol path.
function(tornel_thrift_generate out_var)
  cmake_parse_arguments(ARG "" "IDL_DIR;OUTPUT_DIR" "IDL;SERVICES" ${ARGN})
  file(MAKE_DIRECTORY ${ARG_OUTPUT_DIR})
  set(idl_files ${ARG_IDL})
  list(TRANSFORM idl_files PREPEND ${ARG_IDL_DIR}/)
  set(all_outputs)
  foreach(idl IN LISTS ARG_IDL)
    get_filename_component(stem ${idl} NAME_WE)
    set(stems ${stem}_types)
    if(stem STREQUAL "in_module")
      list(APPEND stems ${ARG_SERVICES})
    endif()
    set(outputs)
    foreach(generated IN LISTS stems)
      list(APPEND outputs ${ARG_OUTPUT_DIR}/${generated}.cpp ${ARG_OUTPUT_DIR}/${generated}.h
           ${ARG_OUTPUT_DIR}/${generated}.tcc)
    endforeach()
    add_custom_command(
      OUTPUT ${outputs}
      COMMAND ${THRIFT_COMPILER} --gen cpp:templates,moveable_types,no_ostream_operators,no_skeleton
              -I ${ARG_IDL_DIR} -out ${ARG_OUTPUT_DIR} ${ARG_IDL_DIR}/${idl}
      DEPENDS ${idl_files}
      COMMENT "Generating records from ${idl}"
      VERBATIM)
    list(APPEND all_outputs ${outputs})
  endforeach()
  list(FILTER all_outputs INCLUDE REGEX "\\.cpp$")
  set(${out_var} ${all_outputs} PARENT_SCOPE)
endfunction()
