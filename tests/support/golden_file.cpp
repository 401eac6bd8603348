#include "tests/support/golden_file.h"

#include <cstdio>
#include <cstdlib>

#include "tests/support/files.h"

namespace tevra::test {
namespace {

constexpr size_t kBytesPerLine = 16;

std::string toText(const std::vector<std::string>& packets) {
  std::string text;
  for (const std::string& packet : packets) {
    text += "packet of " + std::to_string(packet.size()) + " bytes\n";
    for (size_t i = 0; i < packet.size(); ++i) {
      char hex[4];
      std::snprintf(hex, sizeof hex, "%02x%c", static_cast<uint8_t>(packet[i]),
                    (i + 1) % kBytesPerLine == 0 || i + 1 == packet.size() ? '\n' : ' ');
      text += hex;
    }
  }
  return text;
}

bool updateWanted() {
  const char* update = std::getenv("TORNEL_UPDATE_GOLDEN");
  return update != nullptr && std::string(update) == "1";
}

}  // namespace

testing::AssertionResult matchesGolden(const std::string& name,
                                       const std::vector<std::string>& packets) {
  return matchesGoldenText(name + ".hex", toText(packets));
}

testing::AssertionResult matchesGoldenText(const std::string& file, const std::string& text) {
  const std::string path = std::string(TORNEL_GOLDEN_DIR) + "/" + file;
  if (updateWanted()) {
    writeText(path, text);
    return testing::AssertionFailure() << path << " rewritten: review it and test again";
  }
  const std::string golden = readText(path);
  if (text == golden) {
    return testing::AssertionSuccess();
  }
  return testing::AssertionFailure() << path << " differs. Golden:\n"
                                     << golden << "Made:\n"
                                     << text;
}

}  // namespace tevra::test
