#include "tools/stream/udp_source.h"

#include <utility>

#include "tools/stream/rtp.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

std::string secondsText(std::chrono::steady_clock::duration time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time).count();
  return seconds == 0 ? "less than 1 s" : std::to_string(seconds) + " s";
}

}  // namespace

std::vector<std::string> lossLines(const UdpLosses& losses) {
  std::vector<std::string> lines;
  const auto add = [&lines](uint64_t count, const std::string& where) {
    if (count != 0) {
      lines.push_back(counted(count, "datagram") + " lost " + where);
    }
  };
  add(losses.inKernel,
      "in the kernel's receive buffer: the machine is busy, or net.core.rmem_max too small");
  add(losses.untaken, "because what had come before was not taken in time");
  add(losses.missing, "or late on the way, by the sequence numbers of RTP");
  return lines;
}

UdpSource::UdpSource(const UdpAddress& address, LiveOptions live, size_t capacity)
    : live_(std::move(live)),
      receiver_(address),
      buffer_(capacity),
      thread_([this] { receive(); }) {}

UdpSource::~UdpSource() {
  ending_ = true;
  thread_.join();
}

void UdpSource::receive() {
  RtpSequence sequence;
  while (!ending_) {
    const size_t size = receiver_.receive(datagram_.data(), datagram_.size());
    const std::optional<RtpHeader> header = rtpHeader(datagram_.data(), size);
    const size_t start = header ? header->size : 0;
    const size_t end = size - (header ? header->padding : 0);
    missing_ += header ? sequence.missingBefore(*header) : 0;
    if (!buffer_.push(datagram_.data() + start, end - start)) {
      ++untaken_;
    }
  }
}

size_t UdpSource::read(uint8_t* buffer, size_t size) {
  size_t count = 0;
  (void)waitFor(live_, [&](std::chrono::milliseconds most) {
    count = buffer_.pop(buffer, size, most);
    return count != 0;
  });  // stopped, it is 0
  payload_ += count;
  return count;
}

std::string UdpSource::explainNothing(const std::string& name, uint64_t packets) const {
  const std::string time = secondsText(Clock::now() - opened_);
  if (payload_ == 0) {
    return "no packet came from " + name + " in " + time +
           ": is the stream sent there, and does a firewall let it in?";
  }
  if (packets == 0) {
    return "what came from " + name + " in " + time + ", " + counted(payload_, "byte") +
           ", is no transport stream: no packets of 188, 192 or 204 bytes";
  }
  return counted(packets, "packet") + " came from " + name + " in " + time +
         ", but no complete table: give it longer, or see whether it carries PSI";
}

std::vector<std::string> UdpSource::faults() const {
  return lossLines({receiver_.dropped(), untaken_, missing_});
}

}  // namespace tevra::tools
