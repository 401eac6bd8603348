# Three Debian packages of the three components: `cmake --preset package`, build it, `cpack --preset package`.
set(TORNEL_PACKAGE_CONTACT "tornel maintainers <maintainers@tornel.invalid>" CACHE STRING
    "Who answers for the packages: name and address")

# What Debian wants in every package's documentation.
if(TORNEL_DEBIAN_PACKAGES)
  find_program(GZIP gzip REQUIRED)
  configure_file(${packaging}/copyright.in ${made}/copyright @ONLY)
  add_custom_command(OUTPUT ${made}/changelog.Debian.gz
    COMMAND ${GZIP} -9nc ${packaging}/changelog > ${made}/changelog.Debian.gz
    DEPENDS ${packaging}/changelog VERBATIM)
  add_custom_target(debian_changelog ALL DEPENDS ${made}/changelog.Debian.gz)
  foreach(component IN ITEMS daemon tools dev)
    set(package tornel-${component})
    if(component STREQUAL daemon)
      set(package tornel)
    endif()
    install(FILES ${made}/copyright ${made}/changelog.Debian.gz
            DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/${package} COMPONENT ${component})
  endforeach()
endif()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME tornel)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "")  # each package has its own
set(CPACK_PACKAGE_CONTACT ${TORNEL_PACKAGE_CONTACT})
set(CPACK_PACKAGE_DIRECTORY ${CMAKE_BINARY_DIR})
set(CPACK_SET_DESTDIR ON)  # the paths are those of configure time; some are absolute
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL daemon tools dev)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEB_COMPONENT_INSTALL ON)

set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_DEBIAN_COMPRESSION_TYPE xz)

set(CPACK_DEBIAN_DAEMON_PACKAGE_NAME tornel)
set(CPACK_DEBIAN_DAEMON_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_DAEMON_PACKAGE_SECTION net)
set(CPACK_DEBIAN_DAEMON_PACKAGE_SUGGESTS tornel-tools)
set(CPACK_DEBIAN_DAEMON_PACKAGE_CONTROL_EXTRA
    ${packaging}/conffiles ${packaging}/postinst ${packaging}/prerm ${packaging}/postrm)
set(CPACK_DEBIAN_DAEMON_DESCRIPTION
"DVB Service Information daemon of a headend
One process per multiplex takes the SI tables of an incoming transport stream
over Apache Thrift, rewrites them so that they clash with nothing else in the
output multiplex, and synthesises PAT, SDT and PMT for every single-programme
stream that is sent out. Versions and PIDs continue across restarts.

This package holds the daemon for a Debian machine and its service.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME tornel-tools)
set(CPACK_DEBIAN_TOOLS_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION net)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SUGGESTS "tornel, bash-completion")
set(CPACK_DEBIAN_TOOLS_DESCRIPTION
"command line client of the tornel daemon
tornelctl hands the tables of a recorded or live transport stream to tornel,
asks it what an output is made of, makes a single-programme stream of one
service, prints a stream's tables, and shows what the daemon notifies.

A sample multiplex to try it with is included.")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME tornel-dev)
set(CPACK_DEBIAN_DEV_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "libdvbpsi-dev (>= 1.3), libthrift-dev (>= 0.17)")
set(CPACK_DEBIAN_DEV_PACKAGE_RECOMMENDS "g++, libboost-dev, pkg-config, thrift-compiler (>= 0.17)")
set(CPACK_DEBIAN_DEV_PACKAGE_SUGGESTS libsystemd-dev)
set(CPACK_DEBIAN_DEV_DESCRIPTION
"interface and libraries of the tornel daemon
The interface definition, from which clients in any language that Apache Thrift
knows are generated; and the daemon as static libraries with the headers of its
platform functions, to link it with the library of a device.")

include(CPack)
