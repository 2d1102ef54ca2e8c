// What components say about parameters while they decode them.
#pragma once

#include "motion/core/dia/i_dia.h"

namespace motion::host {

/// Passes every diagnosis on to a log, with the source of the command or option whose parameters are decoded.
class DiagCollector : public core::dia::IDiagCollector {
 public:
  /// Both are borrowed.
  DiagCollector(core::dia::IDia& dia, const core::dia::CmdSourceInfo& source) : m_dia(dia), m_source(source) {}

  void add(std::uint32_t mainCode, std::uint32_t detailCode, const char* text) noexcept override {
    try {
      m_dia.report(mainCode, detailCode, m_source, {}, "%s", text != nullptr ? text : "");
      m_dia.close();
    } catch (...) {
      // Without its log a diagnosis is lost; what it is about was refused all the same.
    }
  }

 private:
  core::dia::IDia& m_dia;
  const core::dia::CmdSourceInfo& m_source;
};

}  // namespace motion::host
