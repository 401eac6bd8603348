#include "tools/listen/notification.h"

#include <array>
#include <utility>

namespace tevra::tools {
namespace {

using Names = std::pair<const char*, const char*>;

/** By kind: for people, for programs. */
constexpr std::array<Names, 11> kNames = {{
    {"NIM", "NIM"},
    {"PAT", "PAT"},
    {"SDT", "SDT"},
    {"PMT", "PMT"},
    {"NIT", "NIT"},
    {"TOT", "TOT"},
    {"BAT", "BAT"},
    {"CAT", "CAT"},
    {"EIT p/f", "EITPresentFollowing"},
    {"EIT schedule", "EITSchedule"},
    {"configuration requested", "requestConfiguration"},
}};

}  // namespace

const char* kindText(Notification::Kind kind) {
  return kNames.at(static_cast<size_t>(kind)).first;
}

const char* kindName(Notification::Kind kind) {
  return kNames.at(static_cast<size_t>(kind)).second;
}

}  // namespace tevra::tools
