// The component of a bundle in a recording host.
#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "conformance/bundle.h"
#include "motion/core/framework/i_motion_component.h"
#include "support/fake_host.h"

namespace motion::conformance {

inline constexpr const char* BUNDLE_NAME = "motion.kavo.bundle";
inline constexpr const char* SIGNALS_IN = "motion/state/functions/kavo/rt-data/signals_in";
inline constexpr const char* SIGNALS_OUT = "motion/state/functions/kavo/rt-data/signals_out";
inline constexpr std::uint32_t NUMBER_OF_SIGNALS = 100;

/// The services that a component needs to start, in the order in which it asks for them.
enum class Service { MOTION_EXT, MOTION_SYS, DATA_LAYER, MOTION_CMD, MOTION_CMD2, MOTION_SYS2, MOTION_DATA };
inline constexpr std::size_t NUMBER_OF_SERVICES = 7;

/// A component, and a host that notes every call of it and every trace. The trace service is there from the beginning; the
/// other services are given on demand. The host lists the component's nodes at once, so that a start does not wait.
class Subject {
 public:
  explicit Subject(const Bundle& bundle);
  /// The same for a component that is there already; its schemas lie in `bundlePath`/bfbs.
  Subject(std::unique_ptr<core::framework::IMotionComponent> component, const std::string& bundlePath);
  Subject(const Subject&) = delete;
  Subject& operator=(const Subject&) = delete;
  /// Stops the component, takes the trace service back and deletes the component.
  ~Subject();

  [[nodiscard]] core::framework::IMotionComponent& component() const { return *m_component; }
  /// Deletes the component now, without a stop.
  void destroy() { m_component.reset(); }

  void give(Service service);
  void giveNull(Service service);
  void remove(Service service);
  /// All services, the bundle's directory and BUNDLE_NAME.
  void giveEverything();
  /// Everything but one service.
  void giveEverythingBut(Service missing);
  /// Gives everything and starts; a Mismatch when the start fails. Forgets calls and traces.
  void start();

  /// Each trace as in "Error rt_signals initialize: Already initialized".
  [[nodiscard]] std::vector<std::string> traces() const { return host.traceSink.summaries(); }
  /// Those whose text begins so, as in "Error".
  [[nodiscard]] std::vector<std::string> traces(std::string_view beginning) const;
  /// Those that a unit wrote, such as "motion_kavo_cmp".
  [[nodiscard]] std::vector<std::string> tracesOf(std::string_view unit) const;
  /// Forgets calls and traces.
  void forget();
  /// Throws a Mismatch unless everything that the component published, registered, made or opened is gone again.
  void expectNothingLeft() const;

  /// The counter bytes of the memories, which must exist.
  [[nodiscard]] std::uint8_t& in(std::uint32_t signalId) { return bytes(SIGNALS_IN).at(signalId); }
  [[nodiscard]] std::uint8_t& out(std::uint32_t signalId) { return bytes(SIGNALS_OUT).at(signalId); }
  [[nodiscard]] bool isSet(std::uint32_t signalId) { return in(signalId) != out(signalId); }
  [[nodiscard]] std::vector<std::uint8_t>& bytes(const std::string& address);

  test::FakeHost host;

 private:
  std::unique_ptr<core::framework::IMotionComponent> m_component;
};

}  // namespace motion::conformance
