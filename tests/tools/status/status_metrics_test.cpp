#include <regex>
#include <set>
#include <sstream>

#include <gmock/gmock.h>

#include "tests/tools/status/status_samples.h"
#include "tools/status/status_output.h"

namespace tevra::tools {
namespace {

using test::broken;
using test::healthy;
using testing::HasSubstr;
using testing::Not;

/** Holds the text against the grammar of OpenMetrics, as far as gauges use it. */
void expectOpenMetrics(const std::string& text) {
  static const std::regex kHelp("# HELP ([a-z_]+) [^\"\\\\]+");
  static const std::regex kType("# TYPE ([a-z_]+) gauge");
  static const std::regex kSample(
      R"(([a-z_]+)(\{[a-z_]+="[^"\\]*"(?:,[a-z_]+="[^"\\]*")*\}) -?[0-9]+(?:\.[0-9]+)?)");
  std::set<std::string> families;
  std::set<std::string> samples;
  std::string family;
  std::string line;
  std::istringstream lines(text);
  while (std::getline(lines, line) && line != "# EOF") {
    std::smatch parts;
    if (std::regex_match(line, parts, kHelp)) {
      family = parts[1];
      EXPECT_TRUE(families.insert(family).second) << family << " comes in two places";
      ASSERT_TRUE(std::getline(lines, line) && std::regex_match(line, parts, kType)) << line;
    } else {
      ASSERT_TRUE(std::regex_match(line, parts, kSample)) << line;
      EXPECT_TRUE(samples.insert(std::string(parts[1]) + std::string(parts[2])).second)
          << line << " comes twice";
    }
    EXPECT_EQ(family, parts[1]);
  }
  EXPECT_EQ("# EOF", line);
  EXPECT_FALSE(std::getline(lines, line)) << "behind the end";
  EXPECT_EQ('\n', text.back());
}

TEST(StatusMetrics, AreValidAndTellASetFromAnother) {
  const std::string text = statusMetrics({healthy(), healthy(3)});
  expectOpenMetrics(text);
  for (const char* line :
       {"tornel_up{set=\"0\"} 1\n", "tornel_up{set=\"3\"} 1\n",
        "tornel_answer_seconds{set=\"0\"} 0.000412\n", "tornel_problems{set=\"0\"} 0\n",
        "tornel_main_task_listening{set=\"0\"} 1\n",
        "tornel_file_readable{set=\"0\",file=\"PIDRemap0\"} 1\n",
        "tornel_file_saved_timestamp_seconds{set=\"0\",file=\"PIDRemap0\"} 1700000000\n",
        "tornel_transport_stream_id{set=\"0\"} 7\n", "tornel_pids_used{set=\"0\"} 3\n",
        "tornel_pids_pool{set=\"0\"} 199\n",
        "tornel_table_version{set=\"0\",service=\"101\",table_id=\"66\"} 2\n",
        "tornel_eit_version{set=\"0\",service=\"-1\",table_id=\"78\"} 9\n",
        "tornel_starts_left{set=\"0\",service=\"101\",tables=\"PSI\"} 4\n",
        "tornel_starts_left{set=\"0\",service=\"-1\",tables=\"EIT\"} 2\n"}) {
    EXPECT_THAT(text, HasSubstr(line));
  }
}

TEST(StatusMetrics, LeaveOutWhatIsNotKnown) {
  SetStatus status = broken();
  status.kept.pids->pool.reset();
  const std::string text = statusMetrics({status});
  expectOpenMetrics(text);
  EXPECT_THAT(text, HasSubstr("tornel_up{set=\"0\"} 0\n"));
  EXPECT_THAT(text, HasSubstr("tornel_problems{set=\"0\"} 4\n"));
  EXPECT_THAT(text, HasSubstr("file_readable{set=\"0\",file=\"Tornel/TableStoreFile0\"} 0\n"));
  EXPECT_THAT(text, Not(HasSubstr("EITTableVersionStoreFile0")));
  EXPECT_THAT(text, Not(HasSubstr("tornel_answer_seconds")));
  EXPECT_THAT(text, Not(HasSubstr("tornel_pids_pool")));
  EXPECT_THAT(statusMetrics({}), "# EOF\n");
}

}  // namespace
}  // namespace tevra::tools
