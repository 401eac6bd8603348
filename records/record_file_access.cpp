#include "records/record_file_access.h"

#include <fcntl.h>

#include <algorithm>

namespace tevra {
namespace {

using apache::thrift::transport::TFDTransport;

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

RecordFileReader::RecordFileReader(int fd, uint64_t limit)
    : TVirtualTransport(fd, TFDTransport::CLOSE_ON_DESTROY), left_(limit) {}

uint32_t RecordFileReader::read(uint8_t* buffer, uint32_t size) {
  const auto wanted = static_cast<uint32_t>(std::min<uint64_t>(size, left_));
  const uint32_t got = wanted == 0 ? 0 : TFDTransport::read(buffer, wanted);
  left_ -= got;
  return got;
}

}  // namespace tevra
