#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <tuple>

#include "tests/system/disk_faults.h"
#include "tests/system/process_figures.h"

// Files that are far larger than any that the daemon writes: as large as is read of one or, with
// the environment variable TORNEL_FULL, 1 GiB.

namespace tevra::test {
namespace {

namespace fs = std::filesystem;

using testing::Combine;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::Values;
using testing::ValuesIn;

constexpr int64_t kMostMemory = 300'000;  // kilobytes

struct Pattern {
  const char* name;
  const char* start;
  const char* repeated;
};

void PrintTo(const Pattern& pattern, std::ostream* out) {
  *out << pattern.name;
}

const Pattern kPatterns[] = {
    {"Brackets", "", "["},
    {"Records", "", R"({"1":)"},
    {"Text", "\"", "x"},
    {"TextOfAnUnknownMember", R"({"9":{"str":")", "x"},
    {"ListsInAnUnknownMember", R"({"9":{"lst":["lst",1)", R"(,["lst",1)"},
    {"RecordsInAnUnknownMember", R"({"9":{"rec":)", R"({"9":{"rec":)"},
    {"KeyOfATable", R"({"1":{"map":["i32","rec",1,{")", "1"},
    {"KeyOfAPid", R"({"2":{"map":["i32","i32",1,{")", "1"},
    {"Number", R"({"4":{"i32":)", "1"},
    {"Spaces", "{", " "},
};

uintmax_t hugeSize() {
  return uintmax_t{std::getenv("TORNEL_FULL") == nullptr ? 32U : 1024U} << 20U;
}

void writeHuge(const std::string& path, const Pattern& pattern) {
  constexpr size_t kBlock = size_t{1} << 20U;
  std::string block;
  while (block.size() < kBlock) {
    block += pattern.repeated;
  }
  std::ofstream file(path, std::ios::binary);
  file << pattern.start;
  for (uintmax_t written = 0; written < hugeSize(); written += block.size()) {
    file << block;
  }
}

class AHugeFile : public DiskFaults {
 protected:
  /** The file, of which nothing is any use, is passed over at little cost and then repaired. */
  void expectRefusalAndRepair(StoreFile file) {
    start();
    EXPECT_THAT(errors(), ElementsAreArray(loadErrors(file)));
    expectMemoryBelow(kMostMemory, ProcessFigures(daemon().pid()).peakResidentSize());
    EXPECT_EQ(serve(), expectedWithout(file, 1));
    EXPECT_THAT(roundErrors_, IsEmpty());
    EXPECT_LT(fs::file_size(pathOf(file)), 10'000U);
    expectFilesHold(expectedWithout(file, 1));
  }
};

class AHugeFileOf : public AHugeFile,
                    public testing::WithParamInterface<std::tuple<StoreFile, Pattern>> {};

TEST_P(AHugeFileOf, IsPassedOverPromptlyAndRepaired) {
  const auto& [file, pattern] = GetParam();
  writeGoodFiles();
  writeHuge(pathOf(file), pattern);
  expectRefusalAndRepair(file);
}

INSTANTIATE_TEST_SUITE_P(DiskFaults, AHugeFileOf,
                         Combine(ValuesIn(kStoreFiles), ValuesIn(kPatterns)), [](const auto& test) {
                           return std::string(nameOf(std::get<0>(test.param))) +
                                  std::get<1>(test.param).name;
                         });

/** A file of 1 GiB, most of it a hole, whose first bytes claim as many elements as it may. */
struct Claim {
  const char* name;
  StoreFile file;
  const char* start;
};

void PrintTo(const Claim& claim, std::ostream* out) {
  *out << claim.name;
}

class AHugeFileThatClaims : public AHugeFile, public testing::WithParamInterface<Claim> {};

TEST_P(AHugeFileThatClaims, IsPassedOverPromptlyAndRepaired) {
  writeGoodFiles();
  writeText(pathOf(GetParam().file), GetParam().start);
  fs::resize_file(pathOf(GetParam().file), uintmax_t{1} << 30U);
  expectRefusalAndRepair(GetParam().file);
}

TEST_P(AHugeFileThatClaims, IsPassedOverAlsoWhereItsSizeIsSmallIn32Bits) {
  constexpr uintmax_t kSmallIn32Bits = (uintmax_t{1} << 32U) + 200;
  writeGoodFiles();
  writeText(pathOf(GetParam().file), GetParam().start);
  fs::resize_file(pathOf(GetParam().file), kSmallIn32Bits);
  expectRefusalAndRepair(GetParam().file);
}

const Claim kClaims[] = {
    {"Programs", kTables,
     R"({"1":{"map":["i32","rec",1,{"1":{"2":{"rec":{"4":{"lst":["rec",49000000,)"},
    {"Services", kTables,
     R"({"1":{"map":["i32","rec",1,{"1":{"3":{"rec":{"6":{"lst":["rec",49000000,)"},
    {"Streams", kTables,
     R"({"1":{"map":["i32","rec",1,{"1":{"4":{"rec":{"6":{"lst":["rec",49000000,)"},
    {"UnknownNumbers", kPids, R"({"9":{"lst":["i32",900000000,)"},
    {"Pids", kPids, R"({"2":{"map":["i32","i32",49000000,{)"},
    {"Versions", kVersions, R"({"1":{"map":["i32","rec",49000000,{)"},
};

INSTANTIATE_TEST_SUITE_P(DiskFaults, AHugeFileThatClaims, ValuesIn(kClaims),
                         [](const auto& test) { return std::string(test.param.name); });

}  // namespace
}  // namespace tevra::test
