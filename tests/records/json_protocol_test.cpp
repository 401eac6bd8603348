#include "records/json_protocol.h"

#include <functional>
#include <limits>
#include <map>

#include <gtest/gtest.h>

#include "tests/records/sample_records.h"
#include "tests/records/wire.h"

namespace tevra::test {
namespace {

using apache::thrift::protocol::T_I32;
using apache::thrift::protocol::TProtocol;
using apache::thrift::protocol::TProtocolException;
using apache::thrift::protocol::TType;

template <class Record>
void readJson(const std::string& json, Record& record) {
  JsonProtocol protocol(memoryOf(json));
  record.read(&protocol);
}

/** The kind of TProtocolException that reading `json` raises; -1: none. */
template <class Record>
int exceptionKind(const std::string& json, Record& record) {
  try {
    readJson(json, record);
  } catch (const TProtocolException& exception) {
    return exception.getType();
  }
  return -1;
}

/** The byte that `text`, a JSON number, is read as. */
int byteOf(const std::string& text) {
  JsonProtocol protocol(memoryOf(text + " "));
  int8_t byte = 0;
  protocol.readByte(byte);
  return byte;
}

TEST(JsonProtocol, ReadsBytesSignedAndUnsigned) {
  EXPECT_EQ(byteOf("0"), 0);
  EXPECT_EQ(byteOf("127"), 127);
  EXPECT_EQ(byteOf("-128"), -128);
  EXPECT_EQ(byteOf("255"), -1);
}

TEST(JsonProtocol, RefusesNumbersThatAreNoByte) {
  for (const char* text : {"256", "300", "-129", "32767", "-32768"}) {
    EXPECT_THROW(byteOf(text), TProtocolException) << text;
  }
}

TEST(JsonProtocol, AByteOf300InAFileIsAnErrorAndNotTheEnd) {
  for (const char* json :
       {"{\"1\":{\"i8\":300}}", "{\"7\":{\"i8\":256}}", "{\"7\":{\"lst\":[\"i8\",2,1,300]}}",
        "{\"7\":{\"map\":[\"i8\",\"i8\",1,{\"1\":-129}]}}"}) {
    TableStoreFile file;
    EXPECT_EQ(exceptionKind(json, file), TProtocolException::INVALID_DATA) << json;
  }
}

TEST(JsonProtocol, ReadsBools) {
  for (const auto& [number, expected] : std::map<std::string, bool>{
           {"0", false}, {"1", true}, {"2", true}, {"-1", true}, {"256", true}, {"32767", true}}) {
    PAT pat;
    pat.currentNext = !expected;
    readJson("{\"3\":{\"tf\":" + number + "}}", pat);
    EXPECT_EQ(pat.currentNext, expected) << number;
  }
}

TEST(JsonProtocol, RefusesWhatIsNoBool) {
  for (const char* text : {"", "-", "\"1\"", "true", "32768", "-32769", "1.0"}) {
    PAT pat;
    EXPECT_EQ(exceptionKind("{\"3\":{\"tf\":" + std::string(text) + "}}", pat),
              TProtocolException::INVALID_DATA)
        << text;
    EXPECT_FALSE(pat.currentNext);
  }
}

TEST(JsonProtocol, ABytewiseFieldThatNobodyKnowsIsSkipped) {
  TableStoreFile file;
  readJson("{\"7\":{\"i8\":255},\"1\":{\"map\":[\"i32\",\"rec\",1,{\"5\":{}}]}}", file);
  EXPECT_EQ(file.tableStores.count(5), 1U);
}

TEST(JsonProtocol, AListThatClaims50MillionElementsIsRefused) {
  PMT pmt;
  EXPECT_EQ(exceptionKind("{\"5\":{\"lst\":[\"rec\",50000000]}}", pmt),
            TProtocolException::SIZE_LIMIT);
  EXPECT_EQ(pmt.descriptors.capacity(), 0U);
}

TEST(JsonProtocol, CountsWhoseBytesWrapToLittleIn32BitsAreRefused) {
  // By the library, where it does not wrap, or here; no room is tried to be made.
  for (const char* list : {"[\"rec\",2147483649]", "[\"str\",2147483649,\"\"]",
                           "[\"rec\",536870913]", "[\"i64\",536870913,1]"}) {
    PMT pmt;
    EXPECT_THROW(readJson("{\"5\":{\"lst\":" + std::string(list) + "}}", pmt),
                 apache::thrift::TException)
        << list;
    EXPECT_EQ(pmt.descriptors.capacity(), 0U);
  }
}

TEST(JsonProtocol, AnyContainerThatClaimsMoreElementsThanItsInputHasBytesIsRefused) {
  for (const char* json :
       {"{\"5\":{\"lst\":[\"rec\",100]}}", "{\"99\":{\"lst\":[\"rec\",100]}}",
        "{\"99\":{\"set\":[\"rec\",100]}}", "{\"99\":{\"map\":[\"i32\",\"rec\",100,{}]}}"}) {
    PMT pmt;
    EXPECT_EQ(exceptionKind(json, pmt), TProtocolException::SIZE_LIMIT) << json;
  }
}

/** The kind of exception for `start` and as many blanks as make it `size` bytes. */
template <class Record>
int kindOf(const std::string& start, size_t size, Record& record) {
  return exceptionKind(start + std::string(size - start.size(), ' '), record);
}

TEST(JsonProtocol, MoreRecordsThanTheirTextHasRoomForAreRefused) {
  for (const char* type : {"rec", "i8"}) {  // generated code makes room for records all the same
    const std::string list = "{\"5\":{\"lst\":[\"" + std::string(type) + "\",100000,";
    constexpr size_t kText = (1 + size_t{100000}) * kSmallestRecord;  // the PMT is one, too
    PMT pmt;
    EXPECT_EQ(kindOf(list, kText - 1, pmt), TProtocolException::SIZE_LIMIT);
    EXPECT_EQ(pmt.descriptors.capacity(), 0U);
    EXPECT_EQ(kindOf(list, kText, pmt), TProtocolException::INVALID_DATA);
  }
}

/** A map entry or list element of a record, `count` times, with keys from `key` on. */
std::string emptyRecords(int count, int key = -1) {
  std::string text;
  for (int written = 0; written < count; ++written) {
    text += written == 0 ? "" : ",";
    text += key < 0 ? "{}" : "\"" + std::to_string(key + written) + "\":{}";
  }
  return text;
}

TEST(JsonProtocol, RecordsOfAllContainersAreCountedTogether) {
  const std::string two =
      "{\"5\":{\"lst\":[\"rec\",40000," + emptyRecords(40000) + "]},\"6\":{\"lst\":[\"rec\",60000,";
  constexpr size_t kText = (1 + size_t{100000}) * kSmallestRecord;
  PMT pmt;
  EXPECT_EQ(kindOf(two, kText - 1, pmt), TProtocolException::SIZE_LIMIT);
  EXPECT_EQ(pmt.esList.capacity(), 0U);
  EXPECT_EQ(kindOf(two, kText, pmt), TProtocolException::INVALID_DATA);
}

TEST(JsonProtocol, RecordsOfAMapAreCountedAsTheyCome) {
  const std::string map =
      "{\"1\":{\"map\":[\"i32\",\"rec\",100000,{" + emptyRecords(100000, 100000) + "}]}}";
  constexpr size_t kText = (1 + size_t{100000}) * kSmallestRecord;
  TableStoreFile file;
  EXPECT_EQ(kindOf(map, kText - 1, file), TProtocolException::SIZE_LIMIT);
  EXPECT_EQ(kindOf(map, kText, file), -1);
  EXPECT_EQ(file.tableStores.size(), 100000U);
}

TEST(JsonProtocol, ASmallTextMayHaveAFewThousandRecords) {
  TableStoreFile file;
  readJson("{\"1\":{\"map\":[\"i32\",\"rec\",2000,{" + emptyRecords(2000, 0) + "}]}}", file);
  EXPECT_EQ(file.tableStores.size(), 2000U);
}

TEST(JsonProtocol, NoRecordOfTheFilesIsSavedInLessTextThanTheSmallest) {
  EXPECT_EQ(jsonOf(PATProgram()).size(), kSmallestRecord);
  for (const size_t size :
       {jsonOf(Descriptor()).size(), jsonOf(SDTService()).size(), jsonOf(PMTES()).size(),
        jsonOf(EITTableVersionStore()).size(), jsonOf(TableStore()).size()}) {
    EXPECT_LE(kSmallestRecord, size);
  }
}

/** What is read of `record` as it is saved. */
template <class Record>
Record readBack(const Record& record) {
  Record read;
  readJson(jsonOf(record), read);
  return read;
}

TEST(JsonProtocol, StoresOfNothingButTheSmallestRecordsAreReadBack) {
  TableStore tables;
  tables.pat.programs.resize(10000);
  tables.sdt.services.resize(10000);
  tables.pmt.descriptors.resize(10000);
  tables.pmt.esList.resize(10000);
  tables.pmt.esList[9999].descriptors.resize(10000);
  TableStoreFile tableFile;
  EITTableVersionStoreFile versionFile;
  PIDRemap remap;
  for (int32_t key = -5000; key < 5000; ++key) {
    tableFile.tableStores[key];
    versionFile.versionStores[key];
    remap.inputToOutput[key] = 0;
  }
  EXPECT_EQ(readBack(tables), tables);
  EXPECT_EQ(readBack(tableFile), tableFile);
  EXPECT_EQ(readBack(versionFile), versionFile);
  EXPECT_EQ(readBack(remap), remap);
}

TEST(JsonProtocol, ANegativeSizeIsRefused) {
  for (const char* json : {"{\"5\":{\"lst\":[\"rec\",-1]}}", "{\"99\":{\"set\":[\"rec\",-1]}}",
                           "{\"99\":{\"map\":[\"i32\",\"rec\",-1,{}]}}"}) {
    PMT pmt;
    EXPECT_THROW(readJson(json, pmt), std::exception) << json;
    EXPECT_EQ(pmt.descriptors.capacity(), 0U);
  }
}

/** Reads a container's head through the base class, as Thrift's generic functions do. */
using ReadHead = std::function<uint32_t(TProtocol&)>;

/** `json` is the head of a container of 24 elements. */
void expectBound(const std::string& json, const ReadHead& readHead) {
  JsonProtocol exact(memoryOf(json + std::string(24 - json.size(), ' ')));
  EXPECT_EQ(readHead(exact), 24U);
  JsonProtocol tooSmall(memoryOf(json + std::string(23 - json.size(), ' ')));
  EXPECT_THROW(readHead(tooSmall), TProtocolException);
}

TEST(JsonProtocol, AContainerMayHaveAsManyElementsAsItsInputHasBytes) {
  TType type = T_I32;
  uint32_t size = 0;
  expectBound("[\"i32\",24,1,2]", [&](TProtocol& protocol) {
    protocol.readListBegin(type, size);
    return size;
  });
  expectBound("[\"i32\",24,1,2]", [&](TProtocol& protocol) {
    protocol.readSetBegin(type, size);
    return size;
  });
  expectBound("[\"i32\",\"i32\",24,{}]", [&](TProtocol& protocol) {
    protocol.readMapBegin(type, type, size);
    return size;
  });
}

TEST(JsonProtocol, TheChecksHoldThroughTheBaseClass) {
  JsonProtocol protocol(memoryOf("300 "));
  TProtocol& base = protocol;
  int8_t byte = 0;
  EXPECT_THROW(base.readByte(byte), TProtocolException);
}

TEST(JsonProtocol, TruncationAtEveryOffsetIsAnError) {
  const std::string json = jsonOf(sample<TableStoreFile>());
  for (size_t length = 0; length < json.size(); ++length) {
    TableStoreFile file;
    EXPECT_THROW(readJson(json.substr(0, length), file), std::exception) << length;
  }
}

TEST(JsonProtocol, TruncationKeepsWhatWasRead) {
  const PIDRemap whole = sample<PIDRemap>();
  const std::string json = jsonOf(whole);
  PIDRemap remap;
  EXPECT_THROW(readJson(json.substr(0, json.find("\"4\":{")), remap), std::exception);
  EXPECT_EQ(remap.transportStreamId, whole.transportStreamId);
  EXPECT_EQ(remap.inputToOutput, whole.inputToOutput);
  EXPECT_EQ(remap.outputToInput, whole.outputToInput);
  EXPECT_EQ(remap.nextPIDCounter, 0);
}

TEST(JsonProtocol, TrailingJunkIsAccepted) {
  const PIDRemap whole = sample<PIDRemap>();
  for (const char* junk : {" ", "\n", "}", "{\"1\":{\"i32\":7}}", "garbage", "\xFF"}) {
    PIDRemap remap;
    readJson(jsonOf(whole) + junk, remap);
    EXPECT_EQ(remap, whole) << junk;
  }
}

TEST(JsonProtocol, AnEmptyRecordIsAccepted) {
  PIDRemap remap;
  readJson("{}", remap);
  EXPECT_EQ(remap, PIDRemap());
}

TEST(JsonProtocol, UnknownFieldsOfEveryTypeAreSkipped) {
  PIDRemap remap;
  readJson(
      "{\"91\":{\"tf\":1},\"92\":{\"i8\":1},\"93\":{\"i16\":1},\"94\":{\"i32\":1},"
      "\"95\":{\"i64\":1},\"96\":{\"dbl\":1.5},\"97\":{\"str\":\"dGV4\"},"
      "\"98\":{\"rec\":{\"1\":{\"i32\":1}}},\"99\":{\"lst\":[\"i32\",2,1,2]},"
      "\"100\":{\"set\":[\"i32\",1,1]},\"101\":{\"map\":[\"i32\",\"str\",1,{\"1\":\"a\"}]},"
      "\"4\":{\"i32\":42}}",
      remap);
  EXPECT_EQ(remap.nextPIDCounter, 42);
}

TEST(JsonProtocol, UnknownDoublesOfEveryKindAreSkipped) {
  PIDRemap remap;
  readJson(
      "{\"9\":{\"lst\":[\"dbl\",6,0,-1.5,1e+300,\"NaN\",\"Infinity\",\"-Infinity\"]},"
      "\"10\":{\"map\":[\"dbl\",\"dbl\",2,{\"-2.5e-07\":3,\"NaN\":4}]},\"4\":{\"i32\":42}}",
      remap);
  EXPECT_EQ(remap.nextPIDCounter, 42);
}

TEST(JsonProtocol, NestingWithoutEndIsRefused) {
  std::string json;
  for (int depth = 0; depth < 100000; ++depth) {
    json += "{\"99\":{\"rec\":";
  }
  PIDRemap remap;
  EXPECT_EQ(exceptionKind(json, remap), TProtocolException::DEPTH_LIMIT);
}

TEST(JsonProtocol, NothingThatIsNoRecordIsRead) {
  for (const char* text :
       {"", " ", "[", "]", "null", "0", "\"1\"", "{\"1\"", "{\"1\":}", "{\"x\":{\"i32\":1}}",
        "{\"1\":{\"wat\":1}}", "{\"4\":{\"u32\":1}}", "{\"1\":{\"i32\":x}}"}) {
    PIDRemap remap;
    EXPECT_THROW(readJson(text, remap), std::exception) << text;
  }
  PIDRemap remap;
  EXPECT_THROW(readJson(std::string(4096, '\0'), remap), std::exception);
}

/** The data of a descriptor that holds `text` between its quotes. */
std::string dataOf(const std::string& text) {
  Descriptor descriptor;
  readJson("{\"2\":{\"str\":\"" + text + "\"}}", descriptor);
  return descriptor.data;
}

TEST(JsonProtocol, ReadsBase64WithAndWithoutPadding) {
  for (const char* text : {"YQ", "YQ=", "YQ==", "\\u0059Q", "Y\\u0000Q"}) {
    EXPECT_EQ(dataOf(text), "a") << text;
  }
  EXPECT_EQ(dataOf("YWI="), "ab");
  EXPECT_EQ(dataOf("YWJjZ"), "abc");  // with one digit of the next
  EXPECT_EQ(dataOf("="), "");
}

TEST(JsonProtocol, RefusesBase64OfNothingButPadding) {
  EXPECT_THROW((void)dataOf("=="), TProtocolException);  // the library reads far beyond it
}

TEST(JsonProtocol, RefusesEscapesThatNothingWrites) {
  for (const char* text :
       {"\\/", "\\a", "\\u0080", "\\u0100", "\\ud83d\\ude00", "\\u001F", "\\u1"}) {
    EXPECT_THROW((void)dataOf(text), TProtocolException) << text;
  }
}

TEST(JsonProtocol, ANumberAtTheEndOfItsTextIsNotTaken) {
  PIDRemap remap;
  EXPECT_THROW(readJson("{\"4\":{\"i32\":12", remap), apache::thrift::TException);
  EXPECT_EQ(remap.nextPIDCounter, 0);  // it may have been 123
}

TEST(JsonProtocol, BinaryMembersKeepEveryByteValue) {
  TableStoreFile whole;
  Descriptor& descriptor = whole.tableStores[1].pmt.descriptors.emplace_back();
  for (int value = 0; value < 256; ++value) {
    descriptor.data.push_back(static_cast<char>(value));
  }
  TableStoreFile file;
  readJson(jsonOf(whole), file);
  EXPECT_EQ(file, whole);
}

}  // namespace
}  // namespace tevra::test
