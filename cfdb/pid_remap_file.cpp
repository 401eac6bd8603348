#include "cfdb/pid_remap_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <memory>

#include <thrift/transport/TFDTransport.h>

#include "records/json_protocol.h"

namespace tevra {
namespace {

using apache::thrift::transport::TFDTransport;

constexpr int kDone = 0;
constexpr int kNotOpened = -1;
constexpr int kFailed = -2;
constexpr mode_t kFileMode = 0600;

std::shared_ptr<TFDTransport> owningTransport(int fd) {
  return std::make_shared<TFDTransport>(fd, TFDTransport::CLOSE_ON_DESTROY);
}

}  // namespace

int writePIDRemapFile(const std::string& path, const PIDRemap& record) {
  const int fd = ::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, kFileMode);
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
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    return kNotOpened;
  }
  try {
    const auto transport = owningTransport(fd);
    JsonProtocol protocol(transport, fileSize(fd));
    record.read(&protocol);
  } catch (...) {
    return kFailed;
  }
  return kDone;
}

}  // namespace tevra
