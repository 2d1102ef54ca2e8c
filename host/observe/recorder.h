// Writes down a run while it goes on.
#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "host/motion/cycle.h"
#include "host/motion/events.h"
#include "host/motion/preparation.h"
#include "host/observe/run_record.h"
#include "host/observe/signal_watch.h"

namespace motion::host::observe {

/// What a scenario knows of a command before it runs.
struct CmdDescription {
  std::string name;
  std::string parameters;
  std::vector<std::string> options;  ///< that the user has written at the command
  std::size_t line = 0;
  bool waits = false;
  std::string waitsFor;
  std::optional<std::uint32_t> signal;
  SyncStep sync;
};

/// Values after a certain cycle, noted by the cyclic thread.
struct Probe {
  std::uint64_t cycle = 0;  ///< wanted cycle
  bool isSignal = true;
  std::uint32_t signal = 0;
  const MotionObject* object = nullptr;
  bool taken = false;
  bool value = false;
  Point position{};  ///< of an axis the first of the three
};

/// Collects from two sides, the cyclic thread (ICycleObserver, through a ring) and preparation (ICmdListener, through a
/// list), and writes the record only when the player drains both, in the player's thread.
class Recorder : public ICycleObserver, public ICmdListener {
 public:
  Recorder(SignalWatch& watch, RunRecord& record);

  /// Adds the objects and connects to them. Before the first cycle.
  void attach(std::span<const std::unique_ptr<MotionObject>> objects);
  /// Probes in ascending order of their cycles. Before the first cycle.
  void setProbes(std::vector<Probe> probes);
  /// What will be issued on that object, in this order. Before the first cycle.
  void setProgram(std::uint32_t object, std::vector<CmdDescription> program);

  void beforeObjects(std::uint64_t cycle) noexcept override;
  void afterObject(std::uint64_t cycle, const MotionObject& object) noexcept override;
  void afterObjects(std::uint64_t cycle) noexcept override;
  void onBuffered(const CmdFrame& frame, std::uint64_t cycle) noexcept override;
  void onPrepared(const CmdFrame& frame, std::uint64_t cycle) noexcept override;
  void onDropped(const CmdFrame& frame, std::uint64_t cycle) noexcept override;
  void onRetired(const CmdFrame& frame) noexcept override;

  /// Takes over what has happened; returns how many events. [player]
  std::size_t drain();
  /// Only after the last cycle.
  [[nodiscard]] const std::vector<Probe>& probes() const noexcept { return m_probes; }
  /// Cycle of the last event that drain took over. [player]
  [[nodiscard]] std::uint64_t lastEventCycle() const noexcept { return m_lastEventCycle; }

 private:
  /// What preparation tells of a command.
  struct Note {
    enum class Kind { BUFFERED, PREPARED, DROPPED, RETIRED };
    Kind kind = Kind::BUFFERED;
    std::uint64_t cmdID = 0;
    std::uint32_t object = 0;
    std::uint64_t cycle = 0;
    core::cmd::CmdState state = core::cmd::CmdState::CREATED;
    std::string text;  ///< name, or why it failed
  };

  /// `makeText` gives the text. Without memory the note is lost and counted.
  template <typename TEXT>
  void addNote(Note::Kind kind, const CmdFrame& frame, std::uint64_t cycle, const TEXT& makeText) noexcept;
  void drainNotes();
  void take(const Note& note);
  void takeBuffered(const Note& note);
  void take(const Event& event);
  void takeSignal(const Event& event);
  void setState(CmdRecord& command, core::cmd::CmdState state, std::uint64_t cycle);
  [[nodiscard]] CmdRecord* find(std::uint64_t cmdID);

  SignalWatch& m_watch;
  RunRecord& m_record;
  EventRing m_events;
  std::vector<Probe> m_probes;
  std::size_t m_nextProbe = 0;

  std::mutex m_mutex;  ///< guards m_notes and m_lostNotes
  std::vector<Note> m_notes;
  std::uint64_t m_lostNotes = 0;
  std::vector<std::size_t> m_issued;  ///< by object: how many of its commands were issued
  std::map<std::uint64_t, std::pair<std::uint32_t, std::size_t>> m_byID;  ///< command ID -> object, position in its list
  std::vector<std::size_t> m_lastActive;  ///< by object: number of the command that was active last
  std::uint64_t m_lastEventCycle = 0;
};

}  // namespace motion::host::observe
