# For those who write clients, from the IDL, or bring the daemon to a board, from headers and libraries: component dev.
include(CMakePackageConfigHelpers)

set(idl_dir ${CMAKE_INSTALL_DATADIR}/tornel/idl)
set(idl common_fpga.thrift dvb_tables.thrift in_module.thrift spts.thrift)
list(TRANSFORM idl PREPEND ${CMAKE_SOURCE_DIR}/idl/)
install(FILES ${idl} DESTINATION ${idl_dir} COMPONENT dev)
set(headers configuration_root.h dvb_utils.h module_utils.h)
list(TRANSFORM headers PREPEND ${CMAKE_SOURCE_DIR}/platform/)
install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tornel/platform COMPONENT dev)
install(FILES ${CMAKE_SOURCE_DIR}/app/start_up.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tornel/app COMPONENT dev)

# As tornel::app and so on to CMake.
set(libraries tornel_app tornel_cfdb tornel_control tornel_generated tornel_inputdb tornel_platform
    tornel_platform_device tornel_records tornel_store tornel_synth)
if(NOT TEVRA_PLATFORM_LIBRARY)
  list(APPEND libraries tornel_platform_host)
endif()
foreach(library IN LISTS libraries)
  string(REPLACE tornel_ "" name ${library})
  set_target_properties(${library} PROPERTIES EXPORT_NAME ${name})
endforeach()
install(TARGETS ${libraries} EXPORT tornel ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)

set(config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/tornel)
install(EXPORT tornel NAMESPACE tornel:: FILE tornel-targets.cmake DESTINATION ${config_dir} COMPONENT dev)
configure_package_config_file(${packaging}/tornel-config.cmake.in ${made}/tornel-config.cmake
  INSTALL_DESTINATION ${config_dir} PATH_VARS idl_dir)
write_basic_package_version_file(${made}/tornel-config-version.cmake COMPATIBILITY SameMinorVersion)
install(FILES ${made}/tornel-config.cmake ${made}/tornel-config-version.cmake
        DESTINATION ${config_dir} COMPONENT dev)
configure_file(${packaging}/tornel.pc.in ${made}/tornel.pc @ONLY)
install(FILES ${made}/tornel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)

set(examples ${CMAKE_INSTALL_DATADIR}/doc/tornel-dev/examples)
install(FILES ${packaging}/board/CMakeLists.txt ${CMAKE_SOURCE_DIR}/app/main.cpp
              ${CMAKE_SOURCE_DIR}/tests/platform_library/board.cpp
        DESTINATION ${examples} COMPONENT dev)
set(clients CMakeLists.txt client.cpp client.py main_task.cpp main_task.py)
list(TRANSFORM clients PREPEND ${CMAKE_SOURCE_DIR}/docs/clients/)
install(FILES ${clients} DESTINATION ${examples}/clients COMPONENT dev)
