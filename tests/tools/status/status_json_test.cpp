#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/status/status_samples.h"
#include "tools/status/status_output.h"

namespace tevra::tools {
namespace {

using nlohmann::json;
using test::broken;
using test::healthy;

TEST(StatusJson, SaysAllOfEverySet) {
  const json sets = json::parse(statusJson({healthy(), broken()})).at("sets");
  ASSERT_EQ(2U, sets.size());
  const json expected = {
      {"set", 0},
      {"problems", json::array()},
      {"daemon", {{"state", "answers"}, {"address", "127.0.0.1:9224"}, {"answerMs", 0.4125}}},
      {"mainTask", {{"address", "127.0.0.1:9256"}, {"listens", true}}},
      {"root", "/conf"},
      {"files",
       {{{"file", "PIDRemap0"}, {"state", "read"}, {"saved", "2023-11-14T22:13:20.000Z"}},
        {{"file", "Tornel/TableStoreFile0"},
         {"state", "read"},
         {"saved", "2023-11-14T22:13:20.000Z"}},
        {{"file", "Tornel/EITTableVersionStoreFile0"}, {"state", "absent"}, {"saved", nullptr}}}},
      {"pids",
       {{"transportStreamId", 7},
        {"slot", 3},
        {"used", 3},
        {"pool", 199},
        {"first", 101},
        {"last", 299}}},
      {"services",
       {{{"service", -1},
         {"outputSID", nullptr},
         {"name", ""},
         {"tables", nullptr},
         {"eits",
          {{"startsLeft", 2},
           {"versions", {{{"tableId", -2}, {"version", 5}}, {{"tableId", 78}, {"version", 9}}}}}}},
        {{"service", 101},
         {"outputSID", 1201},
         {"name", "Uno \"HD\"\n"},
         {"tables",
          {{"startsLeft", 4},
           {"versions",
            {{{"tableId", 0}, {"version", 1}},
             {{"tableId", 2}, {"version", 3}},
             {{"tableId", 66}, {"version", 2}}}}}},
         {"eits", nullptr}}}}};
  EXPECT_EQ(expected, sets[0]);
  EXPECT_EQ(5U, sets[1].at("problems").size());
  EXPECT_EQ("silent", sets[1].at("daemon").at("state"));
  EXPECT_TRUE(sets[1].at("daemon").at("answerMs").is_null());
  EXPECT_EQ("damaged", sets[1].at("files")[1].at("state"));
}

}  // namespace
}  // namespace tevra::tools
