// Calls that throw anything or never return.
#include "host/framework/foreign_call.h"

#include <gtest/gtest.h>

#include <latch>
#include <memory>
#include <stdexcept>
#include <system_error>
#include <thread>

#include "tests/host/framework/no_threads.h"

namespace motion::host::framework {
namespace {

using namespace std::chrono_literals;

constexpr auto AMPLE = 60s;

struct Oddity {};

class SilentException : public std::exception {
 public:
  [[nodiscard]] const char* what() const noexcept override { return nullptr; }
};

TEST(CallGuardedTest, givesTheAnswer) {
  const CallEnd end = callGuarded([] { return -7; });
  EXPECT_EQ(end.code, -7);
  EXPECT_EQ(end.exception, "");
}

TEST(CallGuardedTest, givesTheTextOfAnException) {
  const CallEnd end = callGuarded([]() -> std::int32_t { throw std::runtime_error("no power"); });
  EXPECT_FALSE(end.code.has_value());
  EXPECT_EQ(end.exception, "no power");
}

TEST(CallGuardedTest, namesTheTypeOfAnythingElse) {
  EXPECT_EQ(callGuarded([]() -> std::int32_t { throw 42; }).exception, "an exception of type 'int'");
  EXPECT_EQ(callGuarded([]() -> std::int32_t { throw Oddity(); }).exception,
            "an exception of type 'motion::host::framework::(anonymous namespace)::Oddity'");
}

TEST(CallGuardedTest, survivesAnExceptionWithoutText) {
  EXPECT_EQ(callGuarded([]() -> std::int32_t { throw SilentException(); }).exception, "an exception without text");
}

TEST(CallWithinTest, givesTheAnswerOfAnotherThread) {
  std::thread::id caller;
  const std::optional<CallEnd> end = callWithin(AMPLE, [&caller] {
    caller = std::this_thread::get_id();
    return 70001;
  });
  ASSERT_TRUE(end.has_value());
  EXPECT_EQ(end->code, 70001);
  EXPECT_NE(caller, std::this_thread::get_id());
}

TEST(CallWithinTest, catchesWhatTheOtherThreadThrows) {
  const std::optional<CallEnd> end = callWithin(AMPLE, []() -> std::int32_t { throw std::logic_error("no sense"); });
  ASSERT_TRUE(end.has_value());
  EXPECT_FALSE(end->code.has_value());
  EXPECT_EQ(end->exception, "no sense");
}

TEST(CallWithinTest, givesUpAfterTheLimitAndLetsTheCallEndLater) {
  // Both ends hold the latches, as everything that a late call uses must outlive it.
  const auto mayEnd = std::make_shared<std::latch>(1);
  const auto isEnding = std::make_shared<std::latch>(1);
  const std::optional<CallEnd> end = callWithin(20ms, [mayEnd, isEnding] {
    mayEnd->wait();
    isEnding->count_down();
    return 0;
  });
  EXPECT_FALSE(end.has_value());
  EXPECT_FALSE(isEnding->try_wait());
  mayEnd->count_down();
  isEnding->wait();
}

TEST(CallWithinTest, saysThatThereIsNoThread) {
  bool wasCalled = false;
  const test::NoThreads noThreads;
  EXPECT_THROW(static_cast<void>(callWithin(AMPLE,
                                            [&wasCalled] {
                                              wasCalled = true;
                                              return 0;
                                            })),
               std::system_error);
  EXPECT_FALSE(wasCalled);
}

}  // namespace
}  // namespace motion::host::framework
