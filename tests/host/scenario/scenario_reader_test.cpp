// Files and texts that are no scenario, one that is, and any text at all.
#include "host/scenario/scenario_reader.h"

#include <gmock/gmock.h>
#include <rapidcheck.h>

#include <algorithm>
#include <filesystem>

#include "reading.h"
#include "support/scratch_dir.h"

namespace motion::host::scenario {
namespace {

namespace fs = std::filesystem;

const std::string WHOLE = R"(cycle: 1 ms
limit: 60 s
buffer: 64
signals: {5: part in place, 6: glue valve}
objects:
  - {name: Feeder, type: axis, at: 0}
  - {name: Robot,  type: kinematics, at: [0, 0, 100]}
program:
  Feeder:
    - MoveAbs: {to: 250, velocity: 500}
    - SetSignal: {signalId: 5}
    - Join: {group: [Robot], syncStartNextCmd: true}
    - MoveAbs: {to: 0, velocity: 500}
  Robot:
    - WaitForSignal: {signalId: 5, autoReset: true}
    - MoveLin: {to: [400, 0, 100], velocity: 300,
                options: [SwitchOnPath: {permType: Once, signalId: 6, targetPosition: [200, 0, 100]}]}
    - Join: {group: [Feeder], syncStartNextCmd: true}
    - MoveLin: {to: [0, 0, 100], velocity: 300}
outside:
  - {at: 0.5 s, signal: 7, value: true}
  - {at: 0.7 s, abort: Feeder}
expect:
  - {at: end, signal: 5, value: false}
  - {at: 0.3 s, object: Feeder, position: 250, within: 0.01}   # [mm]
  - {same cycle: [Feeder#4, Robot#4]}
  - {order: [Feeder#2, Robot#2]}
  - {command: Robot#1, state: done}
)";

class ScenarioFile : public testing::Test {
 protected:
  [[nodiscard]] fs::path write(const std::string& content) const { return m_scratch.write("a.yaml", content); }
  // The problem of a file without its name.
  [[nodiscard]] static Texts problemsIn(const fs::path& path) {
    const ReadResult result = readScenarioFile(path);
    EXPECT_FALSE(result.scenario.has_value());
    Texts texts;
    for (const std::string& text : textsOf(result.problems)) {
      EXPECT_THAT(text, testing::StartsWith(path.string()));
      texts.push_back(text.substr(path.string().size()));
    }
    return texts;
  }

  test::ScratchDir m_scratch;
};

TEST_F(ScenarioFile, isRead) {
  const fs::path path = write(WHOLE);
  const ReadResult result = readScenarioFile(path);
  ASSERT_TRUE(result.scenario.has_value());
  EXPECT_TRUE(result.problems.empty());
  EXPECT_EQ(result.scenario->file, path.string());
  EXPECT_EQ(result.scenario->programs.size(), 2U);
  EXPECT_EQ(result.scenario->programs[1].commands[1].options.size(), 1U);
  EXPECT_EQ(result.scenario->outside.size(), 2U);
  EXPECT_EQ(result.scenario->expectations.size(), 5U);
}

TEST_F(ScenarioFile, mustBeARegularFile) {
  EXPECT_EQ(problemsIn(m_scratch / "none.yaml"), (Texts{": there is no such file"}));
  EXPECT_EQ(problemsIn(m_scratch.path()), (Texts{": this is a directory; name the scenario file in it"}));
  EXPECT_EQ(problemsIn("/dev/zero"), (Texts{": this is not a regular file"}));
  EXPECT_EQ(problemsIn(write("") / "below"), (Texts{": there is no such file"}));
}

TEST_F(ScenarioFile, saysWhyItCannotBeRead) {
  fs::create_symlink("loop", m_scratch / "loop");
  EXPECT_EQ(problemsIn(m_scratch / "loop"), (Texts{": the file cannot be read: Too many levels of symbolic links"}));
}

TEST_F(ScenarioFile, mustHoldSomething) {
  const std::string problem = ": the file holds nothing; a scenario needs at least 'objects'";
  for (const std::string content : {"", "\n\n", "# nothing\n", "\xEF\xBB\xBF", "---\n...\n"}) {
    EXPECT_EQ(problemsIn(write(content)), (Texts{problem})) << content;
  }
}

TEST_F(ScenarioFile, mustNotBeTooLong) {
  std::string content = WHOLE + "#";
  content.resize(MAX_SCENARIO_SIZE, 'x');
  EXPECT_TRUE(readScenarioFile(write(content)).scenario.has_value());
  EXPECT_EQ(problemsIn(write(content + "x")), (Texts{": the file is too long; at most 1048576 bytes are read"}));
  EXPECT_EQ(problemsOf(content + "x"), (Texts{"f: the file is too long; at most 1048576 bytes are read"}));
}

TEST_F(ScenarioFile, mustBeText) {
  const std::string remedy = "; scenarios are YAML text in UTF-8";
  EXPECT_EQ(problemsIn(write(std::string("cycle: 1 ms\na\0b", 15))),
            (Texts{":2:2: this is not a text file: it holds a NUL character" + remedy}));
  EXPECT_EQ(problemsIn(write("\u00e4\u00e4\xff")),
            (Texts{":1:3: this is not a text file: the byte 0xff is not UTF-8" + remedy}));
  EXPECT_EQ(problemsIn(write("a\nb\xc3")), (Texts{":2:2: this is not a text file: the byte 0xc3 is not UTF-8" + remedy}));
  EXPECT_EQ(problemsIn(write("\xed\xa0\x80")),
            (Texts{":1:1: this is not a text file: the byte 0xed is not UTF-8" + remedy}));
}

TEST(ScenarioText, mayBeginWithAByteOrderMark) {
  EXPECT_EQ(scenarioOf("\xEF\xBB\xBF" + WHOLE).objects.size(), 2U);
}

TEST(ScenarioText, mayHaveWindowsLineEnds) {
  EXPECT_EQ(problemsOf("objects:\r\n- {name: A, type: axis}\r\ncycle: 1\r\n").at(0).substr(0, 25),
            "f:3:8: cycle: '1' has no ");
}

TEST(ScenarioText, mustBeYaml) {
  EXPECT_EQ(problemsOf("objects: [\n  {name: A]\n"), (Texts{"f:2:11: this is not YAML: illegal flow end"}));
}

TEST(ScenarioText, mustBeAMap) {
  EXPECT_EQ(problemsOf("- a\n"), (Texts{"f:1:1: scenario: expected a map, found a list; begin with 'objects:'"}));
  EXPECT_EQ(problemsOf("hello"), (Texts{"f:1:1: scenario: expected a map, found 'hello'; begin with 'objects:'"}));
}

TEST(ScenarioText, mayHoldKnownKeysOnce) {
  EXPECT_EQ(problemsOf(TWO_OBJECTS + "cylce: 1 ms\nlimit: 1 s\nlimit: 2 s\n"),
            (Texts{"f:3:1: scenario: unknown key 'cylce'; did you mean 'cycle'? known here: cycle, limit, buffer, signals, "
                   "objects, program, outside, expect",
                   "f:5:1: 'limit' stands twice in one map; keep one; the first is in line 4, column 1"}));
}

TEST(ScenarioText, hasItsProblemsListedInTheOrderOfTheFile) {
  const Texts problems = problemsOf("expect: [5]\nobjects: [{name: A, type: x}]\ncycle: 1\nprogram: {B: []}\n");
  ASSERT_EQ(problems.size(), 4U);
  EXPECT_THAT(problems[0], testing::StartsWith("f:1:10: expectation:"));
  EXPECT_THAT(problems[1], testing::StartsWith("f:2:27: object:"));
  EXPECT_THAT(problems[2], testing::StartsWith("f:3:8: cycle:"));
  EXPECT_THAT(problems[3], testing::StartsWith("f:4:11: program:"));
}

TEST(ScenarioText, hasAtMostFiftyProblemsListed) {
  std::string text = TWO_OBJECTS + "expect:\n";
  for (int i = 0; i < 60; ++i) {
    text += "- 5\n";
  }
  const Texts problems = problemsOf(text);
  ASSERT_EQ(problems.size(), 51U);
  EXPECT_EQ(problems[50], "f: there are more problems than the 50 listed");
}

TEST(ScenarioText, mayBeAnythingWithoutHarm) {
  const bool held = rc::check("any bytes", [](const std::string& text) {
    const ReadResult result = readScenarioText(text, "f");
    RC_ASSERT(result.scenario.has_value() || !result.problems.empty());
  });
  EXPECT_TRUE(held);
}

TEST(ScenarioText, mayBeDamagedWithoutHarm) {
  const bool held = rc::check("a scenario with random edits", [] {
    std::string text = WHOLE;
    const int edits = *rc::gen::inRange(1, 6);
    for (int i = 0; i < edits; ++i) {
      const auto place = *rc::gen::inRange<std::size_t>(0, text.size());
      const auto length = *rc::gen::inRange<std::size_t>(0, 30);
      const auto piece =
          *rc::gen::element<std::string>("", "", ":", "- ", "[", "]", "{", "}", "'", "\"", "\n", "  ", "&a ", "*a", "#",
                                         "!x ", "~", "null", "-1", "1e999", ".nan", "Feeder#9", "|\n", "\t", "\xff");
      text.replace(place, length, piece);
    }
    const ReadResult result = readScenarioText(text, "f");
    const bool failed =
        std::any_of(result.problems.begin(), result.problems.end(), [](const Problem& p) { return !p.warning; });
    RC_ASSERT(result.scenario.has_value() == !failed);
    for (const Problem& problem : result.problems) {
      RC_ASSERT(problem.file == "f");
      RC_ASSERT(problem.mark.line <= static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
    }
  });
  EXPECT_TRUE(held);
}

}  // namespace
}  // namespace motion::host::scenario
