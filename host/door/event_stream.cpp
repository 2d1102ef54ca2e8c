#include "host/door/event_stream.h"

#include <fmt/format.h>

#include <nlohmann/json.hpp>
#include <utility>

#include "host/door/signal_json.h"

namespace motion::host::door {

using Json = nlohmann::ordered_json;

namespace {

std::string event(const char* name, const Json& data, std::optional<std::uint64_t> number = {}) {
  return fmt::format("{}event: {}\ndata: {}\n\n", number ? fmt::format("id: {}\n", *number) : "", name, toText(data));
}

/// Start of a cycle on the scenario's clock [s].
double startOf(std::uint64_t cycle, double cycleTime) {
  return cycle == 0 ? 0.0 : static_cast<double>(cycle - 1) * cycleTime;
}

}  // namespace

std::shared_ptr<void> WatcherSeats::take() {
  std::size_t free = m_free.load();
  do {
    if (free == 0) {
      return nullptr;
    }
  } while (!m_free.compare_exchange_weak(free, free - 1));
  return {this, [this](const void*) { m_free.fetch_add(1); }};
}

EventStream::EventStream(const LiveRun& run, const SignalSet& watched, std::shared_ptr<void> seat)
    : m_run(run), m_watched(watched), m_seat(std::move(seat)), m_values(run.values()), m_last(m_values.number) {}

std::optional<std::string> EventStream::next(std::chrono::milliseconds silence) {
  if (m_hasEnded) {
    return std::nullopt;
  }
  if (!std::exchange(m_hasBegun, true)) {
    return beginning();
  }
  const auto deadline = std::chrono::steady_clock::now() + silence;
  for (;;) {
    const auto rest = std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    const Changes changes = m_run.changesAfter(m_last, std::max(rest, std::chrono::milliseconds(0)));
    std::string text = eventsOf(changes);
    if (!changes.changes.empty()) {
      m_last = changes.changes.back().number;
    }
    if (changes.isOver) {
      m_hasEnded = true;
      return text + event("end", Json{{"cycle", m_run.cycle()}});
    }
    if (!text.empty()) {
      return text;
    }
    if (std::chrono::steady_clock::now() >= deadline) {
      return fmt::format(": cycle {}\n\n", m_run.cycle());
    }
  }
}

std::string EventStream::beginning() const {
  std::string text;
  for (std::uint32_t signal = 0; signal < kavo::SIGNAL_COUNT; ++signal) {
    if (m_watched.test(signal)) {
      Json json = signalJson(m_run.facts(), signal, m_values.values.at(signal));
      json["cycle"] = m_values.cycle;
      json["time"] = startOf(m_values.cycle, m_run.facts().cycleTime);
      json["by"] = nullptr;
      text += event("signal", json, m_values.number);
    }
  }
  return text;
}

std::string EventStream::eventsOf(const Changes& changes) const {
  std::string text;
  if (changes.lost > 0) {
    text = event("lost", Json{{"count", changes.lost}});
  }
  for (const SignalChange& change : changes.changes) {
    if (m_watched.test(change.signal)) {
      Json json = signalJson(m_run.facts(), change.signal, change.value);
      json["cycle"] = change.cycle;
      json["time"] = startOf(change.cycle, m_run.facts().cycleTime);
      json["by"] = change.by;
      text += event("signal", json, change.number);
    }
  }
  return text;
}

}  // namespace motion::host::door
