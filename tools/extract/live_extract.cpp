#include "tools/extract/live_extract.h"

#include <algorithm>
#include <map>
#include <utility>
#include <variant>

#include "tools/stream/ts_packet.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr std::chrono::seconds kUntilTold(1);

/** The next node for which an answer has the PIDs of the CAT. */
constexpr int kCatNode = 1;

/** Whether an answer may depend on the table. */
bool isAskedAbout(const SiTable& table) {
  return std::holds_alternative<PAT>(table) || std::holds_alternative<SDT>(table) ||
         std::holds_alternative<PMT>(table) || std::holds_alternative<CAT>(table);
}

/** "PMT version 4, SDT version 1" of the tables whose versions differ. */
std::string movedVersions(const SPTSConfiguration& before, const SPTSConfiguration& after) {
  std::vector<std::string> moved;
  const auto compare = [&](const char* name, int from, int to) {
    if (from != to) {
      moved.push_back(std::string(name) + " version " + std::to_string(to));
    }
  };
  const auto& from = before.outputTables.dvbTables;
  const auto& to = after.outputTables.dvbTables;
  compare("PAT", from.pat.version, to.pat.version);
  compare("PMT", from.pmt.version, to.pmt.version);
  compare("SDT", from.sdt.version, to.sdt.version);
  return joined(moved, ", ");
}

}  // namespace

LiveExtract::LiveExtract(LiveRequest request, thrift::in_module::im_SIControlSrvIf& engine,
                         LiveEvents events)
    : request_(std::move(request)), engine_(engine), events_(std::move(events)) {}

StreamFeed LiveExtract::run(ByteSource& source) {
  StreamFeed stream = StreamFeed::feed(
      source, request_.source, engine_,
      [this](const TsPacket& packet, size_t /*tablesSent*/) {
        take(packet);
        return true;
      },
      [this](const SiTable& table, const StreamInventory& inventory) { take(table, inventory); });
  if (outputs_.empty()) {
    (void)settledOutputs(request_.drafts, stream.inventory());  // says which service is missing
    throw ToolError(request_.source + (source.isStopped() ? " was stopped" : " ended") +
                    " while its tables were still waited for");
  }
  for (Writer& writer : writers_) {
    writer.output->finish();
  }
  return stream;
}

void LiveExtract::silent(std::chrono::milliseconds silence) {
  flush();
  silence_ = silence;
  if (!isSilenceTold_ && silence >= kUntilTold) {
    isSilenceTold_ = true;
    events_.tell("nothing comes from " + request_.source + ": waiting for it");
  }
}

void LiveExtract::flush() {
  for (Writer& writer : writers_) {
    writer.output->flush();
  }
}

void LiveExtract::take(const TsPacket& packet) {
  if (isSilenceTold_) {
    isSilenceTold_ = false;
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(silence_).count();
    events_.tell(request_.source + " is back after " + std::to_string(seconds) + " s");
  }
  if (wait_ && wait_->isOverBefore(packet)) {
    if (transportStreamId_) {
      settle();
    } else {
      wait_.reset();
      events_.tell(request_.source + " has no PAT so far: waiting for it");
    }
  }
  if (wait_) {
    return;  // its PIDs may mean anything until the tables say what
  }
  for (Writer& writer : writers_) {
    if (writer.pausedFor.empty()) {
      writer.output->push(packet);
    }
  }
}

void LiveExtract::take(const SiTable& table, const StreamInventory& inventory) {
  inventory_ = &inventory;
  cats_ += std::holds_alternative<CAT>(table) ? 1 : 0;
  if (const PAT* pat = std::get_if<PAT>(&table)) {
    follow(*pat);
  }
  if (wait_) {
    if (isComplete()) {
      settle();
    }
  } else if (!outputs_.empty() && isAskedAbout(table) && !isAhead(table)) {
    askAgain();
  }
}

bool LiveExtract::isAhead(const SiTable& table) {
  const SDT* sdt = std::get_if<SDT>(&table);
  if (sdt == nullptr) {
    return false;
  }
  const bool fitted = sdtFits_;
  sdtFits_ = sdt->transportStreamId == transportStreamId_;
  return fitted && !sdtFits_;
}

void LiveExtract::follow(const PAT& pat) {
  if (transportStreamId_ == pat.transportStreamId) {
    return;
  }
  if (transportStreamId_) {
    events_.tell("the transport stream is now " + idText(pat.transportStreamId) + ", no longer " +
                 idText(*transportStreamId_) + ": waiting for its tables");
  }
  transportStreamId_ = pat.transportStreamId;
  wait_.emplace();
  flush();
  for (Writer& writer : writers_) {
    writer.output->skip();
  }
}

bool LiveExtract::hasPmt(int serviceId) const {
  return inventory_->service(serviceId).hasPmt;
}

