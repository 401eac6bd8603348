#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "tests/system/multiplex.h"

/** What the daemon must have in its three files and hand out, worked out from the calls alone. */
namespace tevra::test {

using thrift::in_module::EITTableVersionStoreFile;
using thrift::in_module::PIDRemap;
using thrift::in_module::TableStore;
using thrift::in_module::TableStoreFile;

/** One call of the load, with the member of its kind filled. */
struct LoadCall {
  enum class Kind { kPat, kSdt, kPmt, kCat, kTot, kPresentFollowing, kSchedule, kOutput };

  Kind kind = Kind::kSdt;
  PAT pat;
  PMT pmt;  ///< streams of carried types only
  CAT cat;
  EITMap eits;
  SrvOutputRequest request;
};

/** What a file was found to hold after a kill. */
enum class Found : size_t { kUntouched, kWholeAsBefore, kWholeWithLastCall, kHalfWritten, kWrong };

/** A record as far as it can be read. */
template <class Record>
struct Parsed {
  Record record;
  bool whole = false;  ///< all of it, and nothing behind it
};

template <class Record>
[[nodiscard]] Parsed<Record> parse(const std::string& text);

/** One file, between a start of the daemon and the kill. */
class FileModel {
 public:
  /** The daemon has been started with this in the file. */
  void startWith(const std::string& text) {
    before_ = text;
    saved_ = false;
  }

 protected:
  /** An answered call has saved the file. */
  void noteSave() { saved_ = true; }
  [[nodiscard]] bool saved() const { return saved_; }
  [[nodiscard]] bool isUntouched(const std::string& text) const {
    return !saved_ && text == before_;
  }

 private:
  std::string before_;
  bool saved_ = false;
};

/** The PID mapping. */
class PidModel : public FileModel {
 public:
  /** What holds after a start with `text` in the file: all of it or nothing. */
  void restart(const std::string& text);

  /** The call has been answered. */
  void apply(const LoadCall& call);

  /** Judges the file after a kill in the middle of `last`, if there was a call. */
  [[nodiscard]] Found judge(const std::string& text, const std::optional<LoadCall>& last) const;

  /** -1 when there is none. */
  [[nodiscard]] int32_t outputPid(int32_t inputPid) const;
  [[nodiscard]] int32_t inputPid(int32_t outputPid) const;

 private:
  /** True when the call saves the mapping. */
  bool take(const LoadCall& call);
  bool save();
  void reset(int32_t transportStreamId);
  void allocate(int32_t inputPid);
  void allocateEach(const std::vector<Descriptor>& caDescriptors);

  PIDRemap memory_;
  PIDRemap file_;
  bool dirty_ = false;
};

/** The tables last handed out for each service. */
class TableModel : public FileModel {
 public:
  void restart(const std::string& text);

  /** Takes the tables of an answer. Returns what is wrong with their versions; empty when nothing
   * is. */
  [[nodiscard]] std::string apply(int32_t service, const TableStore& answer);

  [[nodiscard]] Found judge(const std::string& text, const std::optional<LoadCall>& last) const;

 private:
  TableStoreFile memory_;
};

/** Service id, table id and version of an EIT that MainTask gets. */
using EitVersion = std::tuple<int32_t, int32_t, int32_t>;

/** The EIT versions. */
class EitModel : public FileModel {
 public:
  void restart(const std::string& text);

  /** Takes an answered call and returns what it hands out, in order; nothing for calls of another
   * kind. */
  std::vector<EitVersion> apply(const LoadCall& call);

  [[nodiscard]] Found judge(const std::string& text, const std::optional<LoadCall>& last) const;

 private:
  EITTableVersionStoreFile memory_;
};

}  // namespace tevra::test
