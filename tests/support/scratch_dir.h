// A directory of its own for a test, removed at the end.
#pragma once

#include <filesystem>
#include <string>

namespace motion::test {

class ScratchDir {
 public:
  /// Throws std::runtime_error when there can be none.
  ScratchDir();
  ScratchDir(const ScratchDir&) = delete;
  ScratchDir& operator=(const ScratchDir&) = delete;
  ~ScratchDir();

  [[nodiscard]] const std::filesystem::path& path() const noexcept { return m_path; }
  [[nodiscard]] std::filesystem::path operator/(const std::string& name) const { return m_path / name; }
  /// Writes a file into it and gives its path.
  [[nodiscard]] std::string write(const std::string& name, const std::string& content) const;

 private:
  std::filesystem::path m_path;
};

}  // namespace motion::test
