#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include "records/json_protocol.h"
#include "records/records.h"
#include "tests/records/wire.h"

// Integers wherever they stand in a file: what is none must not pass for one.

namespace tevra::test {
namespace {

using apache::thrift::protocol::TProtocolException;
using apache::thrift::protocol::TType;

/** What a value, a member of the list behind it or a key is read as. */
template <class Integer>
Integer read(JsonProtocol& protocol) {
  Integer value = 77;
  if constexpr (sizeof(Integer) == 2) {
    protocol.readI16(value);
  } else if constexpr (sizeof(Integer) == 4) {
    protocol.readI32(value);
  } else {
    protocol.readI64(value);
  }
  return value;
}

template <class Integer>
Integer asValue(const std::string& number) {
  JsonProtocol protocol(memoryOf(number + "}"));
  return read<Integer>(protocol);
}

/** In a list, behind another number and before a third. */
template <class Integer>
Integer asElement(const std::string& number) {
  JsonProtocol protocol(memoryOf("[\"i64\",3,1," + number + ",3]"));
  TType type{};
  uint32_t size = 0;
  protocol.readListBegin(type, size);
  EXPECT_EQ(read<Integer>(protocol), 1);
  const auto element = read<Integer>(protocol);
  EXPECT_EQ(read<Integer>(protocol), 3);
  protocol.readListEnd();
  return element;
}

/** As the second key of a map. */
template <class Integer>
Integer asKey(const std::string& number) {
  JsonProtocol protocol(memoryOf("[\"i64\",\"i64\",2,{\"5\":6,\"" + number + "\":7}]"));
  TType keyType{};
  TType valueType{};
  uint32_t size = 0;
  protocol.readMapBegin(keyType, valueType, size);
  EXPECT_EQ(read<Integer>(protocol), 5);
  EXPECT_EQ(read<Integer>(protocol), 6);
  const auto key = read<Integer>(protocol);
  EXPECT_EQ(read<Integer>(protocol), 7);
  protocol.readMapEnd();
  return key;
}

/** -1 when `action` raises nothing. */
template <class Action>
int exceptionKind(Action action) {
  try {
    action();
  } catch (const TProtocolException& exception) {
    return exception.getType();
  }
  return -1;
}

template <class Integer>
class JsonIntegers : public ::testing::Test {
 protected:
  static constexpr Integer kLeast = std::numeric_limits<Integer>::min();
  static constexpr Integer kGreatest = std::numeric_limits<Integer>::max();

  static void expectRead(Integer value) {
    const std::string number = std::to_string(value);
    EXPECT_EQ(asValue<Integer>(number), value);
    EXPECT_EQ(asElement<Integer>(number), value);
    EXPECT_EQ(asKey<Integer>(number), value);
  }

  static void expectRefused(const std::string& number) {
    SCOPED_TRACE("\"" + number + "\"");
    for (const auto read : {&asValue<Integer>, &asElement<Integer>, &asKey<Integer>}) {
      EXPECT_EQ(exceptionKind([&] { read(number); }), TProtocolException::INVALID_DATA);
    }
  }

