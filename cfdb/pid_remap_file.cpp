#include "cfdb/pid_remap_file.h"

#include <unistd.h>

#include <memory>

#include "records/json_protocol.h"
#include "records/record_file_access.h"

namespace tevra {
namespace {

constexpr int kDone = 0;
constexpr int kNotOpened = -1;
constexpr int kFailed = -2;
}  // namespace

int writePIDRemapFile(const std::string& path, const PIDRemap& record) {
  const int fd = createRecordFile(path);
  if (fd < 0) {
    return kNotOpened;
  }
  try {
    const auto transport = owningTransport(fd);
    JsonProtocol protocol(transport, 0);
    record.write(&protocol);
    const bool synced = syncfs(fd) == 0;
    transport->close();
    sync();
    return synced ? kDone : kFailed;
  } catch (...) {
    return kFailed;
  }
}

int readPIDRemapFile(const std::string& path, PIDRemap& record) {
  const int fd = openRecordFile(path);
  if (fd < 0) {
    return kNotOpened;
  }
  try {
    const auto text = readRecordFile(fd);
    JsonProtocol protocol(text, text->available_read());
    record.read(&protocol);
  } catch (...) {
    return kFailed;
  }
  return kDone;
}

}  // namespace tevra
