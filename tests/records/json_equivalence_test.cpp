#include <string>
#include <utility>

#include <gtest/gtest.h>
#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/protocol/TVirtualProtocol.h>

#include "records/json_protocol.h"
#include "tests/records/sample_records.h"
#include "tests/records/wire.h"

// Whole and damaged texts, read by JsonProtocol and by the library.

namespace tevra::test {
namespace {

using apache::thrift::TException;
using apache::thrift::protocol::TJSONProtocol;
using apache::thrift::protocol::TProtocolException;
using apache::thrift::protocol::TType;
using apache::thrift::protocol::TVirtualProtocol;
using apache::thrift::transport::TMemoryBuffer;

/** The library's protocol, kept from ending the process and from taking all memory. */
class LibraryProtocol : public TVirtualProtocol<LibraryProtocol, TJSONProtocol> {
 public:
  explicit LibraryProtocol(const std::shared_ptr<TMemoryBuffer>& text) : TVirtualProtocol(text) {}

  uint32_t readByte(int8_t& byte) {
    int16_t number = 0;
    readI16(number);
    if (number < INT8_MIN || number > UINT8_MAX) {
      throw TProtocolException(TProtocolException::INVALID_DATA);
    }
    byte = static_cast<int8_t>(number);
    return 0;
  }

  uint32_t readListBegin(TType& type, uint32_t& size) {
    constexpr uint32_t kMany = 10000;
    TJSONProtocol::readListBegin(type, size);
    if (size > kMany) {
      throw TProtocolException(TProtocolException::SIZE_LIMIT);
    }
    return 0;
  }
};

enum class Outcome { kRead, kRefused, kRefusedNumberOrSize };

template <class Protocol, class Record>
Outcome outcomeOf(const std::string& json, Record& record) {
  Protocol protocol(memoryOf(json));
  try {
    record.read(&protocol);
    return Outcome::kRead;
  } catch (const TProtocolException& exception) {
    return exception.getType() == TProtocolException::SIZE_LIMIT ||
                   std::string(exception.what()).find("no number of its type") == 0
               ? Outcome::kRefusedNumberOrSize
               : Outcome::kRefused;
  } catch (const TException&) {
    return Outcome::kRefused;
  }
}

/** Whether it has what the library reads and JsonProtocol does not: data of padding alone, and of
 * newer versions a type "u...", taken for an unsigned number. */
bool isReadByTheLibraryAlone(const std::string& json) {
  return json.find("\"==\"") != std::string::npos || json.find("\"u") != std::string::npos;
}

/** Reads the same from `json` as the library does, also of what comes before a fault. The library
 * lets pass, or saturates, some of the numbers that are none. */
template <class Record>
void expectTheSame(const std::string& json) {
  Record record;
  Record librarys;
  const Outcome outcome = outcomeOf<JsonProtocol>(json, record);
  if (outcome == Outcome::kRefusedNumberOrSize || isReadByTheLibraryAlone(json)) {
    return;
  }
  EXPECT_EQ(outcomeOf<LibraryProtocol>(json, librarys) == Outcome::kRead, outcome == Outcome::kRead)
      << json;
  EXPECT_EQ(record, librarys) << json;
}

constexpr char kUnknownMembers[] =
    "{\"91\":{\"tf\":1},\"92\":{\"i8\":1},\"97\":{\"str\":\"d\\\"\\\\\\n\\u001fV4\"},"
    "\"98\":{\"rec\":{\"1\":{\"i32\":1}}},\"100\":{\"set\":[\"i16\",2,1,-2]},"
    "\"101\":{\"map\":[\"lst\",\"str\",2,{[\"i64\",1,7]:\"a\",[\"i64\",0]:\"\"}]},"
    "\"102\":{\"map\":[\"rec\",\"map\",1,{{}:[\"str\",\"tf\",1,{\"k\":0}]}]},\"4\":{\"i32\":42}}";

/** Texts, and what they hold. */
template <class Record>
struct Text;
template <>
struct Text<TableStore> {
  static std::string whole() {
    TableStore store;
    store.restartCounter = -3;
    store.pat.programs.resize(2);
    store.pat.programs[1].pid = 8191;
    store.pmt.currentNext = true;
    store.pmt.esList.resize(1);
    for (const char* bytes : {"", "\xFB", "\x01\x02", "abc", "\xFE\xFF\x7F\x3E"}) {
      store.pmt.esList[0].descriptors.emplace_back().data = bytes;
    }
    return jsonOf(store);
  }
};
template <>
struct Text<EITTableVersionStoreFile> {
  static std::string whole() { return jsonOf(sample<EITTableVersionStoreFile>()); }
};
template <>
struct Text<PIDRemap> {
  static std::string whole() { return kUnknownMembers; }
};

template <class Record>
class JsonOf : public ::testing::Test {};

using Records = ::testing::Types<TableStore, EITTableVersionStoreFile, PIDRemap>;
TYPED_TEST_SUITE(JsonOf, Records, RecordName);

TYPED_TEST(JsonOf, ARecordIsReadAsTheLibraryReadsIt) {
  TypeParam record;
  EXPECT_EQ(outcomeOf<JsonProtocol>(Text<TypeParam>::whole(), record), Outcome::kRead);
  expectTheSame<TypeParam>(Text<TypeParam>::whole());
}

TYPED_TEST(JsonOf, ADamagedRecordIsReadOrRefusedAsTheLibraryDoes) {
  const std::string whole = Text<TypeParam>::whole();
  for (size_t offset = 0; offset < whole.size(); ++offset) {
    expectTheSame<TypeParam>(whole.substr(0, offset));
    expectTheSame<TypeParam>(std::string(whole).erase(offset, 1));
    for (const char character : std::string("{}[]\",:\\0-.=u i\x80")) {
      std::string changed = whole;
      changed[offset] = character;
      expectTheSame<TypeParam>(changed);
      expectTheSame<TypeParam>(std::string(whole).insert(offset, 1, character));
    }
  }
}

}  // namespace
}  // namespace tevra::test
