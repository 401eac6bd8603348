#include "tests/tools/support/descriptor_text.h"

#include <sstream>

#include "tools/tables/table_text.h"

namespace tevra::tools::test {

std::string descriptorText(const std::vector<std::pair<int, Bytes>>& descriptors) {
  CAT cat;
  for (const auto& [tag, payload] : descriptors) {
    Descriptor& descriptor = cat.descriptors.emplace_back();
    descriptor.tag = tag;
    descriptor.data.assign(payload.begin(), payload.end());
  }
  std::ostringstream out;
  printTable(out, tableFields(cat));
  std::istringstream lines(out.str());
  std::string text;
  std::string line;
  (void)std::getline(lines, line);  // the header; a missing one shows in what follows
  while (std::getline(lines, line)) {
    text += line.substr(2) + "\n";
  }
  return text;
}

std::string payloadText(int tag, const Bytes& payload) {
  const std::string text = descriptorText({{tag, payload}});
  return text.substr(text.find(')') + 1);
}

}  // namespace tevra::tools::test
