#include "tools/outputs/pid_attributes.h"

#include <array>
#include <utility>

namespace tevra::tools {

std::vector<std::string> pidAttributeNames(int32_t attributes) {
  static constexpr std::array<std::pair<int32_t, const char*>, 5> kNames = {{
      {kPidPmt, "PMT"},
      {kPidPcr, "PCR"},
      {kPidEs, "ES"},
      {kPidEcm, "ECM"},
      {kPidEmm, "EMM"},
  }};
  std::vector<std::string> names;
  for (const auto& [bit, name] : kNames) {
    if ((attributes & bit) != 0) {
      names.emplace_back(name);
    }
  }
  return names;
}

}  // namespace tevra::tools
