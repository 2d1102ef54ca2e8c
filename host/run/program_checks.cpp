#include "host/run/program_checks.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <map>
#include <optional>
#include <ranges>
#include <set>
#include <utility>

#include "host/observe/outlook.h"

namespace motion::host::run {

using observe::SyncKind;
using observe::SyncStep;
using scenario::OutsideEvent;

namespace {

using Group = std::vector<std::uint32_t>;

/// A command, by its object's program and its place in it.
struct Place {
  const ObjectCalls& program;
  std::size_t position = 0;

  [[nodiscard]] const ProgramCall& call() const { return program.calls[position]; }
  [[nodiscard]] const SyncStep& step() const { return call().description.sync; }
  [[nodiscard]] std::uint32_t object() const { return program.object->index(); }
  /// "Feeder#2 Join"
  [[nodiscard]] std::string text() const {
    return fmt::format("{}#{} {}", program.object->name(), position + 1, call().name);
  }
};

/// To the six digits that are shown.
double roundedUp(double value) {
  const double digit = std::pow(10.0, std::floor(std::log10(value)) - 5.0);
  return std::ceil(value / digit * (1.0 - 1e-12)) * digit;
}

class Checker {
 public:
  Checker(const scenario::Scenario& scenario, std::span<const ObjectCalls> programs)
      : m_scenario(scenario), m_programs(programs), m_mended(scenario.objects.size()) {
    for (const ObjectCalls& program : programs) {
      m_byIndex[program.object->index()] = &program;
      std::ranges::transform(program.calls, std::back_inserter(m_mended.at(program.object->index())),
                             [](const ProgramCall& call) { return call.description.sync; });
    }
  }

  scenario::Problems check() {
    for (const ObjectCalls& program : m_programs) {
      for (std::size_t i = 0; i < program.calls.size(); ++i) {
        const Place place{program, i};
        checkDuplicates(place);
        checkNextCommand(place);
        checkSetter(place);
        checkResetter(place);
        checkShortSignal(place);
        checkSpheres(place);
      }
    }
    checkJoinCounts();
    checkOutlook();
    std::ranges::stable_sort(m_problems, {}, [](const scenario::Problem& found) { return found.mark.line; });
    return std::move(m_problems);
  }

 private:
  [[nodiscard]] const std::string& name(std::uint32_t object) const { return m_scenario.objects.at(object).name; }
  [[nodiscard]] SyncStep& mended(const Place& place) { return m_mended.at(place.object()).at(place.position); }

  void find(const Place& place, std::string message, std::string remedy) {
    m_problems.push_back({m_scenario.file, place.call().mark, std::move(message), std::move(remedy), true});
  }
  /// An object that is aborted from outside is meant to wait until then.
  void findEndlessWait(const Place& place, const std::string& why, std::string remedy) {
    const bool isAborted = std::ranges::any_of(m_scenario.outside, [&place](const OutsideEvent& event) {
      return event.kind == OutsideEvent::Kind::ABORT && event.object == place.program.object->name();
    });
    if (!isAborted) {
      find(place, fmt::format("{} waits for ever: {}", place.text(), why), std::move(remedy));
    }
  }

  void checkDuplicates(const Place& place) {
    if (place.step().namesTwice) {
      findEndlessWait(place, "'group' names an object twice; such a join never completes", "name each object once");
      mended(place).namesTwice = false;
    }
  }

  void checkNextCommand(const Place& place) {
    if (place.step().awaitsNext && place.position + 1 == place.program.calls.size()) {
      findEndlessWait(place, "syncStartNextCmd asks for a command behind it, and there is none",
                      "put a command behind it, or leave out syncStartNextCmd");
      mended(place).awaitsNext = false;
    }
  }

  [[nodiscard]] bool isWrittenFromOutside(std::uint32_t signal, bool value) const {
    return std::ranges::any_of(m_scenario.outside, [&](const OutsideEvent& event) {
      return event.kind == OutsideEvent::Kind::SIGNAL && !event.refused && event.signal == signal && event.value == value;
    });
  }

  /// The first command of that kind in another program than the waiting one.
  template <typename IS_WANTED>
  [[nodiscard]] std::optional<Place> firstOfOthers(const ObjectCalls& waiter, const IS_WANTED& isWanted) const {
    for (const ObjectCalls& program : m_programs) {
      for (std::size_t i = 0; &program != &waiter && i < program.calls.size(); ++i) {
        if (isWanted(Place{program, i}.step())) {
          return Place{program, i};
        }
      }
    }
    return std::nullopt;
  }

