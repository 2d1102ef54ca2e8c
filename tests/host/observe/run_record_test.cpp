#include "host/observe/run_record.h"

#include <gtest/gtest.h>

#include "sample_record.h"

namespace motion::host::observe {
namespace {

TEST(RunRecordIsFine, WhenEverythingHolds) {
  EXPECT_TRUE(sampleRecord().isFine());
}

TEST(RunRecordIsFine, NotWhenAnExpectationFails) {
  RunRecord sut = sampleRecord();
  sut.expectations.push_back({"x", 1, false, "y"});
  EXPECT_FALSE(sut.isFine());
}

TEST(RunRecordIsFine, NotWhenStuck) {
  RunRecord sut = sampleRecord();
  sut.stuck = "waits";
  EXPECT_FALSE(sut.isFine());
}

TEST(RunRecordIsFine, NotWhenACommandFailed) {
  RunRecord sut = sampleRecord();
  sut.failures.push_back("A#1");
  EXPECT_FALSE(sut.isFine());
}

TEST(RunRecordIsFine, NotWhenEventsWereLost) {
  RunRecord sut = sampleRecord();
  sut.lostEvents = 1;
  EXPECT_FALSE(sut.isFine());
}

TEST(RunRecordTexts, NameCommandsSignalsAndAuthors) {
  const RunRecord sut = sampleRecord();
  EXPECT_EQ(commandText(sut, 0, 2), "A#2");
  EXPECT_EQ(commandText(sut, 1, 0), "B");
  EXPECT_EQ(signalText(sut, 3), "signal 3 'part ready'");
  EXPECT_EQ(signalText(sut, 4), "signal 4");
  EXPECT_EQ(authorText(sut, OUTSIDE, 0), "from outside");
  EXPECT_EQ(authorText(sut, 0, 2), "by A#2");
}

TEST(RunRecordCycleStart, CountsFromTheFirstCycle) {
  const RunRecord sut = sampleRecord();
  EXPECT_DOUBLE_EQ(cycleStart(sut, 0), 0.0);
  EXPECT_DOUBLE_EQ(cycleStart(sut, 1), 0.0);
  EXPECT_DOUBLE_EQ(cycleStart(sut, 11), 0.010);
}

TEST(ReleasedBy, FindsTheChangeBeforeTheEnd) {
  const RunRecord sut = sampleRecord();
  const auto release = releasedBy(sut, sut.objects[1].commands[0]);
  ASSERT_TRUE(release);
  EXPECT_EQ(release->object, 0U);
  EXPECT_EQ(release->number, 2U);
  EXPECT_EQ(release->kind, StepRecord::Kind::SIGNAL_SET);
}

TEST(ReleasedBy, IgnoresWhatHappenedAfterTheEnd) {
  RunRecord sut = sampleRecord();
  sut.steps.push_back({StepRecord::Kind::SIGNAL_SET, 11, 0, 2, 3});
  sut.steps.back().number = 9;
  EXPECT_EQ(releasedBy(sut, sut.objects[1].commands[0])->number, 2U);
}

TEST(ReleasedBy, FindsAWriteFromOutsideDuringTheTurnThatEndedTheWait) {
  RunRecord sut = sampleRecord();
  std::erase_if(sut.steps, [](const StepRecord& step) { return step.kind == StepRecord::Kind::SIGNAL_SET; });
  sut.steps.pop_back();
  sut.steps.push_back({StepRecord::Kind::SIGNAL_SET, 11, OUTSIDE, 0, 3});
  sut.steps.push_back({StepRecord::Kind::SIGNAL_RESET, 11, 1, 1, 3});
  const auto release = releasedBy(sut, sut.objects[1].commands[0]);
  ASSERT_TRUE(release);
  EXPECT_EQ(release->object, OUTSIDE);
}

TEST(ReleasedBy, IsNobodyWhileTheCommandWaitsOrWithoutASignal) {
  RunRecord sut = sampleRecord();
  EXPECT_FALSE(releasedBy(sut, sut.objects[0].commands[0]));
  std::erase_if(sut.steps, [](const StepRecord& step) { return step.kind == StepRecord::Kind::DONE && step.object == 1; });
  EXPECT_FALSE(releasedBy(sut, sut.objects[1].commands[0]));
}

}  // namespace
}  // namespace motion::host::observe
