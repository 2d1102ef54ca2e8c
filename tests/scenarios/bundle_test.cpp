// Bundles that cannot be used: each is given up with a message that names the place and the remedy, and exit code 3.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "tool_run.h"

namespace motion::test {
namespace {

using testing::HasSubstr;

const std::string EXAMPLE = KAVO_SOURCE_DIR "/examples/01_hand_over.yaml";

ToolResult runWith(const std::string& bundle) {
  return runTool({"run", EXAMPLE, "--start-limit", "5", "--bundle", bundle});
}

struct BadBundle {
  std::string name;  ///< of the plugin
  std::vector<std::string> says;
};

class Plugin : public testing::TestWithParam<BadBundle> {};

TEST_P(Plugin, IsRefused) {
  const std::string directory = KAVO_TEST_PLUGINS_DIR "/" + GetParam().name;
  const ToolResult result = runWith(directory);
  EXPECT_EQ(result.exitCode, 3) << show(result);
  EXPECT_EQ(result.out, "");
  EXPECT_THAT(result.err, HasSubstr(directory));
  for (const std::string& text : GetParam().says) {
    EXPECT_THAT(result.err, HasSubstr(text));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Of, Plugin,
    testing::Values(BadBundle{"empty", {"libmotion_kavo.so"}}, BadBundle{"not_a_library", {"libmotion_kavo.so"}},
                    BadBundle{"no_factory", {"createMotionKavoCmp"}}, BadBundle{"factory_throws", {"createMotionKavoCmp"}},
                    BadBundle{"factory_null", {"createMotionKavoCmp"}}, BadBundle{"init_fails", {"init"}},
                    BadBundle{"init_throws", {"init"}}, BadBundle{"start_fails", {"start", "70001"}},
                    BadBundle{"start_throws", {"start"}}, BadBundle{"start_throws_int", {"start"}}),
    [](const auto& tested) { return tested.param.name; });

TEST(Bundle, OneThatNeverFinishesItsStartIsGivenUp) {
  const auto begin = std::chrono::steady_clock::now();
  const ToolResult result =
      runTool({"run", EXAMPLE, "--start-limit", "0.2", "--bundle", KAVO_TEST_PLUGINS_DIR "/start_never_ends"});
  EXPECT_EQ(result.exitCode, 3) << show(result);
  EXPECT_THAT(result.err, HasSubstr("did not return within 0.2 s"));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(30));
}

TEST(Bundle, OneThatPublishesNoSignalsCannotPlay) {
  const ToolResult result = runTool({"run", EXAMPLE, "--bundle", KAVO_TEST_PLUGINS_DIR "/well_behaved"});
  EXPECT_NE(result.exitCode, 0) << show(result);
  EXPECT_THAT(result.err, HasSubstr("is not a command of axis"));
}

TEST(Bundle, AMissingDirectoryIsNamed) {
  const ToolResult result = runWith("/no/such/bundle");
  EXPECT_EQ(result.exitCode, 3);
  EXPECT_THAT(result.err, HasSubstr("/no/such/bundle"));
  EXPECT_THAT(result.err, HasSubstr("--bundle"));
}

class BundleCopy : public testing::Test {
 protected:
  BundleCopy() { std::filesystem::copy(KAVO_BUNDLE, m_scratch.path() / "bundle", std::filesystem::copy_options::recursive); }

  [[nodiscard]] std::filesystem::path schema() const { return m_scratch.path() / "bundle/bfbs/cmdResetSignal.bfbs"; }
  [[nodiscard]] ToolResult run() const { return runWith(m_scratch.path() / "bundle"); }

  ScratchDir m_scratch;
};

TEST_F(BundleCopy, Works) {
  EXPECT_EQ(run().exitCode, 0);
}

TEST_F(BundleCopy, WithoutASchemaNamesTheFile) {
  std::filesystem::remove(schema());
  const ToolResult result = run();
  EXPECT_EQ(result.exitCode, 3) << show(result);
  EXPECT_THAT(result.err, HasSubstr("70001"));
  EXPECT_THAT(result.err, HasSubstr("schema file '" + schema().string() + "' cannot be read"));
  EXPECT_THAT(result.err, HasSubstr("Registration of ResetSignal failed"));
  EXPECT_THAT(result.err, HasSubstr("build or install it again"));
}

TEST_F(BundleCopy, WithADamagedSchemaNamesTheFile) {
  std::ofstream(schema(), std::ios::binary) << "no schema";
  const ToolResult result = run();
  EXPECT_EQ(result.exitCode, 3) << show(result);
  EXPECT_THAT(result.err, HasSubstr("schema file '" + schema().string() + "' is not a binary FlatBuffers schema"));
}

}  // namespace
}  // namespace motion::test
