#pragma once

#include "inputdb/input_table_db.h"

/** The kinds of which the database holds one table, so that one test can serve them all. */
namespace tevra::test {

/** The kind's setter, getter, log line and a way to make its copies allocate much at once. */
template <class Table>
struct Kind;

#define TORNEL_KIND(Table, list)                                                        \
  template <>                                                                           \
  struct Kind<Table> {                                                                  \
    static constexpr const char* kLine = "Guardo " #Table " en DB local!";              \
    static bool set(InputTableDB& db, const Table& t) { return db.setInput##Table(t); } \
    static bool get(InputTableDB& db, Table& t) { return db.getInput##Table(t); }       \
    static void enlarge(Table& t, size_t elements) { t.list.resize(elements); }         \
  };

TORNEL_KIND(PAT, programs)
TORNEL_KIND(SDT, services)
TORNEL_KIND(CAT, descriptors)
TORNEL_KIND(NIT, transportStreams)
TORNEL_KIND(BAT, transportStreams)
TORNEL_KIND(TOT, descriptors)

#undef TORNEL_KIND

}  // namespace tevra::test
