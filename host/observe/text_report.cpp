#include "host/observe/text_report.h"

#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "host/observe/joins.h"
#include "host/observe/triggers_text.h"

namespace motion::host::observe {

using core::cmd::CmdState;

namespace {

/// Longer commands push their line out of the column.
constexpr std::size_t WIDEST_CALL = 72;

class Report {
 public:
  explicit Report(const RunRecord& record) : m_record(record) {}

  std::string write() {
    header();
    for (const ObjectRecord& object : m_record.objects) {
      objectSection(object);
    }
    signalSection();
    section("Joins", joinsText(m_record));
    section("Triggers", triggersText(m_record));
    diagnosisSection();
    messageSection();
    expectationSection();
    return std::move(m_text);
  }

 private:
  template <typename... ARGS>
  void line(fmt::format_string<ARGS...> format, ARGS&&... args) {
    fmt::format_to(std::back_inserter(m_text), format, std::forward<ARGS>(args)...);
    m_text += '\n';
  }

  void header() {
    line("{}: {} cycles of {} in {} time", m_record.file, m_record.cycles, milliseconds(m_record.cycleTime),
         m_record.realTime ? "real" : "virtual");
    if (!m_record.warning.empty()) {
      line("warning: {}", m_record.warning);
    }
    if (m_record.punctuality) {
      line("{} cycles, {} overruns, latest wake-up {:.0f} us after its time", m_record.punctuality->cycles,
           m_record.punctuality->overruns, m_record.punctuality->latestWakeUp * 1e6);
    }
  }

  void objectSection(const ObjectRecord& object) {
    line("");
    if (object.type == core::ObjectType::AXIS) {
      line("{} (axis), from {:.3f} mm to {:.3f} mm", object.name, object.startPosition[0] * 1e3,
           object.endPosition[0] * 1e3);
    } else {
      line("{} (kinematics), from {} to {}", object.name, pointText(object.startPosition), pointText(object.endPosition));
    }
    if (object.commands.empty()) {
      line("  nothing to do");
    }
    std::size_t width = 0;
    for (const CmdRecord& command : object.commands) {
      width = std::max(width, callText(command).size());
    }
    for (const CmdRecord& command : object.commands) {
      line("  #{:<3} {:<{}}  {}", command.number, callText(command), std::min(width, WIDEST_CALL), outcome(command));
      for (const std::string& option : command.options) {
        line("       with {}", option);
      }
    }
  }

  [[nodiscard]] static std::string callText(const CmdRecord& command) {
    return command.parameters.empty() ? command.name : fmt::format("{} {}", command.name, command.parameters);
  }

  [[nodiscard]] std::string outcome(const CmdRecord& command) const {
    if (command.active == 0) {
      return fmt::format("{}{}", stateText(command.state),
                         command.ended != 0 ? fmt::format(" before cycle {}", command.ended) : "");
    }
    std::string text = command.ended == 0 || command.ended == command.active
                           ? fmt::format("cycle {}", command.active)
                           : fmt::format("cycles {} to {}", command.active, command.ended);
    text += fmt::format(" ({} s)", seconds(command.active));
    if (command.state != CmdState::DONE) {
      text += fmt::format(", {}", stateText(command.state));
    }
    if (!command.failure.empty()) {
      text += fmt::format(": {}", command.failure);
    }
    return text + waiting(command);
  }

  [[nodiscard]] std::string waiting(const CmdRecord& command) const {
    if (!command.waits) {
      return command.state == CmdState::DONE && command.ended > command.active ? ", took " + duration(command) : "";
    }
    if (command.ended == command.active) {
      return fmt::format(", no wait{}{}", command.waitsFor.empty() ? "" : " for ", command.waitsFor);
    }
    std::string text = fmt::format(", {} {}", command.ended == 0 ? "has waited" : "waited", duration(command));
    if (!command.waitsFor.empty()) {
      text += fmt::format(" for {}", command.waitsFor);
    }
    if (const auto release = releasedBy(m_record, command)) {
      text += fmt::format(", {} {} in cycle {}", release->kind == StepRecord::Kind::SIGNAL_SET ? "set" : "reset",
                          authorText(m_record, release->object, release->number), release->cycle);
    }
    return text;
  }

  /// From the start of the first cycle to the start of the one that ended it: what the others took.
  [[nodiscard]] std::string duration(const CmdRecord& command) const {
    const std::uint64_t end = command.ended != 0 ? command.ended : m_record.cycles;
    const std::uint64_t cycles = end - command.active + (command.waits ? 0 : 1);
    return milliseconds(static_cast<double>(cycles) * m_record.cycleTime);
  }

