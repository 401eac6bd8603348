#include "store/record_file.h"

#include <unistd.h>

#include <memory>

#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

namespace tevra {
namespace {

using apache::thrift::protocol::TJSONProtocol;
using apache::thrift::transport::TBufferedTransport;

template <class Record>
RecordFileResult write(const std::string& path, const Record& record) {
  try {
    const auto file = createRecordFile(path);
    if (!file->isOpen()) {
      return kRecordFileNotOpened;
    }
    const auto buffered = std::make_shared<TBufferedTransport>(file);
    TJSONProtocol protocol(buffered);
    record.write(&protocol);
    // syncfs comes before the last buffer reaches the file; the sync after it makes that durable.
    (void)syncfs(file->getFD());
    buffered->close();  // flushes, then closes the file
    sync();
  } catch (...) {
    return kRecordFileFailed;
  }
  return kRecordFileDone;
}

}  // namespace

RecordFileResult writeRecordToFile(const std::string& path, const TableStoreFile& record) {
  return write(path, record);
}

RecordFileResult writeRecordToFile(const std::string& path,
                                   const EITTableVersionStoreFile& record) {
  return write(path, record);
}

RecordFileResult readRecordFromFile(const std::string& path, TableStoreFile& record) {
  return readRecord(path, record);
}

RecordFileResult readRecordFromFile(const std::string& path, EITTableVersionStoreFile& record) {
  return readRecord(path, record);
}

}  // namespace tevra
