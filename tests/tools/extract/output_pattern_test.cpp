#include "tools/extract/output_pattern.h"

#include <filesystem>

#include <gmock/gmock.h>

#include "tests/tools/support/temporary_file.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using test::TemporaryFile;
using testing::ElementsAre;
using testing::HasSubstr;

OutputOptions outputOf(int32_t globalSid, const std::string& name) {
  OutputOptions output;
  output.inputSid = 101;
  output.outputSid = 1201;
  output.globalSid = globalSid;
  output.name = name;
  return output;
}

std::string errorOf(const std::string& pattern, const std::vector<OutputOptions>& outputs,
                    const std::string& input = "/no/such/input") {
  try {
    (void)filesFor(OutputPattern(pattern), outputs, input);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(OutputPattern, PutsTheOutputsIdsAndNameInItsPlaceholders) {
  const OutputPattern pattern("dir/{service}-{gsid}-{sid}-{name}{gsid}.ts");
  EXPECT_EQ("dir/101--7-1201-Uno_HD-7.ts", pattern.fileFor(outputOf(-7, "Uno HD")));
  EXPECT_TRUE(pattern.hasPlaceholder());
  EXPECT_TRUE(pattern.uses("name"));
  EXPECT_FALSE(OutputPattern("{gsid}").uses("name"));
}

TEST(OutputPattern, WithoutPlaceholdersIsTheFile) {
  for (const char* file : {"out.ts", "-", "a}b", ""}) {
    const OutputPattern pattern(file);
    EXPECT_EQ(file, pattern.fileFor(outputOf(1, "Uno"))) << file;
    EXPECT_FALSE(pattern.hasPlaceholder()) << file;
  }
}

TEST(OutputPattern, TakesTwoBracesForOne) {
  EXPECT_EQ("a{gsid}b", OutputPattern("a{{gsid}b").fileFor(outputOf(1, "Uno")));
  EXPECT_EQ("{1", OutputPattern("{{{gsid}").fileFor(outputOf(1, "Uno")));
}

TEST(OutputPattern, RefusesPlaceholdersThatThereAreNot) {
  for (const char* pattern : {"{", "{}", "a{gsi}", "{gsid", "{gsid}{", "{ gsid}", "{GSID}"}) {
    EXPECT_THROW((void)OutputPattern(pattern), UsageError) << pattern;
  }
  EXPECT_EQ("-o a{foo}: '{foo}' is not {service}, {gsid}, {sid} or {name}; {{ stands for a brace",
            errorOf("a{foo}", {}));
}

TEST(OutputPattern, GivesEachOutputAFile) {
  EXPECT_THAT(filesFor(OutputPattern("{gsid}.ts"), {outputOf(1, "A"), outputOf(2, "A")}, "in.ts"),
              ElementsAre("1.ts", "2.ts"));
}

TEST(OutputPattern, RefusesOneFileForTwoOutputs) {
  EXPECT_EQ("-o {name}.ts: two outputs would go to a_b.ts; {gsid} keeps them apart",
            errorOf("{name}.ts", {outputOf(1, "a/b"), outputOf(2, "c"), outputOf(3, "a b")}));
  EXPECT_NE("", errorOf("out.ts", {outputOf(1, "a"), outputOf(2, "b")}));
}

TEST(OutputPattern, FindsOneFileUnderTwoNames) {
  const TemporaryFile real("1");
  const TemporaryFile link("2");
  real.write("");
  std::filesystem::create_symlink(real.path(), link.path());
  const std::string stem = real.path().substr(0, real.path().size() - 1);
  EXPECT_NE("", errorOf(stem + "{gsid}", {outputOf(1, "a"), outputOf(2, "b")}));
}

TEST(OutputPattern, GivesEachOutputAnAddressOfItsOwn) {
  EXPECT_THAT(filesFor(OutputPattern("udp://127.0.0.1:500{gsid}"),
                       {outputOf(1, "A"), outputOf(2, "A")}, "in.ts"),
              ElementsAre("udp://127.0.0.1:5001", "udp://127.0.0.1:5002"));
  EXPECT_EQ(
      "-o udp://127.0.0.1:5{sid}: two outputs would go to udp://127.0.0.1:51201; {gsid} keeps "
      "them apart",
      errorOf("udp://127.0.0.1:5{sid}", {outputOf(1, "A"), outputOf(2, "A")}));
}

TEST(OutputPattern, RefusesTheInput) {
  const TemporaryFile input("1");
  input.write("");
  const std::string stem = input.path().substr(0, input.path().size() - 1);
  EXPECT_THAT(errorOf(stem + "{gsid}", {outputOf(2, "a"), outputOf(1, "b")}, input.path()),
              HasSubstr("output and input are the same file, " + input.path()));
  EXPECT_EQ("output and input are the same address, udp://127.0.0.1:1",
            errorOf("udp://127.0.0.1:{gsid}", {outputOf(1, "a")}, "udp://127.0.0.1:1"));
  EXPECT_NE("", errorOf("udp://239.1.1.1:5000", {outputOf(1, "a")}, "udp://@239.1.1.1:5000"));
  EXPECT_NE("", errorOf("udp://239.1.1.1:5000", {outputOf(1, "a")}, "rtp://239.1.1.1:5000"));
}

TEST(SafeFileName, KeepsWhatEveryFileSystemTakes) {
  const std::vector<std::pair<std::string, std::string>> names = {
      {"Uno-HD+1.x", "Uno-HD+1.x"},
      {"Télé Deux", "Télé_Deux"},
      {"../../etc/passwd", "_._.._etc_passwd"},
      {"a\\b:c*d?e\"f<g>h|i", "a_b_c_d_e_f_g_h_i"},
      {"{gsid}", "_gsid_"},
      {std::string("a\0b\n\x7F", 5), "a_b__"},
      {"-o", "_o"},
      {".", "_"},
      {"", "_"},
  };
  for (const auto& [name, safe] : names) {
    EXPECT_EQ(safe, safeFileName(name)) << name;
  }
}

TEST(SafeFileName, EndsAfterAWholeCharacter) {
  EXPECT_EQ(std::string(100, 'a'), safeFileName(std::string(101, 'a')));
  EXPECT_EQ(std::string(99, 'a'), safeFileName(std::string(99, 'a') + "é"));
  EXPECT_EQ(std::string(98, 'a') + "é", safeFileName(std::string(98, 'a') + "é" + "b"));
}

}  // namespace
}  // namespace tevra::tools
