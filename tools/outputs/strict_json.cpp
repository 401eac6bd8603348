#include "tools/outputs/strict_json.h"

#include <cstddef>
#include <set>
#include <vector>

namespace tevra::tools {
namespace {

using Json = nlohmann::json;
using Event = Json::parse_event_t;

/** Follows the parser through the text and raises StrictJsonError for a name that comes again. */
class NameCheck {
 public:
  void take(Event event, const Json& parsed) {
    switch (event) {
      case Event::object_start:
      case Event::array_start:
        levels_.push_back({event == Event::array_start, 0, "", {}});
        break;
      case Event::object_end:
      case Event::array_end:
        levels_.pop_back();
        countElement();
        break;
      case Event::key:
        takeName(parsed.get<std::string>());
        break;
      case Event::value:
        countElement();
        break;
    }
  }

 private:
  /** An object or array that has begun and not ended. */
  struct Level {
    bool isArray;
    size_t elements;   // that have ended
    std::string name;  // of the member that is read
    std::set<std::string> names;
  };

  void countElement() {
    if (!levels_.empty()) {
      ++levels_.back().elements;
    }
  }

  void takeName(const std::string& name) {
    levels_.back().name = name;
    if (!levels_.back().names.insert(name).second) {
      throw StrictJsonError(path() + " is given twice");
    }
  }

  [[nodiscard]] std::string path() const {
    std::string path;
    for (const Level& level : levels_) {
      if (level.isArray) {
        path += "[" + std::to_string(level.elements) + "]";
      } else {
        path += (path.empty() ? "" : ".") + level.name;
      }
    }
    return path;
  }

  std::vector<Level> levels_;
};

/** The library's text without what is for programmers: "[json.exception.parse_error.101] ". */
std::string withoutCode(const std::string& what) {
  const size_t end = what.find("] ");
  return end == std::string::npos ? what : what.substr(end + 2);
}

}  // namespace

Json parseStrictJson(const std::string& text) {
  NameCheck names;
  try {
    return Json::parse(text, [&names](int /*depth*/, Event event, const Json& parsed) {
      names.take(event, parsed);
      return true;
    });
  } catch (const Json::exception& error) {
    throw StrictJsonError(withoutCode(error.what()));
  }
}

}  // namespace tevra::tools
