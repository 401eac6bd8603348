#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tools/stream/ts_packet.h"

namespace tevra::tools::test {

/** All that a file holds. */
[[nodiscard]] inline std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

/** A file of the running test's own, removed at the end. */
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::string& name) {
    const auto* info = testing::UnitTest::GetInstance()->current_test_info();
    path_ = testing::TempDir() + info->test_suite_name() + "." + info->name() + "." + name;
    std::filesystem::remove(path_);
  }
  ~TemporaryFile() {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }

  void write(const std::vector<TsPacket>& packets) const {
    std::ofstream file(path_, std::ios::binary);
    for (const TsPacket& packet : packets) {
      file.write(reinterpret_cast<const char*>(packet.data()), kTsPacketSize);
    }
  }
  void write(const std::string& bytes) const {
    std::ofstream(path_, std::ios::binary)
        .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  }

  [[nodiscard]] std::string read() const { return contentOf(path_); }

  [[nodiscard]] std::vector<TsPacket> readPackets() const {
    const std::string bytes = read();
    std::vector<TsPacket> packets;
    for (size_t i = 0; i + kTsPacketSize <= bytes.size(); i += kTsPacketSize) {
      packets.emplace_back(reinterpret_cast<const uint8_t*>(bytes.data()) + i);
    }
    return packets;
  }

 private:
  std::string path_;
};

/** Ends the test as skipped where the real recordings are not there. */
#define SKIP_WITHOUT_CAPTURE(path)                                  \
  if (!std::filesystem::exists(path)) {                             \
    GTEST_SKIP() << "no recording at " << (path) << ", not tested"; \
  }

[[nodiscard]] inline std::string capture(const std::string& name) {
  return std::string(TORNEL_CAPTURES_DIR) + "/" + name;
}
[[nodiscard]] inline std::string sample() {
  return std::string(TORNEL_SAMPLES_DIR) + "/sample.ts";
}

}  // namespace tevra::tools::test
