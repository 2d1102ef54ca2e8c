// Random programs of joins, signals, dwells and aborts, played in virtual time: who meets, meets exactly; nothing gets lost.
#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <numeric>
#include <set>

#include "host/observe/joins.h"
#include "host/observe/wait_graph.h"
#include "host/run/player.h"
#include "host/run/program_checks.h"

namespace motion::test {
namespace {

using host::observe::CmdRecord;
using host::observe::RunRecord;
using host::observe::SyncKind;
using host::scenario::CommandCall;
using host::scenario::Field;
using host::scenario::OutsideEvent;
using host::scenario::Scenario;
using host::scenario::Value;
using motion::core::cmd::CmdState;

Value scalar(std::string text) {
  Value value;
  value.kind = Value::Kind::SCALAR;
  value.text = std::move(text);
  return value;
}

CommandCall call(std::string name, std::vector<Field> fields) {
  CommandCall made;
  made.name = std::move(name);
  made.parameters.kind = Value::Kind::MAP;
  made.parameters.fields = std::move(fields);
  made.mark = {1, 1};
  return made;
}

std::string nameOf(std::size_t object) {
  return "O" + std::to_string(object);
}

/// Makes programs from one sequence of events, so that they come to their end: whoever takes the events in their order never
/// waits for a later one.
class ProgramMaker {
 public:
  ProgramMaker() {
    m_scenario.file = "random";
    m_scenario.cycleTime = 0.001;
    m_scenario.bufferSize = *rc::gen::inRange<std::uint32_t>(1, 6);
    const auto count = *rc::gen::inRange<std::size_t>(2, 9);
    for (std::size_t i = 0; i < count; ++i) {
      const auto type = *rc::gen::arbitrary<bool>() ? core::ObjectType::AXIS : core::ObjectType::KINEMATICS;
      m_scenario.objects.push_back({nameOf(i), type, {}, {}});
      m_scenario.programs.push_back({nameOf(i), {}, {}});
    }
  }

  Scenario make() {
    const auto events = *rc::gen::inRange(1, 25);
    for (int i = 0; i < events; ++i) {
      const auto what = *rc::gen::inRange(0, 10);
      what < 3 ? addDwell(anyObject()) : what < 5 ? addHandOver() : addJoin();
    }
    for (std::size_t object = 0; object < m_scenario.objects.size(); ++object) {
      addDwell(object);  // a join may await it
    }
    return std::move(m_scenario);
  }

 private:
  std::size_t anyObject() const { return *rc::gen::inRange<std::size_t>(0, m_scenario.objects.size()); }
  std::vector<CommandCall>& program(std::size_t object) { return m_scenario.programs[object].commands; }

  void addDwell(std::size_t object) {
    const auto cycles = *rc::gen::inRange(1, 20);
    program(object).push_back(call("Dwell", {{"time", scalar(std::to_string(cycles * 0.001))}}));
  }

  void addHandOver() {
    const std::size_t setter = anyObject();
    const std::size_t waiter =
        (setter + *rc::gen::inRange<std::size_t>(1, m_scenario.objects.size())) % m_scenario.objects.size();
    const Value signal = scalar(std::to_string(m_nextSignal++));  // each once, so that nobody takes it from another
    program(setter).push_back(call("SetSignal", {{"signalId", signal}}));
    const bool consumes = *rc::gen::arbitrary<bool>();
    program(waiter).push_back(
        call("WaitForSignal", {{"signalId", signal}, {"autoReset", scalar(consumes ? "true" : "false")}}));
  }

  void addJoin() {
    std::vector<std::size_t> members(m_scenario.objects.size());
    std::iota(members.begin(), members.end(), 0);
    shuffle(members);
    members.resize(*rc::gen::inRange<std::size_t>(2, members.size() + 1));
    for (const std::size_t member : members) {
      std::vector<std::size_t> named = members;
      shuffle(named);
      if (*rc::gen::arbitrary<bool>()) {
        std::erase(named, member);
      }
      Value group;
      group.kind = Value::Kind::LIST;
      for (const std::size_t object : named) {
        group.items.push_back(scalar(nameOf(object)));
      }
      const bool awaitsNext = *rc::gen::arbitrary<bool>();
      program(member).push_back(
          call("Join", {{"group", group}, {"syncStartNextCmd", scalar(awaitsNext ? "true" : "false")}}));
    }
  }

