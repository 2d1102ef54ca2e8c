// The host with the real bundle and many waiting axes, shared by the benchmarks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <utility>
#include <vector>

#include "host/run/session.h"

namespace motion::bench {

// Signals of the bundle and what the benchmarks use them for.
inline constexpr unsigned int NEVER_SET = 0;
inline constexpr unsigned int ALWAYS_SET = 1;
inline constexpr unsigned int SET_ANEW = 2;
inline constexpr unsigned int TOGGLED = 3;

class BenchHost {
 public:
  static constexpr std::size_t AXES = 10'000;

  /// Opened on first use. Ends the program with a message when the bundle cannot be opened.
  static BenchHost& instance();
  /// Closes it; before main returns.
  static void close();

  [[nodiscard]] host::Runtime& runtime() noexcept { return m_session.runtime(); }
  [[nodiscard]] host::run::Session& session() noexcept { return m_session; }
  [[nodiscard]] host::datalayer::DataLayer& dataLayer() noexcept { return m_session.dataLayer(); }
  /// Destroys it before the bundle is closed.
  void keep(std::shared_ptr<void> thing) { m_kept.push_back(std::move(thing)); }
  [[nodiscard]] host::trace::TraceService& traceService() noexcept { return m_session.traceService(); }
  /// The first `count` axes; each of them waits for NEVER_SET.
  [[nodiscard]] std::span<const std::unique_ptr<host::MotionObject>> waitingAxes(std::size_t count);

 private:
  BenchHost();

  host::run::Session m_session;
  std::vector<std::shared_ptr<void>> m_kept;
};

}  // namespace motion::bench
