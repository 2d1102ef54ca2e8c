// The journal entries of the process of a check, and the component's own sink that writes them.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "common/log/trace/i_log_real_time3.h"
#include "conformance/bundle.h"
#include "support/journal_reader.h"

namespace motion::conformance {

/// Positions of the texts in MESSAGE.
enum class Part {
  TIME,
  USER_ID,
  MAIN_CODE,
  TITLE,
  DETAILED_CODE,
  FIFTH,
  ENTITY,
  ORIGIN,
  UNIT,
  FILE_NAME,
  FUNCTION,
  LINE,
  TEXT,
};

/// One trace in the journal.
class TraceInJournal {
 public:
  explicit TraceInJournal(test::JournalEntry entry) : m_entry(std::move(entry)) {}

  /// A field that stands in the entry once; a Mismatch otherwise.
  [[nodiscard]] std::string field(std::string_view name) const;
  /// One of the thirteen texts in MESSAGE; a Mismatch when there are not thirteen.
  [[nodiscard]] std::string part(Part part) const;
  /// As in "6 090A0FFC motion_kavo_cmp init: Bundlename: x".
  [[nodiscard]] std::string summary() const;

 private:
  test::JournalEntry m_entry;
};

/// What this process traces into the journal from now on. A Mismatch when there is no journal.
class OwnJournal {
 public:
  OwnJournal();

  [[nodiscard]] std::vector<TraceInJournal> entries();
  [[nodiscard]] std::vector<std::string> summaries();
  /// Microseconds since the epoch when this was made.
  [[nodiscard]] std::int64_t begin() const { return m_begin; }

 private:
  std::unique_ptr<test::JournalReader> m_reader;
  std::int64_t m_begin;
};

/// Microseconds since the epoch.
[[nodiscard]] std::int64_t microsecondsNow();

/// The sink that the component uses while no trace service gives it another one: a service that refuses the unit finds it in
/// the place for its own. Refusing leaves a trace.
[[nodiscard]] common::log::trace::ILogRealTime3& bufferedSink(core::framework::IMotionComponent& component);

}  // namespace motion::conformance
