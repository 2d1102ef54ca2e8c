#include "host/observe/text_report.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "sample_record.h"
#include "trigger_builder.h"

namespace motion::host::observe {
namespace {

using core::cmd::CmdState;
using testing::HasSubstr;
using testing::Not;

TEST(TextReport, TellsTheWholeStory) {
  EXPECT_EQ(
      textReport(sampleRecord()),
      "sample.yaml: 30 cycles of 1.000 ms in virtual time\n"
      "\n"
      "A (axis), from 0.000 mm to 5.000 mm\n"
      "  #1   MoveAbs {to: 5}          cycles 1 to 10 (0.0000 s), took 10.000 ms\n"
      "  #2   SetSignal {signalId: 3}  cycle 11 (0.0100 s)\n"
      "\n"
      "B (kinematics), from [100.000, 0.000, -20.000] mm to [100.000, 250.000, 0.000] mm\n"
      "  #1   WaitForSignal {signalId: 3, autoReset: true}  cycles 1 to 11 (0.0000 s), waited 10.000 ms for signal 3 'part "
      "ready', set by A#2 in cycle 11\n"
      "\n"
      "Signals\n"
      "  cycle      11 (0.0100 s)  signal 3 'part ready' set by A#2\n"
      "  cycle      11 (0.0100 s)  signal 3 'part ready' reset by B#1\n"
      "\n"
      "Expectations\n"
      "  \u2713 at: end, signal: 3, value: false\n"
      "\n"
      "OK\n");
}

TEST(TextReport, SaysWhyAnExpectationDoesNotHold) {
  RunRecord record = sampleRecord();
  record.expectations = {{"order: [A#1, A#2]", 12, false, "A#1 did not start"}};
  const std::string text = textReport(record);
  EXPECT_THAT(text, HasSubstr("  \u2717 order: [A#1, A#2]  -- line 12: A#1 did not start\n"));
  EXPECT_THAT(text, HasSubstr("NOT OK\n"));
}

TEST(TextReport, TellsAWaitThatNeverEnded) {
  RunRecord record = sampleRecord();
  CmdRecord& wait = record.objects[1].commands[0];
  wait.ended = 0;
  wait.state = CmdState::ACTIVE;
  record.steps.clear();
  record.stuck = "nothing can happen any more";
  const std::string text = textReport(record);
  EXPECT_THAT(text, HasSubstr("cycle 1 (0.0000 s), still active, has waited 29.000 ms for signal 3 'part ready'\n"));
  EXPECT_THAT(text, HasSubstr("STUCK: nothing can happen any more\nNOT OK\n"));
}

TEST(TextReport, TellsAWaitThatWasNone) {
  RunRecord record = sampleRecord();
  record.objects[1].commands[0].ended = 1;
  EXPECT_THAT(textReport(record), HasSubstr("cycle 1 (0.0000 s), no wait for signal 3 'part ready'\n"));
}

TEST(TextReport, TellsCommandsThatFailedWereAbortedOrNeverStarted) {
  RunRecord record = sampleRecord();
  record.objects[0].commands[0].state = CmdState::FAILED;
  record.objects[0].commands[0].failure = "job 'x' gave 0xF0000004";
  record.objects[0].commands[1].state = CmdState::ABORTED;
  record.objects[0].commands[1].active = 0;
  record.objects[1].commands[0].state = CmdState::CREATED;
  record.objects[1].commands[0].active = record.objects[1].commands[0].ended = 0;
  record.failures = {"A#1 MoveAbs: job 'x' gave 0xF0000004"};
  const std::string text = textReport(record);
  EXPECT_THAT(text, HasSubstr("cycles 1 to 10 (0.0000 s), failed: job 'x' gave 0xF0000004\n"));
  EXPECT_THAT(text, HasSubstr("aborted before cycle 11\n"));
  EXPECT_THAT(text, HasSubstr("never started\n"));
  EXPECT_THAT(text, HasSubstr("FAILED: A#1 MoveAbs: job 'x' gave 0xF0000004\n"));
}

TEST(TextReport, TellsRealTimeAndItsTroubles) {
  RunRecord record = sampleRecord();
  record.realTime = true;
  record.warning = "not permitted";
  record.punctuality = Punctual{30, 2, 0.00015};
  record.messages = {"Signal(3) might be set"};
  record.lostEvents = 4;
  const std::string text = textReport(record);
  EXPECT_THAT(
      text,
      HasSubstr("in real time\nwarning: not permitted\n30 cycles, 2 overruns, latest wake-up 150 us after its time\n"));
  EXPECT_THAT(text, HasSubstr("Messages\n  Signal(3) might be set\n"));
  EXPECT_THAT(text, HasSubstr("INCOMPLETE: 4 events"));
}

TEST(TextReport, ShowsOptionsBelowTheirCommand) {
  RunRecord record = sampleRecord();
  record.objects[0].commands[0].options = {"SetSignal {permType: Once}", "Mark"};
  EXPECT_THAT(textReport(record), HasSubstr("took 10.000 ms\n"
                                            "       with SetSignal {permType: Once}\n"
                                            "       with Mark\n"
                                            "  #2   SetSignal"));
}

TEST(TextReport, TellsWhatBecameOfConditions) {
  EXPECT_THAT(textReport(withTrigger()), HasSubstr("\nTriggers\n  B (line 9): set signal 3 'part ready' within 1.000 mm"));
  EXPECT_THAT(textReport(sampleRecord()), Not(HasSubstr("Triggers")));
}

TEST(TextReport, TellsDiagnosesWithCodesAndPlace) {
  RunRecord record = sampleRecord();
  record.diagnoses = {{1, 0x090F2030, 0x0C5701B1, 9, "too small"}, {0, 0x090F1000, 0x0C561000, 0, "odd"}};
  EXPECT_THAT(textReport(record), HasSubstr("\nDiagnoses\n"
                                            "  B (line 9): too small (0x090F2030, 0x0C5701B1)\n"
                                            "  A: odd (0x090F1000, 0x0C561000)\n"));
  EXPECT_THAT(textReport(sampleRecord()), Not(HasSubstr("Diagnoses")));
}

TEST(PointText, HasThreeDigits) {
  EXPECT_EQ(pointText({0.4, -0.0000004, 0.1234567}), "[400.000, -0.000, 123.457] mm");
}

TEST(TextReport, SaysWhenAnObjectHadNothingToDo) {
  RunRecord record = sampleRecord();
  record.objects[1].commands.clear();
  EXPECT_THAT(textReport(record), HasSubstr("[100.000, 250.000, 0.000] mm\n  nothing to do\n"));
  EXPECT_THAT(textReport(sampleRecord()), Not(HasSubstr("nothing to do")));
}

TEST(EventList, HasOneLineAStep) {
  EXPECT_EQ(eventList(sampleRecord()),
            "      1  A#1 MoveAbs active\n"
            "      1  A#1 MoveAbs moves\n"
            "      1  B#1 WaitForSignal active\n"
            "     10  A#1 MoveAbs done\n"
            "     11  A#2 SetSignal active\n"
            "     11  A#2 SetSignal done\n"
            "     11  signal 3 'part ready' set by A#2\n"
            "     11  B#1 WaitForSignal done\n"
            "     11  signal 3 'part ready' reset by B#1\n");
}

TEST(EventList, NamesAbortsAndFailures) {
  RunRecord record = sampleRecord();
  record.steps = {{StepRecord::Kind::ABORTED, 4, 0, 1, 0}, {StepRecord::Kind::FAILED, 5, 1, 1, 0}};
  EXPECT_EQ(eventList(record), "      4  A#1 MoveAbs aborted\n      5  B#1 WaitForSignal failed\n");
}

TEST(Milliseconds, HaveThreeDigits) {
  EXPECT_EQ(milliseconds(0.0125), "12.500 ms");
}

}  // namespace
}  // namespace motion::host::observe
