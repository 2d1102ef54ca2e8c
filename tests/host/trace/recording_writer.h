// A writer that keeps what it is given, and can be held up.
#pragma once

#include <condition_variable>
#include <mutex>
#include <string>
#include <vector>

#include "host/trace/trace_writer.h"

namespace motion::host::test {

/// What a recording writer received. Outlives the writer, which belongs to the pump.
class Recording {
 public:
  void add(const trace::TraceEntry& entry) {
    std::unique_lock lock(m_mutex);
    m_entries.push_back(entry);
    m_changed.notify_all();
    m_changed.wait(lock, [this] { return !m_isHeld; });
  }

  /// From the next entry on, the writer stays in its call until release.
  void hold() {
    const std::lock_guard lock(m_mutex);
    m_isHeld = true;
  }
  void release() {
    const std::lock_guard lock(m_mutex);
    m_isHeld = false;
    m_changed.notify_all();
  }
  /// Waits until `number` entries have reached the writer.
  void waitFor(std::size_t number) {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_entries.size() >= number; });
  }

  [[nodiscard]] std::vector<trace::TraceEntry> entries() const {
    const std::lock_guard lock(m_mutex);
    return m_entries;
  }
  [[nodiscard]] std::vector<std::string> texts() const {
    std::vector<std::string> result;
    for (const auto& entry : entries()) {
      result.emplace_back(entry.text.data());
    }
    return result;
  }

 private:
  mutable std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_isHeld = false;
  std::vector<trace::TraceEntry> m_entries;
};

class RecordingWriter final : public trace::TraceWriter {
 public:
  explicit RecordingWriter(Recording& recording) : m_recording(recording) {}
  void write(const trace::TraceEntry& entry) override { m_recording.add(entry); }

 private:
  Recording& m_recording;
};

}  // namespace motion::host::test
