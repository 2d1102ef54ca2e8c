// Reads entries back from the systemd-journald that runs on this machine.
#pragma once

#include <chrono>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

struct sd_journal;

namespace motion::test {

/// One journal entry with all its data fields, those that journald adds (their names begin with '_') included.
struct JournalEntry {
  std::vector<std::pair<std::string, std::string>> fields;

  /// All values of a field; several when it stands in the entry more than once.
  [[nodiscard]] std::vector<std::string> values(std::string_view field) const;
  /// The value of a field that stands in the entry exactly once; throws otherwise.
  [[nodiscard]] std::string value(std::string_view field) const;
};

/// A text that no other test, run or process uses; at most 40 characters, all of them letters, digits and '-'.
[[nodiscard]] std::string uniqueMarker();

/// Every operation throws std::runtime_error, with a sentence that says what is missing, when the journal cannot be used.
class JournalReader {
 public:
  /// Throws when no journald listens.
  JournalReader();

  /// All entries whose field has the value, oldest first, of everything that was sent to journald before this call. It is
  /// complete, not a guess: journald takes entries one after the other, and the call waits, at most `limit`, until an
  /// entry of its own has arrived behind them.
  [[nodiscard]] std::vector<JournalEntry> read(std::string_view field, std::string_view value,
                                               std::chrono::milliseconds limit = std::chrono::seconds(20));

 private:
  struct Close {
    void operator()(sd_journal* journal) const noexcept;
  };

  void open();
  void waitForArrival(std::chrono::milliseconds limit);
  void match(std::string_view field, std::string_view value);
  [[nodiscard]] JournalEntry currentEntry();

  std::unique_ptr<sd_journal, Close> m_journal;
};

}  // namespace motion::test
