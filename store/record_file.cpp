#include "store/record_file.h"

#include <unistd.h>

#include <cerrno>
#include <exception>
#include <map>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <type_traits>

#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>
#include <thrift/transport/TFDTransport.h>

#include "records/json_protocol.h"
#include "records/record_file_access.h"
#include "store/atomic_file.h"
#include "store/stored_entries.h"

namespace tevra {
namespace {

using apache::thrift::protocol::TJSONProtocol;
using apache::thrift::transport::TBufferedTransport;
using apache::thrift::transport::TFDTransport;
using apache::thrift::transport::TTransport;

constexpr uint32_t kBufferSize = kRecordFileBuffer;
constexpr uint32_t kNothingToRead = 0;

/** Versions that may be lost are better than none; PIDs are not. */
template <class Record>
constexpr bool kMustBeSynced = std::is_same_v<Record, PIDRemap>;

[[noreturn]] void raise(const std::string& what) {
  throw std::system_error(errno, std::generic_category(), what);
}

void writeText(TTransport& out, const std::string& text) {
  out.write(reinterpret_cast<const uint8_t*>(text.data()), static_cast<uint32_t>(text.size()));
}

void writeJson(const std::shared_ptr<TTransport>& out, const PIDRemap& record) {
  TJSONProtocol protocol(out);
  record.write(&protocol);
}

/** A record whose one field, with id 1, is a map: what the protocol would write of it. */
template <class Kept>
void writeJson(const std::shared_ptr<TTransport>& out, const std::map<int32_t, Kept>& entries) {
  writeText(*out, R"({"1":{"map":["i32","rec",)" + std::to_string(entries.size()) + ",{");
  const char* separator = "";
  for (const auto& [key, entry] : entries) {
    writeText(*out, separator + ('"' + std::to_string(key)) + "\":");
    writeText(*out, entry.text());
    separator = ",";
  }
  writeText(*out, "}]}}");
}

template <class Record>
void write(AtomicFile& file, const Record& record) {
  const auto buffered = std::make_shared<TBufferedTransport>(
      std::make_shared<TFDTransport>(file.descriptor()), kNothingToRead, kBufferSize);
  writeJson(buffered, record);
  if (syncfs(file.descriptor()) != 0 && kMustBeSynced<Record>) {
    raise("cannot sync the file system");
  }
  buffered->flush();
  if (lseek(file.descriptor(), 0, SEEK_CUR) > static_cast<off_t>(kMaxRecordFileSize)) {
    throw std::length_error("more than a start reads");
  }
  file.commit();
}

template <class Record>
void read(TFDTransport& file, Record& record) {
  JsonProtocol protocol(readRecordFile(file));
  record.read(&protocol);
}

/** Where there is no memory for the text, the reason is that. */
void giveReason(const std::exception& exception, std::string* reason) {
  try {
    if (reason != nullptr) {
      *reason = exception.what();
    }
  } catch (const std::bad_alloc&) {
    *reason = "no memory";  // short enough to need none
  }
}

}  // namespace

template <class Record>
RecordFileResult writeRecordToFile(const std::string& path, const Record& record,
                                   std::string* reason) {
  RecordFileResult result = kRecordFileNotOpened;
  const auto writeAt = [&](AtomicFile::Place place) {
    AtomicFile file(path, place);
    result = kRecordFileFailed;
    write(file, record);
  };
  try {
    try {
      writeAt(AtomicFile::Place::kBeside);
    } catch (const NotReplaceable&) {
      writeAt(AtomicFile::Place::kInPlace);
    }
    result = kRecordFileDone;
  } catch (const std::exception& exception) {
    giveReason(exception, reason);
  }
  return result;
}

template <class Record>
RecordFileResult readRecordFromFile(const std::string& path, Record& record, std::string* reason) {
  bool opened = false;
  try {
    const auto file = openRecordFile(path);
    opened = file->isOpen();
    if (!opened) {
      raise("cannot open");
    }
    read(*file, record);
    return kRecordFileDone;
  } catch (const std::bad_alloc&) {
    throw;  // the file may be whole
  } catch (const std::exception& exception) {
    giveReason(exception, reason);
  }
  return opened ? kRecordFileFailed : kRecordFileNotOpened;
}

template RecordFileResult writeRecordToFile(const std::string&, const StoredTablesMap&,
                                            std::string*);
template RecordFileResult writeRecordToFile(const std::string&, const StoredEITVersionsMap&,
                                            std::string*);
template RecordFileResult writeRecordToFile(const std::string&, const PIDRemap&, std::string*);
template RecordFileResult readRecordFromFile(const std::string&, TableStoreFile&, std::string*);
template RecordFileResult readRecordFromFile(const std::string&, EITTableVersionStoreFile&,
                                             std::string*);
template RecordFileResult readRecordFromFile(const std::string&, PIDRemap&, std::string*);

}  // namespace tevra
