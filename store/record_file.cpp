#include "store/record_file.h"

#include <unistd.h>

#include <memory>
#include <utility>

#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TFDTransport.h>

#include "records/json_protocol.h"
#include "records/record_file_access.h"

namespace tevra {
namespace {

using apache::thrift::transport::TBufferedTransport;
using apache::thrift::transport::TFDTransport;

/** JSON over a 512-byte buffer over an open file. */
class RecordTransports {
 public:
  RecordTransports(std::shared_ptr<TFDTransport> file, uint64_t inputSize)
      : file_(std::move(file)),
        buffered_(std::make_shared<TBufferedTransport>(file_)),
        protocol_(buffered_, inputSize) {
    file_->flush();
    buffered_->open();
  }

  JsonProtocol& protocol() { return protocol_; }

  /** Flushes what is buffered, then closes the descriptor. */
  void close() { buffered_->close(); }

 private:
  std::shared_ptr<TFDTransport> file_;
  std::shared_ptr<TBufferedTransport> buffered_;
  JsonProtocol protocol_;
};

template <class Record>
int write(const std::string& path, const Record& record) {
  const int fd = createRecordFile(path);
  if (fd < 0) {
    return kRecordFileNotOpened;
  }
  try {
    RecordTransports transports(owningTransport(fd), 0);
    record.write(&transports.protocol());
    // syncfs comes before the last buffer reaches the file; the sync after it makes that durable.
    (void)syncfs(fd);
    transports.close();
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
    RecordTransports transports(std::make_shared<RecordFileReader>(fd), fileSize(fd));
    record.read(&transports.protocol());
    transports.close();
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
