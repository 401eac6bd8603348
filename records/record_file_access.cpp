#include "records/record_file_access.h"

#include <fcntl.h>

#include <algorithm>

namespace tevra {
namespace {

using apache::thrift::transport::TFDTransport;
using apache::thrift::transport::TMemoryBuffer;

constexpr mode_t kFileMode = 0600;

}  // namespace

int openRecordFile(const std::string& path) {
  return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
}

int createRecordFile(const std::string& path) {
  constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK;
  return ::open(path.c_str(), kFlags, kFileMode);
}

std::shared_ptr<TFDTransport> owningTransport(int fd) {
  return std::make_shared<TFDTransport>(fd, TFDTransport::CLOSE_ON_DESTROY);
}

std::shared_ptr<TMemoryBuffer> readRecordFile(int fd, size_t limit) {
  constexpr size_t kBlock = size_t{16} * 1024;
  const auto file = owningTransport(fd);
  auto text = std::make_shared<TMemoryBuffer>();
  for (size_t left = limit; left > 0;) {
    const auto wanted = static_cast<uint32_t>(std::min(kBlock, left));
    const uint32_t got = file->read(text->getWritePtr(wanted), wanted);
    if (got == 0) {
      break;
    }
    text->wroteBytes(got);
    left -= got;
  }
  return text;
}

}  // namespace tevra
