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
#include <thread>

extern char** environ;

namespace motion::test {

namespace {

constexpr std::chrono::seconds LIMIT{60};

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
  const ScratchDir scratch;
  const std::string outFile = scratch.path() / "out";
  const std::string errFile = scratch.path() / "err";
  std::vector<std::string> words{KAVO_TOOL};
  words.insert(words.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& word : words) {
    argv.push_back(word.data());
  }
  argv.push_back(nullptr);

  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, errFile.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  pid_t child = 0;
  const int error = posix_spawn(&child, KAVO_TOOL, &actions, nullptr, argv.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) {
    throw std::runtime_error(fmt::format("cannot run {}", KAVO_TOOL));
  }
  const int code = waitFor(child);
  return {code, readFile(outFile), readFile(errFile)};
}

ScratchDir::ScratchDir() {
  std::string pattern = std::filesystem::temp_directory_path() / "kavo-test-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) {
    throw std::runtime_error("cannot make a scratch directory");
  }
  m_path = pattern;
}

ScratchDir::~ScratchDir() {
  std::error_code ignored;
  std::filesystem::remove_all(m_path, ignored);
}

std::string ScratchDir::write(const std::string& name, const std::string& content) const {
  const auto file = m_path / name;
  std::ofstream(file, std::ios::binary) << content;
  return file;
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

std::string show(const ToolResult& result) {
  return fmt::format("exit code {}\n--- out\n{}--- err\n{}", result.exitCode, result.out, result.err);
}

}  // namespace motion::test
