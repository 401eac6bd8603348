#include "tests/system/kill_restart_model.h"

#include <map>
#include <memory>
#include <set>

#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

namespace tevra::test {
namespace {

using Kind = LoadCall::Kind;

constexpr int32_t kVersionCount = 32;
constexpr int32_t kFirstCounter = 99;  // of the default module; the first PID is 101
constexpr int32_t kNoTransportStream = 0xFFFF;
constexpr int32_t kModuleSlot = 3;
constexpr int32_t kLastSurvivingCounter = 3;

int32_t versionAfter(int32_t version) {
  return (version + 1) % kVersionCount;
}

/** Every start raises the counters; an entry above the limit is forgotten. */
template <class Entries>
void age(Entries& entries) {
  for (auto entry = entries.begin(); entry != entries.end();) {
    if (entry->second.restartCounter > kLastSurvivingCounter) {
      entry = entries.erase(entry);
    } else {
      ++entry->second.restartCounter;
      ++entry;
    }
  }
}

/** Equal but for the version. */
template <class Table>
bool sameContent(Table a, const Table& b) {
  a.version = b.version;
  return a == b;
}

/** `after` is what `before` becomes in one synthesis: the same, or another content one version on.
 */
template <class Table>
bool isStep(const Table& before, const Table& after) {
  return sameContent(before, after) ? before.version == after.version
                                    : versionAfter(before.version) == after.version;
}

bool isStep(const TableStore& before, const TableStore& after) {
  return before.restartCounter == after.restartCounter && isStep(before.pat, after.pat) &&
         isStep(before.sdt, after.sdt) && isStep(before.pmt, after.pmt);
}

template <class Table>
std::string complaint(const char* name, const Table& before, const Table& after) {
  if (isStep(before, after)) {
    return {};
  }
  return std::string(name) + " version " + std::to_string(after.version) + " after " +
         std::to_string(before.version) +
         (sameContent(before, after) ? " without a change; " : " for another content; ");
}

int32_t valueOr(const std::map<int32_t, int32_t>& values, int32_t key) {
  const auto found = values.find(key);
  return found == values.end() ? -1 : found->second;
}

/** One output PID for every input PID, and back. */
bool isOneToOne(const PIDRemap& pids) {
  std::set<int32_t> outputs;
  for (const auto& [input, output] : pids.inputToOutput) {
    const auto back = pids.outputToInput.find(output);
    if (!outputs.insert(output).second || back == pids.outputToInput.end() ||
        back->second != input) {
      return false;
    }
  }
  return pids.inputToOutput.size() == pids.outputToInput.size();
}

}  // namespace

template <class Record>
Parsed<Record> parse(const std::string& text) {
  using apache::thrift::transport::TMemoryBuffer;
  std::string bytes = text;
  const auto buffer = std::make_shared<TMemoryBuffer>(reinterpret_cast<uint8_t*>(bytes.data()),
                                                      static_cast<uint32_t>(bytes.size()));
  apache::thrift::protocol::TJSONProtocol protocol(buffer);
  Parsed<Record> parsed;
  try {
    parsed.record.read(&protocol);
    parsed.whole = buffer->available_read() == 0;
  } catch (const apache::thrift::TException&) {
    // Cut short.
  }
  return parsed;
}

template Parsed<PIDRemap> parse(const std::string& text);
template Parsed<TableStoreFile> parse(const std::string& text);
template Parsed<EITTableVersionStoreFile> parse(const std::string& text);

void PidModel::restart(const std::string& text) {
  startWith(text);
  const auto parsed = parse<PIDRemap>(text);
  if (parsed.whole) {
    memory_ = parsed.record;
  } else {
    reset(kNoTransportStream);
  }
  dirty_ = false;
}

void PidModel::apply(const LoadCall& call) {
  if (take(call)) {
    noteSave();
  }
}

bool PidModel::take(const LoadCall& call) {
  switch (call.kind) {
    case Kind::kPat:
      if (call.pat.transportStreamId != memory_.transportStreamId) {
        reset(call.pat.transportStreamId);
      }
      for (const auto& program : call.pat.programs) {
        allocate(program.pid);
      }
      return save();
    case Kind::kPmt:
      allocate(call.pmt.pcrPid);
      allocateEach(call.pmt.descriptors);
      for (const auto& stream : call.pmt.esList) {
        allocate(stream.pid);
      }
      return save();
    case Kind::kCat:
      allocateEach(call.cat.descriptors);
      return false;
    case Kind::kOutput:
      return save();
    default:
      return false;
  }
}

bool PidModel::save() {
  const bool saves = dirty_;
  if (saves) {
    file_ = memory_;
  }
  dirty_ = false;
  return saves;
}

void PidModel::reset(int32_t transportStreamId) {
  memory_ = PIDRemap();
  memory_.transportStreamId = transportStreamId;
  memory_.nextPIDCounter = kFirstCounter;
  memory_.moduleSlot = kModuleSlot;
}

void PidModel::allocate(int32_t inputPid) {
  if (memory_.inputToOutput.count(inputPid) > 0) {
    return;
  }
  const int32_t outputPid = ++memory_.nextPIDCounter + 1;
  memory_.inputToOutput[inputPid] = outputPid;
  memory_.outputToInput[outputPid] = inputPid;
  dirty_ = true;
}

void PidModel::allocateEach(const std::vector<Descriptor>& caDescriptors) {
  for (const Descriptor& descriptor : caDescriptors) {
    const auto byte = [&](size_t index) {
      return int32_t{static_cast<unsigned char>(descriptor.data.at(index))};
    };
    allocate((byte(2) & 0x1F) << 8 | byte(3));
  }
}

int32_t PidModel::outputPid(int32_t inputPid) const {
  return valueOr(memory_.inputToOutput, inputPid);
}

int32_t PidModel::inputPid(int32_t outputPid) const {
  return valueOr(memory_.outputToInput, outputPid);
}

Found PidModel::judge(const std::string& text, const std::optional<LoadCall>& last) const {
  if (isUntouched(text)) {
    return Found::kUntouched;
  }
  PidModel afterwards = *this;
  const bool mayBeSaving = last && afterwards.take(*last);
  const auto parsed = parse<PIDRemap>(text);
  if (!parsed.whole) {
    return mayBeSaving ? Found::kHalfWritten : Found::kWrong;
  }
  if (!isOneToOne(parsed.record)) {
    return Found::kWrong;
  }
  if (saved() && parsed.record == file_) {
    return Found::kWholeAsBefore;
  }
  return mayBeSaving && parsed.record == afterwards.file_ ? Found::kWholeWithLastCall
                                                          : Found::kWrong;
}

void TableModel::restart(const std::string& text) {
  startWith(text);
  memory_ = parse<TableStoreFile>(text).record;
  age(memory_.tableStores);
}

std::string TableModel::apply(int32_t service, const TableStore& answer) {
  TableStore& store = memory_.tableStores[service];
  const std::string wrong = complaint("PAT", store.pat, answer.pat) +
                            complaint("SDT", store.sdt, answer.sdt) +
                            complaint("PMT", store.pmt, answer.pmt);
  store.pat = answer.pat;
  store.sdt = answer.sdt;
  store.pmt = answer.pmt;
  noteSave();
  return wrong;
}

Found TableModel::judge(const std::string& text, const std::optional<LoadCall>& last) const {
  if (isUntouched(text)) {
    return Found::kUntouched;
  }
  const bool mayBeSaving = last && last->kind == Kind::kOutput;
  auto [record, whole] = parse<TableStoreFile>(text);
  if (!whole) {
    return mayBeSaving ? Found::kHalfWritten : Found::kWrong;
  }
  if (saved() && record == memory_) {
    return Found::kWholeAsBefore;
  }
  if (!mayBeSaving) {
    return Found::kWrong;
  }
  const int32_t service = last->request.inputSID;
  if (record.tableStores.count(service) == 0) {
    return Found::kWrong;
  }
  TableStoreFile before = memory_;
  const bool step = isStep(before.tableStores[service], record.tableStores[service]);
  before.tableStores[service] = record.tableStores[service];
  return step && record == before ? Found::kWholeWithLastCall : Found::kWrong;
}

void EitModel::restart(const std::string& text) {
  startWith(text);
  memory_ = parse<EITTableVersionStoreFile>(text).record;
  age(memory_.versionStores);
}

std::vector<EitVersion> EitModel::apply(const LoadCall& call) {
  std::vector<EitVersion> handedOut;
  for (const auto& [service, tables] : call.eits) {
    auto& store = memory_.versionStores[service];
    store.restartCounter = 0;
    for (const auto& [tableId, table] : tables) {
      const auto known = store.versions.find(tableId);
      const int32_t version = known == store.versions.end() ? 1 : versionAfter(known->second);
      store.versions[tableId] = version;
      handedOut.emplace_back(service, tableId, version);
    }
    noteSave();
  }
  return handedOut;
}

Found EitModel::judge(const std::string& text, const std::optional<LoadCall>& last) const {
  if (isUntouched(text)) {
    return Found::kUntouched;
  }
  const bool mayBeSaving = last && !last->eits.empty();
  const auto parsed = parse<EITTableVersionStoreFile>(text);
  if (!parsed.whole) {
    return mayBeSaving ? Found::kHalfWritten : Found::kWrong;
  }
  if (saved() && parsed.record == memory_) {
    return Found::kWholeAsBefore;
  }
  EitModel afterwards = *this;
  if (mayBeSaving) {
    (void)afterwards.apply(*last);
  }
  return mayBeSaving && parsed.record == afterwards.memory_ ? Found::kWholeWithLastCall
                                                            : Found::kWrong;
}

}  // namespace tevra::test
