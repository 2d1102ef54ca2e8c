// The option SwitchOnPath before its parameters are checked: units, and conditions that are carried to the next command.
#include <fmt/format.h>

#include <algorithm>

#include "conformance/buffered_cmd.h"
#include "conformance/buffered_option.h"
#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/path_world.h"
#include "conformance/records.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::ObjectType;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;
using core::job::JobListTypes;
using core::job::JobResult;
using kavo::SwitchOnPathParsList;

const core::cmd::CmdId OPTION = {ObjectType::KINEMATICS, "SwitchOnPath"};

/// An option on a kinematics whose user speaks in quarters of metres and eighths of seconds.
struct Stacking {
  explicit Stacking(const Bundle& bundle) : world(bundle) {
    auto& entries = world.kin.m_unitSettings.entries;
    for (std::size_t i = 0; i < entries.size(); ++i) {
      entries.at(i).factor = 1000.0 + static_cast<double>(i);
    }
    entries.at(0).factor = 0.25;
    entries.at(6).factor = 0.125;
    option = makeOption(world.subject, OPTION.objectType, OPTION.name);
    world.subject.forget();
  }
  [[nodiscard]] CmdResult prepare(core::IContainer* values, CmdOptPermType permType = CmdOptPermType::ONCE) {
    return option->prepareStackableCmdOption(world.kin, active, values, permType, source());
  }
  /// The one and only report, with its codes.
  void expectReported(std::uint32_t detailCode, const std::string& text) {
    expectEqual("calls of the diagnosis", world.subject.host.calls.of({"dia."}),
                Texts{"dia.report(" + text + ")", "dia.close()"});
    const auto& report = world.kin.m_dia.m_reports.at(0);
    expectEqual("main code", report.mainCode, 0x090F2030U);
    expectEqual("detail code", report.detailCode, detailCode);
    expectEqual("client of the source", report.source.client, source().client);
    expectEqual("traces", world.subject.traces(), Texts{});
  }

  PathWorld world;
  ActiveOptions active;
  std::unique_ptr<core::cmd::GenericCmdOption> option;
};

void units(const Bundle& bundle) {
  Stacking stacking(bundle);
  SwitchOnPathParsList values({sphere(7, {4, -8, 12}, 2, 16, kavo::SwitchOnPathAction::RESET_SIGNAL)});
  expectEqual("result", stacking.prepare(&values), CmdResult{0x00110000});
  expectEqual("condition", describe(&values),
              "SwitchOnPathParsList (mode=0 signalId=7 action=1 target=(1,-2,3) radius=0.5 preTriggerTime=2 reached=false)");
  auto calls = stacking.world.subject.host.calls.all();
  std::ranges::sort(calls);
  expectEqual("conversions", calls,
              Texts{"unitHelper.toInternal(0, -8)", "unitHelper.toInternal(0, 12)", "unitHelper.toInternal(0, 2)",
                    "unitHelper.toInternal(0, 4)", "unitHelper.toInternal(6, 16)"});
  expectEqual("traces", stacking.world.subject.traces(), Texts{});
}

void firstOnly(const Bundle& bundle) {
  Stacking stacking(bundle);
  SwitchOnPathParsList values({sphere(1, {4, 0, 0}, 4, 8), sphere(2, {4, 0, 0}, 4, 8)});
  expectEqual("result", stacking.prepare(&values), CmdResult{0x00110000});
  expectEqual("radius of the first", values.get()[0]->radius, 1.0);
  expectEqual("radius of the second", values.get()[1]->radius, 4.0);
  expectEqual("time of the second", values.get()[1]->preTriggerTime, 8.0);
}

void carried(const Bundle& bundle, CmdOptPermType permType) {
  Stacking stacking(bundle);
  const auto armed = sphere(2, {4, 0, 0}, 4, 8);
  const auto fired = sphere(3, {4, 0, 0}, 4, 8);
  const auto last = sphere(4, {4, 0, 0}, 4, 8);
  fired->setReached();
  const SwitchOnPathParsList active({armed, fired, last});
  stacking.active.m_data[OPTION] = &active;
  const auto given = sphere(1, {4, 0, 0}, 4, 8);
  SwitchOnPathParsList values({given});
  expectEqual("result", stacking.prepare(&values, permType), CmdResult{0x00110000});
  const kavo::SwitchOnPathParsListT expected = {given, armed, last};
  expectTrue("the new condition, then those that have not fired, in their order: " + describe(&values),
             values.get() == expected);
  expectEqual("radius of a condition that is carried on", armed->radius, 4.0);
  expectEqual("time of a condition that is carried on", armed->preTriggerTime, 8.0);
  expectEqual("number of conversions", stacking.world.subject.host.calls.count("unitHelper.toInternal"), 5);
  expectEqual("active conditions", active.get().size(), 3U);
}

