#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tools/stream/live_wait.h"

namespace tevra::tools {

/** Where a transport stream comes from, byte after byte. */
class ByteSource {
 public:
  virtual ~ByteSource() = default;

  /** Reads up to `size` bytes, 0 at the end. Raises ToolError when reading fails. */
  [[nodiscard]] virtual size_t read(uint8_t* buffer, size_t size) = 0;

  /** Bytes in all; nothing for a source without an end that is known. */
  [[nodiscard]] virtual std::optional<uint64_t> size() const { return std::nullopt; }

  /**
   * For people, when what was read up to the end holds nothing of use: why, with `packets` of a
   * transport stream but no complete table among them. `name` is how the user called the source.
   */
  [[nodiscard]] virtual std::string explainNothing(const std::string& name, uint64_t packets) const;

  /** For people: what got lost on the way here so far, a line for each kind of loss. */
  [[nodiscard]] virtual std::vector<std::string> faults() const { return {}; }

  /** Whether it ends where it was told to, which may be in the middle of a packet. */
  [[nodiscard]] virtual bool isStopped() const { return false; }

  /** Begins again at the front; false for a source that cannot. */
  [[nodiscard]] virtual bool rewind() { return false; }

  /** At its end: begins again if it is meant to. */
  [[nodiscard]] virtual bool goesOn() { return false; }
};

/**
 * A file, "-" for standard input, or "udp://ADDRESS:PORT" or "rtp://ADDRESS:PORT" for packets that
 * arrive there. Each ends when it is stopped, and what has nothing to give is waited for. Raises
 * ToolError when it cannot be opened.
 */
[[nodiscard]] std::unique_ptr<ByteSource> openSource(const std::string& name,
                                                     const LiveOptions& live = {});

/** `source`, which goes on from the front whenever it has ended. */
class LoopedSource : public ByteSource {
 public:
  /** `source` must outlive it. */
  explicit LoopedSource(ByteSource& source) : source_(source) {}

  [[nodiscard]] size_t read(uint8_t* buffer, size_t size) override {
    return source_.read(buffer, size);
  }
  [[nodiscard]] bool isStopped() const override { return source_.isStopped(); }
  /** Raises ToolError where the source cannot. */
  [[nodiscard]] bool goesOn() override;

 private:
  ByteSource& source_;
};

/** Whether openSource would take it for a live source, were its address right. */
[[nodiscard]] bool isLiveSource(const std::string& name);

/** Whether it can be read from front to end once only: all but a regular file, and all of "-". */
[[nodiscard]] bool isReadOnce(const std::string& name);

}  // namespace tevra::tools
