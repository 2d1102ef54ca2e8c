// Stands between the trace library and what it uses, to see what goes out and to make it fail.
#pragma once

#include <ctime>
#include <string>
#include <vector>

namespace motion::test {

/// Sees what this thread's journal client puts on the socket while the tap exists. One per thread at a time.
class JournalTap {
 public:
  JournalTap();
  ~JournalTap();
  JournalTap(const JournalTap&) = delete;
  JournalTap& operator=(const JournalTap&) = delete;

  /// From now on the socket refuses every entry with this error.
  void refuse(int error) { m_error = error; }
  /// The entries so far, refused ones included, each as its "NAME=value" lines in the order on the wire.
  [[nodiscard]] const std::vector<std::vector<std::string>>& entries() const { return m_entries; }

  /// Called for each send: keeps the entry and returns the error to fail with, or 0.
  int take(const std::string& bytes);

 private:
  int m_error = 0;
  std::vector<std::vector<std::string>> m_entries;
};

/// Sees which clocks this thread's statically linked code reads while the tap exists. One per thread at a time.
class ClockTap {
 public:
  ClockTap();
  ~ClockTap();
  ClockTap(const ClockTap&) = delete;
  ClockTap& operator=(const ClockTap&) = delete;

  /// From now on every clock fails with this error.
  void fail(int error) { m_error = error; }
  [[nodiscard]] const std::vector<clockid_t>& asked() const { return m_asked; }

  int take(clockid_t id);

 private:
  int m_error = 0;
  std::vector<clockid_t> m_asked;
};

/// Collects the library's internal output messages instead of standard error. One at a time in the process.
class OutputTap {
 public:
  struct Message {
    std::string level;
    unsigned int line;
    std::string function;
    std::string text;
  };

  OutputTap();
  ~OutputTap();
  OutputTap(const OutputTap&) = delete;
  OutputTap& operator=(const OutputTap&) = delete;

  [[nodiscard]] const std::vector<Message>& messages() const { return m_messages; }
  [[nodiscard]] std::vector<std::string> texts() const;

 private:
  std::vector<Message> m_messages;
};

}  // namespace motion::test