  static void shuffle(std::vector<std::size_t>& values) {
    for (std::size_t i = values.size(); i > 1; --i) {
      std::swap(values[i - 1], values[*rc::gen::inRange<std::size_t>(0, i)]);
    }
  }

  Scenario m_scenario;
  std::uint32_t m_nextSignal = 0;
};

/// Takes commands out at random; whoever needed them waits for ever.
void damage(Scenario& scenario) {
  for (auto& program : scenario.programs) {
    if (*rc::gen::inRange(0, 3) == 0 && !program.commands.empty()) {
      const auto place = *rc::gen::inRange<std::ptrdiff_t>(0, static_cast<std::ptrdiff_t>(program.commands.size()));
      program.commands.erase(program.commands.begin() + place);
    }
  }
}

void abortSome(Scenario& scenario) {
  const auto aborts = *rc::gen::inRange(1, 4);
  for (int i = 0; i < aborts; ++i) {
    OutsideEvent event;
    event.kind = OutsideEvent::Kind::ABORT;
    event.at = *rc::gen::inRange(0, 120) * 0.001;
    event.object = nameOf(*rc::gen::inRange<std::size_t>(0, scenario.objects.size()));
    scenario.outside.push_back(event);
  }
}

struct Played {
  RunRecord record;
  host::scenario::Problems findings;
};

Played play(const Scenario& scenario) {
  host::run::Session session({KAVO_BUNDLE, {scenario.cycleTime, scenario.bufferSize}, std::chrono::seconds(30), false});
  std::string problem;
  RC_ASSERT(session.open(problem));
  for (const auto& object : scenario.objects) {
    session.runtime().addObject(object.name, object.type, object.start);
  }
  auto program = host::run::prepareProgram(scenario, session.runtime(), [&] { return session.takeMessages(); });
  RC_ASSERT(program.problems.empty());
  Played played;
  played.findings = host::run::checkPrograms(scenario, program.programs);
  host::run::Player sut(session, scenario, std::move(program.programs));
  RC_ASSERT(sut.connect(problem));
  sut.playVirtual();
  played.record = sut.record();
  RC_ASSERT(played.record.lostEvents == 0U);
  RC_ASSERT(played.record.failures.empty());
  return played;
}

/// The n-th joins of all members with one and the same group.
using Occurrences = std::map<std::pair<std::vector<std::uint32_t>, std::size_t>, std::vector<const CmdRecord*>>;

Occurrences occurrencesOf(const RunRecord& record) {
  Occurrences occurrences;
  for (const auto& object : record.objects) {
    std::map<std::vector<std::uint32_t>, std::size_t> counts;
    for (const CmdRecord& command : object.commands) {
      if (command.sync.kind == SyncKind::JOINS) {
        occurrences[{command.sync.group, ++counts[command.sync.group]}].push_back(&command);
      }
    }
  }
  return occurrences;
}

/// The cycle in which a join has joined: its first turn, or that in which it first finds a command prepared behind it.
std::uint64_t arrival(const RunRecord& record, const CmdRecord& join) {
  if (!join.sync.awaitsNext || join.active == 0) {
    return join.active;
  }
  const auto& commands = record.objects.at(join.object).commands;
  const std::uint64_t next = join.number < commands.size() ? commands[join.number].prepared : 0;
  return next == 0 ? 0 : std::max(join.active, next);
}

bool isDone(const CmdRecord* command) {
  return command->state == CmdState::DONE;
}

/// Whoever completes an occurrence does so exactly one cycle after all of its members have arrived. An abort prevents that
/// for everybody, but it takes effect in the turn of its object: members whose turn came earlier in that very cycle are
/// through.
void checkMeetings(const RunRecord& record) {
  for (const auto& [key, members] : occurrencesOf(record)) {
    std::uint64_t last = 0;
    bool haveAllArrived = members.size() == key.first.size();
    for (const CmdRecord* member : members) {
      last = std::max(last, arrival(record, *member));
      haveAllArrived = haveAllArrived && arrival(record, *member) != 0;
    }
    const bool isAnyDone = std::ranges::any_of(members, isDone);
    RC_ASSERT(!isAnyDone || haveAllArrived);
    for (const CmdRecord* member : members) {
      if (isDone(member)) {
        RC_ASSERT(member->ended == last + 1);
      } else if (isAnyDone && member->state == CmdState::ABORTED) {
        RC_ASSERT(member->ended == last + 1);
        for (const CmdRecord* other : members) {
          RC_ASSERT(!isDone(other) || other->object < member->object);
        }
      }
    }
    const bool isAnyAborted =
        std::ranges::any_of(members, [](const CmdRecord* member) { return member->state == CmdState::ABORTED; });
    RC_ASSERT(!isAnyDone || isAnyAborted || std::ranges::all_of(members, isDone));
  }
}

/// The report of the joins says the same as the commands.
void checkReport(const RunRecord& record) {
  const auto joins = host::observe::findJoins(record);
  const Occurrences occurrences = occurrencesOf(record);
  RC_ASSERT(joins.size() == occurrences.size());
  for (const auto& join : joins) {
    const auto& members = occurrences.at({join.group, join.occurrence});
    const bool isComplete = members.size() == join.group.size() && std::ranges::all_of(members, isDone);
    RC_ASSERT(join.completed == (isComplete ? members.front()->ended : 0U));
    if (isComplete) {
      RC_ASSERT(join.last() != nullptr);
      RC_ASSERT(join.last()->arrived + 1 == join.completed);
    }
  }
}

bool isStuck(const RunRecord& record) {
  return !record.stuck.empty();
}

class RandomPrograms : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    // The same programs every time, unless somebody asks for others.
    setenv("RC_PARAMS", "seed=20 max_success=200", 0);
  }
};

