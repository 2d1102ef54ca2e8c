// The trigger report in words.
#include "host/observe/triggers_text.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>

#include "host/observe/text_report.h"

namespace motion::host::observe {

namespace {

using Look = TriggerRecord::Look;

class TriggerText {
 public:
  TriggerText(const RunRecord& record, const TriggerRecord& trigger) : m_record(record), m_trigger(trigger) {}

  std::string write() {
    headline();
    carriers();
    if (m_trigger.fired) {
      firing(*m_trigger.fired);
      if (m_trigger.preTriggerTime > 0.0) {
        lead(*m_trigger.fired);
      }
    } else if (m_trigger.isSpent) {
      line("    fired, but its signal could not be switched");
    } else if (!m_trigger.carriers.empty()) {
      missed();
    }
    return std::move(m_text);
  }

 private:
  template <typename... ARGS>
  void line(fmt::format_string<ARGS...> format, ARGS&&... args) {
    fmt::format_to(std::back_inserter(m_text), format, std::forward<ARGS>(args)...);
    m_text += '\n';
  }

  [[nodiscard]] static std::string millimetres(double length) { return fmt::format("{:.3f} mm", length * 1e3); }
  [[nodiscard]] std::string command(std::size_t number) const { return commandText(m_record, m_trigger.object, number); }
  [[nodiscard]] std::string moment(std::uint64_t cycle) const {
    return fmt::format("cycle {} ({:.4f} s)", cycle, cycleStart(m_record, cycle));
  }

  void headline() {
    line("  {}{}: {} {} within {} of {}{}", m_record.objects.at(m_trigger.object).name,
         m_trigger.line != 0 ? fmt::format(" (line {})", m_trigger.line) : "", m_trigger.sets ? "set" : "reset",
         signalText(m_record, m_trigger.signal), millimetres(m_trigger.radius), pointText(m_trigger.target),
         m_trigger.preTriggerTime > 0.0 ? fmt::format(", {} ahead", milliseconds(m_trigger.preTriggerTime)) : "");
  }

  void carriers() {
    std::string text;
    for (const TriggerRecord::Carrier& carrier : m_trigger.carriers) {
      if (m_trigger.fired && (carrier.cycle == 0 || carrier.cycle > m_trigger.fired->cycle)) {
        continue;  // taken over while it was armed, but there was nothing left to do
      }
      text += text.empty() ? "armed with " : ", carried over to ";
      text += command(carrier.number);
      text += carrier.cycle != 0 ? fmt::format(" in cycle {}", carrier.cycle) : ", which never came to run";
    }
    line("    {}", text.empty() ? "never armed: no command followed that it could accompany" : text);
  }

  void firing(const Look& fired) {
    line("    fired in {} with {} at {}, {} from the target", moment(fired.cycle), command(fired.number),
         pointText(fired.position), millimetres(fired.toolDistance));
  }

  /// What looking ahead has brought.
  void lead(const Look& fired) {
    if (!m_trigger.entered) {
      line("    ahead: the tool itself was not seen in the sphere afterwards; the point ahead was {} from the target",
           millimetres(fired.distance));
      return;
    }
    const std::uint64_t cycles = m_trigger.entered->cycle - fired.cycle;
    line("    ahead: {} and {} before the tool itself was in the sphere, in cycle {}",
         milliseconds(static_cast<double>(cycles) * m_record.cycleTime),
         millimetres(fired.toolDistance - m_trigger.entered->toolDistance), m_trigger.entered->cycle);
  }

  void missed() {
    if (!m_trigger.nearest) {
      line("    never fired: no cycle looked at it");
      return;
    }
    const Look& nearest = *m_trigger.nearest;
    const char* const what = m_trigger.preTriggerTime > 0.0 ? "the point ahead was" : "the tool was";
    line("    never fired: {} nearest in {} with {} at {}, {} from the target; a radius of that size would have fired", what,
         moment(nearest.cycle), command(nearest.number), pointText(nearest.position), radiusText(nearest.distance));
    if (m_trigger.nearestPass && m_trigger.nearestPass->distance <= m_trigger.radius) {
      steppedOver(*m_trigger.nearestPass);
    }
  }

  void steppedOver(const TriggerRecord::Pass& pass) {
    const std::string leap = pass.isLeap ? fmt::format(", and this is where the look ahead begins, {} further on",
                                                       milliseconds(m_trigger.preTriggerTime))
                                         : "";
    line("    stepped over: between cycles {} and {} the path passed the target at {}, but at {:.3f} mm/s one cycle is {}{}",
         pass.cycle - 1, pass.cycle, millimetres(pass.distance), pass.speed * 1e3,
         millimetres(pass.speed * m_record.cycleTime), leap);
  }

  /// Rounded up, so that a radius of that text is not too small; what did not fire was not at the target.
  [[nodiscard]] static std::string radiusText(double distance) {
    return fmt::format("{:.3f} mm", std::max(1.0, std::ceil(distance * 1e6 - 1e-6)) * 1e-3);
  }

  const RunRecord& m_record;
  const TriggerRecord& m_trigger;
  std::string m_text;
};

}  // namespace

std::string triggersText(const RunRecord& record) {
  std::string text;
  for (const TriggerRecord& trigger : record.triggers) {
    text += TriggerText(record, trigger).write();
  }
  return text;
}

}  // namespace motion::host::observe
