// Diagnosis receivers that keep what is reported.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "motion/core/dia/i_dia.h"
#include "support/fake_calls.h"

namespace motion::test {

struct FakeDiagnosis {
  std::uint32_t mainCode = 0;
  std::uint32_t detailCode = 0;
  core::dia::CmdSourceInfo source;
  std::string file;
  std::string function;
  std::uint32_t line = 0;
  std::string format;
  std::string text;
  bool isClosed = false;
};

/// Operations: "dia.report", "dia.close".
class FakeDia : public core::dia::IDia {
 public:
  explicit FakeDia(FakeCalls& calls) : m_calls(calls) {}

  void report(std::uint32_t mainCode, std::uint32_t detailCode, const core::dia::CmdSourceInfo& source,
              const core::dia::SourcePosition& position, const char* format, ...) override
      __attribute__((format(printf, 6, 7)));
  void close() override;

  std::vector<FakeDiagnosis> m_reports;

 private:
  FakeCalls& m_calls;
};

/// Operation: "collector.add".
class FakeDiagCollector : public core::dia::IDiagCollector {
 public:
  explicit FakeDiagCollector(FakeCalls& calls) : m_calls(calls) {}

  void add(std::uint32_t mainCode, std::uint32_t detailCode, const char* text) override;

 private:
  FakeCalls& m_calls;
};

}  // namespace motion::test
