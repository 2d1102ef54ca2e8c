// The writer thread of the trace service: takes entries from the ring and hands them to the writers.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "host/trace/trace_ring.h"
#include "host/trace/trace_writer.h"

namespace motion::host::trace {

/// Empties the ring in passes. Between two passes the thread sleeps for `pollInterval`: a producer that had to wake it
/// would make a system call, so producers wake nobody and an entry waits for at most that long. flush and the end of the
/// pump, which are not real-time, do wake it.
///
/// | event | what is written |
/// |---|---|
/// | entries in the ring | each to the writer first, then to all listeners in the order of their addition |
/// | entries were dropped | one warning of unit DROP_REPORT_UNIT with their number, after the entries of the same pass |
/// | destruction | everything accepted before it, then the thread ends |
class EntryPump {
 public:
  using Listener = std::function<void(const TraceEntry&)>;
  using ListenerId = std::uint64_t;

  static constexpr unsigned int DROP_REPORT_CODE = 0x090E0FFC;
  static constexpr const char* DROP_REPORT_UNIT = "motion.host.trace";
  static constexpr const char* DROP_REPORT_FORMAT = "%llu trace entries were dropped, because %zu entries were waiting.";

  /// A null writer writes nowhere. Throws std::bad_alloc, std::system_error. [framework]
  EntryPump(std::unique_ptr<TraceWriter> writer, std::size_t ringCapacity, std::chrono::milliseconds pollInterval);
  EntryPump(const EntryPump&) = delete;
  EntryPump& operator=(const EntryPump&) = delete;
  /// No producer may push any more. [framework]
  ~EntryPump();

  [[nodiscard]] TraceRing& ring() noexcept { return m_ring; }  ///< [any & real-time]

  /// The listener sees all entries from now on, on the writer thread; it must neither call the pump nor take long. What it
  /// throws is reported and otherwise ignored. Throws std::bad_alloc. Not from a listener or writer. [any]
  ListenerId addListener(Listener listener);
  /// When it returns, the listener is not called any more. Not from a listener or writer. [any]
  void removeListener(ListenerId id);

  /// Waits until everything accepted before the call was written, and drops from before it were reported. Blocks. Not from a
  /// listener or writer. [any]
  void flush();

 private:
  void run();
  void writePass();
  void reportDropped();
  void deliver(const TraceEntry& entry) noexcept;

  TraceRing m_ring;
  const std::chrono::milliseconds m_pollInterval;

  std::mutex m_writersMutex;
  std::unique_ptr<TraceWriter> m_writer;
  std::vector<std::pair<ListenerId, Listener>> m_listeners;
  ListenerId m_lastListenerId = 0;

  std::mutex m_passMutex;
  std::condition_variable m_wake;
  std::condition_variable m_passFinished;
  std::uint64_t m_passesStarted = 0;
  std::uint64_t m_passesFinished = 0;
  std::uint64_t m_passesWanted = 0;  ///< a flush waits for the pass of that number
  bool m_isStopping = false;

  std::thread m_thread;
};

}  // namespace motion::host::trace
