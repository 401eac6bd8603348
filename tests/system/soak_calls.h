#pragma once

#include <cstdint>
#include <ctime>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "in_module_types.h"

namespace tevra::test {

/** Random numbers that one seed repeats. */
class Dice {
 public:
  explicit Dice(uint32_t seed) : engine_(seed) {}

  [[nodiscard]] int32_t below(int32_t end) {
    return static_cast<int32_t>(engine_() % static_cast<uint32_t>(end));
  }
  [[nodiscard]] int32_t between(int32_t first, int32_t last) {
    return first + below(last - first + 1);
  }
  [[nodiscard]] bool percent(int32_t chance) { return below(100) < chance; }

  template <class List>
  [[nodiscard]] const typename List::value_type& oneOf(const List& list) {
    return list[static_cast<size_t>(below(static_cast<int32_t>(list.size())))];
  }

 private:
  std::mt19937 engine_;
};

/**
 * Random calls and their arguments. There are few services, PIDs, transport streams, EIT tables and
 * outputs, so that a daemon soon holds all that it will ever hold. Every table fits one section.
 * What a service was last given is often given again, so that much stays unchanged.
 */
class SoakCalls {
 public:
  enum class Call {
    kPat,
    kSdt,
    kPmt,
    kCat,
    kNit,
    kBat,
    kTot,
    kPresentFollowing,
    kSchedule,
    kCommand,
    kSetData,
    kGetData,
    kOutputs,
  };

  explicit SoakCalls(uint32_t seed) : dice_(seed) {}

  [[nodiscard]] Call next();

  [[nodiscard]] thrift::dvb_tables::PAT pat();
  [[nodiscard]] thrift::dvb_tables::SDT sdt();
  [[nodiscard]] thrift::dvb_tables::PMT pmt();
  [[nodiscard]] thrift::dvb_tables::CAT cat();
  [[nodiscard]] thrift::dvb_tables::NIT nit();
  [[nodiscard]] thrift::dvb_tables::BAT bat();

  /** How far ahead of the system clock a TOT is, in seconds: surely less or surely more than a
   * minute from any other. */
  [[nodiscard]] std::time_t clockDifference();

  [[nodiscard]] thrift::in_module::EITMap presentFollowing();
  [[nodiscard]] thrift::in_module::EITMap schedule();
  [[nodiscard]] int32_t command();
  [[nodiscard]] thrift::in_module::SIService data();
  [[nodiscard]] thrift::in_module::SrvOutputRequest request();

  /** True about once in `calls`. */
  [[nodiscard]] bool onceIn(int32_t calls) { return dice_.below(calls) == 0; }

 private:
  [[nodiscard]] int32_t service();
  [[nodiscard]] thrift::dvb_tables::PMT freshPmt(int32_t serviceId);
  [[nodiscard]] thrift::dvb_tables::PMTES audio(int32_t pid);
  [[nodiscard]] thrift::dvb_tables::PMTES companion(int32_t pid);
  void addCa(std::vector<thrift::dvb_tables::Descriptor>& descriptors, int32_t firstPid,
             int32_t chance);
  [[nodiscard]] thrift::dvb_tables::EIT eitOf(int32_t serviceId, int32_t tableId);
  [[nodiscard]] thrift::in_module::SrvOutputRequest freshRequest(int32_t inputSID);
  [[nodiscard]] thrift::in_module::OutputServiceDescription output();
  [[nodiscard]] std::vector<thrift::spts::LastNodeSettings> lastNodes(int32_t globalSID);
  [[nodiscard]] thrift::spts::LastNodeSettings lastNodeOf(int32_t globalSID);

  Dice dice_;
  int32_t transportStreamId_ = 1;
  std::time_t clockStep_ = 0;
  std::map<int32_t, thrift::dvb_tables::PMT> lastPmts_;
  std::map<int32_t, thrift::in_module::SrvOutputRequest> lastRequests_;
};

/** What a failure says of a call. */
[[nodiscard]] const char* nameOf(SoakCalls::Call call);

}  // namespace tevra::test
