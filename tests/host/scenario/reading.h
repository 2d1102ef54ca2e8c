// What the tests of scenario files share: scenarios around the line under test, and problems as text.
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "host/scenario/scenario_reader.h"

namespace motion::host::scenario {

using Texts = std::vector<std::string>;

inline Texts textsOf(const Problems& problems) {
  Texts texts;
  for (const Problem& problem : problems) {
    texts.push_back((problem.warning ? "warning " : "") + problem.text());
  }
  return texts;
}

/// What is wrong with a text; also checks that only an error keeps the scenario back.
inline Texts problemsOf(const std::string& text) {
  const ReadResult result = readScenarioText(text, "f");
  bool failed = false;
  for (const Problem& problem : result.problems) {
    failed = failed || !problem.warning;
  }
  EXPECT_EQ(result.scenario.has_value(), !failed);
  return textsOf(result.problems);
}

/// The scenario of a text without problems.
inline Scenario scenarioOf(const std::string& text) {
  const ReadResult result = readScenarioText(text, "f");
  EXPECT_THAT(textsOf(result.problems), testing::IsEmpty());
  return result.scenario.value_or(Scenario());
}

/// Two lines that make any other part a whole scenario; what follows begins in line 3.
inline const std::string TWO_OBJECTS = "objects: [{name: Feeder, type: axis}, {name: Robot, type: kinematics}]\n\n";

}  // namespace motion::host::scenario
