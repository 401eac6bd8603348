# What `cmake --install` puts where, in three components, each of which is a Debian package: daemon, tools, dev.
include(GNUInstallDirs)

set(TORNEL_UNIT_DIR "lib/systemd/system" CACHE PATH
    "Where the unit file goes: below the prefix, or absolute")
find_program(SCDOC scdoc)
find_program(GZIP gzip)
set(default OFF)
if(SCDOC AND GZIP)
  set(default ON)
endif()
option(TORNEL_MAN_PAGES "Build the man pages; needs scdoc and gzip" ${default})
if(TORNEL_MAN_PAGES AND NOT (SCDOC AND GZIP))
  message(FATAL_ERROR "TORNEL_MAN_PAGES needs the programs scdoc and gzip")
endif()

set(packaging ${CMAKE_SOURCE_DIR}/packaging)
set(made ${CMAKE_BINARY_DIR}/packaging)
file(MAKE_DIRECTORY ${made})

# The daemon.
configure_file(${packaging}/tornel@.service.in ${made}/tornel@.service @ONLY)
install(TARGETS tornel RUNTIME DESTINATION ${CMAKE_INSTALL_SBINDIR} COMPONENT daemon)
install(FILES ${made}/tornel@.service DESTINATION ${TORNEL_UNIT_DIR} COMPONENT daemon)
install(FILES ${packaging}/tornel.default RENAME tornel
        DESTINATION ${CMAKE_INSTALL_FULL_SYSCONFDIR}/default COMPONENT daemon)
install(FILES ${CMAKE_SOURCE_DIR}/README.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT daemon)
install(DIRECTORY ${CMAKE_SOURCE_DIR}/docs/ DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT daemon
        FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN clients EXCLUDE)

# The tool.
install(TARGETS tornelctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES ${packaging}/tornelctl.bash RENAME tornelctl
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
install(FILES ${CMAKE_SOURCE_DIR}/samples/sample.ts
        DESTINATION ${CMAKE_INSTALL_DATADIR}/tornel COMPONENT tools)
install(FILES ${CMAKE_SOURCE_DIR}/samples/README.md RENAME sample.md
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tornel-tools COMPONENT tools)

# For those who write clients, from the IDL, or bring the daemon to a board, from headers and libraries.
set(idl common_fpga.thrift dvb_tables.thrift in_module.thrift spts.thrift)
list(TRANSFORM idl PREPEND ${CMAKE_SOURCE_DIR}/idl/)
install(FILES ${idl} DESTINATION ${CMAKE_INSTALL_DATADIR}/tornel/idl COMPONENT dev)
set(headers configuration_root.h dvb_utils.h module_utils.h)
list(TRANSFORM headers PREPEND ${CMAKE_SOURCE_DIR}/platform/)
install(FILES ${headers} DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tornel/platform COMPONENT dev)
install(FILES ${CMAKE_SOURCE_DIR}/app/start_up.h
        DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/tornel/app COMPONENT dev)
set(libraries tornel_app tornel_cfdb tornel_control tornel_generated tornel_inputdb
    tornel_platform_device tornel_records tornel_store tornel_synth)
if(NOT TEVRA_PLATFORM_LIBRARY)
  list(APPEND libraries tornel_platform_host)
endif()
install(TARGETS ${libraries} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
# CMake strips programs only.
list(TRANSFORM libraries REPLACE "(.+)" "${CMAKE_INSTALL_LIBDIR}/lib\\1.a" OUTPUT_VARIABLE archives)
install(CODE "
  if(CMAKE_INSTALL_DO_STRIP)
    foreach(archive IN ITEMS ${archives})
      cmake_path(ABSOLUTE_PATH archive BASE_DIRECTORY \"\${CMAKE_INSTALL_PREFIX}\")
      execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-debug --enable-deterministic-archives --remove-section=.comment
                              --remove-section=.note \"\$ENV{DESTDIR}\${archive}\" COMMAND_ERROR_IS_FATAL ANY)
    endforeach()
  endif()" COMPONENT dev)
configure_file(${packaging}/tornel.pc.in ${made}/tornel.pc @ONLY)
install(FILES ${made}/tornel.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
install(FILES ${CMAKE_SOURCE_DIR}/app/main.cpp ${CMAKE_SOURCE_DIR}/tests/platform_library/board.cpp
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tornel-dev/examples COMPONENT dev)
set(clients CMakeLists.txt client.cpp client.py main_task.cpp main_task.py)
list(TRANSFORM clients PREPEND ${CMAKE_SOURCE_DIR}/docs/clients/)
install(FILES ${clients} DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tornel-dev/examples/clients COMPONENT dev)

if(TORNEL_MAN_PAGES)
  foreach(page IN ITEMS tornel.8 tornelctl.1)
    add_custom_command(OUTPUT ${made}/${page}.gz
      COMMAND ${SCDOC} < ${packaging}/${page}.scd > ${made}/${page}
      COMMAND ${GZIP} -9nc ${made}/${page} > ${made}/${page}.gz
      DEPENDS ${packaging}/${page}.scd VERBATIM)
  endforeach()
  add_custom_target(man_pages ALL DEPENDS ${made}/tornel.8.gz ${made}/tornelctl.1.gz)
  install(FILES ${made}/tornel.8.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT daemon)
  install(FILES ${made}/tornelctl.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()

include(DebianPackages)
