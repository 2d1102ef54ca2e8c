// Internal output: its form on standard error, its limits, the hook that replaces it, and the internal trace object.
#include "log_trace/outputs_lib.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cwchar>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "interception.h"
#include "log_trace/log_buffered3.h"

namespace common::log {
namespace {

using motion::test::OutputTap;
using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

TEST(OutputsLibTest, WritesLevelFunctionLineAndMessageToStandardError) {
  CaptureStderr();
  outputFunction("ERR", 17, "logFinal", "value %d of '%s'", 5, "origin");
  EXPECT_EQ(GetCapturedStderr(), "ERR: logFinal (line 17): value 5 of 'origin'\n");
}

TEST(OutputsLibTest, MessageIsCutAtItsBuffer) {
  OutputTap output;
  outputFunction("ERR", 1, "f", "%s", std::string(199, 'x').c_str());
  outputFunction("ERR", 1, "f", "%s", (std::string(199, 'x') + "y").c_str());
  ASSERT_EQ(output.messages().size(), 2U);
  EXPECT_EQ(output.messages()[0].text, std::string(199, 'x'));
  EXPECT_EQ(output.messages()[1].text, std::string(199, 'x'));
}

TEST(OutputsLibTest, LongLineStillEndsTheLine) {
  CaptureStderr();
  outputFunction("ERR", 1, std::string(600, 'f').c_str(), "lost");
  const std::string written = GetCapturedStderr();
  EXPECT_EQ(written, "ERR: " + std::string(505, 'f') + "\n");
}

TEST(OutputsLibTest, UnformattableMessageFallsBackToItsFormat) {
  const wchar_t invalid[] = {static_cast<wchar_t>(0x7FFFFFFF), L'\0'};
  OutputTap output;
  outputFunction("ERR", 1, "f", "wide %ls", invalid);
  EXPECT_THAT(output.texts(), testing::ElementsAre("wide %ls"));
}

TEST(OutputsLibTest, NullTextsCountAsEmpty) {
  CaptureStderr();
  outputMessageLog(nullptr, 3, nullptr, nullptr);
  EXPECT_EQ(GetCapturedStderr(), ":  (line 3): \n");
  OutputTap output;
  outputMessageLog(nullptr, 3, nullptr, nullptr);
  ASSERT_EQ(output.messages().size(), 1U);
  EXPECT_EQ(output.messages()[0].text, "");
}

TEST(OutputsLibTest, NullFormatCountsAsEmpty) {
  CaptureStderr();
  const char* const format = nullptr;
  outputFunction("ERR", 3, "f", format);
  EXPECT_EQ(GetCapturedStderr(), "ERR: f (line 3): \n");
}

/// Puts something else in the place of standard error, or nothing.
class StandardErrorAway {
 public:
  StandardErrorAway() : m_kept(::dup(STDERR_FILENO)) { ::close(STDERR_FILENO); }
  ~StandardErrorAway() {
    ::dup2(m_kept, STDERR_FILENO);
    ::close(m_kept);
  }
  StandardErrorAway(const StandardErrorAway&) = delete;
  StandardErrorAway& operator=(const StandardErrorAway&) = delete;

 private:
  int m_kept;
};

TEST(OutputsLibTest, IsSilentWithoutAStandardError) {
  const StandardErrorAway away;
  outputFunction("ERR", 3, "f", "nobody reads this");
  EXPECT_EQ(::fcntl(STDERR_FILENO, F_GETFD), -1) << "and opens nothing in its place";
}

/// A pipe that is full, which a signal empties: whoever writes is interrupted.
class FullPipe {
 public:
  FullPipe() {
    EXPECT_EQ(::pipe2(s_ends.data(), O_NONBLOCK), 0);
    const std::array<char, 4096> filling{};
    while (::write(s_ends[1], filling.data(), filling.size()) > 0) {
    }
    ::fcntl(s_ends[1], F_SETFL, 0);
    struct sigaction action {};
    action.sa_handler = [](int) { drain(); };  // without SA_RESTART: what it interrupts ends with EINTR
    ::sigaction(SIGALRM, &action, &m_before);
  }
  ~FullPipe() {
    ::sigaction(SIGALRM, &m_before, nullptr);
    ::close(s_ends[0]);
    ::close(s_ends[1]);
  }
  FullPipe(const FullPipe&) = delete;
  FullPipe& operator=(const FullPipe&) = delete;

