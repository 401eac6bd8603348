#pragma once

#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "synth/psi_synthesis.h"
#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"
#include "tests/synth/transport_packets.h"

namespace tevra::test {

/** How a table is synthesised, and where it is handed out. */
template <class Table>
struct Synthesis;

#define TORNEL_SYNTHESIS(Table, member, pid)                                                     \
  template <>                                                                                    \
  struct Synthesis<Table> {                                                                      \
    static constexpr const char* kName = #Table;                                                 \
    static constexpr auto kRun = synth##Table;                                                   \
    static constexpr int kPid = pid;                                                             \
    static constexpr auto kStored = &TableStore::member;                                         \
    static constexpr auto kKept = &StoredTables::member##Packets;                                \
    static const Table& record(const OutputTables& tables) { return tables.dvbTables.member; }   \
    static const Packets& packets(const OutputTables& tables) { return tables.member##Packets; } \
  };

TORNEL_SYNTHESIS(PAT, pat, 0)
TORNEL_SYNTHESIS(SDT, sdt, 0x11)
TORNEL_SYNTHESIS(PMT, pmt, kPmtPid)

#undef TORNEL_SYNTHESIS

inline fake::LogLine packetsMade(int count) {
  return {7, "", "Numero de paquetes necesarios para la sintesis [" + std::to_string(count) + "]"};
}

/** The line of a table whose version moves. */
template <class Table>
fake::LogLine saves() {
  return {7, "",
          std::string("Saves a new ") + Synthesis<Table>::kName + " in myTableStores struct"};
}

/** Synthesises one table of the usual work record again and again. */
template <class Table>
class SynthesisTest : public fake::PlatformTest {
 protected:
  using Way = Synthesis<Table>;

  /** As a call of its own has it: synthPMT gives the filtered PMT the output's number. */
  int synthesise() {
    fake::clearLog();
    work_.emplace(input_);
    return Way::kRun(*work_, entry_);
  }

  /** What the table is made from. */
  [[nodiscard]] Table& source() {
    if constexpr (std::is_same_v<Table, PAT>) {
      return service_.pat;
    } else if constexpr (std::is_same_v<Table, SDT>) {
      return service_.sdt;
    } else {
      return input_.pmt;
    }
  }

  [[nodiscard]] const Table& stored() const { return (*entry_).*Way::kStored; }

  /** As a restart leaves it. */
  void restore(const Table& table) {
    TableStore tables;
    tables.*Way::kStored = table;
    entry_ = StoredTables(tables);
  }

  void restoreVersion(int32_t version) {
    Table table;
    table.version = version;
    restore(table);
  }

  [[nodiscard]] const Table& output() const { return Way::record(work_->outputTables); }
  [[nodiscard]] const Packets& packets() const { return Way::packets(work_->outputTables); }
  [[nodiscard]] std::vector<std::string> sections(int pid = Way::kPid) const {
    return sectionsOf(packets(), pid);
  }
  [[nodiscard]] std::string section() const { return sections().at(0); }

  static fake::LogLine saves() { return test::saves<Table>(); }

  ServiceTables service_ = makeServiceTables();
  ServiceWorkRecord input_ = makeWorkRecord(service_);
  std::optional<ServiceWorkRecord> work_;  ///< as the last synthesis left it
  StoredTables entry_;
};

}  // namespace tevra::test
