// The writer thread of the trace service: takes entries from the ring and hands them to the writers.
#include "host/trace/entry_pump.h"

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <exception>
#include <utility>

#include "log_trace/outputs_lib.h"

namespace motion::host::trace {

namespace {

/// Calls foreign code; what it throws is reported on standard error, since the traces are what failed.
template <typename Call>
void callReportingExceptions(const Call& call) noexcept {
  try {
    call();
  } catch (const std::exception& exception) {
    common::log::outputFunction("ERR", __LINE__, __func__, "A trace entry was not written: %s", exception.what());
  } catch (...) {
    common::log::outputFunction("ERR", __LINE__, __func__, "A trace entry was not written: unknown exception");
  }
}

}  // namespace

EntryPump::EntryPump(std::unique_ptr<TraceWriter> writer, std::size_t ringCapacity, std::chrono::milliseconds pollInterval)
    : m_ring(ringCapacity), m_pollInterval(pollInterval), m_writer(std::move(writer)), m_thread([this] { run(); }) {}

EntryPump::~EntryPump() {
  {
    const std::lock_guard lock(m_passMutex);
    m_isStopping = true;
  }
  m_wake.notify_one();
  m_thread.join();
}

EntryPump::ListenerId EntryPump::addListener(Listener listener) {
  const std::lock_guard lock(m_writersMutex);
  m_listeners.emplace_back(m_lastListenerId + 1, std::move(listener));
  return ++m_lastListenerId;
}

void EntryPump::removeListener(ListenerId id) {
  const std::lock_guard lock(m_writersMutex);
  std::erase_if(m_listeners, [id](const auto& listener) { return listener.first == id; });
}

void EntryPump::flush() {
  std::unique_lock lock(m_passMutex);
  // A pass that already runs may have missed drops from just now, so that only the next one counts.
  const std::uint64_t pass = m_passesStarted + 1;
  const std::size_t accepted = m_ring.acceptedCount();
  m_passesWanted = std::max(m_passesWanted, pass);
  m_wake.notify_one();
  m_passFinished.wait(lock, [&] { return m_passesFinished >= pass && m_ring.consumedCount() >= accepted; });
}

void EntryPump::run() {
  std::unique_lock lock(m_passMutex);
  for (bool isLast = false; !isLast;) {
    isLast = m_isStopping;
    ++m_passesStarted;
    lock.unlock();
    writePass();
    lock.lock();
    ++m_passesFinished;
    m_passFinished.notify_all();
    if (!isLast) {
      // Sleeps even while somebody flushes: whoever waits for this thread on the same processor needs his turn.
      m_wake.wait_for(lock, m_pollInterval, [this] { return m_isStopping || m_passesWanted > m_passesStarted; });
    }
  }
}

void EntryPump::writePass() {
  // As many entries as the ring holds: a pass ends even if producers are faster, so that drops get reported.
  for (std::size_t i = 0; i < m_ring.capacity(); ++i) {
    if (!m_ring.consume([this](const TraceEntry& entry) { deliver(entry); })) {
      break;
    }
  }
  reportDropped();
}

void EntryPump::reportDropped() {
  const std::uint64_t dropped = m_ring.takeDroppedCount();
  if (dropped == 0) {
    return;
  }
  TraceEntry entry;
  ::clock_gettime(CLOCK_REALTIME, &entry.time);
  entry.mainDiagnosisCode = DROP_REPORT_CODE;
  entry.line = __LINE__;
  copyText(entry.unitName, DROP_REPORT_UNIT);
  copyText(entry.origin, DROP_REPORT_UNIT);
  copyText(entry.fileName, "entry_pump");
  copyText(entry.functionName, __func__);
  std::snprintf(entry.text.data(), entry.text.size(), DROP_REPORT_FORMAT, static_cast<unsigned long long>(dropped),
                m_ring.capacity());
  deliver(entry);
}

void EntryPump::deliver(const TraceEntry& entry) noexcept {
  const std::lock_guard lock(m_writersMutex);
  if (m_writer != nullptr) {
    callReportingExceptions([&] { m_writer->write(entry); });
  }
  for (const auto& [id, listener] : m_listeners) {
    callReportingExceptions([&, &call = listener] { call(entry); });
  }
}

}  // namespace motion::host::trace