  [[nodiscard]] int writingEnd() const { return s_ends[1]; }
  /// Lets the signal come soon.
  void interruptSoon() const {
    const itimerval soon{.it_interval = {}, .it_value = {.tv_sec = 0, .tv_usec = 50'000}};
    ::setitimer(ITIMER_REAL, &soon, nullptr);
  }
  [[nodiscard]] std::string content() const {
    std::string result(4096, '\0');
    result.resize(static_cast<std::size_t>(std::max<ssize_t>(0, ::read(s_ends[0], result.data(), result.size()))));
    return result;
  }

 private:
  static void drain() {
    const int before = errno;
    std::array<char, 4096> rest{};
    while (::read(s_ends[0], rest.data(), rest.size()) > 0) {
    }
    errno = before;
  }

  inline static std::array<int, 2> s_ends{};
  struct sigaction m_before {};
};

TEST(OutputsLibTest, WritesAgainWhatWasInterrupted) {
  const FullPipe pipe;
  {
    const StandardErrorAway away;
    ASSERT_EQ(::dup2(pipe.writingEnd(), STDERR_FILENO), STDERR_FILENO);
    pipe.interruptSoon();
    outputFunction("ERR", 3, "f", "interrupted");
  }
  EXPECT_EQ(pipe.content(), "ERR: f (line 3): interrupted\n");
}

TEST(OutputsLibTest, HookReceivesMessagesInsteadOfStandardError) {
  CaptureStderr();
  {
    OutputTap output;
    outputFunction("ERR", 42, "sendLog", "number %d", 7);
    ASSERT_EQ(output.messages().size(), 1U);
    EXPECT_EQ(output.messages()[0].level, "ERR");
    EXPECT_EQ(output.messages()[0].line, 42U);
    EXPECT_EQ(output.messages()[0].function, "sendLog");
    EXPECT_EQ(output.messages()[0].text, "number 7");
  }
  EXPECT_EQ(GetCapturedStderr(), "");
  CaptureStderr();
  outputMessageLog("ERR", 2, "f", "after removal");
  EXPECT_EQ(GetCapturedStderr(), "ERR: f (line 2): after removal\n");
}

TEST(OutputsLibTest, HookIsFedFromSeveralThreads) {
  constexpr int THREADS = 4;
  constexpr int MESSAGES = 200;
  std::atomic<int> count{0};
  setOutputHook([](const char*, unsigned int, const char*, const char*,
                   void* userData) noexcept { static_cast<std::atomic<int>*>(userData)->fetch_add(1); },
                &count);
  std::vector<std::jthread> threads;
  for (int i = 0; i < THREADS; ++i) {
    threads.emplace_back([] {
      for (int message = 0; message < MESSAGES; ++message) {
        outputFunction("ERR", 1, "f", "message %d", message);
      }
    });
  }
  threads.clear();
  setOutputHook(nullptr, nullptr);
  EXPECT_EQ(count.load(), THREADS * MESSAGES);
}

TEST(OutputsLibTest, LinesOfSeveralThreadsStayWhole) {
  CaptureStderr();
  std::vector<std::jthread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([] {
      for (int message = 0; message < 50; ++message) {
        outputFunction("ERR", 1, "f", "%s", std::string(100, 'z').c_str());
      }
    });
  }
  threads.clear();
  std::istringstream written(GetCapturedStderr());
  int count = 0;
  for (std::string line; std::getline(written, line); ++count) {
    EXPECT_EQ(line, "ERR: f (line 1): " + std::string(100, 'z'));
  }
  EXPECT_EQ(count, 200);
}

TEST(OutputsLibTest, KeepsTheInternalTraceObject) {
  trace::LogBuffered3 internalTrace("internal", true);
  EXPECT_EQ(getInternalTracePointer(), nullptr);
  setInternalTracePointer(&internalTrace);
  EXPECT_EQ(getInternalTracePointer(), &internalTrace);
  removeInternalTracePointer();
  EXPECT_EQ(getInternalTracePointer(), nullptr);
}

}  // namespace
}  // namespace common::log
