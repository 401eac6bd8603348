#pragma once

#include <atomic>
#include <string>
#include <vector>

namespace tevra::tools::test {

/** Sends a datagram to a port of 127.0.0.1. */
void sendDatagram(const std::string& bytes, int port);

/** Sends a file, seven packets a datagram as is usual, again and again until `done`. */
void sendRepeatedly(const std::string& path, int port, const std::atomic<bool>& done);

}  // namespace tevra::tools::test