void notCarried(const Bundle& bundle, std::uint32_t permType) {
  Stacking stacking(bundle);
  const SwitchOnPathParsList active({sphere(2, {0, 0, 0}, 1)});
  stacking.active.m_data[OPTION] = &active;
  const auto given = sphere(1, {4, 0, 0}, 4);
  SwitchOnPathParsList values({given});
  expectEqual("result", stacking.prepare(&values, CmdOptPermType{permType}), CmdResult{0x00110000});
  expectTrue("the new condition alone: " + describe(&values), values.get() == kavo::SwitchOnPathParsListT{given});
  expectEqual("radius", given->radius, 1.0);
}

void emptyList(const Bundle& bundle) {
  Stacking stacking(bundle);
  const auto armed = sphere(2, {0, 0, 0}, 1);
  const SwitchOnPathParsList active({armed});
  stacking.active.m_data[OPTION] = &active;
  SwitchOnPathParsList values;
  expectEqual("result", stacking.prepare(&values), CmdResult{0x00110000});
  expectTrue("what is carried on: " + describe(&values), values.get() == kavo::SwitchOnPathParsListT{armed});
  expectEqual("number of conversions", stacking.world.subject.host.calls.count("unitHelper.toInternal"), 0);
}

void otherOption(const Bundle& bundle) {
  Stacking stacking(bundle);
  const SwitchOnPathParsList active({sphere(2, {0, 0, 0}, 1)});
  stacking.active.m_data[{ObjectType::KINEMATICS, "SetSignal"}] = &active;
  SwitchOnPathParsList values({sphere(1, {4, 0, 0}, 4)});
  expectEqual("result", stacking.prepare(&values), CmdResult{0x00110000});
  expectEqual("number of conditions", values.get().size(), 1U);
}

void wrongContainer(const Bundle& bundle) {
  Stacking stacking(bundle);
  kavo::cmd::CmdOptionSetSignalPars other;
  for (core::IContainer* values : std::initializer_list<core::IContainer*>{nullptr, &other}) {
    stacking.world.subject.forget();
    expectEqual("result", stacking.prepare(values), CmdResult{0xF011001D});
    expectEqual("traces", stacking.world.subject.traces(),
                Texts{errorOf("cmd_option_switch_on_path", "prepareStackableCmdOption", "Invalid cmdOptValues")});
  }
}

/// A host that cannot tell what is active.
class FailingHandler : public core::cmd::ICmdOptHandler {
 public:
  explicit FailingHandler(std::uint32_t code) : m_code(code) {}
  CmdResult getDataOfOption(const core::cmd::CmdId& /*option*/, const core::IContainer*& /*data*/) const override {
    return CmdResult{m_code};
  }

 private:
  std::uint32_t m_code;
};

void failingHandler(const Bundle& bundle, std::uint32_t permission) {
  Stacking stacking(bundle);
  const FailingHandler failing(0xF0110002);
  SwitchOnPathParsList values({sphere(1, {4, 0, 0}, 4)});
  CmdOptPermType permType{permission};
  expectEqual("result", stacking.option->prepareStackableCmdOption(stacking.world.kin, failing, &values, permType, source()),
              CmdResult{0xF0110002});
  stacking.expectReported(0x0C5701B2,
                          fmt::format("failed to prepare stackable settings for cmd option SwitchOnPath. getDataOfOption "
                                      "returned {}",
                                      static_cast<std::int32_t>(0xF0110002)));
}

void invalidData(const Bundle& bundle, const core::IContainer* data) {
  Stacking stacking(bundle);
  stacking.active.m_data[OPTION] = data;
  SwitchOnPathParsList values({sphere(1, {4, 0, 0}, 4)});
  expectEqual("result", stacking.prepare(&values), CmdResult{0xF0110004});
  stacking.expectReported(
      0x0C5701B0,
      "failed to prepare stackable settings for cmd option SwitchOnPath. getDataOfOption returned invalid "
      "data");
}

