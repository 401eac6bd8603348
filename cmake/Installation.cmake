# What `cmake --install` puts where, in three components, each of which is a Debian package: daemon, tools, dev.
set(TORNEL_UNIT_DIR "lib/systemd/system" CACHE STRING
    "Where the unit file goes: below the prefix, or absolute")
find_program(SCDOC scdoc)
find_program(GZIP gzip)
find_program(PYTHON3 python3)
set(default OFF)
if(SCDOC AND GZIP AND PYTHON3)
  set(default ON)
endif()
option(TORNEL_MAN_PAGES "Build the man pages; needs scdoc, gzip and python3" ${default})
if(TORNEL_MAN_PAGES AND NOT (SCDOC AND GZIP AND PYTHON3))
  message(FATAL_ERROR "TORNEL_MAN_PAGES needs the programs scdoc, gzip and python3")
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
include(InstalledPages)

# The tool.
install(TARGETS tornelctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT tools)
install(FILES ${packaging}/tornelctl.bash RENAME tornelctl
        DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions COMPONENT tools)
install(FILES ${CMAKE_SOURCE_DIR}/samples/sample.ts
        DESTINATION ${CMAKE_INSTALL_DATADIR}/tornel COMPONENT tools)
install(FILES ${CMAKE_SOURCE_DIR}/samples/README.md RENAME sample.md
        DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/tornel-tools COMPONENT tools)

if(TORNEL_MAN_PAGES)
  # They carry the date of the release, not that of the build. Their first line says that they may have tables; scdoc
  # leaves it out.
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/CHANGELOG.md)
  execute_process(COMMAND ${PYTHON3} ${packaging}/changelog.py --timestamp
    OUTPUT_VARIABLE released OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  foreach(page IN ITEMS tornel.8 tornelctl.1)
    add_custom_command(OUTPUT ${made}/${page}.gz
      COMMAND ${CMAKE_COMMAND} -E echo "'\\\" t" > ${made}/${page}
      COMMAND ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=${released} ${SCDOC} < ${packaging}/${page}.scd >> ${made}/${page}
      COMMAND ${GZIP} -9nc ${made}/${page} > ${made}/${page}.gz
      DEPENDS ${packaging}/${page}.scd VERBATIM)
  endforeach()
  add_custom_target(man_pages ALL DEPENDS ${made}/tornel.8.gz ${made}/tornelctl.1.gz)
  install(FILES ${made}/tornel.8.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man8 COMPONENT daemon)
  install(FILES ${made}/tornelctl.1.gz DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tools)
endif()

include(InstalledLibraries)
