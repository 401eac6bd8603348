#include "tests/synth/bitstream_judge.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>  // which biTStream takes for granted
#include <utility>
#include <vector>

#include <bitstream/dvb/si/sdt.h>
#include <bitstream/mpeg/psi.h>

namespace tevra::test {
namespace {

constexpr int kUnknown = -1;

using Validate = bool (*)(const uint8_t* section);
using ValidateTable = bool (*)(uint8_t** sections);

/** Takes the packets of one PID and puts their sections together to a table. */
class Receiver {
 public:
  explicit Receiver(int pid) : pid_(pid) {
    psi_assemble_init(&section_, &sectionSize_);
    psi_table_init(sections_.data());
  }
  ~Receiver() {
    psi_assemble_reset(&section_, &sectionSize_);
    psi_table_free(sections_.data());
  }
  Receiver(const Receiver&) = delete;
  Receiver& operator=(const Receiver&) = delete;

  /** What is wrong with the packet, or the section that ends with it. */
  [[nodiscard]] std::string push(std::string packet, Validate validate) {
    auto* const ts = reinterpret_cast<uint8_t*>(packet.data());
    std::string fault = faultOfHeader(ts, packet.size());
    if (fault.empty() && !psi_assemble_empty(&section_, &sectionSize_)) {
      fault = take(ts, ts_section(ts), validate, 1);
    }
    if (fault.empty()) {
      fault = take(ts, ts_next_section(ts), validate, TS_SIZE);
    }
    return fault;
  }

  [[nodiscard]] bool complete() {
    return complete_ && psi_assemble_empty(&section_, &sectionSize_);
  }

  /** Once complete. */
  [[nodiscard]] uint8_t** table() { return sections_.data(); }

 private:
  std::string faultOfHeader(const uint8_t* ts, size_t size) {
    if (size != TS_SIZE || !ts_validate(ts)) {
      return "no packet";
    }
    if (ts_get_pid(ts) != pid_) {
      return "another PID";
    }
    if (ts_get_transporterror(ts) || ts_get_scrambling(ts) != 0 || !ts_has_payload(ts)) {
      return "no payload that could be read";
    }
    const int before = std::exchange(continuity_, ts_get_cc(ts));
    return before != kUnknown && ts_check_discontinuity(ts_get_cc(ts), static_cast<uint8_t>(before))
               ? "discontinuity"
               : "";
  }

  /** The sections from `payload` to the packet's end, `most` of them. */
  std::string take(const uint8_t* ts, const uint8_t* payload, Validate validate, int most) {
    auto left = static_cast<uint8_t>(std::max<std::ptrdiff_t>(ts + TS_SIZE - payload, 0));
    for (; left > 0 && most > 0; --most) {
      uint8_t* const section = psi_assemble_payload(&section_, &sectionSize_, &payload, &left);
      if (section == nullptr) {
        continue;
      }
      if (!psi_get_syntax(section) || !psi_validate(section) || !psi_check_crc(section) ||
          !validate(section)) {
        std::free(section);
        return "invalid section";
      }
      complete_ = psi_table_section(sections_.data(), section);  // which takes it over
    }
    return "";
  }

  const int pid_;
  int continuity_ = kUnknown;
  uint8_t* section_ = nullptr;
  uint16_t sectionSize_ = 0;
  std::array<uint8_t*, PSI_TABLE_MAX_SECTIONS> sections_{};
  bool complete_ = false;
};

std::string faultOf(const Packets& packets, int pid, Validate validate,
                    ValidateTable validateTable) {
  Receiver receiver(pid);
  for (const std::string& packet : packets) {
    std::string fault = receiver.push(packet, validate);
    if (!fault.empty()) {
      return fault;
    }
  }
  if (!receiver.complete()) {
    return "incomplete table";
  }
  return validateTable(receiver.table()) ? "" : "invalid table";
}

bool validateAlone(const uint8_t* section) {
  std::vector<uint8_t> alone(section, section + PSI_HEADER_SIZE + psi_get_length(section));
  psi_set_section(alone.data(), 0);
  psi_set_lastsection(alone.data(), 0);
  psi_set_crc(alone.data());
  return pmt_validate(alone.data());
}

}  // namespace

std::string faultOfPat(const Packets& packets) {
  return faultOf(packets, PAT_PID, pat_validate, pat_table_validate);
}

std::string faultOfSdt(const Packets& packets) {
  return faultOf(packets, SDT_PID, sdt_validate, sdt_table_validate);
}

std::string faultOfPmt(const Packets& packets, int pid) {
  return faultOf(packets, pid, validateAlone, [](uint8_t** /*sections*/) { return true; });
}

}  // namespace tevra::test
