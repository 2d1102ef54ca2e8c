// A real-time run with a door, in this process, for tests.
#pragma once

#include <filesystem>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "host/door/door.h"
#include "host/door/door_client.h"
#include "host/run/session.h"
#include "host/scenario/scenario.h"
#include "support/scratch_dir.h"

namespace motion::host::door {

using motion::test::ScratchDir;

/// Runs until somebody sets signals 5 and 99.
inline constexpr const char* WAITING_RUN =
    "signals: {5: part in place, 99: end}\n"
    "objects: [{name: A, type: axis}, {name: B, type: axis}]\n"
    "program:\n"
    "  A: [WaitForSignal: {signalId: 99}]\n"
    "  B: [WaitForSignal: {signalId: 5, autoReset: true}, SetSignal: {signalId: 6}, WaitForSignal: {signalId: 99}]\n";

class LiveDoor {
 public:
  explicit LiveDoor(DoorConfig config = {"kavo test", {"motion.operate", "motion.view"}}, const char* text = WAITING_RUN);
  LiveDoor(const LiveDoor&) = delete;
  LiveDoor& operator=(const LiveDoor&) = delete;
  /// Ends the run.
  ~LiveDoor();

  [[nodiscard]] std::filesystem::path socket() const { return m_scratch / "run.sock"; }
  [[nodiscard]] DoorClient client() const { return DoorClient(socket()); }
  /// Sets signal 99, before that 5 if B still waits for it, and waits for the end of the run.
  const observe::RunRecord& finish();
  /// A cycle that has begun by now.
  [[nodiscard]] std::uint64_t cycle();
  [[nodiscard]] run::Session& session() noexcept { return *m_session; }

 private:
  void play(const scenario::Scenario& scenario);

  ScratchDir m_scratch;
  Door m_door;
  std::unique_ptr<run::Session> m_session;
  std::promise<void> m_started;
  observe::RunRecord m_record;
  std::thread m_player;
};

}  // namespace motion::host::door
