#include "synth/pmt_sections.h"

#include <cassert>
#include <cstdint>
#include <utility>
#include <vector>

#include "platform/module_utils.h"
#include "records/dvbpsi_converters.h"
#include "records/dvbpsi_lists.h"

namespace tevra {
namespace {

/** 1,024 bytes of section less its header, PCR_PID, program_info_length and CRC_32. */
constexpr size_t kMaxBody = 1008;
constexpr size_t kStreamHeader = 5;
constexpr size_t kDescriptorHeader = 2;
constexpr size_t kMaxSections = 256;

/** In a section; one that exceeds its own 8-bit length never reaches any, see toDvbpsi. */
size_t sizeOf(const Descriptor& descriptor) {
  return fitsSection(descriptor) ? kDescriptorHeader + descriptor.data.size() : 0;
}

/** Of loops and streams in one section. */
struct Demand {
  size_t size = 0;
  bool leavesOut = false;  ///< what exceeds its own length

  void add(const std::vector<Descriptor>& descriptors) {
    for (const Descriptor& descriptor : descriptors) {
      size += sizeOf(descriptor);
      leavesOut = leavesOut || !fitsSection(descriptor);
    }
  }

  void add(const PMTES& stream) {
    size += kStreamHeader;
    add(stream.descriptors);
  }

  /** As nearly all do. */
  [[nodiscard]] bool fitsOneSection() const { return size <= kMaxBody; }
};

Demand demandOf(const PMT& pmt) {
  Demand demand;
  demand.add(pmt.descriptors);
  for (const PMTES& stream : pmt.esList) {
    demand.add(stream);
  }
  return demand;
}

size_t sizeOf(const PMTES& stream) {
  Demand demand;
  demand.add(stream);
  return demand.size;
}

/** `stream` without the descriptors, from the first that does not fit, that no section can carry.
 */
PMTES carriable(const PMTES& stream) {
  PMTES result;
  result.streamType = stream.streamType;
  result.pid = stream.pid;
  size_t size = kStreamHeader;
  for (const Descriptor& descriptor : stream.descriptors) {
    size += sizeOf(descriptor);
    if (size > kMaxBody) {
      log_function(kLogError, kNoTag,
                   "[synthPMT] ES PID [0x%04x]: [%d] of [%d] descriptors do not fit a section.",
                   static_cast<unsigned>(stream.pid),
                   static_cast<int>(stream.descriptors.size() - result.descriptors.size()),
                   static_cast<int>(stream.descriptors.size()));
      break;
    }
    result.descriptors.push_back(descriptor);
  }
  return result;
}

/** Distributes a PMT over as few sub-tables as its order allows, each fitting one section. */
class Splitter {
 public:
  explicit Splitter(const PMT& pmt) : pmt_(pmt) { open(); }

  std::vector<PMT> split() {
    for (const Descriptor& descriptor : pmt_.descriptors) {
      makeRoom(sizeOf(descriptor));
      tables_.back().descriptors.push_back(descriptor);
    }
    for (const PMTES& stream : pmt_.esList) {
      PMTES fitting = carriable(stream);
      makeRoom(sizeOf(fitting));
      tables_.back().esList.push_back(std::move(fitting));
    }
    return std::move(tables_);
  }

 private:
  void open() {
    PMT& table = tables_.emplace_back();
    table.programNumber = pmt_.programNumber;
    table.version = pmt_.version;
    table.currentNext = pmt_.currentNext;
    table.pcrPid = pmt_.pcrPid;
    used_ = 0;
  }

  void makeRoom(size_t size) {
    assert(size <= kMaxBody);
    if (used_ + size > kMaxBody) {
      open();
    }
    used_ += size;
  }

  const PMT& pmt_;
  std::vector<PMT> tables_;
  size_t used_ = 0;
};

/** Sub-tables beyond what last_section_number can count are dropped. */
void limitSections(std::vector<PMT>& tables) {
  if (tables.size() <= kMaxSections) {
    return;
  }
  log_function(kLogError, kNoTag, "[synthPMT] PMT of service [%d]: [%d] sections left out.",
               tables.front().programNumber, static_cast<int>(tables.size() - kMaxSections));
  tables.resize(kMaxSections);
}

/** Numbers the chain's sections, which were generated as sections of their own. */
void renumber(dvbpsi_t& handle, dvbpsi_psi_section_t* sections, size_t count) {
  assert(count <= kMaxSections);
  uint8_t number = 0;
  for (auto* section = sections; section != nullptr; section = section->p_next) {
    section->i_number = number++;
    section->i_last_number = static_cast<uint8_t>(count - 1);
    dvbpsi_BuildPSISection(&handle, section);  // writes the header anew and the CRC with it
  }
}

SectionsPtr generateSection(dvbpsi_t& handle, const PMT& pmt) {
  assert(demandOf(pmt).fitsOneSection());
  const PmtPtr table = thrift::dvb_tables::t2dPMT(pmt);
  assureSection();
  return allocated(SectionsPtr(dvbpsi_pmt_sections_generate(&handle, table.get())));
}

}  // namespace

SectionsPtr generatePmtSections(dvbpsi_t& handle, const PMT& pmt, bool& told) {
  const Demand demand = demandOf(pmt);
  told = demand.leavesOut || !demand.fitsOneSection();
  if (demand.fitsOneSection()) {
    return generateSection(handle, pmt);
  }
  std::vector<PMT> tables = Splitter(pmt).split();
  if (tables.size() == 1) {
    return generateSection(handle, tables.front());
  }
  log_function(kLogWarning, kNoTag, "[synthPMT] PMT of service [%d] needs [%d] sections.",
               pmt.programNumber, static_cast<int>(tables.size()));
  limitSections(tables);
  SectionsPtr chain;
  for (auto table = tables.rbegin(); table != tables.rend(); ++table) {
    SectionsPtr section = generateSection(handle, *table);
    section->p_next = chain.release();
    chain = std::move(section);
  }
  renumber(handle, chain.get(), tables.size());
  return chain;
}

}  // namespace tevra
