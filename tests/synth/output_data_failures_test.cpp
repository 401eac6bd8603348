#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <iostream>
#include <new>
#include <sstream>
#include <stdexcept>

#include "tests/synth/output_data_fixture.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Key;
using testing::SizeIs;

/** What the program writes to std::cerr meanwhile. */
class StandardError {
 public:
  StandardError() : former_(std::cerr.rdbuf(text_.rdbuf())) {}
  ~StandardError() { std::cerr.rdbuf(former_); }
  StandardError(const StandardError&) = delete;
  StandardError& operator=(const StandardError&) = delete;

  [[nodiscard]] std::string text() const { return text_.str(); }

 private:
  std::ostringstream text_;
  std::streambuf* former_;
};

class OutputFailures : public OutputDataTest {
 protected:
  OutputFailures() { request_.outputs[1] = describe(50); }

  /** The platform's language conversion raises std::out_of_range for English. */
  static void failOnEnglish() {
    fake::platform().englishAudioCode = [](const std::string& code, std::string& english,
                                           std::string&) {
      if (code == "eng") {
        throw std::out_of_range("no such code");
      }
      english = code;
      return true;
    };
  }

  /** The platform's text conversion raises std::out_of_range at these calls, counted from 1. */
  void failOnNames(std::initializer_list<int> calls) {
    fake::platform().textFromUTF8 = [this, failing = std::vector<int>(calls)](
                                        const std::string& utf8, std::string& dvb) {
      if (std::count(failing.begin(), failing.end(), ++namesConverted_) > 0) {
        throw std::out_of_range("no such character");
      }
      dvb = utf8;
      return true;
    };
  }

  /** The line of an output for which failOnNames has raised. */
  static LogLine notServed(int32_t globalSID) {
    return {3, "",
            "inputSID [003401] globalSID [0000" + std::to_string(globalSID) +
                "] not served: no such character"};
  }

  int namesConverted_ = 0;
};

TEST_F(OutputFailures, AnOutOfRangeFilterGoesToStandardErrorAndTheCallGoesOn) {
  request_.lastNodeSettings[50] = {makeLastNode(50, 500)};
  failOnEnglish();
  const StandardError standardError;
  ask();
  EXPECT_EQ(standardError.text(), "Out of Range error: no such code\n");
  ASSERT_THAT(answer_, ElementsAre(Key(50)));
  EXPECT_EQ(stores_.saves(), 1);
  EXPECT_THAT(fake::logLines(4), IsEmpty());
}

TEST_F(OutputFailures, AnOutputThatWasNotFilteredHasThePidsSoFarAndTheWholePmt) {
  request_.lastNodeSettings[50] = {makeLastNode(50, 500)};
  request_.lastNodeSettings[50][0].audioFilter = 1;
  failOnEnglish();
  const StandardError standardError;
  ask();
  EXPECT_THAT(answer_[50].pidItems, ElementsAre(remapped(kPmtIn, 0x02), remapped(kVideoIn, 0x0C)));
  const PMT& pmt = answer_[50].outputTables.dvbTables.pmt;
  EXPECT_EQ(pmt.programNumber, 1201);
  EXPECT_THAT(pmt.esList, SizeIs(3));
  EXPECT_EQ(decodePmt(answer_[50].outputTables.pmtPackets, 1201), pmt);
}

TEST_F(OutputFailures, EveryOutputOfARequestMeetsTheFilterAgain) {
  request_.lastNodeSettings[50] = {makeLastNode(60, 600)};
  request_.outputs[2] = describe(70);
  failOnEnglish();
  const StandardError standardError;
  ask();
  EXPECT_EQ(standardError.text(),
            "Out of Range error: no such code\nOut of Range error: no such code\n"
            "Out of Range error: no such code\n");
  EXPECT_THAT(answer_, ElementsAre(Key(50), Key(60), Key(70)));
}

TEST_F(OutputFailures, NothingGoesToStandardErrorOtherwise) {
  const StandardError standardError;
  ask();
  EXPECT_EQ(standardError.text(), "");
}

TEST_F(OutputFailures, AnOutOfRangeErrorIsNotTakenForMissingSettings) {
  request_.lastNodeSettings[50] = {makeLastNode(50, 500)};
  failOnNames({1});
  ask();
  EXPECT_THAT(answer_, IsEmpty());
  EXPECT_THAT(fake::logLines(3), ElementsAre(notServed(50)));
  EXPECT_EQ(stores_.saves(), 0);
}

TEST_F(OutputFailures, AListedOutputThatFailsEndsItsListWithoutAFallback) {
  request_.lastNodeSettings[50] = {makeLastNode(60, 600), makeLastNode(70, 700),
                                   makeLastNode(80, 800)};
  failOnNames({2});
  ask();
  EXPECT_THAT(answer_, ElementsAre(Key(60)));
  EXPECT_THAT(fake::logLines(3), ElementsAre(notServed(50)));
}

TEST_F(OutputFailures, AFailedDirectOutputReplacesThePmtAllTheSame) {
  request_.lastNodeSettings[50] = {makeLastNode(50, 500)};
  request_.outputs[2] = describe(51);
  failOnNames({1});
  ask();
  EXPECT_THAT(answer_[51].pidItems, SizeIs(4));  // no ECM PIDs
}

TEST_F(OutputFailures, OneOutputsFailureLeavesTheOthersAlone) {
  request_.lastNodeSettings[50] = {makeLastNode(50, 500)};
  request_.lastNodeSettings[51] = {makeLastNode(51, 510)};
  request_.outputs[2] = describe(51);
  failOnNames({1});
  ask();
  ASSERT_THAT(answer_, ElementsAre(Key(51)));
  EXPECT_EQ(answer_[51].outputTables.outputParam1, 510);
}

TEST_F(OutputFailures, AFallbackThatFailsIsToldOfAndTheOthersAreServed) {
  request_.outputs[2] = describe(51);
  request_.outputs[3] = describe(52);
  failOnNames({2});
  ask();
  EXPECT_THAT(answer_, ElementsAre(Key(50), Key(52)));
  EXPECT_THAT(fake::logLines(3), ElementsAre(kNoSettings, kNoSettings, notServed(51), kNoSettings));
}

TEST_F(OutputFailures, ALackOfMemoryCostsThatOutputAlone) {
  request_.lastNodeSettings[50] = {makeLastNode(50, 500)};
  request_.outputs[2] = describe(51);
  fake::platform().textFromUTF8 = [this](const std::string& utf8, std::string& dvb) {
    if (++namesConverted_ == 1) {
      throw std::bad_alloc();
    }
    dvb = utf8;
    return true;
  };
  EXPECT_NO_THROW(ask());
  EXPECT_THAT(answer_, ElementsAre(Key(51)));
  EXPECT_THAT(fake::logLines(3),
              ElementsAre(LogLine{3, "",
                                  "inputSID [003401] globalSID [000050] not served: "
                                  "std::bad_alloc"},
                          kNoSettings));
}

}  // namespace
}  // namespace tevra::test