bool LiveExtract::isComplete() const {
  const std::vector<ServiceSummary> services = inventory_->services();
  const bool hasAll = std::all_of(services.begin(), services.end(), [](const auto& service) {
    return service.hasPmt || !service.pmtPid;
  });
  return transportStreamId_ && inventory_->sdt() &&
         std::all_of(request_.drafts.begin(), request_.drafts.end(), [&](const OutputDraft& draft) {
           return draft.service ? hasPmt(*draft.service) : hasAll;
         });
}

void LiveExtract::settle() {
  wait_.reset();
  if (outputs_.empty()) {
    begin();
  } else {
    askAgain();
  }
}

void LiveExtract::begin() {
  const std::vector<OutputOptions> settled = settledOutputs(request_.drafts, *inventory_);
  const auto files = filesFor(request_.pattern, settled, request_.source);
  outputs_ = ask(settled);
  for (size_t index = 0; index < outputs_.size(); ++index) {
    request_.drafts[index].service = settled[index].inputSid;  // whatever else comes
    outputs_[index].file = files[index];
  }
  for (SptsFile& output : outputs_) {
    writers_.push_back({std::make_unique<SptsOutput>(output, SptsWriter::Timing::kAtOnce),
                        basisOf(output.output), transportStreamId_, ""});
  }
  for (Writer& writer : writers_) {
    writer.output->open();
  }
  events_.begun(*inventory_, outputs_);
}

std::vector<SptsFile> LiveExtract::ask(const std::vector<OutputOptions>& outputs) {
  return askForFiles(outputs, engine_, *inventory_, [this](const std::string& line) {
    if (entered_.insert(line).second) {
      events_.tell(line);
    }
  });
}

LiveExtract::Basis LiveExtract::basisOf(const OutputOptions& output) const {
  Basis basis;
  basis.pmt = *inventory_->pmt(output.inputSid);
  basis.pmtPid = inventory_->service(output.inputSid).pmtPid;
  basis.transportStreamId = inventory_->transportStreamId();
  basis.originalNetworkId = inventory_->originalNetworkId();
  basis.cats = output.nextNode == kCatNode ? cats_ : 0;
  for (const SDTService& entry : inventory_->sdt().value_or(SDT()).services) {
    if (entry.serviceId == output.inputSid) {
      basis.entry = entry;
    }
  }
  return basis;
}

void LiveExtract::askAgain() {
  std::map<int, std::vector<size_t>> places;  // of outputs, by service
  for (size_t index = 0; index < outputs_.size(); ++index) {
    const int own = outputs_[index].output.inputSid;
    Writer& writer = writers_[index];
    if (!hasPmt(own)) {
      pause(index, "service " + std::to_string(own) + " is not in the stream");
    } else if (Basis basis = basisOf(outputs_[index].output);
               !writer.pausedFor.empty() || !(basis == writer.basis)) {
      writer.basis = std::move(basis);
      places[own].push_back(index);
    }
  }
  for (const auto& [own, indexes] : places) {
    attempt(indexes, [this, &indexes = indexes] { askAgainFor(indexes); });
  }
}

void LiveExtract::askAgainFor(const std::vector<size_t>& places) {
  std::vector<OutputDraft> drafts;
  drafts.reserve(places.size());
  for (const size_t place : places) {
    drafts.push_back(request_.drafts[place]);
  }
  const std::vector<SptsFile> asked = ask(settledOutputs(drafts, *inventory_));
  for (size_t i = 0; i < places.size(); ++i) {
    attempt({places[i]}, [&] { goOn(places[i], asked[i]); });
  }
}

void LiveExtract::attempt(const std::vector<size_t>& places, const std::function<void()>& answer) {
  try {
    answer();
  } catch (const ToolError& error) {
    bool goesOn = false;
    for (const size_t index : places) {
      const Writer& writer = writers_[index];
      if (writer.pausedFor.empty() && writer.transportStreamId == transportStreamId_) {
        goesOn = true;
      } else {
        pause(index, error.what());
      }
    }
    if (goesOn) {
      events_.tell(error.what());
    }
  }
}

void LiveExtract::pause(size_t index, const std::string& why) {
  Writer& writer = writers_[index];
  if (writer.pausedFor != why) {
    writer.pausedFor = why;
    writer.output->flush();
    writer.output->skip();
    events_.tell(outputs_[index].file + ": pauses, for " + why);
  }
}

void LiveExtract::goOn(size_t index, const SptsFile& asked) {
  SptsFile& output = outputs_[index];
  Writer& writer = writers_[index];
  const std::string moved = movedVersions(output.configuration, asked.configuration);
  output.configuration = asked.configuration;
  writer.output->configure();
  output.output = asked.output;
  output.input = asked.input;
  const std::string news =
      writer.pausedFor.empty() ? moved : "goes on" + (moved.empty() ? "" : ", " + moved);
  writer.pausedFor.clear();
  writer.transportStreamId = transportStreamId_;
  if (!news.empty()) {
    events_.tell(output.file + ": " + news);
  }
}

}  // namespace tevra::tools
