// The graph of waits in words.
#include <fmt/format.h>

#include <algorithm>
#include <iterator>

#include "host/observe/wait_graph.h"

namespace motion::host::observe {

namespace {

class Explainer {
 public:
  Explainer(const RunRecord& record, const WaitGraph& graph) : m_record(record), m_graph(graph) {}

  std::string write() {
    for (const ObjectWait& wait : m_graph.waits) {
      waitLine(wait);
      if (const ObjectWait* const other = sameJoinBefore(wait); other != nullptr) {
        line("    the same join as that of {}", name(other->object));
      } else if (wait.step.kind == SyncKind::JOINS) {
        joinReasons(wait);
      } else {
        signalReasons(wait);
      }
    }
    circleLine();
    verdict();
    return std::move(m_text);
  }

 private:
  template <typename... ARGS>
  void line(fmt::format_string<ARGS...> format, ARGS&&... args) {
    m_text += m_text.empty() ? "" : "\n";
    fmt::format_to(std::back_inserter(m_text), format, std::forward<ARGS>(args)...);
  }

  [[nodiscard]] const std::string& name(std::uint32_t object) const { return m_record.objects.at(object).name; }
  [[nodiscard]] const CmdRecord& command(std::uint32_t object, std::size_t number) const {
    return m_record.objects.at(object).commands.at(number - 1);
  }
  [[nodiscard]] std::string place(std::uint32_t object, std::size_t number) const {
    const CmdRecord& found = command(object, number);
    return fmt::format("{} {} (line {})", commandText(m_record, object, number), found.name, found.line);
  }
  [[nodiscard]] std::string names(const auto& objects) const {
    std::vector<std::string> texts;
    std::ranges::transform(objects, std::back_inserter(texts), [this](std::uint32_t object) { return name(object); });
    return fmt::format("{}", fmt::join(texts, ", "));
  }

  void waitLine(const ObjectWait& wait) {
    const CmdRecord& found = command(wait.object, wait.number);
    line("  {} waits in {} since cycle {}{}{}", name(wait.object), place(wait.object, wait.number), wait.since,
         found.waitsFor.empty() ? "" : " for ", found.waitsFor);
  }

  void signalReasons(const ObjectWait& wait) {
    const char* const verb = wait.step.kind == SyncKind::WAITS_SET ? "set" : "reset";
    if (wait.releasers.empty()) {
      line("    no other object has a command left that would {} it", verb);
    }
    for (const Releaser& releaser : wait.releasers) {
      line("    {} would {} it, but {}", place(releaser.object, releaser.number), verb, whereabouts(releaser.object));
    }
  }

  /// A member of the same occurrence whose reasons were told already: they would only be repeated.
  [[nodiscard]] const ObjectWait* sameJoinBefore(const ObjectWait& wait) const {
    if (wait.step.kind != SyncKind::JOINS) {
      return nullptr;
    }
    const auto end = m_graph.waits.begin() + (&wait - m_graph.waits.data());
    const auto found = std::find_if(m_graph.waits.begin(), end, [&wait](const ObjectWait& other) {
      return other.step.kind == SyncKind::JOINS && other.step.group == wait.step.group && !wait.step.namesTwice &&
             std::ranges::find(other.arrived, wait.object, &ArrivedMember::object) != other.arrived.end();
    });
    return found != end ? &*found : nullptr;
  }

  void joinReasons(const ObjectWait& wait) {
    if (wait.step.namesTwice) {
      line("    its group names an object twice; such a join never completes");
    }
    std::vector<std::string> arrived;
    for (const ArrivedMember& member : wait.arrived) {
      arrived.push_back(fmt::format("{} in cycle {}", name(member.object), member.cycle));
    }
    if (!arrived.empty()) {
      line("    arrived: {}{}", fmt::join(arrived, ", "), arrived.size() > 1 ? ", who was the last" : "");
    }
    if (wait.isTorn) {
      line("    all have arrived, but not in the same occurrence, because another join was aborted meanwhile");
    }
    for (const MissingMember& member : wait.missing) {
      line("    missing: {}", missingText(member));
    }
  }

  [[nodiscard]] std::string missingText(const MissingMember& member) const {
    switch (member.why) {
      case MissingMember::Why::ON_ITS_WAY:
        return fmt::format("{}, who has yet to come to {}, but {}", name(member.object), place(member.object, member.number),
                           whereabouts(member.object));
      case MissingMember::Why::NO_SUCH_JOIN:
        return fmt::format("{}, who has no join with this group left", name(member.object));
      case MissingMember::Why::ENDED_OTHERWISE:
        return fmt::format(
            "{}, whose {} {}", name(member.object), place(member.object, member.number),
            command(member.object, member.number).state == core::cmd::CmdState::FAILED ? "failed" : "was aborted");
      case MissingMember::Why::HAS_NO_NEXT_COMMAND:
        return fmt::format("{}, who is at {}, but waits for a command behind it (syncStartNextCmd)", name(member.object),
                           place(member.object, member.number));
    }
    return "";
  }

  /// What an object does that has not come as far as somebody needs it.
  [[nodiscard]] std::string whereabouts(std::uint32_t object) const {
    if (const ObjectWait* const wait = m_graph.find(object); wait != nullptr) {
      return fmt::format("{} waits in {}", name(object), commandText(m_record, object, wait->number));
    }
    const auto& commands = m_record.objects.at(object).commands;
    const auto active = std::ranges::find(commands, core::cmd::CmdState::ACTIVE, &CmdRecord::state);
    return active != commands.end()
               ? fmt::format("{} is busy in {}", name(object), commandText(m_record, object, active->number))
               : fmt::format("{} has not begun it", name(object));
  }

  void circleLine() {
    if (m_graph.circle.empty()) {
      return;
    }
    std::vector<std::string> waits;
    for (std::size_t i = 0; i < m_graph.circle.size(); ++i) {
      const std::uint32_t next = m_graph.circle[(i + 1) % m_graph.circle.size()];
      waits.push_back(fmt::format("{} waits for {}", name(m_graph.circle[i]), name(next)));
    }
    line("  circle: {}; closed in cycle {} by {}", fmt::join(waits, ", "), m_graph.circleSince,
         name(m_graph.circleClosedBy));
  }

  void verdict() {
    std::vector<std::uint32_t> certain;
    for (const ObjectWait& wait : m_graph.waits) {
      if (wait.isCertain) {
        certain.push_back(wait.object);
      }
    }
    if (!certain.empty()) {
      line("  certain deadlock of {}: no write from outside can help", names(certain));
    }
    std::vector<std::string> signals;
    for (const std::uint32_t signal : m_graph.neededSignals) {
      signals.push_back(signalText(m_record, signal));
    }
    if (!signals.empty()) {
      line("  needs a write from outside: {}", fmt::join(signals, ", "));
    }
  }

  const RunRecord& m_record;
  const WaitGraph& m_graph;
  std::string m_text;
};

}  // namespace

std::string explain(const RunRecord& record, const WaitGraph& graph) {
  return Explainer(record, graph).write();
}

}  // namespace motion::host::observe
