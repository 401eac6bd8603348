#include "cfdb/pid_remap_file.h"

#include <unistd.h>

#include <thrift/protocol/TJSONProtocol.h>

namespace tevra {

RecordFileResult writePIDRemapFile(const std::string& path, const PIDRemap& record) {
  try {
    const auto file = createRecordFile(path);
    if (!file->isOpen()) {
      return kRecordFileNotOpened;
    }
    apache::thrift::protocol::TJSONProtocol protocol(file);
    record.write(&protocol);
    const bool synced = syncfs(file->getFD()) == 0;
    file->close();
    sync();
    return synced ? kRecordFileDone : kRecordFileFailed;
  } catch (...) {
    return kRecordFileFailed;
  }
}

RecordFileResult readPIDRemapFile(const std::string& path, PIDRemap& record) {
  return readRecord(path, record);
}

}  // namespace tevra
