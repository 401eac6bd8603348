#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "records/control_service.h"
#include "tools/extract/output_pattern.h"
#include "tools/extract/spts_files.h"
#include "tools/extract/spts_output.h"
#include "tools/extract/stream_outputs.h"
#include "tools/extract/table_wait.h"
#include "tools/feed/stream_feed.h"
#include "tools/outputs/output_draft.h"
#include "tools/stream/byte_source.h"

namespace tevra::tools {

/** What is to be extracted. */
struct LiveRequest {
  std::string source;               ///< as the user calls it
  std::vector<OutputDraft> drafts;  ///< at least one
  OutputPattern pattern;            ///< of the names of what is written
};

/** What is said while it runs. */
struct LiveEvents {
  /** The outputs begin. */
  std::function<void(const StreamInventory& inventory, const std::vector<SptsFile>& outputs)> begun;
  Tell tell;  ///< of whatever happens to source, tables and outputs, when it does
};

/**
 * Writes the outputs of a stream that is read once, while it comes.
 *
 * Tables go to the engine as they complete. The outputs begin when PAT, SDT and the PMTs of their
 * services are there (of all services, where one is left to the stream), or after two seconds of
 * stream without the rest of them; what comes before is not written. When its service's PMT, the
 * PID of that or the service's entry in the SDT changes, the engine is asked again and the output
 * goes on as it says, its versions and counters with it; where there is no answer it goes on as it
 * was. Another transport stream is waited for as the first was. An output pauses while the stream
 * lacks its service, and in another transport stream until there is an answer, for which the engine
 * is asked with each table that may bring one.
 */
class LiveExtract {
 public:
  /** `engine` must outlive it. */
  LiveExtract(LiveRequest request, thrift::in_module::im_SIControlSrvIf& engine, LiveEvents events);
  LiveExtract(const LiveExtract&) = delete;  // writers refer to its outputs
  LiveExtract& operator=(const LiveExtract&) = delete;

  /**
   * Reads the source to its end and completes the outputs. Once in its life.
   *
   * Raises ToolError when it cannot be read, when it lacks a service at the beginning, when it ends
   * before the outputs begin, and when one cannot be written. Passes on what a call raises.
   */
  [[nodiscard]] StreamFeed run(ByteSource& source);

  /** The source has given nothing for so long: what is held back goes out. */
  void silent(std::chrono::milliseconds silence);

  /** In the order of the drafts; none before they begin. */
  [[nodiscard]] const std::vector<SptsFile>& outputs() const { return outputs_; }

 private:
  /** What the stream says that an answer depends on. */
  struct Basis {
    PMT pmt;
    std::optional<int> pmtPid;
    std::optional<SDTService> entry;
    std::optional<int> transportStreamId;
    std::optional<int> originalNetworkId;
    int cats = 0;  // that have come, where they matter

    bool operator==(const Basis& other) const {
      return pmt == other.pmt && pmtPid == other.pmtPid && entry == other.entry &&
             transportStreamId == other.transportStreamId &&
             originalNetworkId == other.originalNetworkId && cats == other.cats;
    }
  };

  /** What one of the outputs is written with. */
  struct Writer {
    std::unique_ptr<SptsOutput> output;
    Basis basis;                           // when it was asked for
    std::optional<int> transportStreamId;  // of which its answer is
    std::string pausedFor;                 // why; empty: it goes on
  };

  void flush();
  void take(const TsPacket& packet);
  void take(const SiTable& table, const StreamInventory& inventory);
  /** Whether it is an SDT, the first with another transport stream's id: its PAT is to come. */
  [[nodiscard]] bool isAhead(const SiTable& table);
  void follow(const PAT& pat);
  [[nodiscard]] bool isComplete() const;
  [[nodiscard]] bool hasPmt(int serviceId) const;
  void settle();
  void begin();
  [[nodiscard]] Basis basisOf(const OutputOptions& output) const;
  /** For those outputs alone whose basis has changed. */
  void askAgain();
  /** Of these outputs, which are of one service. Raises ToolError where one has no answer. */
  void askAgainFor(const std::vector<size_t>& places);
  /** Where `answer` raises ToolError these outputs go on as they were, or pause. */
  void attempt(const std::vector<size_t>& places, const std::function<void()>& answer);
  void pause(size_t index, const std::string& why);
  /** Raises ToolError when the answer cannot be used. */
  void goOn(size_t index, const SptsFile& asked);
  [[nodiscard]] std::vector<SptsFile> ask(const std::vector<OutputOptions>& outputs);

  LiveRequest request_;
  thrift::in_module::im_SIControlSrvIf& engine_;
  LiveEvents events_;

  std::optional<int> transportStreamId_;         // of the last PAT
  std::optional<TableWait> wait_ = TableWait();  // for the tables of that
  const StreamInventory* inventory_ = nullptr;   // as of the last table
  int cats_ = 0;
  bool sdtFits_ = true;  // the last one, to the transport stream

  std::chrono::milliseconds silence_{0};
  bool isSilenceTold_ = false;
  std::set<std::string> entered_;  // what has been told of services that were entered

  std::vector<SptsFile> outputs_;  // never moved: the writers refer to them
  std::vector<Writer> writers_;    // one for each
};

}  // namespace tevra::tools
