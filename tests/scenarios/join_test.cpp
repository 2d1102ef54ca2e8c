// The command Join as a user of the tool sees it: who meets whom, when everybody goes on, and who waits when somebody is
// missing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include "tool_run.h"

namespace motion::test {
namespace {

using nlohmann::json;
using testing::Each;
using testing::HasSubstr;
using testing::Not;

constexpr const char* TWO = "objects: [{name: A, type: axis}, {name: B, type: axis}]\n";
constexpr const char* THREE = "objects: [{name: A, type: axis}, {name: B, type: axis}, {name: C, type: axis}]\n";

class Join : public testing::Test {
 protected:
  ToolResult run(const std::string& scenario, std::vector<std::string> more = {}) {
    std::vector<std::string> arguments{"run", m_scratch.write("scenario.yaml", scenario), "--bundle", KAVO_BUNDLE};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return runTool(arguments);
  }
  /// The report of a run that ends with that code.
  json report(const std::string& scenario, int exitCode = 0) {
    const ToolResult result = run(scenario, {"--json"});
    EXPECT_EQ(result.exitCode, exitCode) << show(result);
    return json::parse(result.out);
  }
  /// A command of a report, "B#2".
  static const json& command(const json& report, const std::string& text) {
    const std::size_t sign = text.find('#');
    for (const json& object : report.at("objects")) {
      if (object.at("name") == text.substr(0, sign)) {
        return object.at("commands").at(std::stoul(text.substr(sign + 1)) - 1);
      }
    }
    throw std::out_of_range(text);
  }
  static std::uint64_t began(const json& report, const std::string& text) {
    return command(report, text).at("active").get<std::uint64_t>();
  }
  static std::uint64_t ended(const json& report, const std::string& text) {
    return command(report, text).at("ended").get<std::uint64_t>();
  }
  static std::vector<std::uint64_t> ends(const json& report, const std::vector<std::string>& commands) {
    std::vector<std::uint64_t> cycles;
    for (const std::string& text : commands) {
      EXPECT_EQ(command(report, text).at("state"), "done") << text;
      cycles.push_back(ended(report, text));
    }
    return cycles;
  }
  /// A scenario that is refused before anything runs, with these words.
  void expectRefused(const std::string& scenario, const std::string& words) {
    const ToolResult result = run(scenario);
    EXPECT_EQ(result.exitCode, 2) << show(result);
    EXPECT_THAT(result.err, HasSubstr(words));
    EXPECT_EQ(result.out, "");
  }

