#include "tools/text/terminal.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>

#include "tools/text/dvb_text.h"
#include "tools/text/words.h"
#include "tools/text/wrap.h"

namespace tevra::tools {

size_t widthOf(const std::ostream& stream) {
  winsize size{};
  const bool isStandard = &stream == &std::cout || &stream == &std::cerr;
  const int descriptor = &stream == &std::cout ? STDOUT_FILENO : STDERR_FILENO;
  return isStandard && ioctl(descriptor, TIOCGWINSZ, &size) == 0 ? size.ws_col : 0;
}

std::string environmentVariable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? "" : value;
}

void printMessage(std::ostream& err, const std::string& text) {
  err << wrapped("tornelctl: " + printable(oneLine(text)) + "\n", widthOf(err), 0);
}

}  // namespace tevra::tools
