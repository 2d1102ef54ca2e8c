// Runs checks, each in a child process, so that a crash is a result like any other.
#include "conformance/runner.h"

#include <fmt/format.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <nlohmann/json.hpp>
#include <optional>
#include <string_view>
#include <system_error>

#include "conformance/expect.h"

namespace motion::conformance {
namespace {

using Clock = std::chrono::steady_clock;

/// Exit code of a child that has said what it found.
constexpr int TOLD = 0;

class Pipe {
 public:
  Pipe() {
    if (pipe(m_ends.data()) != 0) {
      throw std::system_error(errno, std::generic_category(), "pipe");
    }
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    closeEnd(0);
    closeEnd(1);
  }

  [[nodiscard]] int end(std::size_t which) const { return m_ends[which]; }
  void closeEnd(std::size_t which) {
    if (m_ends[which] >= 0) {
      close(m_ends[which]);
      m_ends[which] = -1;
    }
  }

 private:
  std::array<int, 2> m_ends{-1, -1};
};

void tell(int descriptor, const Verdict& verdict) {
  const std::string text = nlohmann::json{
      {"passed", verdict.outcome == Outcome::PASSED},
      {"what", verdict.what},
      {"expected", verdict.expected},
      {"found", verdict.found}}.dump(-1, ' ', false, nlohmann::json::error_handler_t::replace);
  std::string_view rest = text;
  while (!rest.empty()) {
    const auto written = write(descriptor, rest.data(), rest.size());
    if (written < 0 && errno != EINTR) {
      std::_Exit(EXIT_FAILURE);
    }
    rest.remove_prefix(written > 0 ? static_cast<std::size_t>(written) : 0);
  }
}

[[noreturn]] void runInChild(const Check& check, const std::filesystem::path& bundleDirectory, int descriptor) {
  Verdict verdict;
  try {
    const Bundle bundle(bundleDirectory);
    check.run(bundle);
    verdict.what = remarks();
  } catch (const Mismatch& mismatch) {
    verdict = {Outcome::FAILED, mismatch.subject(), mismatch.expected(), mismatch.found(), {}};
  } catch (const std::exception& error) {
    verdict = {Outcome::FAILED, std::string("an exception: ") + error.what(), {}, {}, {}};
  } catch (...) {
    verdict = {Outcome::FAILED, "an exception of an unknown type", {}, {}, {}};
  }
  tell(descriptor, verdict);
  std::exit(TOLD);
}

/// What a child told until it closed its end; nothing when the time was over first.
std::optional<std::string> readAll(int descriptor, Clock::time_point end) {
  std::string text;
  while (true) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
    pollfd waiting{descriptor, POLLIN, 0};
    const int ready = left > 0 ? poll(&waiting, 1, static_cast<int>(left)) : 0;
    if (ready == 0) {
      return std::nullopt;
    }
    std::array<char, 4096> chunk{};
    const auto count = ready > 0 ? read(descriptor, chunk.data(), chunk.size()) : -1;
    if (count == 0) {
      return text;
    }
    if (count > 0) {
      text.append(chunk.data(), static_cast<std::size_t>(count));
    } else if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "read from a check");
    }
  }
}

int waitFor(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) {
      throw std::system_error(errno, std::generic_category(), "waitpid");
    }
  }
  return status;
}

Verdict crashed(const std::string& how) {
  return {Outcome::CRASHED, how, {}, {}, {}};
}

/// The verdict of a child that has ended.
Verdict judge(const std::string& told, int status) {
  if (WIFSIGNALED(status)) {
    const int signal = WTERMSIG(status);
    return crashed(
        fmt::format("killed by signal {} ({}){}", signal, strsignal(signal), told.empty() ? "" : " after its end"));
  }
  if (WEXITSTATUS(status) != TOLD) {
    return crashed(fmt::format("the process ended with exit code {}", WEXITSTATUS(status)));
  }
  const auto json = nlohmann::json::parse(told, nullptr, false);
  if (json.is_discarded()) {
    return crashed("the process ended before the check did");
  }
  return {json["passed"].get<bool>() ? Outcome::PASSED : Outcome::FAILED, json["what"], json["expected"], json["found"], {}};
}

}  // namespace

const char* toString(Outcome outcome) noexcept {
  switch (outcome) {
    case Outcome::PASSED:
      return "passed";
    case Outcome::FAILED:
      return "failed";
    case Outcome::CRASHED:
      return "crashed";
    case Outcome::TIMED_OUT:
      return "timed out";
  }
  return "unknown";
}

Verdict runCheck(const Check& check, const std::filesystem::path& bundleDirectory, std::chrono::seconds defaultLimit) {
  const auto begin = Clock::now();
  const auto limit = check.timeLimit.count() > 0 ? check.timeLimit : defaultLimit;
  Pipe pipe;
  const pid_t child = fork();
  if (child < 0) {
    throw std::system_error(errno, std::generic_category(), "fork");
  }
  if (child == 0) {
    pipe.closeEnd(0);
    runInChild(check, bundleDirectory, pipe.end(1));
  }
  pipe.closeEnd(1);
  const auto told = readAll(pipe.end(0), begin + limit);
  if (!told) {
    kill(child, SIGKILL);
  }
  const int status = waitFor(child);
  auto verdict = told ? judge(*told, status)
                      : Verdict{Outcome::TIMED_OUT, fmt::format("still running after {} s", limit.count()), {}, {}, {}};
  verdict.duration = std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin);
  return verdict;
}

}  // namespace motion::conformance
