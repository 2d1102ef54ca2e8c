#include "tool_run.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string_view>
#include <thread>
#include <utility>

extern char** environ;

namespace motion::test {

namespace {

constexpr std::chrono::seconds LIMIT{300};

/// Waits for a child; ends it after the limit.
int waitFor(pid_t child) {
  const auto deadline = std::chrono::steady_clock::now() + LIMIT;
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (std::chrono::steady_clock::now() > deadline) {
      kill(child, SIGKILL);
      waitpid(child, &status, 0);
      return -1;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace

ToolResult runTool(const std::vector<std::string>& arguments) {
  return RunningTool(arguments).wait();
}

RunningTool::RunningTool(const std::vector<std::string>& arguments) {
  std::vector<std::string> words{KAVO_TOOL};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);

  const std::string outFile = m_scratch.path() / "out";
  const std::string errFile = m_scratch.path() / "err";
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const int error = posix_spawn(&m_child, KAVO_TOOL, &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    throw std::runtime_error(fmt::format("cannot run {}", KAVO_TOOL));
  }
}

RunningTool::~RunningTool() {
  if (m_child != 0) {
    send(SIGKILL);
    waitpid(m_child, nullptr, 0);
  }
}

bool RunningTool::catches(int signal) const {
  constexpr std::string_view CAUGHT = "SigCgt:";
  const std::string status = readFile(fmt::format("/proc/{}/status", m_child));
  const std::size_t place = status.find(CAUGHT);
  return place != std::string::npos &&
         ((std::stoull(status.substr(place + CAUGHT.size()), nullptr, 16) >> static_cast<unsigned>(signal - 1)) & 1U) != 0;
}

void RunningTool::send(int signal) const {
  kill(m_child, signal);
}

std::string RunningTool::outSoFar() const {
  return readFile(m_scratch.path() / "out");
}

std::string RunningTool::errSoFar() const {
  return readFile(m_scratch.path() / "err");
}

ToolResult RunningTool::wait() {
  const int code = waitFor(std::exchange(m_child, 0));
  return {code, readFile(m_scratch.path() / "out"), readFile(m_scratch.path() / "err")};
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string show(const ToolResult& result) {
  return fmt::format("exit code {}\n--- out\n{}--- err\n{}", result.exitCode, result.out, result.err);
}

}  // namespace motion::test
