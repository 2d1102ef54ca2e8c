#include "host/observe/outlook.h"

#include <algorithm>

namespace motion::host::observe {

namespace {

class Outlook {
 public:
  Outlook(std::span<const RemainingSteps> objects, SignalOutlook signals)
      : m_objects(objects), m_signals(signals), m_taken(objects.size(), 0) {}

  std::vector<std::size_t> run() {
    for (std::size_t object = 0; object < m_objects.size(); ++object) {
      arrive(object);
    }
    bool hasMoved = true;
    while (hasMoved) {
      hasMoved = false;
      for (std::size_t object = 0; object < m_objects.size(); ++object) {
        while (canMove(object)) {
          move(object);
          hasMoved = true;
        }
      }
      hasMoved = completeJoins() || hasMoved;
    }
    return std::move(m_taken);
  }

 private:
  [[nodiscard]] const SyncStep* current(std::size_t object) const {
    const RemainingSteps& steps = m_objects[object];
    return m_taken[object] < steps.size() ? &steps[m_taken[object]] : nullptr;
  }

  /// Alone, without other members.
  [[nodiscard]] bool canMove(std::size_t object) const {
    const SyncStep* const step = current(object);
    if (step == nullptr) {
      return false;
    }
    switch (step->kind) {
      case SyncKind::WAITS_SET:
        return m_signals.at(step->signal).set;
      case SyncKind::WAITS_RESET:
        return m_signals.at(step->signal).reset;
      case SyncKind::JOINS:
        return false;
      default:
        return true;
    }
  }

  void move(std::size_t object) {
    const SyncStep& step = *current(object);
    if (step.kind == SyncKind::SETS) {
      m_signals.at(step.signal).set = true;
    } else if (step.kind == SyncKind::RESETS || step.consumes) {
      m_signals.at(step.signal).reset = true;
    }
    leave(object);
  }

  void leave(std::size_t object) {
    ++m_taken[object];
    arrive(object);
  }

  /// Options do their work whether or not the command that they accompany comes to an end.
  void arrive(std::size_t object) {
    if (const SyncStep* const step = current(object); step != nullptr) {
      for (const OptionEffect& effect : step->options) {
        (effect.sets ? m_signals.at(effect.signal).set : m_signals.at(effect.signal).reset) = true;
      }
    }
  }

  bool completeJoins() {
    for (std::size_t object = 0; object < m_objects.size(); ++object) {
      const SyncStep* const step = current(object);
      if (step != nullptr && step->kind == SyncKind::JOINS && isComplete(*step)) {
        for (const std::uint32_t member : step->group) {
          leave(member);
        }
        return true;
      }
    }
    return false;
  }

  /// Members that are at joins with one group are at the same occurrence: nobody comes to the next one before the others.
  [[nodiscard]] bool isComplete(const SyncStep& join) const {
    return std::ranges::all_of(join.group, [&](std::uint32_t member) {
      const SyncStep* const other = current(member);
      return other != nullptr && other->kind == SyncKind::JOINS && other->group == join.group && !other->namesTwice &&
             hasNextIfAwaited(member, *other);
    });
  }

  [[nodiscard]] bool hasNextIfAwaited(std::size_t object, const SyncStep& join) const {
    return !join.awaitsNext || m_taken[object] + 1 < m_objects[object].size();
  }

  std::span<const RemainingSteps> m_objects;
  SignalOutlook m_signals;
  std::vector<std::size_t> m_taken;
};

}  // namespace

std::vector<std::size_t> lookAhead(std::span<const RemainingSteps> objects, SignalOutlook signals) {
  return Outlook(objects, signals).run();
}

std::size_t occurrenceOf(const SyncStep& join, std::span<const SyncStep> joinsBefore) {
  return 1 + static_cast<std::size_t>(std::ranges::count_if(joinsBefore, [&join](const SyncStep& other) {
           return other.kind == SyncKind::JOINS && other.group == join.group;
         }));
}

}  // namespace motion::host::observe
