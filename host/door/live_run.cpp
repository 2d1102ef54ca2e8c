#include "host/door/live_run.h"

#include <nlohmann/json.hpp>
#include <utility>

#include "host/door/door_limits.h"
#include "host/motion/events.h"
#include "host/observe/wait_graph.h"
#include "host/observe/wait_json.h"

namespace motion::host::door {

void LiveRun::look(const observe::RunRecord& record, std::uint64_t cycle) {
  m_cycle.store(cycle, std::memory_order_relaxed);
  if (record.signals.size() > m_taken) {
    takeChanges(record);
  }
  answer(record, cycle);
}

void LiveRun::takeChanges(const observe::RunRecord& record) {
  {
    const std::lock_guard lock(m_mutex);
    for (; m_taken < record.signals.size(); ++m_taken) {
      const observe::SignalRecord& change = record.signals[m_taken];
      m_kept.push_back({m_values.number + 1, change.cycle, change.signal, change.value,
                        change.object == OUTSIDE ? "outside" : observe::commandText(record, change.object, change.number)});
      if (m_kept.size() > KEPT_CHANGES) {
        m_kept.pop_front();
      }
      ++m_values.number;
      m_values.cycle = change.cycle;
      m_values.values.at(change.signal) = change.value;
    }
  }
  m_news.notify_all();
}

void LiveRun::answer(const observe::RunRecord& record, std::uint64_t cycle) {
  const std::uint64_t asked = m_asked.load(std::memory_order_acquire);
  if (asked == m_answered) {  // nobody else writes it
    return;
  }
  Explanation explanation{cycle, observe::waitsJson(record).dump(-1, ' ', false, nlohmann::json::error_handler_t::replace),
                          observe::explain(record, observe::makeWaitGraph(record))};
  {
    const std::lock_guard lock(m_mutex);
    m_explanation = std::move(explanation);
    m_answered = asked;
  }
  m_news.notify_all();
}

void LiveRun::end() noexcept {
  {
    const std::lock_guard lock(m_mutex);
    m_isOver.store(true, std::memory_order_release);
  }
  m_news.notify_all();
}

SignalValues LiveRun::values() const {
  const std::lock_guard lock(m_mutex);
  return m_values;
}

Changes LiveRun::changesAfter(std::uint64_t number, std::chrono::milliseconds limit) const {
  std::unique_lock lock(m_mutex);
  m_news.wait_for(lock, limit, [&] { return m_values.number > number || isOver(); });
  Changes result;
  result.isOver = isOver();
  if (m_values.number <= number) {
    return result;
  }
  const std::uint64_t oldest = m_kept.front().number;
  result.lost = oldest > number + 1 ? oldest - number - 1 : 0;
  const std::uint64_t known = number >= oldest ? number + 1 - oldest : 0;
  result.changes.assign(m_kept.begin() + static_cast<std::ptrdiff_t>(known), m_kept.end());
  return result;
}

std::optional<Explanation> LiveRun::explain(std::chrono::milliseconds limit) const {
  std::unique_lock lock(m_mutex);
  const std::uint64_t question = m_asked.load(std::memory_order_relaxed) + 1;
  m_asked.store(question, std::memory_order_release);
  m_news.wait_for(lock, limit, [&] { return m_answered >= question || isOver(); });
  if (m_answered < question) {
    return std::nullopt;
  }
  return m_explanation;
}

}  // namespace motion::host::door