  /// The last command in the same program ahead of the wait.
  template <typename IS_WANTED>
  [[nodiscard]] static std::optional<Place> lastAhead(const Place& wait, const IS_WANTED& isWanted) {
    for (std::size_t i = wait.position; i > 0; --i) {
      if (const Place ahead{wait.program, i - 1}; isWanted(ahead.step())) {
        return ahead;
      }
    }
    return std::nullopt;
  }

  void checkSetter(const Place& place) {
    const auto sets = [&place](const SyncStep& step) { return step.maySet(place.step().signal); };
    if (place.step().kind == SyncKind::WAITS_SET && !isWrittenFromOutside(place.step().signal, true) &&
        !firstOfOthers(place.program, sets) && !lastAhead(place, sets) && !sets(place.step())) {
      findEndlessWait(place, fmt::format("nobody sets {}", place.call().description.waitsFor),
                      "set it in the program of another object, or under 'outside'");
      mended(place).kind = SyncKind::NONE;
    }
  }

  void checkResetter(const Place& place) {
    const auto resets = [&place](const SyncStep& step) { return step.mayReset(place.step().signal); };
    const auto writes = [&](const SyncStep& step) { return resets(step) || step.maySet(place.step().signal); };
    if (place.step().kind != SyncKind::WAITS_RESET || isWrittenFromOutside(place.step().signal, false) ||
        firstOfOthers(place.program, resets)) {
      return;
    }
    if (const auto last = lastAhead(place, writes); last && !resets(last->step())) {
      findEndlessWait(
          place, fmt::format("nobody resets {}, which {} sets", place.call().description.waitsFor, last->text()),
          "reset it in the program of another object (ResetSignal, or a wait with autoReset), or under 'outside'");
    }
  }

  void checkShortSignal(const Place& place) {
    const SyncStep& step = place.step();
    if (step.kind != SyncKind::SETS || place.position + 1 == place.program.calls.size()) {
      return;
    }
    const Place next{place.program, place.position + 1};
    if (next.step().kind != SyncKind::RESETS || next.step().signal != step.signal) {
      return;
    }
    const auto waiter = firstOfOthers(place.program, [&step](const SyncStep& other) {
      return other.kind == SyncKind::WAITS_SET && other.signal == step.signal;
    });
    if (waiter) {
      find(place,
           fmt::format("{} and {} keep signal {} set for one cycle only; {} misses it unless it waits already", place.text(),
                       next.text(), step.signal, waiter->text()),
           "let the waiting command reset the signal (autoReset), or wait for an answer before resetting it");
    }
  }

  /// A tool that covers more than a sphere in one cycle may be in it in no cycle at all.
  void checkSpheres(const Place& place) {
    const double travel = place.call().velocity * m_scenario.cycleTime;
    const double least = travel / 2.0 * 1e3;
    for (const PathCondition& condition : place.call().conditions) {
      // Whoever writes the least radius is right, though the two numbers come about in different ways.
      const bool isSmall = condition.radius * 1e3 < least * (1.0 - 1e-9);
      if (isSmall && m_smallSpheres.emplace(condition.mark.line, condition.mark.column).second) {
        m_problems.push_back(
            {m_scenario.file, condition.mark,
             fmt::format(
                 "the tool may step over the sphere: its radius of {:.6g} mm is less than half of the {:.6g} mm that {} "
                 "covers in one cycle at {:.6g} mm/s",
                 condition.radius * 1e3, travel * 1e3, place.text(), place.call().velocity * 1e3),
             fmt::format("make the radius at least {:.6g} mm, or the velocity lower, or the cycle shorter",
                         roundedUp(least)),
             true});
      }
    }
  }

  /// The joins with that group in an object's program.
  [[nodiscard]] std::vector<Place> joinsOf(std::uint32_t object, const Group& group) const {
    std::vector<Place> places;
    if (const auto program = m_byIndex.find(object); program != m_byIndex.end()) {
      for (std::size_t i = 0; i < program->second->calls.size(); ++i) {
        if (const Place place{*program->second, i}; place.step().kind == SyncKind::JOINS && place.step().group == group) {
          places.push_back(place);
        }
      }
    }
    return places;
  }

