#include "tools/status/listening.h"

#include <arpa/inet.h>

#include <fstream>
#include <sstream>

#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr const char* kListen = "0A";  // TCP_LISTEN

/** 32 bits as the kernel prints them: eight digits in the machine's own order of bytes. */
std::string digits(uint32_t bits) {
  return hex(bits, 8).substr(2);
}

/** Whether a socket with this address takes what is sent to 127.0.0.1. */
bool takesLoopback(const std::string& address) {
  const std::string any = digits(0);
  const std::string loopback = digits(htonl(INADDR_LOOPBACK));
  const std::string mapped = any + any + digits(htonl(0xFFFF));
  return address == any || address == loopback || address == any + any + any + any ||
         address == mapped + loopback || address == mapped + any;
}

/** Whether a line of such a table has a socket that listens there. */
bool listensAt(const std::string& line, const std::string& port) {
  std::istringstream words(line);
  std::string number;
  std::string local;
  std::string remote;
  std::string state;
  words >> number >> local >> remote >> state;
  const size_t colon = local.find(':');
  return state == kListen && colon != std::string::npos && local.substr(colon + 1) == port &&
         takesLoopback(local.substr(0, colon));
}

}  // namespace

std::optional<bool> isListening(int port, const std::string& tables) {
  const std::string digitsOfPort = hex(port, 4).substr(2);
  bool isKnown = false;
  for (const char* name : {"/tcp", "/tcp6"}) {
    std::ifstream table(tables + name);
    std::string line;
    while (std::getline(table, line)) {
      isKnown = true;
      if (listensAt(line, digitsOfPort)) {
        return true;
      }
    }
  }
  return isKnown ? std::optional<bool>(false) : std::nullopt;
}

}  // namespace tevra::tools
