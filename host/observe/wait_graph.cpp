#include "host/observe/wait_graph.h"

#include <algorithm>
#include <deque>
#include <iterator>
#include <optional>
#include <set>

#include "host/observe/joins.h"
#include "host/observe/outlook.h"

namespace motion::host::observe {

using core::cmd::CmdState;

namespace {

bool hasEndedBadly(const CmdRecord& command) {
  return command.state == CmdState::ABORTED || command.state == CmdState::FAILED;
}

/// Commands that the object may still execute, the current one first. Whoever aborts an object, or lets it fail, ends its
/// program.
std::vector<const CmdRecord*> remaining(const ObjectRecord& object) {
  const bool isCut = std::ranges::any_of(object.commands, hasEndedBadly);
  std::vector<const CmdRecord*> commands;
  for (const CmdRecord& command : object.commands) {
    const bool isIssued =
        command.state == CmdState::BUFFERED || command.state == CmdState::PREPARED || command.state == CmdState::ACTIVE;
    if (isIssued || (command.state == CmdState::CREATED && !isCut)) {
      commands.push_back(&command);
    }
  }
  return commands;
}

const CmdRecord* currentOf(const ObjectRecord& object) {
  const auto found = std::ranges::find(object.commands, CmdState::ACTIVE, &CmdRecord::state);
  return found != object.commands.end() ? &*found : nullptr;
}

/// What a command has yet to do. The options of one that has begun have done their work, unless it lies on the path.
SyncStep ahead(const CmdRecord& command) {
  SyncStep step = command.sync;
  if (command.state == CmdState::ACTIVE) {
    std::erase_if(step.options, [](const OptionEffect& effect) { return !effect.onPath; });
  }
  return step;
}

bool wouldRelease(const SyncStep& step, const SyncStep& wait) {
  return wait.kind == SyncKind::WAITS_SET ? step.maySet(wait.signal) : step.mayReset(wait.signal);
}

class Builder {
 public:
  explicit Builder(const RunRecord& record) : m_record(record), m_joins(findJoins(record)) {}

  WaitGraph build() {
    for (std::uint32_t object = 0; object < m_record.objects.size(); ++object) {
      const CmdRecord* const current = currentOf(m_record.objects[object]);
      if (current != nullptr && isWait(current->sync.kind)) {
        addWait(*current);
      }
    }
    findStuck();
    findNeededSignals();
    findCircle();
    return std::move(m_graph);
  }

 private:
  void addWait(const CmdRecord& current) {
    ObjectWait wait;
    wait.object = current.object;
    wait.number = current.number;
    wait.since = current.active;
    wait.step = current.sync;
    if (current.sync.kind == SyncKind::JOINS) {
      addMembers(wait);
    } else {
      addReleasers(wait);
    }
    m_graph.waits.push_back(std::move(wait));
  }

  void addReleasers(ObjectWait& wait) const {
    for (const ObjectRecord& object : m_record.objects) {
      for (const CmdRecord* const command : remaining(object)) {
        // What stands behind the wait in the same buffer cannot help it.
        if (command->object != wait.object && wouldRelease(ahead(*command), wait.step)) {
          wait.releasers.push_back({command->object, command->number});
          break;
        }
      }
    }
  }

  void addMembers(ObjectWait& wait) const {
    const auto join = std::ranges::find_if(m_joins, [&](const JoinOccurrence& other) {
      return std::ranges::any_of(other.members, [&](const JoinMember& member) {
        return member.object == wait.object && member.number == wait.number;
      });
    });
    for (const JoinMember& member : join->members) {
      if (member.arrived != 0 && !member.aborted) {
        wait.arrived.push_back({member.object, member.arrived});
      } else {
        wait.missing.push_back({member.object, member.number, whyMissing(member)});
      }
    }
    std::ranges::stable_sort(wait.arrived, {}, &ArrivedMember::cycle);
    // Members end in the cycle after the last arrival, which in real time may be noted one cycle early. An abort at the
    // wrong moment makes members take part in different occurrences; these never complete.
    wait.isTorn = wait.missing.empty() && !wait.step.namesTwice && m_record.cycles > wait.arrived.back().cycle + 2;
  }

  [[nodiscard]] MissingMember::Why whyMissing(const JoinMember& member) const {
    if (member.aborted) {
      return MissingMember::Why::ENDED_OTHERWISE;
    }
    if (member.active != 0) {
      return MissingMember::Why::HAS_NO_NEXT_COMMAND;
    }
    const auto commands = remaining(m_record.objects.at(member.object));
    const bool isAhead =
        std::ranges::any_of(commands, [&](const CmdRecord* command) { return command->number == member.number; });
    return member.number != 0 && isAhead ? MissingMember::Why::ON_ITS_WAY : MissingMember::Why::NO_SUCH_JOIN;
  }

