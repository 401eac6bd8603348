# The pages for those who have the packages and no source, in component daemon: operating.md and its like. A link into
# the source becomes one to the installed file; where none is, its text stays.
set(pages clients contract files operating porting)

set(data ${CMAKE_INSTALL_FULL_DATADIR})
set(installed_as
  "clients/"                              "${data}/doc/tornel-dev/examples/clients/"
  "../idl/"                               "${data}/tornel/idl/"
  "../platform/configuration_root.h"      "${CMAKE_INSTALL_FULL_INCLUDEDIR}/tornel/platform/configuration_root.h"
  "../platform/dvb_utils.h"               "${CMAKE_INSTALL_FULL_INCLUDEDIR}/tornel/platform/dvb_utils.h"
  "../platform/module_utils.h"            "${CMAKE_INSTALL_FULL_INCLUDEDIR}/tornel/platform/module_utils.h"
  "../packaging/board/"                   "${data}/doc/tornel-dev/examples/"
  "../app/main.cpp"                       "${data}/doc/tornel-dev/examples/main.cpp"
  "../tests/platform_library/board.cpp"   "${data}/doc/tornel-dev/examples/board.cpp")

# Pages that are not installed.
file(GLOB others RELATIVE ${CMAKE_SOURCE_DIR}/docs CONFIGURE_DEPENDS ${CMAKE_SOURCE_DIR}/docs/*.md)
foreach(page IN LISTS pages)
  list(REMOVE_ITEM others ${page}.md)
endforeach()
list(JOIN others "|" others)

foreach(page IN LISTS pages)
  set(source ${CMAKE_SOURCE_DIR}/docs/${page}.md)
  set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${source})
  file(READ ${source} text)
  set(mapping ${installed_as})
  while(mapping)
    list(POP_FRONT mapping from to)
    string(REPLACE "](${from}" "](${to}" text "${text}")
  endwhile()
  string(REGEX REPLACE "\\[([^]]*)\\]\\((\\.\\./|${others})[^)]*\\)" "\\1" text "${text}")
  file(WRITE ${made}/${page}.md "${text}")
  install(FILES ${made}/${page}.md DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT daemon)
endforeach()
