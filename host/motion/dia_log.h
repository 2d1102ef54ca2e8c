// Diagnoses of a motion object, kept for its users.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "motion/core/dia/i_dia.h"

namespace motion::host {

struct Diagnosis {
  std::uint32_t mainCode = 0;
  std::uint32_t detailCode = 0;
  core::dia::CmdSourceInfo source;
  std::string file;
  std::string function;
  std::uint32_t line = 0;
  std::string text;
  bool closed = false;
};

/// Keeps the newest diagnoses. Thread-safe.
class DiaLog : public core::dia::IDia {
 public:
  static constexpr std::size_t CAPACITY = 64;

  /// Without memory the diagnosis is lost and nothing else changes. [prepare]
  void report(std::uint32_t mainCode, std::uint32_t detailCode, const core::dia::CmdSourceInfo& source,
              const core::dia::SourcePosition& position, const char* format, ...) noexcept override
      __attribute__((format(printf, 6, 7)));
  void close() noexcept override;

  [[nodiscard]] std::vector<Diagnosis> all() const;
  /// How many were reported since creation.
  [[nodiscard]] std::uint64_t count() const;
  /// Text of the newest one; empty when there is none.
  [[nodiscard]] std::string latestText() const;
  /// The same with both codes, "too fast (0x090F1000, 0x0C561000)".
  [[nodiscard]] std::string latestWithCodes() const;

 private:
  mutable std::mutex m_mutex;
  std::vector<Diagnosis> m_entries;
  std::uint64_t m_count = 0;
};

}  // namespace motion::host
