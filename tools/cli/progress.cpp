#include "tools/cli/progress.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "tools/text/decimals.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr std::chrono::milliseconds kRedraw(200);
constexpr std::chrono::seconds kLine(5);
constexpr int kBarWidth = 30;
constexpr double kMegabyte = 1e6;
constexpr const char* kEraseLine = "\r\033[K";

std::string bar(double share) {
  const auto full = static_cast<size_t>(share * kBarWidth);
  return "[" + std::string(full, '#') + std::string(kBarWidth - full, '-') + "] ";
}

}  // namespace

Progress::Progress(std::ostream& out, const Options& options, Now now)
    : out_(out),
      options_(options),
      now_(std::move(now)),
      start_(now_()),
      next_(start_ + (options.terminal ? Clock::duration(kRedraw) : Clock::duration(kLine))) {}

void Progress::update(uint64_t bytes, uint64_t tables) {
  const Clock::time_point now = now_();
  if (now < next_) {
    return;
  }
  next_ = now + (options_.terminal ? Clock::duration(kRedraw) : Clock::duration(kLine));
  const std::string line = text(bytes, tables, now);
  if (options_.terminal) {
    out_ << kEraseLine << line << std::flush;
    drawn_ = true;
  } else {
    out_ << line << "\n" << std::flush;
  }
}

void Progress::finish() {
  if (drawn_) {
    out_ << kEraseLine << std::flush;
    drawn_ = false;
  }
}

std::string Progress::text(uint64_t bytes, uint64_t tables, Clock::time_point now) const {
  const double seconds = std::chrono::duration<double>(now - start_).count();
  const double rate = seconds > 0 ? static_cast<double>(bytes) / seconds : 0;
  std::string line;
  if (options_.totalBytes && *options_.totalBytes > 0) {
    const auto total = static_cast<double>(*options_.totalBytes);
    const double share = std::min(1.0, static_cast<double>(bytes) / total);
    line += options_.terminal ? bar(share) : "";
    line += std::to_string(static_cast<int>(100 * share)) + " %, ";
  } else {
    line += fixedText(static_cast<double>(bytes) / kMegabyte, 1) + " MB, ";
  }
  line += fixedText(rate / kMegabyte, 1) + " MB/s, " + counted(tables, "table") + " sent";
  if (options_.totalBytes && *options_.totalBytes > bytes && rate > 0) {
    const double left = static_cast<double>(*options_.totalBytes - bytes) / rate;
    line += ", " + std::to_string(std::lround(left)) + " s left";
  }
  return line;
}

}  // namespace tevra::tools
