#include "store/record_file.h"

#include <unistd.h>

#include <memory>

#include <thrift/transport/TBufferTransports.h>

#include "records/json_protocol.h"
#include "records/record_file_access.h"

namespace tevra {
namespace {

using apache::thrift::transport::TBufferedTransport;

template <class Record>
int write(const std::string& path, const Record& record) {
  const int fd = createRecordFile(path);
  if (fd < 0) {
    return kRecordFileNotOpened;
  }
  try {
    const auto buffered = std::make_shared<TBufferedTransport>(owningTransport(fd));
    JsonProtocol protocol(buffered, 0);
    record.write(&protocol);
    // syncfs comes before the last buffer reaches the file; the sync after it makes that durable.
    (void)syncfs(fd);
    buffered->close();  // flushes, then closes the file
    sync();
  } catch (...) {
    return kRecordFileFailed;
  }
  return kRecordFileDone;
}

template <class Record>
int read(const std::string& path, Record& record) {
  const int fd = openRecordFile(path);
  if (fd < 0) {
    return kRecordFileNotOpened;
  }
  try {
    const auto text = readRecordFile(fd);
    JsonProtocol protocol(text, text->available_read());
    record.read(&protocol);
  } catch (...) {
    return kRecordFileFailed;
  }
  return kRecordFileDone;
}

}  // namespace

int writeRecordToFile(const std::string& path, const TableStoreFile& record) {
  return write(path, record);
}

int writeRecordToFile(const std::string& path, const EITTableVersionStoreFile& record) {
  return write(path, record);
}

int readRecordFromFile(const std::string& path, TableStoreFile& record) {
  return read(path, record);
}

int readRecordFromFile(const std::string& path, EITTableVersionStoreFile& record) {
  return read(path, record);
}

}  // namespace tevra