  ScratchDir m_scratch;
};

TEST_F(Join, AllEndOneCycleAfterTheLastArrivalAndGoOnInTheNext) {
  const json sut = report(std::string(THREE) +
                          "program:\n"
                          "  A: [Dwell: {time: 0.01}, Join: {group: [B, C]}, MoveAbs: {to: 1}]\n"
                          "  B: [Dwell: {time: 0.03}, Join: {group: [A, C]}, MoveAbs: {to: 1}]\n"
                          "  C: [Join: {group: [A, B]}, MoveAbs: {to: 1}]\n");
  EXPECT_EQ(began(sut, "B#2"), 31U);
  EXPECT_THAT(ends(sut, {"A#2", "B#2", "C#1"}), Each(32U));
  for (const char* next : {"A#3", "B#3", "C#2"}) {
    EXPECT_EQ(began(sut, next), 33U) << next;
    EXPECT_EQ(command(sut, next).at("moves"), 33U) << next;
  }
  EXPECT_EQ(sut.at("joins").at(0).at("last"), "B");
}

TEST_F(Join, MembersThatAreThereInTheSameCycleGoOnTogether) {
  const json sut = report(std::string(TWO) + "program: {A: [Join: {group: [B]}], B: [Join: {group: [A]}]}\n");
  EXPECT_THAT(ends(sut, {"A#1", "B#1"}), Each(2U));
}

TEST_F(Join, TwoQueuedJoinsAreBothThereBeforeThePartnersFirst) {
  const json sut = report(std::string("buffer: 2\n") + TWO +
                          "program:\n"
                          "  A: [Join: {group: [B]}, Join: {group: [B]}]\n"
                          "  B: [Dwell: {time: 0.02}, Dwell: {time: 0.02}, Join: {group: [A]}, Dwell: {time: 0.03}, "
                          "Join: {group: [A]}]\n");
  EXPECT_LT(command(sut, "A#2").at("prepared").get<std::uint64_t>(),
            command(sut, "B#3").at("prepared").get<std::uint64_t>());
  EXPECT_THAT(ends(sut, {"A#1", "B#3"}), Each(42U));
  EXPECT_THAT(ends(sut, {"A#2", "B#5"}), Each(74U));
}

TEST_F(Join, ThreeQueuedJoinsMeetInTheirOrderWhicheverSideIsAhead) {
  const json sut = report(std::string(TWO) +
                          "program:\n"
                          "  A: [Join: {group: [B]}, Join: {group: [B]}, Dwell: {time: 0.05}, Join: {group: [B]}]\n"
                          "  B: [Dwell: {time: 0.02}, Join: {group: [A]}, Join: {group: [A]}, Join: {group: [A]}]\n");
  EXPECT_THAT(ends(sut, {"A#1", "B#2"}), Each(22U));
  EXPECT_THAT(ends(sut, {"A#2", "B#3"}), Each(24U));
  EXPECT_THAT(ends(sut, {"A#4", "B#4"}), Each(76U));
}

TEST_F(Join, TheOrderOfNamesDoesNotMatter) {
  const json sut = report(std::string(THREE) +
                          "program:\n"
                          "  A: [Join: {group: [C, B]}]\n"
                          "  B: [Join: {group: [A, C]}]\n"
                          "  C: [Dwell: {time: 0.01}, Join: {group: [B, A]}]\n");
  EXPECT_THAT(ends(sut, {"A#1", "B#1", "C#2"}), Each(12U));
}

TEST_F(Join, TheIssuerMayBeNamedOrLeftOut) {
  const json sut = report(std::string(THREE) +
                          "program:\n"
                          "  A: [Join: {group: [B, C]}]\n"
                          "  B: [Join: {group: [A, B, C]}]\n"
                          "  C: [Dwell: {time: 0.01}, Join: {group: [C, B, A]}]\n");
  EXPECT_THAT(ends(sut, {"A#1", "B#1", "C#2"}), Each(12U));
}

TEST_F(Join, WhoIsNamedTwiceIsWaitedForTwice) {
  const std::string scenario = std::string(TWO) + "program: {A: [Join: {group: [B, B]}], B: [Join: {group: [A, B, B]}]}\n";
  const ToolResult result = run(scenario);
  EXPECT_EQ(result.exitCode, 1) << show(result);
  EXPECT_THAT(result.out, HasSubstr("A waits in A#1 Join (line 2) since cycle 1 for B\n"
                                    "    its group names an object twice; such a join never completes\n"));
  EXPECT_THAT(result.out, HasSubstr("certain deadlock of A, B: no write from outside can help"));
}

TEST_F(Join, AGroupOfOneIsRefused) {
  expectRefused(std::string(TWO) + "program: {A: [Join: {group: [A]}]}\n", "'Join' of 'A' names nobody but 'A' itself");
  expectRefused(std::string(TWO) + "program: {A: [Join: {group: [A, A]}]}\n", "'Join' of 'A' names nobody but 'A' itself");
}

TEST_F(Join, AnUnknownNameIsRefused) {
  expectRefused(std::string(TWO) + "program: {A: [Join: {group: [B, Nobody, Noone]}]}\n",
                "motion object Nobody is not found");
  expectRefused(std::string(TWO) + "program: {A: [Join: {group: [Nobody]}]}\n", "motion object Nobody is not found");
}

TEST_F(Join, AnEmptyGroupIsRefused) {
  expectRefused(std::string(TWO) + "program: {A: [Join: {group: []}]}\n",
                "No motion objects specified for the join command");
}

TEST_F(Join, AnAbsentGroupIsRefused) {
  expectRefused(std::string(TWO) + "program: {A: [Join: {syncStartNextCmd: true}]}\n", "No axes defined in group");
  expectRefused(std::string(TWO) + "program: {A: [Join: {}]}\n", "No axes defined in group");
}

TEST_F(Join, AnAbortBeforeAMembersTurnLeavesTheOthersWaiting) {
  const json sut = report(std::string(THREE) +
                              "program:\n"
                              "  A: [Dwell: {time: 1}, Join: {group: [B, C]}]\n"
                              "  B: [Join: {group: [A, C]}, MoveAbs: {to: 1}]\n"
                              "  C: [Join: {group: [A, B]}]\n"
                              "outside: [{at: 0.05 s, abort: A}]\n",
                          1);
  EXPECT_EQ(command(sut, "A#2").at("state"), "aborted");
  EXPECT_TRUE(command(sut, "A#2").at("active").is_null());
  EXPECT_EQ(command(sut, "B#1").at("state"), "active");
  EXPECT_EQ(command(sut, "C#1").at("state"), "active");
  EXPECT_EQ(command(sut, "B#2").at("state"), "prepared");
  EXPECT_THAT(sut.at("stuck").get<std::string>(), HasSubstr("    missing: A, whose A#2 Join (line 3) was aborted\n"));
  EXPECT_THAT(sut.at("stuck").get<std::string>(), HasSubstr("certain deadlock of B, C: no write from outside can help"));
}

TEST_F(Join, AnAbortOfAMemberThatWaitsLeavesTheOthersWaiting) {
  const json sut = report(std::string(TWO) +
                              "program:\n"
                              "  A: [Join: {group: [B]}]\n"
                              "  B: [Dwell: {time: 0.1}, Join: {group: [A]}]\n"
                              "outside: [{at: 0.05 s, abort: A}]\n",
                          1);
  EXPECT_EQ(command(sut, "A#1").at("state"), "aborted");
  EXPECT_EQ(ended(sut, "A#1"), 51U);
  EXPECT_EQ(command(sut, "B#2").at("state"), "active");
  EXPECT_THAT(sut.at("stuck").get<std::string>(), HasSubstr("    arrived: B in cycle 101\n"
                                                            "    missing: A, whose A#1 Join (line 3) was aborted\n"));
}

TEST_F(Join, AnAbortAfterTheJoinDoesNotConcernTheOthers) {
  const json sut = report(std::string(TWO) +
                          "program:\n"
                          "  A: [Join: {group: [B]}, Dwell: {time: 1}]\n"
                          "  B: [Dwell: {time: 0.02}, Join: {group: [A]}, Dwell: {time: 0.1}]\n"
                          "outside: [{at: 0.05 s, abort: A}]\n");
  EXPECT_THAT(ends(sut, {"A#1", "B#2"}), Each(22U));
  EXPECT_EQ(command(sut, "A#2").at("state"), "aborted");
  EXPECT_EQ(command(sut, "B#3").at("state"), "done");
}

TEST_F(Join, AnAbortTakesEffectInTheObjectsOwnTurn) {
  // All have arrived in cycle 21 and would end in cycle 22, before which B is aborted: A's turn comes before that, C's
  // after.
  const json sut = report(std::string(THREE) +
                              "program:\n"
                              "  A: [Join: {group: [B, C]}]\n"
                              "  B: [Join: {group: [A, C]}]\n"
                              "  C: [Dwell: {time: 0.02}, Join: {group: [A, B]}]\n"
                              "outside: [{at: 0.021 s, abort: B}]\n",
                          1);
  EXPECT_EQ(command(sut, "A#1").at("state"), "done");
  EXPECT_EQ(ended(sut, "A#1"), 22U);
  EXPECT_EQ(command(sut, "B#1").at("state"), "aborted");
  EXPECT_EQ(ended(sut, "B#1"), 22U);
  EXPECT_EQ(command(sut, "C#2").at("state"), "active");
  EXPECT_THAT(sut.at("stuck").get<std::string>(), HasSubstr("missing: B, whose B#1 Join (line 4) was aborted"));
}

TEST_F(Join, AnAbortDoesNotConcernOtherGroups) {
  const json sut = report(
      "objects: [{name: A, type: axis}, {name: B, type: axis}, {name: C, type: axis}, {name: D, type: axis}]\n"
      "program:\n"
      "  A: [Join: {group: [B]}]\n"
      "  B: [Join: {group: [C, D]}]\n"
      "  C: [Join: {group: [B, D]}]\n"
      "  D: [Dwell: {time: 0.1}, Join: {group: [B, C]}]\n"
      "outside: [{at: 0.05 s, abort: A}]\n");
  EXPECT_THAT(ends(sut, {"B#1", "C#1", "D#2"}), Each(102U));
}

TEST_F(Join, WhoComesAfterAnAbortOpensANewOccurrence) {
  // With room for one command only, C's join is prepared after A's was aborted; the messages tell the occurrences apart.
  const json sut = report(std::string("buffer: 1\n") + THREE +
                          "program:\n"
                          "  A: [Join: {group: [B, C]}]\n"
                          "  B: [Join: {group: [A, C]}]\n"
                          "  C: [Dwell: {time: 0.05}, Dwell: {time: 0.05}, Join: {group: [A, B]}]\n"
                          "outside: [{at: 0.01 s, abort: A}, {at: 0.2 s, abort: B}, {at: 0.3 s, abort: C}]\n");
  EXPECT_EQ(sut.at("messages"),
            (json{"A: joinCmd seq=1: ABORTED", "B: joinCmd seq=1: ABORTED", "C: joinCmd seq=2: ABORTED"}));
}

TEST_F(Join, AnAbortMayTearAnOlderJoinApart) {
  // C waits for D. Then A opens a join too and is aborted with it; nobody finds what was opened before any more.
  const ToolResult result =
      run("buffer: 1\n"
          "objects: [{name: A, type: axis}, {name: B, type: axis}, {name: C, type: axis}, {name: D, type: axis}]\n"
          "program:\n"
          "  A: [Dwell: {time: 0.01}, Dwell: {time: 0.01}, Join: {group: [B]}]\n"
          "  C: [Join: {group: [D]}]\n"
          "  D: [Dwell: {time: 0.05}, Dwell: {time: 0.05}, Join: {group: [C]}]\n"
          "outside: [{at: 0.03 s, abort: A}]\n");
  EXPECT_EQ(result.exitCode, 1) << show(result);
  EXPECT_THAT(
      result.out,
      HasSubstr("    arrived: C in cycle 1, D in cycle 101, who was the last\n"
                "    all have arrived, but not in the same occurrence, because another join was aborted meanwhile\n"));
  EXPECT_THAT(result.out, HasSubstr("certain deadlock of C, D: no write from outside can help"));
}

TEST_F(Join, WhoIsThereBeforeAnAbortSharesTheOccurrence) {
  const json sut = report(std::string(TWO) +
                          "program:\n"
                          "  A: [Join: {group: [B]}]\n"
                          "  B: [Dwell: {time: 0.1}, Join: {group: [A]}]\n"
                          "outside: [{at: 0.01 s, abort: A}, {at: 0.2 s, abort: B}]\n");
  EXPECT_EQ(sut.at("messages"), (json{"A: joinCmd seq=1: ABORTED", "B: joinCmd seq=1: ABORTED"}));
}

TEST_F(Join, WithoutACommandBehindItAMemberThatAwaitsOneNeverArrives) {
  const json sut = report(std::string(TWO) +
                              "program:\n"
                              "  A: [Join: {group: [B], syncStartNextCmd: true}]\n"
                              "  B: [Join: {group: [A], syncStartNextCmd: true}, MoveAbs: {to: 1}]\n",
                          1);
  EXPECT_THAT(
      sut.at("stuck").get<std::string>(),
      HasSubstr("    arrived: B in cycle 1\n"
                "    missing: A, who is at A#1 Join (line 3), but waits for a command behind it (syncStartNextCmd)\n"));
  EXPECT_TRUE(sut.at("joins").at(0).at("members").at(0).at("arrived").is_null());
}

TEST_F(Join, OnlyWhoAwaitsItsNextCommandNeedsOne) {
  const json sut = report(std::string(TWO) +
                          "program:\n"
                          "  A: [Join: {group: [B]}]\n"
                          "  B: [Join: {group: [A], syncStartNextCmd: true}, MoveAbs: {to: 1}]\n");
  EXPECT_THAT(ends(sut, {"A#1", "B#1"}), Each(2U));
}

TEST_F(Join, WhoAwaitsItsNextCommandArrivesOnceThatIsPrepared) {
  // With room for one command only, the next one is prepared when the join has become current.
  const json sut = report(std::string("buffer: 1\n") + TWO +
                          "program:\n"
                          "  A: [Join: {group: [B], syncStartNextCmd: true}, MoveAbs: {to: 1}]\n"
                          "  B: [Dwell: {time: 0.02}, Join: {group: [A], syncStartNextCmd: true}, MoveAbs: {to: 1}]\n");
  EXPECT_EQ(began(sut, "B#2"), 21U);
  EXPECT_EQ(command(sut, "B#3").at("prepared"), 22U);
  const json& member = sut.at("joins").at(0).at("members").at(1);
  EXPECT_EQ(member.at("arrived"), 22U);
  EXPECT_DOUBLE_EQ(member.at("waitedForPreparation").get<double>(), 0.001);
  EXPECT_THAT(ends(sut, {"A#1", "B#2"}), Each(23U));
  EXPECT_EQ(began(sut, "A#2"), 24U);
  EXPECT_EQ(began(sut, "B#3"), 24U);
}

TEST_F(Join, WithoutAwaitingItTheNextCommandMayStartLate) {
  const json sut = report(std::string("buffer: 1\n") + TWO +
                          "program:\n"
                          "  A: [Join: {group: [B]}, MoveAbs: {to: 1}]\n"
                          "  B: [Dwell: {time: 0.02}, Join: {group: [A]}, MoveAbs: {to: 1}]\n");
  EXPECT_EQ(sut.at("joins").at(0).at("members").at(1).at("arrived"), 21U);
  EXPECT_THAT(ends(sut, {"A#1", "B#2"}), Each(22U));
}

TEST_F(Join, AxesAndKinematicsMeet) {
  const json sut = report(
      "objects: [{name: A, type: axis}, {name: R, type: kinematics}, {name: S, type: kinematics}]\n"
      "program:\n"
      "  A: [MoveAbs: {to: 10, velocity: 100}, Join: {group: [R, S]}, MoveAbs: {to: 0}]\n"
      "  R: [Dwell: {time: 0.05}, Join: {group: [A, S]}, Dwell: {time: 0.02}]\n"
      "  S: [Join: {group: [A, R]}, Dwell: {time: 0.01}]\n");
  const std::uint64_t last = began(sut, "A#2");
  EXPECT_GT(last, began(sut, "R#2"));
  EXPECT_THAT(ends(sut, {"A#2", "R#2", "S#1"}), Each(last + 1));
  EXPECT_EQ(began(sut, "A#3"), last + 2);
  EXPECT_EQ(began(sut, "R#3"), last + 2);
  EXPECT_EQ(began(sut, "S#2"), last + 2);
}

TEST_F(Join, GroupsWithinGroupsMeetEachInTheirOwnTime) {
  const json sut = report(
      "objects: [{name: A, type: axis}, {name: B, type: axis}, {name: C, type: axis}, {name: D, type: axis}]\n"
      "program:\n"
      "  A: [Join: {group: [B]}, Join: {group: [B, C, D]}, Join: {group: [B]}]\n"
      "  B: [Dwell: {time: 0.01}, Join: {group: [A]}, Join: {group: [A, C, D]}, Join: {group: [A]}]\n"
      "  C: [Join: {group: [D]}, Join: {group: [A, B, D]}]\n"
      "  D: [Dwell: {time: 0.03}, Join: {group: [C]}, Join: {group: [A, B, C]}]\n");
  EXPECT_THAT(ends(sut, {"A#1", "B#2"}), Each(12U));
  EXPECT_THAT(ends(sut, {"C#1", "D#2"}), Each(32U));
  EXPECT_THAT(ends(sut, {"A#2", "B#3", "C#2", "D#3"}), Each(34U));
  EXPECT_THAT(ends(sut, {"A#3", "B#4"}), Each(36U));
  EXPECT_EQ(sut.at("joins").size(), 4U);
}

TEST_F(Join, MembersWithDifferentGroupsDoNotMeet) {
  const ToolResult result = run(std::string(THREE) +
                                "program:\n"
                                "  A: [Join: {group: [B]}]\n"
                                "  B: [Join: {group: [A, C]}]\n"
                                "  C: [Join: {group: [A, B]}]\n");
  EXPECT_EQ(result.exitCode, 1) << show(result);
  EXPECT_THAT(result.out, HasSubstr("    missing: B, who has no join with this group left\n"));
  EXPECT_THAT(result.out, HasSubstr("    missing: A, who has no join with this group left\n"));
  EXPECT_THAT(result.out, HasSubstr("certain deadlock of A, B, C: no write from outside can help"));
  EXPECT_THAT(result.out, Not(HasSubstr("circle")));
}

TEST_F(Join, AThousandMembersEndInTheSameCycle) {
  constexpr std::size_t COUNT = 1000;
  std::string objects = "objects:\n";
  std::string group;
  std::string programs = "program:\n";
  for (std::size_t i = 0; i < COUNT; ++i) {
    const std::string name = "M" + std::to_string(i);
    objects += "  - {name: " + name + ", type: " + (i % 2 == 0 ? "axis" : "kinematics") + "}\n";
    group += (i == 0 ? "" : ", ") + name;
  }
  for (std::size_t i = 0; i < COUNT; ++i) {
    programs += "  M" + std::to_string(i) + ": [Dwell: {time: 0.0" + std::to_string(10 + i % 37) +
                "}, Join: {group: " + (i == 0 ? "&all [" + group + "]" : "*all") +
                ", syncStartNextCmd: true}, Dwell: {time: 0.001}]\n";
  }
  const json sut = report(objects + programs);
  for (const json& object : sut.at("objects")) {
    ASSERT_EQ(object.at("commands").at(1).at("ended"), 48U) << object;
    ASSERT_EQ(object.at("commands").at(2).at("active"), 49U) << object;
  }
  EXPECT_EQ(sut.at("joins").at(0).at("completed"), 48U);
}

}  // namespace
}  // namespace motion::test
