#include "host/observe/run_record.h"

#include <fmt/format.h>

#include <algorithm>

#include "host/motion/events.h"

namespace motion::host::observe {

bool RunRecord::isFine() const {
  return stuck.empty() && failures.empty() && lostEvents == 0 &&
         std::ranges::all_of(expectations, &ExpectationRecord::holds);
}

std::string commandText(const RunRecord& record, std::uint32_t object, std::size_t number) {
  const std::string& name = record.objects.at(object).name;
  return number == 0 ? name : fmt::format("{}#{}", name, number);
}

std::string signalText(const RunRecord& record, std::uint32_t signal) {
  const bool named = signal < record.signalNames.size() && !record.signalNames[signal].empty();
  return named ? fmt::format("signal {} '{}'", signal, record.signalNames[signal]) : fmt::format("signal {}", signal);
}

std::string authorText(const RunRecord& record, std::uint32_t object, std::size_t number) {
  return object == OUTSIDE ? "from outside" : "by " + commandText(record, object, number);
}

double cycleStart(const RunRecord& record, std::uint64_t cycle) {
  return cycle == 0 ? 0.0 : static_cast<double>(cycle - 1) * record.cycleTime;
}

namespace {

bool isSignal(const StepRecord& step) {
  return step.kind == StepRecord::Kind::SIGNAL_SET || step.kind == StepRecord::Kind::SIGNAL_RESET;
}

bool isOf(const StepRecord& step, const CmdRecord& command) {
  return step.object == command.object && step.number == command.number;
}

}  // namespace

std::optional<StepRecord> releasedBy(const RunRecord& record, const CmdRecord& command) {
  const auto done = std::ranges::find_if(
      record.steps, [&](const StepRecord& step) { return step.kind == StepRecord::Kind::DONE && isOf(step, command); });
  if (!command.signal || done == record.steps.end()) {
    return std::nullopt;
  }
  std::optional<StepRecord> found;
  for (auto step = record.steps.begin(); step != done; ++step) {
    if (isSignal(*step) && step->signal == *command.signal && !isOf(*step, command)) {
      found = *step;
    }
  }
  // A write from outside during the very turn that ended the wait is noticed only after that turn.
  const bool waited = command.active < command.ended;
  if (waited && (!found || found->cycle + 1 < command.ended)) {
    for (auto step = done + 1; step != record.steps.end() && step->cycle == command.ended && isSignal(*step); ++step) {
      if (step->object == OUTSIDE && step->signal == *command.signal) {
        return *step;
      }
    }
  }
  return found;
}

}  // namespace motion::host::observe
