// Runs the command-line tool as a user would, and keeps what it said.
#pragma once

#include <sys/types.h>

#include <filesystem>
#include <string>
#include <vector>

#include "support/scratch_dir.h"

namespace motion::test {

struct ToolResult {
  int exitCode = -1;  ///< -1 when it did not end by itself
  std::string out;
  std::string err;
};

/// Runs kavo with these arguments, standard input empty. Ends it after a generous limit.
[[nodiscard]] ToolResult runTool(const std::vector<std::string>& arguments);

/// kavo while it runs.
class RunningTool {
 public:
  explicit RunningTool(const std::vector<std::string>& arguments);
  RunningTool(const RunningTool&) = delete;
  RunningTool& operator=(const RunningTool&) = delete;
  /// Ends it if nobody waited for it.
  ~RunningTool();

  /// True once it has taken over that signal; until then the signal would end it.
  [[nodiscard]] bool catches(int signal) const;
  void send(int signal) const;
  [[nodiscard]] std::string outSoFar() const;
  [[nodiscard]] std::string errSoFar() const;
  /// Waits for its end; ends it after a generous limit.
  [[nodiscard]] ToolResult wait();

 private:
  ScratchDir m_scratch;
  pid_t m_child = 0;  ///< 0 when it has ended
};

[[nodiscard]] std::string readFile(const std::filesystem::path& path);

/// A command line in a form for failure messages.
[[nodiscard]] std::string show(const ToolResult& result);

}  // namespace motion::test
