// States of commands by ID: new, changed, forgotten.
#include "host/motion/cmd_states.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace motion::host {
namespace {

using core::cmd::CmdState;

constexpr std::size_t ALIVE = 4;
constexpr std::size_t REMEMBERED = ALIVE + 16;

TEST(CmdStatesTest, KnowsNothingAtFirst) {
  const CmdStates sut(ALIVE);
  EXPECT_EQ(sut.get(0), CmdState::DONE);
  EXPECT_EQ(sut.get(1), CmdState::DONE);
}

TEST(CmdStatesTest, FollowsACommandThroughItsStates) {
  CmdStates sut(ALIVE);
  for (const CmdState state : {CmdState::BUFFERED, CmdState::PREPARED, CmdState::ACTIVE, CmdState::FAILED}) {
    sut.note(7, state);
    EXPECT_EQ(sut.get(7), state);
    EXPECT_EQ(sut.get(8), CmdState::DONE);
  }
}

TEST(CmdStatesTest, IgnoresTheEndOfACommandThatItDoesNotKnow) {
  CmdStates sut(ALIVE);
  sut.note(7, CmdState::ABORTED);
  EXPECT_EQ(sut.get(7), CmdState::DONE);
}

TEST(CmdStatesTest, FindsCommandsWhateverTheirNumbersAreApart) {
  for (const std::uint64_t step : {1U, 2U, 40U, 64U, 128U, 1000U, 1U << 20U}) {
    CmdStates sut(ALIVE);
    for (std::uint64_t n = 1; n <= REMEMBERED; ++n) {
      sut.note(n * step, CmdState::BUFFERED);
      sut.note(n * step, CmdState::ABORTED);
    }
    for (std::uint64_t n = 1; n <= REMEMBERED; ++n) {
      EXPECT_EQ(sut.get(n * step), CmdState::ABORTED) << n << " times " << step;
    }
  }
}

TEST(CmdStatesTest, ForgetsTheOldestThatHasEnded) {
  CmdStates sut(ALIVE);
  sut.note(1, CmdState::BUFFERED);  // stays alive
  for (std::uint64_t n = 2; n <= REMEMBERED + 1; ++n) {
    sut.note(n, CmdState::BUFFERED);
    sut.note(n, CmdState::ABORTED);
  }
  EXPECT_EQ(sut.get(1), CmdState::BUFFERED);
  EXPECT_EQ(sut.get(2), CmdState::DONE) << "gave way";
  EXPECT_EQ(sut.get(3), CmdState::ABORTED);
}

TEST(CmdStatesTest, KeepsAllThatAreAliveHoweverManyEnd) {
  CmdStates sut(ALIVE);
  for (std::uint64_t n = 1; n <= ALIVE; ++n) {
    sut.note(n, CmdState::BUFFERED);
  }
  for (std::uint64_t n = 100; n < 1000; ++n) {
    sut.note(n, CmdState::BUFFERED);
    EXPECT_EQ(sut.get(n), CmdState::BUFFERED);
    sut.note(n, CmdState::DONE);
  }
  for (std::uint64_t n = 1; n <= ALIVE; ++n) {
    EXPECT_EQ(sut.get(n), CmdState::BUFFERED);
  }
}

TEST(CmdStatesTest, NeverTellsTheStateOfAnotherCommand) {
  CmdStates sut(ALIVE);
  std::atomic<bool> isOver{false};
  std::thread writer([&] {
    // Even numbers are aborted, odd ones fail.
    for (std::uint64_t n = 1; n < 100'000; ++n) {
      sut.note(n, CmdState::BUFFERED);
      sut.note(n, n % 2 == 0 ? CmdState::ABORTED : CmdState::FAILED);
    }
    isOver = true;
  });
  std::uint64_t wrong = 0;
  for (std::uint64_t n = 1; !isOver; n = n % 100'000 + 1) {
    wrong += sut.get(n) == (n % 2 == 0 ? CmdState::FAILED : CmdState::ABORTED) ? 1 : 0;
  }
  writer.join();
  EXPECT_EQ(wrong, 0U);
}

}  // namespace
}  // namespace motion::host