  void checkJoinCounts() {
    std::set<Group> groups;
    for (const ObjectCalls& program : m_programs) {
      for (const ProgramCall& call : program.calls) {
        if (call.description.sync.kind == SyncKind::JOINS) {
          groups.insert(call.description.sync.group);
        }
      }
    }
    for (const Group& group : groups) {
      checkJoinCount(group);
    }
  }

  void checkJoinCount(const Group& group) {
    std::vector<std::vector<Place>> joins;
    std::vector<std::string> names;
    std::vector<std::string> counts;
    for (const std::uint32_t member : group) {
      joins.push_back(joinsOf(member, group));
      names.push_back(name(member));
      counts.push_back(fmt::format("{} has {}", name(member), joins.back().size()));
    }
    const std::size_t fewest = std::ranges::min_element(joins, {}, std::ranges::size)->size();
    const std::vector<Place>& most = *std::ranges::max_element(joins, {}, std::ranges::size);
    if (most.size() != fewest) {
      findEndlessWait(
          most[fewest],
          fmt::format("the members of [{}] do not join equally often ({})", fmt::join(names, ", "), fmt::join(counts, ", ")),
          "give each member as many joins with this very group");
    }
    for (const std::vector<Place>& ofMember : joins) {
      for (std::size_t i = fewest; i < ofMember.size(); ++i) {
        mended(ofMember[i]).kind = SyncKind::NONE;
      }
    }
  }

  /// Whoever stays although everything that may happen has happened, and all that was found so far is mended.
  void checkOutlook() {
    const std::vector<std::size_t> taken = observe::lookAhead(m_mended, signalsFromOutside());
    for (const ObjectCalls& program : m_programs) {
      if (const Place place{program, taken[program.object->index()]}; place.position < program.calls.size()) {
        const bool isJoin = place.step().kind == SyncKind::JOINS;
        findEndlessWait(place, isJoin ? whoStays(place, taken) : whoWouldSet(place, taken),
                        "bring the joins and signals of all programs into one order");
      }
    }
  }

  /// Why a join's members do not come together. Each of them has such a join, so each of them stays somewhere.
  [[nodiscard]] std::string whoStays(const Place& join, const std::vector<std::size_t>& taken) const {
    std::vector<std::string> texts;
    for (const std::uint32_t member : join.step().group) {
      const Place stay{*m_byIndex.at(member), taken[member]};
      if (stay.step().kind != SyncKind::JOINS || stay.step().group != join.step().group) {
        texts.push_back(fmt::format("{} stays in {}", name(member), stay.text()));
      }
    }
    return fmt::format("{}", fmt::join(texts, ", "));
  }

  [[nodiscard]] std::string whoWouldSet(const Place& wait, const std::vector<std::size_t>& taken) const {
    std::vector<std::string> texts;
    for (const ObjectCalls& program : m_programs) {
      const std::size_t stay = taken[program.object->index()];
      for (std::size_t i = stay; &program != &wait.program && i < program.calls.size(); ++i) {
        const Place setter{program, i};
        if (setter.step().maySet(wait.step().signal)) {
          texts.push_back(
              fmt::format("{} stands behind {}, which waits in turn", setter.text(), Place{program, stay}.text()));
          break;
        }
      }
    }
    return fmt::format("nobody comes to set {}; {}", wait.call().description.waitsFor, fmt::join(texts, ", "));
  }

  [[nodiscard]] observe::SignalOutlook signalsFromOutside() const {
    observe::SignalOutlook signals;
    signals.fill({.set = false, .reset = true});
    for (const OutsideEvent& event : m_scenario.outside) {
      if (event.kind == OutsideEvent::Kind::SIGNAL && !event.refused && event.value) {
        signals.at(event.signal).set = true;
      }
    }
    return signals;
  }

  const scenario::Scenario& m_scenario;
  std::span<const ObjectCalls> m_programs;
  std::map<std::uint32_t, const ObjectCalls*> m_byIndex;
  /// The programs as they would be without what was found.
  std::vector<observe::RemainingSteps> m_mended;
  std::set<std::pair<std::size_t, std::size_t>> m_smallSpheres;  ///< line and column of options that were found
  scenario::Problems m_problems;
};

}  // namespace

scenario::Problems checkPrograms(const scenario::Scenario& scenario, std::span<const ObjectCalls> programs) {
  return Checker(scenario, programs).check();
}

}  // namespace motion::host::run