/// Prepares its job for a command of the object.
struct Accompanied {
  Accompanied(PathWorld& world, const BufferedOption& option) : jobs(option.makeJobs()), list(world.subject.host.calls) {
    expectEqual("number of jobs", jobs.size(), 1U);
    expectEqual("result of registerInputs", jobs[0]->registerInputs(&world.handler), JobResult::NoEffect);
    expectEqual("result of addJobsToJoblist", jobs[0]->addJobsToJoblist(&list, JobListTypes::CYCLIC_EXECUTION),
                JobResult::NoEffect);
  }
  void cycleAt(PathWorld& world, double x) {
    world.pose.set({x, 0, 0, 0, 0, 0});
    expectEqual("result of the job", list.m_jobs.at(0).job(), JobResult::NoEffect);
  }
  std::vector<std::unique_ptr<core::job::IJobObject>> jobs;
  test::FakeJobList list;
};

/// Two commands, each with an option of its own; the tool may pass the first target during the first command.
void acrossCommands(const Bundle& bundle, const std::string& secondPermType, bool isFirstReached,
                    std::vector<int> expected) {
  PathWorld world(bundle);
  world.kin.m_unitSettings.entries[0].factor = 0.001;
  world.kin.m_unitSettings.entries[6].factor = 1;
  const BufferedOption first(world.subject, world.kin, OPTION.name,
                             pathParameters({.signalId = 1, .targetPosition = {1000, 0, 0}, .radius = 100}));
  Accompanied firstCommand(world, first);
  firstCommand.cycleAt(world, isFirstReached ? 1.0 : 0.0);
  ActiveOptions active;
  active.m_data[OPTION] = &first.parameters();
  const BufferedOption second(
      world.subject, world.kin, OPTION.name,
      pathParameters({.permType = secondPermType, .signalId = 2, .targetPosition = {2000, 0, 0}, .radius = 100}), active);
  Accompanied secondCommand(world, second);
  for (const double x : {1.05, 2.05, 1.0, 2.0, 0.0}) {
    secondCommand.cycleAt(world, x);
    firstCommand.cycleAt(world, x);
  }
  expectEqual("counters", std::vector<int>({world.subject.in(1), world.subject.in(2)}), std::vector<int>(expected));
  const auto* const list = SwitchOnPathParsList::safeCast(&second.parameters());
  expectEqual("conditions of the second command", list->get().size(), isFirstReached ? 1U : 2U);
}

Checks refusals() {
  return {
      {"path.stacking-wrong-container", "parameters of another type are refused with code and text", wrongContainer},
      {"path.stacking-fails", "a host that cannot tell what is active is reported, and its result handed on",
       [](const Bundle& bundle) { failingHandler(bundle, 0); }},
      {"path.stacking-fails-when-off", "that holds for the end of an option, too",
       [](const Bundle& bundle) { failingHandler(bundle, 2); }},
      {"path.stacking-no-data", "missing data of the active option are reported and refused",
       [](const Bundle& bundle) { invalidData(bundle, nullptr); }},
      {"path.stacking-other-data", "data of another type are reported and refused",
       [](const Bundle& bundle) {
         const kavo::cmd::CmdOptionSetSignalPars other;
         invalidData(bundle, &other);
       }},
  };
}

}  // namespace

Checks pathStackingChecks() {
  const Checks stacking = {
      {"path.units", "lengths and the time of the new condition become internal units", units},
      {"path.units-of-the-first", "only the first condition is converted", firstOnly},
      {"path.carried-once", "conditions that have not fired follow the new one, as they are",
       [](const Bundle& bundle) { carried(bundle, CmdOptPermType::ONCE); }},
      {"path.carried-on", "conditions that have not fired follow the new one, as they are",
       [](const Bundle& bundle) { carried(bundle, CmdOptPermType::PERM_ON); }},
      {"path.not-carried-off", "the end of an option carries nothing on",
       [](const Bundle& bundle) { notCarried(bundle, 2); }},
      {"path.not-carried-beyond", "nor does any permanence behind it", [](const Bundle& bundle) { notCarried(bundle, 3); }},
      {"path.empty-list-is-stacked", "a list without a new condition converts nothing and carries all on", emptyList},
      {"path.other-option", "only what is active under the option's own name is carried on", otherOption},
      {"path.two-commands", "a condition that has not fired fires once in the next command",
       [](const Bundle& bundle) {
         acrossCommands(bundle, "Once", false, {1, 1});
       }},
      {"path.two-commands-fired", "a condition that has fired is not carried on",
       [](const Bundle& bundle) {
         acrossCommands(bundle, "PermOn", true, {1, 1});
       }},
  };
  return together({stacking, refusals()});
}

}  // namespace motion::conformance
