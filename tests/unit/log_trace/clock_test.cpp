// The trace clock: which clock it reads, what a failing clock gives, and the text form of its time.
#include "log_trace/clock.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <climits>
#include <ctime>
#include <string>

#include "interception.h"

namespace common::log {
namespace {

using motion::test::ClockTap;
using motion::test::OutputTap;
using testing::ElementsAre;

struct Converted {
  long microseconds = -1;
  std::string text;
};

Converted convert(const timespec& timestamp, unsigned short size = 28) {
  Converted result;
  char text[40];
  std::fill(std::begin(text), std::end(text), '#');
  Clock::convertTimestamp(timestamp, &result.microseconds, text, size);
  result.text = text;
  EXPECT_EQ(text[size], '#') << "wrote behind the given size";
  return result;
}

struct ClockChoice {
  int id;
  clockid_t asked;
};

class ClockChoiceTest : public testing::TestWithParam<ClockChoice> {};

TEST_P(ClockChoiceTest, ReadsTheClockOfItsIdentifier) {
  const Clock sut(static_cast<ClockId>(GetParam().id));
  ClockTap tap;
  (void)sut.getTimestamp();
  EXPECT_THAT(tap.asked(), ElementsAre(GetParam().asked));
}

INSTANTIATE_TEST_SUITE_P(All, ClockChoiceTest,
                         testing::Values(ClockChoice{0, CLOCK_REALTIME}, ClockChoice{1, CLOCK_MONOTONIC},
                                         ClockChoice{2, CLOCK_PROCESS_CPUTIME_ID}, ClockChoice{3, CLOCK_THREAD_CPUTIME_ID},
                                         ClockChoice{4, CLOCK_MONOTONIC}, ClockChoice{-1, CLOCK_MONOTONIC},
                                         ClockChoice{INT_MAX, CLOCK_MONOTONIC}));

TEST(ClockTest, GivesTheTimeOfTheSystem) {
  const Clock sut(ClockId::Realtime);
  timespec before{};
  timespec after{};
  ::clock_gettime(CLOCK_REALTIME, &before);
  const timespec now = sut.getTimestamp();
  ::clock_gettime(CLOCK_REALTIME, &after);
  const auto nanoseconds = [](const timespec& time) { return time.tv_sec * 1'000'000'000LL + time.tv_nsec; };
  EXPECT_LE(nanoseconds(before), nanoseconds(now));
  EXPECT_LE(nanoseconds(now), nanoseconds(after));
}

TEST(ClockTest, FailureIsReportedAndGivesTimeZero) {
  const Clock sut(ClockId::Realtime);
  OutputTap output;
  ClockTap tap;
  tap.fail(EPERM);
  const timespec now = sut.getTimestamp();
  EXPECT_EQ(now.tv_sec, 0);
  EXPECT_EQ(now.tv_nsec, 0);
  ASSERT_EQ(output.messages().size(), 1U);
  EXPECT_EQ(output.messages()[0].text, "Calling 'clock_gettime()' failed with error code 'Operation not permitted'");
  EXPECT_EQ(output.messages()[0].level, "ERR");
  EXPECT_EQ(output.messages()[0].function, "getTimestamp");
}

TEST(ClockTest, ConvertsToMicrosecondsAndUtcText) {
  const Converted result = convert({1'000'000'000, 123'456'789});
  EXPECT_EQ(result.microseconds, 1'000'000'000'123'456);
  EXPECT_EQ(result.text, "2001-09-09T01:46:40.123456Z");
  EXPECT_EQ(result.text.size(), 27U);
}

TEST(ClockTest, TextIsThatOfTheSystemCalendar) {
  for (const std::time_t seconds : {1L, 86'399L, 86'400L, 951'782'400L, 1'709'164'800L, 4'107'542'399L, 253'402'300'799L}) {
    std::tm calendar{};
    char dateTime[20];
    ASSERT_NE(::gmtime_r(&seconds, &calendar), nullptr);
    ASSERT_EQ(std::strftime(dateTime, sizeof(dateTime), "%FT%T", &calendar), 19U);
    EXPECT_EQ(convert({seconds, 0}).text, std::string(dateTime) + ".000000Z");
    EXPECT_EQ(convert({seconds, 0}).microseconds, seconds * 1'000'000);
  }
}

TEST(ClockTest, MicrosecondsAreCutNotRounded) {
  EXPECT_EQ(convert({1, 999}).microseconds, 1'000'000);
  EXPECT_EQ(convert({1, 999}).text, "1970-01-01T00:00:01.000000Z");
  EXPECT_EQ(convert({1, 999'999'999}).microseconds, 1'999'999);
  EXPECT_EQ(convert({1, 999'999'999}).text, "1970-01-01T00:00:01.999999Z");
}

TEST(ClockTest, TimeZeroHasNoText) {
  EXPECT_EQ(convert({0, 0}).text, "");
  EXPECT_EQ(convert({0, 0}).microseconds, 0);
  EXPECT_EQ(convert({0, 1'000}).text, "1970-01-01T00:00:00.000001Z");
}

TEST(ClockTest, TimesBeyondTheNumberOfMicrosecondsAreZero) {
  EXPECT_EQ(convert({9'223'372'036'854, 775'807'000}).microseconds, LONG_MAX);
  EXPECT_EQ(convert({9'223'372'036'854, 775'808'000}).microseconds, 0);
  EXPECT_EQ(convert({9'223'372'036'855, 0}).microseconds, 0);
}

TEST(ClockTest, TimesWithoutSuchATextHaveNone) {
  EXPECT_EQ(convert({253'402'300'800, 0}).text, "") << "year 10000";
  EXPECT_EQ(convert({253'402'300'800, 0}).microseconds, 253'402'300'800'000'000);
  EXPECT_EQ(convert({LONG_MAX, 0}).text, "");
  EXPECT_EQ(convert({LONG_MIN, 0}).text, "");
  EXPECT_EQ(convert({1, 1'000'000'000}).text, "") << "more than a second of nanoseconds";
  EXPECT_EQ(convert({1, -1}).text, "");
}

TEST(ClockTest, TextThatDoesNotFitIsEmpty) {
  EXPECT_EQ(convert({1'000'000'000, 0}, 28).text, "2001-09-09T01:46:40.000000Z");
  EXPECT_EQ(convert({1'000'000'000, 0}, 27).text, "");
  EXPECT_EQ(convert({1'000'000'000, 0}, 1).text, "");
}

TEST(ClockTest, TargetsMayBeAbsent) {
  char text[28] = "#";
  Clock::convertTimestamp({1, 0}, nullptr, text, sizeof(text));
  EXPECT_STREQ(text, "1970-01-01T00:00:01.000000Z");
  long microseconds = 0;
  Clock::convertTimestamp({1, 0}, &microseconds, nullptr, 28);
  EXPECT_EQ(microseconds, 1'000'000);
  text[0] = '#';
  Clock::convertTimestamp({1, 0}, nullptr, text, 0);
  EXPECT_EQ(text[0], '#');
}

}  // namespace
}  // namespace common::log