  [[nodiscard]] std::string seconds(std::uint64_t cycle) const { return fmt::format("{:.4f}", cycleStart(m_record, cycle)); }

  [[nodiscard]] static const char* stateText(CmdState state) {
    switch (state) {
      case CmdState::ACTIVE:
        return "still active";
      case CmdState::DONE:
        return "done";
      case CmdState::ABORTED:
        return "aborted";
      case CmdState::FAILED:
        return "failed";
      default:
        return "never started";
    }
  }

  void signalSection() {
    if (m_record.signals.empty()) {
      return;
    }
    line("");
    line("Signals");
    for (const SignalRecord& change : m_record.signals) {
      line("  cycle {:>7} ({} s)  {} {} {}", change.cycle, seconds(change.cycle), signalText(m_record, change.signal),
           change.value ? "set" : "reset", authorText(m_record, change.object, change.number));
    }
  }

  void section(const char* title, const std::string& text) {
    if (!text.empty()) {
      line("");
      line("{}", title);
      m_text += text;
    }
  }

  void diagnosisSection() {
    if (!m_record.diagnoses.empty()) {
      line("");
      line("Diagnoses");
    }
    for (const DiagnosisRecord& diagnosis : m_record.diagnoses) {
      line("  {}{}: {} (0x{:08X}, 0x{:08X})", m_record.objects.at(diagnosis.object).name,
           diagnosis.line != 0 ? fmt::format(" (line {})", diagnosis.line) : "", diagnosis.text, diagnosis.mainCode,
           diagnosis.detailCode);
    }
  }

  void messageSection() {
    if (!m_record.messages.empty()) {
      line("");
      line("Messages");
    }
    for (const std::string& message : m_record.messages) {
      line("  {}", message);
    }
  }

  void expectationSection() {
    if (!m_record.expectations.empty()) {
      line("");
      line("Expectations");
    }
    for (const ExpectationRecord& expectation : m_record.expectations) {
      line("  {} {}{}", expectation.holds ? "\u2713" : "\u2717", expectation.text,
           expectation.holds ? "" : fmt::format("  -- line {}: {}", expectation.line, expectation.reason));
    }
    line("");
    if (m_record.lostEvents != 0) {
      line("INCOMPLETE: {} events came too fast to be recorded; use a longer cycle or fewer objects", m_record.lostEvents);
    }
    for (const std::string& failure : m_record.failures) {
      line("FAILED: {}", failure);
    }
    if (!m_record.stuck.empty()) {
      line("STUCK: {}", m_record.stuck);
    }
    line("{}", m_record.isFine() ? "OK" : "NOT OK");
  }

  const RunRecord& m_record;
  std::string m_text;
};

const char* stepText(StepRecord::Kind kind) {
  switch (kind) {
    case StepRecord::Kind::ACTIVE:
      return "active";
    case StepRecord::Kind::DONE:
      return "done";
    case StepRecord::Kind::ABORTED:
      return "aborted";
    case StepRecord::Kind::FAILED:
      return "failed";
    case StepRecord::Kind::MOTION_BEGAN:
      return "moves";
    case StepRecord::Kind::SIGNAL_SET:
      return "set";
    case StepRecord::Kind::SIGNAL_RESET:
      return "reset";
  }
  return "";
}

}  // namespace

std::string textReport(const RunRecord& record) {
  return Report(record).write();
}

std::string eventList(const RunRecord& record) {
  std::string text;
  for (const StepRecord& step : record.steps) {
    if (step.kind == StepRecord::Kind::SIGNAL_SET || step.kind == StepRecord::Kind::SIGNAL_RESET) {
      text += fmt::format("{:>7}  {} {} {}\n", step.cycle, signalText(record, step.signal), stepText(step.kind),
                          authorText(record, step.object, step.number));
    } else {
      text += fmt::format("{:>7}  {} {} {}\n", step.cycle, commandText(record, step.object, step.number),
                          record.objects.at(step.object).commands.at(step.number - 1).name, stepText(step.kind));
    }
  }
  return text;
}

std::string pointText(const Point& point) {
  return fmt::format("[{:.3f}, {:.3f}, {:.3f}] mm", point[0] * 1e3, point[1] * 1e3, point[2] * 1e3);
}

std::string milliseconds(double seconds) {
  return fmt::format("{:.3f} ms", seconds * 1e3);
}

}  // namespace motion::host::observe
