// Reads what the component of a test bundle wrote down about the calls that reached it.
#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace motion::host::framework::test {

/// The directory of a test bundle.
[[nodiscard]] inline std::filesystem::path pluginDirectory(const std::string& name) {
  return std::filesystem::path(KAVO_TEST_PLUGINS_DIR) / name;
}

/// Switches the record of the running test on, empty at first. One at a time.
class CallRecord {
 public:
  CallRecord() : m_file(fileOfRunningTest()) {
    clear();
    ::setenv("KAVO_TEST_CALLS", m_file.c_str(), 1);
  }
  CallRecord(const CallRecord&) = delete;
  CallRecord& operator=(const CallRecord&) = delete;
  ~CallRecord() {
    ::unsetenv("KAVO_TEST_CALLS");
    clear();
  }

  void clear() const { std::filesystem::remove(m_file); }

  /// One line per call so far.
  [[nodiscard]] std::vector<std::string> lines() const {
    std::ifstream in(m_file);
    std::vector<std::string> result;
    for (std::string line; std::getline(in, line);) {
      result.push_back(line);
    }
    return result;
  }

 private:
  /// The same in a test and in the child process of its death test, but not in another build tree.
  [[nodiscard]] static std::string fileOfRunningTest() {
    const testing::TestInfo& info = *testing::UnitTest::GetInstance()->current_test_info();
    std::string name = std::string("calls_") + info.test_suite_name() + "_" + info.name() + ".txt";
    for (char& letter : name) {
      letter = letter == '/' ? '_' : letter;
    }
    return pluginDirectory(name).string();
  }

  std::string m_file;
};

}  // namespace motion::host::framework::test
