// Runs the command-line tool as a user would, and keeps what it said.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace motion::test {

struct ToolResult {
  int exitCode = -1;  ///< -1 when it did not end by itself
  std::string out;
  std::string err;
};

/// Runs kavo with these arguments, standard input empty. Ends it after a generous limit.
[[nodiscard]] ToolResult runTool(const std::vector<std::string>& arguments);

/// A directory of its own for a test, removed at the end.
class ScratchDir {
 public:
  ScratchDir();
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;
  ~ScratchDir();

  [[nodiscard]] const std::filesystem::path& path() const noexcept { return m_path; }
  /// Writes a file into it and gives its path.
  [[nodiscard]] std::string write(const std::string& name, const std::string& content) const;

 private:
  std::filesystem::path m_path;
};

[[nodiscard]] std::string readFile(const std::filesystem::path& path);

/// A command line in a form for failure messages.
[[nodiscard]] std::string show(const ToolResult& result);

}  // namespace motion::test
