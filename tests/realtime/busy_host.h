// A host with the real bundle whose objects do everything that commands can do, for tests of the cyclic path.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "host/run/session.h"

namespace motion::test {

/// The host with the bundle of this build, without objects; throws std::runtime_error when it cannot be opened.
class OpenSession {
 public:
  explicit OpenSession(double cycleTime);

  [[nodiscard]] host::Runtime& runtime() noexcept { return m_session.runtime(); }
  [[nodiscard]] host::run::Session& session() noexcept { return m_session; }

  /// From outside, through the host's record of system functions; true when it succeeded. Not real-time.
  [[nodiscard]] bool setSignal(unsigned int signal);
  [[nodiscard]] bool resetSignal(unsigned int signal);
  [[nodiscard]] bool abortCmds(const std::string& object);

 private:
  host::run::Session m_session;
};

/// Issues one command on the object of that name; true when it was taken.
using Call = std::function<bool(host::Runtime&, const char* object)>;

[[nodiscard]] Call setSignalCall(unsigned int signal);
[[nodiscard]] Call resetSignalCall(unsigned int signal);
[[nodiscard]] Call waitForSignalCall(unsigned int signal, bool autoReset);
[[nodiscard]] Call waitForSignalResetCall(unsigned int signal);
[[nodiscard]] Call joinCall(const std::string& partner, bool syncStartNextCmd);
[[nodiscard]] Call moveCall(const char* command, double millimetres);
/// MoveLin or MoveCirc; points and radius in millimetres.
[[nodiscard]] Call kinMoveCall(const char* command, std::vector<double> to, std::vector<double> via = {},
                               double blending = 0.0);
[[nodiscard]] Call dwellCall(double seconds);

/// How commands ended, by name and state, and how long they were current.
class EndTally : public host::ICmdListener {
 public:
  struct Entry {
    std::uint64_t ended = 0;
    std::uint64_t inFirstCycle = 0;  ///< of those, in the cycle in which they became current
  };

  void onBuffered(const host::CmdFrame& /*frame*/, std::uint64_t /*cycle*/) noexcept override {}
  void onPrepared(const host::CmdFrame& /*frame*/, std::uint64_t /*cycle*/) noexcept override {}
  void onDropped(const host::CmdFrame& /*frame*/, std::uint64_t /*cycle*/) noexcept override {}
  void onRetired(const host::CmdFrame& frame) noexcept override;
  /// Takes over what the cycles wrote; before preparation.
  void drain(host::EventRing& events);

  [[nodiscard]] Entry of(const std::string& name, core::cmd::CmdState state) const;

 private:
  std::map<std::uint64_t, std::pair<std::uint64_t, std::uint64_t>> m_cycles;  ///< command ID -> first and last cycle
  std::map<std::pair<std::string, core::cmd::CmdState>, Entry> m_entries;
};

/// Axes and kinematics that set, reset and await signals, join, move along lines and arcs, and dwell, over and over, while
/// signals change and commands are aborted from outside.
class BusyHost {
 public:
  BusyHost();

  /// Everything that happens between two cycles: programs are fed, signals change, commands are aborted and prepared.
  /// Throws std::runtime_error when the host or the component refuses something.
  void betweenCycles();

  [[nodiscard]] host::Runtime& runtime() noexcept { return m_open.runtime(); }
  [[nodiscard]] host::run::Session& session() noexcept { return m_open.session(); }
  [[nodiscard]] const EndTally& tally() const noexcept { return m_tally; }
  /// How often a signal was set from outside just before its owner sets it, which the component warns of.
  [[nodiscard]] std::uint64_t doubleSets() const noexcept { return m_doubleSets; }

 private:
  struct Program {
    host::MotionObject* object;
    std::vector<Call> calls;
    std::size_t next = 0;
  };

  void add(const std::string& name, core::ObjectType type, std::vector<Call> calls);
  void happenOutside(std::uint64_t nextCycle);
  void feed(Program& program);

  // Before the session, which uses them until it is closed.
  host::EventRing m_events;
  EndTally m_tally;
  OpenSession m_open;
  std::vector<Program> m_programs;
  std::uint64_t m_doubleSets = 0;
};

}  // namespace motion::test
