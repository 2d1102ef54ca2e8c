#include "host/observe/triggers_text.h"

#include <gmock/gmock.h>

#include "trigger_builder.h"

namespace motion::host::observe {
namespace {

const std::string HEADLINE = "  B (line 9): set signal 3 'part ready' within 1.000 mm of [100.000, 20.000, 0.000] mm";
const std::string ARMED = "\n    armed with B#1 in cycle 1\n";

TEST(TriggersText, SaysNothingWithoutConditions) {
  EXPECT_EQ(triggersText(sampleRecord()), "");
}

TEST(TriggersText, AConditionThatFired) {
  RunRecord record = withTrigger();
  record.triggers[0].fired = record.triggers[0].entered = lookIn(12, 0.0009, 0.0009);
  EXPECT_EQ(triggersText(record),
            HEADLINE + ARMED +
                "    fired in cycle 12 (0.0110 s) with B#1 at [99.000, 20.000, 0.000] mm, 0.900 mm from the target\n");
}

TEST(TriggersText, WhatLookingAheadHasBrought) {
  RunRecord record = withTrigger(0.008);
  record.triggers[0].sets = false;
  record.triggers[0].fired = lookIn(12, 0.0001, 0.0021);
  record.triggers[0].entered = lookIn(20, 0.002, 0.0005);
  const std::string firing =
      "  B (line 9): reset signal 3 'part ready' within 1.000 mm of [100.000, 20.000, 0.000] mm, 8.000 ms ahead" + ARMED +
      "    fired in cycle 12 (0.0110 s) with B#1 at [99.000, 20.000, 0.000] mm, 2.100 mm from the target\n";
  EXPECT_EQ(triggersText(record),
            firing + "    ahead: 8.000 ms and 1.600 mm before the tool itself was in the sphere, in cycle 20\n");
  record.triggers[0].entered.reset();
  EXPECT_EQ(triggersText(record),
            firing +
                "    ahead: the tool itself was not seen in the sphere afterwards; the point ahead was 0.100 mm from the "
                "target\n");
}

TEST(TriggersText, AConditionThatWasNeverReached) {
  RunRecord record = withTrigger();
  record.triggers[0].nearest = lookIn(12, 0.0030001, 0.0030001);
  const std::string missed = HEADLINE + ARMED +
                             "    never fired: the tool was nearest in cycle 12 (0.0110 s) with B#1 at [99.000, 20.000, "
                             "0.000] mm, 3.001 mm from the target; a radius of that size would have fired\n";
  EXPECT_EQ(triggersText(record), missed) << "rounded up: 3.000 mm would not have fired";
  record.triggers[0].nearestPass = TriggerRecord::Pass{13, 0.0010001, 2.5};
  EXPECT_EQ(triggersText(record), missed) << "the path did not pass through the sphere either";
  record.triggers[0].nearestPass->distance = 0.001;
  EXPECT_EQ(triggersText(record),
            missed +
                "    stepped over: between cycles 12 and 13 the path passed the target at 1.000 mm, but at 2500.000 mm/s "
                "one cycle is 2.500 mm\n");
}

TEST(TriggersText, WhatDidNotFireWasNotAtTheTarget) {
  RunRecord record = withTrigger();
  record.triggers[0].nearest = lookIn(12, 1e-17, 1e-17);
  EXPECT_THAT(triggersText(record),
              testing::HasSubstr(", 0.001 mm from the target; a radius of that size would have fired"));
}

TEST(TriggersText, ARadiusThatFitsInItsDigitsIsNotRounded) {
  RunRecord record = withTrigger();
  record.triggers[0].nearest = lookIn(12, 0.0004, 0.0004);
  EXPECT_NE(triggersText(record).find(", 0.400 mm from the target; a radius"), std::string::npos) << triggersText(record);
}

TEST(TriggersText, APointAheadThatWasNeverReached) {
  RunRecord record = withTrigger(0.008);
  record.triggers[0].nearest = lookIn(12, 0.003, 0.005);
  record.triggers[0].nearestPass = TriggerRecord::Pass{2, 0.0, 0.25, true};
  EXPECT_EQ(
      triggersText(record),
      HEADLINE + ", 8.000 ms ahead" + ARMED +
          "    never fired: the point ahead was nearest in cycle 12 (0.0110 s) with B#1 at [99.000, 20.000, 0.000] mm, "
          "3.000 mm from the target; a radius of that size would have fired\n"
          "    stepped over: between cycles 1 and 2 the path passed the target at 0.000 mm, but at 250.000 mm/s one "
          "cycle is 0.250 mm, and this is where the look ahead begins, 8.000 ms further on\n");
}

TEST(TriggersText, AConditionThatWasNeverArmed) {
  RunRecord record = withTrigger();
  record.triggers[0].carriers.clear();
  record.triggers[0].line = 0;
  EXPECT_EQ(triggersText(record),
            "  B: set signal 3 'part ready' within 1.000 mm of [100.000, 20.000, 0.000] mm\n"
            "    never armed: no command followed that it could accompany\n");
}

TEST(TriggersText, AConditionThatNoCycleLookedAt) {
  RunRecord record = withTrigger();
  record.triggers[0].carriers = {{1, 0}};
  EXPECT_EQ(triggersText(record),
            HEADLINE + "\n    armed with B#1, which never came to run\n" + "    never fired: no cycle looked at it\n");
}

TEST(TriggersText, WhoCarriedACondition) {
  RunRecord record = withTrigger();
  record.triggers[0].carriers = {{1, 1}, {2, 11}, {3, 21}, {4, 0}};
  record.triggers[0].nearest = lookIn(12, 0.003, 0.003);
  EXPECT_NE(
      triggersText(record).find("    armed with B#1 in cycle 1, carried over to B#2 in cycle 11, carried over to B#3 in "
                                "cycle 21, carried over to B#4, which never came to run\n"),
      std::string::npos)
      << triggersText(record);
  record.triggers[0].fired = lookIn(12, 0.0009, 0.0009);
  EXPECT_NE(triggersText(record).find("    armed with B#1 in cycle 1, carried over to B#2 in cycle 11\n"), std::string::npos)
      << "up to where it fired: " << triggersText(record);
}

TEST(TriggersText, AConditionWhoseSignalCouldNotBeSwitched) {
  RunRecord record = withTrigger();
  record.triggers[0].isSpent = true;
  EXPECT_EQ(triggersText(record), HEADLINE + ARMED + "    fired, but its signal could not be switched\n");
}

TEST(TriggersText, ConditionsOneAfterTheOther) {
  RunRecord record = withTrigger();
  record.triggers.push_back(record.triggers[0]);
  record.triggers[1].line = 10;
  const std::string text = triggersText(record);
  EXPECT_LT(text.find("B (line 9)"), text.find("B (line 10)"));
  EXPECT_NE(text.find("B (line 10)"), std::string::npos);
}

}  // namespace
}  // namespace motion::host::observe