  /** The decimal digits of `number` plus one. */
  static std::string next(std::string number) {
    ++number.back();  // no limit of a type ends with 9
    return number;
  }
};

using Widths = ::testing::Types<int16_t, int32_t, int64_t>;

struct WidthName {
  template <class Integer>
  static std::string GetName(int) {
    return "I" + std::to_string(8 * sizeof(Integer));
  }
};

TYPED_TEST_SUITE(JsonIntegers, Widths, WidthName);

TYPED_TEST(JsonIntegers, AreReadUpToTheLimitsOfTheirType) {
  for (const TypeParam value : {TypeParam{0}, TypeParam{1}, TypeParam{-1}, TypeParam{12345},
                                TestFixture::kLeast, TestFixture::kGreatest}) {
    this->expectRead(value);
  }
}

TYPED_TEST(JsonIntegers, AreRefusedOneBeyondTheLimitsOfTheirType) {
  this->expectRefused(this->next(std::to_string(TestFixture::kGreatest)));
  this->expectRefused(this->next(std::to_string(TestFixture::kLeast)));
}

TYPED_TEST(JsonIntegers, AreRefusedFarBeyondTheLimitsOfEveryType) {
  this->expectRefused("99999999999999999999");
  this->expectRefused("-99999999999999999999");
  this->expectRefused(std::string(1000, '9'));
}

TYPED_TEST(JsonIntegers, AreRefusedWithoutDigits) {
  for (const char* number : {"", "-", "+", ".", "e", "--", "-e"}) {
    this->expectRefused(number);
  }
}

TYPED_TEST(JsonIntegers, AreRefusedWhenOnlyTheirBeginningIsAnInteger) {
  for (const char* number : {"1.0", "1e2", "1-", "1+1", "-1-1"}) {
    this->expectRefused(number);
  }
}

// Where a record has them

void readJson(const std::string& json, PIDRemap& record) {
  JsonProtocol protocol(memoryOf(json));
  record.read(&protocol);
}

int kindOfReading(const std::string& json, PIDRemap& record) {
  return exceptionKind([&] { readJson(json, record); });
}

TEST(JsonIntegersOfARecord, WithoutDigitsEndItsReadingAndLeaveWhatCameBefore) {
  for (const char* counter : {"", "-", "\"5\"", "2147483648", "-2147483649"}) {
    PIDRemap record;
    EXPECT_EQ(kindOfReading("{\"1\":{\"i32\":7},\"4\":{\"i32\":" + std::string(counter) +
                                "},\"5\":{\"i32\":3}}",
                            record),
              TProtocolException::INVALID_DATA)
        << counter;
    EXPECT_EQ(record.transportStreamId, 7);
    EXPECT_EQ(record.nextPIDCounter, 0);
    EXPECT_EQ(record.moduleSlot, 0);
  }
}

TEST(JsonIntegersOfARecord, AsKeysAndValuesOfAMapEndItsReadingToo) {
  for (const char* entry :
       {"\"\":1", "\"-\":1", "\"2147483648\":1", "\"1\":", "\"1\":-", "\"1\":2147483648", "1:1"}) {
    PIDRemap record;
    EXPECT_EQ(
        kindOfReading("{\"2\":{\"map\":[\"i32\",\"i32\",2,{\"5\":6," + std::string(entry) + "}]}}",
                      record),
        TProtocolException::INVALID_DATA)
        << entry;
    EXPECT_EQ(record.inputToOutput.at(5), 6);
    for (const auto& [input, output] : record.inputToOutput) {
      EXPECT_TRUE(input == 5 || (input == 1 && output == 0)) << input << " " << output;
    }
  }
}

TEST(JsonIntegersOfARecord, InAMemberThatIsNotKnownEndItsReadingToo) {
  for (const char* member :
       {"{\"i8\":}", "{\"i16\":}", "{\"i32\":}", "{\"i64\":}", "{\"i32\":2147483648}",
        "{\"lst\":[\"i32\",2,1,]}", "{\"map\":[\"i64\",\"i64\",1,{\"\":1}]}"}) {
    PIDRemap record;
    EXPECT_EQ(kindOfReading("{\"9\":" + std::string(member) + "}", record),
              TProtocolException::INVALID_DATA)
        << member;
  }
}

TEST(JsonIntegersOfARecord, AsFieldIdsWithoutDigitsOrBeyond16BitsAreRefused) {
  for (const char* id :
       {"", "-", "-1", "32768", "65537", "99999999999999999999", "-18446744073709551615"}) {
    PIDRemap record;
    EXPECT_THROW(readJson("{\"" + std::string(id) + "\":{\"i32\":5}}", record), TProtocolException)
        << id;
    EXPECT_EQ(record, PIDRemap());
  }
}

TEST(JsonIntegersOfARecord, TheGreatestFieldIdIsOneThatIsNotKnown) {
  PIDRemap record;
  EXPECT_EQ(kindOfReading("{\"32767\":{\"i32\":5},\"4\":{\"i32\":6}}", record), -1);
  EXPECT_EQ(record.nextPIDCounter, 6);
}

TEST(JsonIntegersOfARecord, AsSizesWithoutDigitsAreRefused) {
  for (const char* size : {"", "-", "-18446744073709551615"}) {
    for (const std::string& container :
         {std::string("{\"lst\":[\"i32\",") + size + ",1]}",
          std::string("{\"set\":[\"i32\",") + size + ",1]}",
          std::string("{\"map\":[\"i32\",\"i32\",") + size + ",{\"1\":1}]}"}) {
      PIDRemap record;
      EXPECT_EQ(kindOfReading("{\"2\":" + container + "}", record),
                TProtocolException::INVALID_DATA)
          << container;
      EXPECT_TRUE(record.inputToOutput.empty());
    }
  }
}

}  // namespace
}  // namespace tevra::test