TEST_F(RandomPrograms, ThatAreConsistentComeToTheirEnd) {
  EXPECT_TRUE(rc::check("consistent programs end", [] {
    const Scenario scenario = ProgramMaker().make();
    const Played played = play(scenario);
    RC_ASSERT(played.findings.empty());
    RC_ASSERT(!isStuck(played.record));
    for (std::size_t object = 0; object < scenario.objects.size(); ++object) {
      const auto& commands = played.record.objects.at(object).commands;
      RC_ASSERT(commands.size() == scenario.programs[object].commands.size());
      for (std::size_t i = 0; i < commands.size(); ++i) {
        RC_ASSERT(commands[i].state == CmdState::DONE);
        if (i > 0) {
          RC_ASSERT(commands[i].active > commands[i - 1].ended);
        }
      }
    }
    checkMeetings(played.record);
    checkReport(played.record);
  }));
}

TEST_F(RandomPrograms, ThatAreDamagedStopOnlyWhereTheyMust) {
  EXPECT_TRUE(rc::check("damaged programs", [] {
    Scenario scenario = ProgramMaker().make();
    damage(scenario);
    const Played played = play(scenario);
    // What was found before the run happens in it.
    const bool isForetold = std::ranges::any_of(
        played.findings, [](const auto& found) { return found.message.find("waits for ever") != std::string::npos; });
    RC_ASSERT(!isForetold || isStuck(played.record));
    // Who waits in the end waits for ever, and the graph knows it.
    const auto graph = host::observe::makeWaitGraph(played.record);
    RC_ASSERT(isStuck(played.record) == !graph.waits.empty());
    RC_ASSERT(std::ranges::all_of(graph.waits, &host::observe::ObjectWait::isStuck));
    checkMeetings(played.record);
    checkReport(played.record);
    RC_CLASSIFY(isStuck(played.record), "stuck");
    RC_CLASSIFY(isForetold, "foretold");
  }));
}

TEST_F(RandomPrograms, ThatAreAbortedCompleteNoAbortedJoin) {
  EXPECT_TRUE(rc::check("aborted programs", [] {
    Scenario scenario = ProgramMaker().make();
    abortSome(scenario);
    const Played played = play(scenario);
    checkMeetings(played.record);
    checkReport(played.record);
    RC_CLASSIFY(isStuck(played.record), "stuck");
  }));
}

}  // namespace
}  // namespace motion::test
