#include <gtest/gtest.h>

#include <cstdint>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/messages.h"
#include "tests/system/hostile_clients.h"
#include "tests/system/recorded_calls.h"

// What is wrong with messages in frames of the right size; after each test the next client is
// served and nothing has grown.

namespace tevra::test {
namespace {

using apache::thrift::TApplicationException;
using testing::PrintToString;
using Kind = Answer::Kind;

// Types of the binary protocol.
constexpr int kBool = 2;
constexpr int kByte = 3;
constexpr int kI32 = 8;
constexpr int kString = 11;
constexpr int kStruct = 12;
constexpr int kMap = 13;
constexpr int kSet = 14;
constexpr int kList = 15;

/** Kilobytes that a message of a few bytes may need for a moment: far less than it claims, and more
 * than the kernel's count of pages is off by. */
constexpr int64_t kSmall = 2048;

/** Sizes that no small frame holds; the last two are negative. */
const std::vector<uint32_t> kClaims = {0x7FFFFFFF, 50'000'000, 1'000'000, 0x80000000, 0xFFFFFFFF};

std::string letter(int code) {
  return {static_cast<char>(code)};
}

TEST_F(HostileClients, ThatOverstateAnySizeInAnyCallAreRefusedAndCostNothing) {
  const int64_t growth = peakGrowth([&] {
    for (const RecordedCall& call : everyCall()) {
      for (const size_t offset : call.sizes) {
        for (const uint32_t claim : kClaims) {
          const std::string message = withBytes(call.message, offset, bigEndian(claim));
          EXPECT_EQ(answerTo(message).kind, Kind::kNone)
              << call.method << ", " << claim << " at " << offset;
        }
      }
    }
  });
  expectMemoryBelow(kSmall, growth);
}

/** Beginnings of messages, up to the size of something. */
std::vector<std::string> beginningsUpToASize() {
  const std::string pmt = messageHead("setPMT") + fieldHead(kStruct, 1);
  const std::string nit = messageHead("setNIT") + fieldHead(kStruct, 1);
  const std::string sdt = messageHead("setSDT") + fieldHead(kStruct, 1);
  const std::string request = messageHead("getSrvOutputData") + fieldHead(kStruct, 1);
  return {
      // Lists of records, also under the name of another element type.
      messageHead("setPAT") + fieldHead(kStruct, 1) + fieldHead(kList, 4) + letter(kStruct),
      sdt + fieldHead(kList, 6) + letter(kStruct),
      pmt + fieldHead(kList, 5) + letter(kStruct),
      pmt + fieldHead(kList, 6) + letter(kStruct),
      pmt + fieldHead(kList, 6) + letter(kBool),
      nit + fieldHead(kList, 7) + letter(kStruct),
      // Maps.
      messageHead("setEITSchedule") + fieldHead(kMap, 1) + letter(kI32) + letter(kMap),
      request + fieldHead(kMap, 2) + letter(kI32) + letter(kStruct),
      request + fieldHead(kMap, 3) + letter(kI32) + letter(kList),
      // Texts: a member, a method's name, and the same of a client of old.
      messageHead("SISetData") + fieldHead(kStruct, 1) + fieldHead(kString, 1),
      messageHead("").substr(0, 4),
      "",
      // What is skipped: members and arguments that nobody knows or of another type.
      pmt + fieldHead(kList, 9) + letter(kByte),
      pmt + fieldHead(kList, 9) + letter(0),
      pmt + fieldHead(kSet, 9) + letter(kByte),
      pmt + fieldHead(kMap, 9) + letter(kBool) + letter(kBool),
      pmt + fieldHead(kString, 9),
      pmt + fieldHead(kList, 1) + letter(kStruct),
      messageHead("setPMT") + fieldHead(kList, 1) + letter(kStruct),
      messageHead("noSuchMethod") + fieldHead(kList, 1) + letter(kStruct),
  };
}

TEST_F(HostileClients, OfFortyBytesNeverMakeTheDaemonAllocateMoreThanTheirFrameCouldHold) {
  constexpr size_t kBytes = 40;
  for (const std::string& beginning : beginningsUpToASize()) {
    for (const uint32_t claim : kClaims) {
      std::string message = beginning + bigEndian(claim);
      ASSERT_LE(message.size(), kBytes);
      message.resize(kBytes);
      int64_t mapped = 0;
      const int64_t peak = peakGrowth(
          [&] { mapped = mappedGrowth([&] { EXPECT_EQ(answerTo(message).kind, Kind::kNone); }); });
      const std::string what = PrintToString(beginning) + std::to_string(claim);
      expectMemoryBelow(kSmall, peak, what);
      expectMemoryBelow(kSmall, mapped, what);
    }
  }
}

constexpr uint32_t kVeryMany = 1'200'000;

/** Lists and maps of empty records, honestly and under the names of other elements. */
std::vector<std::string> callsOfEmptyRecords() {
  const std::string pmt = messageHead("setPMT") + fieldHead(kStruct, 1);
  std::vector<std::string> calls;
  for (const int type : {kBool, kI32, kStruct}) {
    calls.push_back(pmt + fieldHead(kList, 5) + letter(type));
    calls.push_back(pmt + fieldHead(kList, 6) + letter(type));
    calls.push_back(messageHead("getSrvOutputData") + fieldHead(kStruct, 1) + fieldHead(kMap, 2) +
                    letter(type) + letter(type));
  }
  for (std::string& call : calls) {
    call += bigEndian(kVeryMany) + std::string(size_t{kVeryMany} * 8, '\0');
  }
  return calls;
}

/** A schedule of services without a table. */
std::string callOfEmptyMaps() {
  std::string call = messageHead("setEITSchedule") + fieldHead(kMap, 1) + letter(kI32) +
                     letter(kMap) + bigEndian(kVeryMany);
  for (uint32_t service = 0; service < kVeryMany; ++service) {
    call += bigEndian(service) + letter(kI32) + letter(kStruct) + bigEndian(0);
  }
  return call + '\0';
}

TEST_F(HostileClients, ThatSendRecordsByTheMillionCostLittleMoreThanTheirFrame) {
  std::vector<std::string> calls = callsOfEmptyRecords();
  calls.push_back(callOfEmptyMaps());
  for (const std::string& call : calls) {
    const auto frame = static_cast<int64_t>(call.size() / 1024);
    expectMemoryBelow(2 * frame, peakGrowth([&] { (void)answerTo(call); }),
                      PrintToString(call.substr(0, 40)));
  }
}

/** An unknown member of `depth` containers within containers of a type. */
std::string nested(int type, int depth) {
  std::string deeper;
  std::string end = bigEndian(0);
  switch (type) {
    case kStruct:
      deeper = fieldHead(kStruct, 9);
      end = std::string(static_cast<size_t>(depth) + 1, '\0');
      break;
    case kMap:
      deeper = letter(kByte) + letter(kMap) + bigEndian(1) + '\0';
      end = letter(kByte) + letter(kByte) + end;
      break;
    default:
      deeper = letter(type) + bigEndian(1);
      end = letter(kByte) + end;
  }
  std::string field = fieldHead(type, 9);
  for (int level = 0; level < depth; ++level) {
    field += deeper;
  }
  return field + end;
}

/** An unknown member of maps that have maps as their keys. */
std::string nestedKeys(int depth) {
  std::string field = fieldHead(kMap, 9);
  for (int level = 0; level < depth; ++level) {
    field += letter(kMap) + letter(kByte) + bigEndian(1);
  }
  field += letter(kByte) + letter(kByte) + bigEndian(0);
  return field.append(static_cast<size_t>(depth), '\0');
}

/** Calls that hold `field` beside their arguments, within their record, and in place of both. */
std::vector<std::pair<std::string, std::string>> callsWith(const std::string& field) {
  const std::string ends(2, '\0');
  return {{"setPMT", messageHead("setPMT") + field + ends},
          {"setPMT", messageHead("setPMT") + fieldHead(kStruct, 1) + field + ends},
          {"setCAT", messageHead("setCAT") + fieldHead(kStruct, 1) + fieldHead(kList, 3) +
                         letter(kStruct) + bigEndian(1) + field + std::string(3, '\0')},
          {"setPMT", messageHead("setPMT") + fieldHead(field[0], 1) + field.substr(3) + ends}};
}

std::vector<std::string> nestedFields(int depth) {
  return {nested(kStruct, depth), nested(kList, depth), nested(kSet, depth), nested(kMap, depth),
          nestedKeys(depth)};
}

TEST_F(HostileClients, ThatNestTenThousandLevelsDeepAreRefused) {
  for (const int depth : {100, 10'000}) {
    for (const std::string& field : nestedFields(depth)) {
      EXPECT_EQ(answerTo(messageHead("noSuchMethod") + field + '\0').kind, Kind::kNone) << depth;
      for (const auto& [method, message] : callsWith(field)) {
        EXPECT_EQ(answerTo(message).kind, Kind::kNone) << method << ", " << depth << " levels";
      }
    }
  }
}

TEST_F(HostileClients, MayNestWhatNobodyKnowsALittle) {
  for (const std::string& field : nestedFields(30)) {
    for (const auto& [method, message] : callsWith(field)) {
      expectReply(method, message);
    }
  }
}

/** Another type for the `number`th of many: all have their turn, known ones and others. */
std::string nextType(size_t number) {
  constexpr int kUnknown[] = {0, 1, 5, 7, 16, 127, 255};
  const std::vector<int>& known = fieldTypes();
  const size_t turn = number % (known.size() + std::size(kUnknown));
  return letter(turn < known.size() ? known[turn] : kUnknown[turn - known.size()]);
}

TEST_F(HostileClients, ThatChangeTheTypeOfAnyFieldDoNoHarm) {
  size_t number = 0;
  for (const RecordedCall& call : everyCall()) {
    for (const FieldPlace& field : call.fields) {
      for (int time = 0; time < 5; ++time) {
        (void)answerTo(withBytes(call.message, field.begin, nextType(number++)));
      }
    }
  }
}

TEST_F(HostileClients, ThatChangeTheTypeOfAnyElementDoNoHarm) {
  size_t number = 0;
  for (const RecordedCall& call : everyCall()) {
    for (const size_t offset : call.elementTypes) {
      for (int time = 0; time < 9; ++time) {
        (void)answerTo(withBytes(call.message, offset, nextType(number++)));
      }
    }
  }
}

/** `message` with `bytes` in place of the field. */
std::string replaced(std::string message, const FieldPlace& field, const std::string& bytes) {
  return message.replace(field.begin, field.end - field.begin, bytes);
}

TEST_F(HostileClients, ThatGiveAnyFieldAsAnotherTypeAreAnswered) {
  const std::vector<int>& types = fieldTypes();
  size_t number = 0;
  for (const RecordedCall& call : everyCall()) {
    for (const FieldPlace& field : call.fields) {
      const int id = call.message[field.begin + 2];
      for (int time = 0; time < 3; ++time) {
        const int type = types[number++ % types.size()];
        expectReply(call.method, replaced(call.message, field, emptyField(type, id)));
      }
    }
  }
}

TEST_F(HostileClients, ThatLeaveAnyFieldOutAreAnswered) {
  for (const RecordedCall& call : everyCall()) {
    expectReply(call.method, callMessage(call.method));  // no argument at all
    for (const FieldPlace& field : call.fields) {
      expectReply(call.method, replaced(call.message, field, ""));
    }
  }
}

TEST_F(HostileClients, ThatGiveAnyFieldTwiceAreAnswered) {
  for (const RecordedCall& call : everyCall()) {
    for (const FieldPlace& field : call.fields) {
      const std::string once = call.message.substr(field.begin, field.end - field.begin);
      expectReply(call.method, replaced(call.message, field, once + once));
    }
  }
}

TEST_F(HostileClients, ThatCallUnknownMethodsAreToldSoAndServedOn) {
  const std::string next = framed(recordedCall("getSIData").message);
  for (const std::string& name :
       {std::string(), std::string("x"), std::string("setpmt"), std::string("setPMT "),
        std::string("notifyPMT"), std::string("%s%n%x"), std::string(1, '\0'),
        std::string("\xFF\xFE\x80"), std::string(60'000, 'm')}) {
    const std::string message = callMessage(name);
    const Answer answer = answerTo(message);
    EXPECT_EQ(answer.kind, Kind::kException) << name;
    EXPECT_EQ(answer.method, name);
    EXPECT_EQ(answer.sequence, 7);
    EXPECT_EQ(answer.exception.getType(), TApplicationException::UNKNOWN_METHOD);
    EXPECT_EQ(exchange(framed(message) + next), exchange(framed(message)) + exchange(next));
  }
}

TEST_F(HostileClients, WhoseMessageIsNoCallAreRefused) {
  for (const RecordedCall& call : everyCall()) {
    for (const int type : {0, 2, 3, 5, 127, 128, 255}) {  // 2: a reply, 3: an exception
      EXPECT_EQ(answerTo(withBytes(call.message, 3, letter(type))).kind, Kind::kNone)
          << call.method << " as message of type " << type;
    }
  }
}

TEST_F(HostileClients, ThatWantNoAnswerGetOneAllTheSame) {
  constexpr int kOneway = 4;
  for (const RecordedCall& call : everyCall()) {
    expectReply(call.method, withBytes(call.message, 3, letter(kOneway)));
  }
}

TEST_F(HostileClients, ThatSpoilAnyByteOfAnyCallDoNoHarm) {
  for (const RecordedCall& call : everyCall()) {
    for (size_t offset = 0; offset < call.message.size(); ++offset) {
      for (const int mask : {1 << offset % 8, 0xFF}) {
        (void)answerTo(withBytes(call.message, offset, letter(call.message[offset] ^ mask)));
      }
    }
  }
}

TEST_F(HostileClients, ThatSpoilAnyBitOfAFramesLengthDoNoHarm) {
  for (const RecordedCall& call : everyCall()) {
    const std::string bytes = framed(call.message);
    for (size_t bit = 0; bit < 32; ++bit) {
      (void)exchange(withBytes(bytes, bit / 8, letter(bytes[bit / 8] ^ 1 << bit % 8)));
    }
  }
}

}  // namespace
}  // namespace tevra::test
