#include "tools/text/wrap.h"

#include <sstream>

#include "tools/text/words.h"

namespace tevra::tools {
namespace {

/**
 * Where to break: at the last blank behind `start` up to which the line fits, else at the first
 * one; npos when it need not, or cannot.
 */
size_t breakOf(const std::string& line, size_t width, size_t start) {
  if (displayWidth(line) <= width) {
    return std::string::npos;
  }
  size_t place = line.find(' ', start);
  for (size_t next = place;
       next != std::string::npos && displayWidth(line.substr(0, next)) <= width;
       next = line.find(' ', next + 1)) {
    place = next;
  }
  return place;
}

}  // namespace

std::string wrapped(const std::string& text, size_t width, size_t indent) {
  std::istringstream lines(text);
  std::string result;
  std::string line;
  while (width != 0 && std::getline(lines, line)) {
    line.erase(line.find_last_not_of(' ') + 1);
    const std::string blanks(line[0] == ' ' ? indent : 0, ' ');
    size_t start = line.find_first_not_of(' ');
    for (size_t place = breakOf(line, width, start); place != std::string::npos;
         place = breakOf(line, width, start)) {
      result += line.substr(0, line.find_last_not_of(' ', place) + 1) + "\n";
      line.replace(0, line.find_first_not_of(' ', place), blanks);
      start = blanks.size();
    }
    result += line + "\n";
  }
  return width == 0 ? text : result;
}

}  // namespace tevra::tools