  void findStuck() {
    std::vector<RemainingSteps> objects;
    for (const ObjectRecord& object : m_record.objects) {
      RemainingSteps& steps = objects.emplace_back();
      std::ranges::transform(remaining(object), std::back_inserter(steps),
                             [](const CmdRecord* command) { return ahead(*command); });
    }
    SignalOutlook written;
    written.fill({true, true});
    const std::vector<std::size_t> alone = lookAhead(objects, signalsNow());
    // Who stays although every signal is written from outside as it would be needed stays for ever.
    const std::vector<std::size_t> helped = lookAhead(objects, written);
    for (ObjectWait& wait : m_graph.waits) {
      wait.isStuck = alone[wait.object] == 0 || wait.isTorn;
      wait.isCertain = helped[wait.object] == 0 || wait.isTorn;
    }
  }

  [[nodiscard]] SignalOutlook signalsNow() const {
    SignalOutlook signals;
    signals.fill({.set = false, .reset = true});
    for (const SignalRecord& change : m_record.signals) {
      signals.at(change.signal) = {.set = change.value, .reset = !change.value};
    }
    return signals;
  }

  void findNeededSignals() {
    std::set<std::uint32_t> signals;
    for (const ObjectWait& wait : m_graph.waits) {
      if (wait.isStuck && wait.step.kind != SyncKind::JOINS) {
        signals.insert(wait.step.signal);
      }
    }
    m_graph.neededSignals.assign(signals.begin(), signals.end());
  }

  /// The objects that one waits for.
  [[nodiscard]] static std::vector<std::uint32_t> waitsFor(const ObjectWait& wait) {
    std::vector<std::uint32_t> objects;
    for (const Releaser& releaser : wait.releasers) {
      objects.push_back(releaser.object);
    }
    for (const MissingMember& member : wait.missing) {
      if (member.why == MissingMember::Why::ON_ITS_WAY) {
        objects.push_back(member.object);
      }
    }
    return objects;
  }

  void findCircle() {
    for (const ObjectWait& start : m_graph.waits) {
      const std::vector<std::uint32_t> circle = circleFrom(start.object);
      if (!circle.empty() && (m_graph.circle.empty() || circle.size() < m_graph.circle.size())) {
        m_graph.circle = circle;
      }
    }
    for (const std::uint32_t object : m_graph.circle) {
      if (const ObjectWait& wait = *m_graph.find(object); wait.since >= m_graph.circleSince) {
        m_graph.circleSince = wait.since;
        m_graph.circleClosedBy = object;
      }
    }
  }

  /// The shortest way from an object back to itself; breadth first.
  [[nodiscard]] std::vector<std::uint32_t> circleFrom(std::uint32_t start) const {
    std::vector<std::optional<std::uint32_t>> reachedFrom(m_record.objects.size());
    std::deque<std::uint32_t> open{start};
    while (!open.empty()) {
      const std::uint32_t object = open.front();
      open.pop_front();
      const ObjectWait* const wait = m_graph.find(object);
      for (const std::uint32_t next : wait != nullptr && wait->isStuck ? waitsFor(*wait) : std::vector<std::uint32_t>()) {
        if (next == start) {
          return wayBack(start, object, reachedFrom);
        }
        if (!reachedFrom[next]) {
          reachedFrom[next] = object;
          open.push_back(next);
        }
      }
    }
    return {};
  }

  [[nodiscard]] static std::vector<std::uint32_t> wayBack(std::uint32_t start, std::uint32_t last,
                                                          const std::vector<std::optional<std::uint32_t>>& reachedFrom) {
    std::vector<std::uint32_t> circle{last};
    while (circle.back() != start) {
      circle.push_back(*reachedFrom[circle.back()]);
    }
    std::ranges::reverse(circle);
    return circle;
  }

  const RunRecord& m_record;
  std::vector<JoinOccurrence> m_joins;
  WaitGraph m_graph;
};

}  // namespace

const ObjectWait* WaitGraph::find(std::uint32_t object) const {
  const auto found = std::ranges::find(waits, object, &ObjectWait::object);
  return found != waits.end() ? &*found : nullptr;
}

WaitGraph makeWaitGraph(const RunRecord& record) {
  return Builder(record).build();
}

}  // namespace motion::host::observe
