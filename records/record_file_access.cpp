#include "records/record_file_access.h"

#include <fcntl.h>

#include <algorithm>
#include <cstdint>

namespace tevra {
namespace {

using apache::thrift::transport::TFDTransport;
using apache::thrift::transport::TMemoryBuffer;
using apache::thrift::transport::TTransportException;

constexpr int kNotOpen = -1;

/** The bytes read, 0 at the end of what can be read. */
uint32_t readBlock(TFDTransport& file, uint8_t* block, uint32_t size) {
  try {
    return file.read(block, size);
  } catch (const TTransportException&) {
    return 0;
  }
}

}  // namespace

std::shared_ptr<TFDTransport> openRecordFile(const std::string& path) {
  // The owner comes first: when there is no memory for it, nothing has been opened.
  auto file = std::make_shared<TFDTransport>(kNotOpen, TFDTransport::CLOSE_ON_DESTROY);
  file->setFD(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  return file;
}

std::shared_ptr<TMemoryBuffer> readRecordFile(TFDTransport& file, size_t limit) {
  constexpr size_t kBlock = size_t{16} * 1024;
  auto text = std::make_shared<TMemoryBuffer>();
  for (size_t left = limit; left > 0;) {
    const auto wanted = static_cast<uint32_t>(std::min(kBlock, left));
    const uint32_t got = readBlock(file, text->getWritePtr(wanted), wanted);
    if (got == 0) {
      break;
    }
    text->wroteBytes(got);
    left -= got;
  }
  return text;
}

}  // namespace tevra
