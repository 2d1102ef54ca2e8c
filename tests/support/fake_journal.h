// Takes the place of the journal for the whole test program: nothing is sent, everything is kept.
#pragma once

#include <map>
#include <string>
#include <vector>

namespace motion::test {

/// Fields of one entry by name.
using FakeJournalEntry = std::map<std::string, std::string>;

/// Keeps the journal entries that this thread's journal client sends while it exists. One per thread at a time.
class FakeJournal {
 public:
  FakeJournal();
  ~FakeJournal();
  FakeJournal(const FakeJournal&) = delete;
  FakeJournal& operator=(const FakeJournal&) = delete;

  [[nodiscard]] const std::vector<FakeJournalEntry>& entries() const { return m_entries; }
  /// As in "090F0FFC debug_trace addTraceBundle: a text": main code, file, function and text of each entry.
  [[nodiscard]] std::vector<std::string> summaries() const;

  /// Called for each send with the lines of an entry.
  void take(const std::string& bytes);

 private:
  std::vector<FakeJournalEntry> m_entries;
};

}  // namespace motion::test
