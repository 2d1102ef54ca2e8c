// A start, a program that uses everything, and a stop.
#include "conformance/full_play.h"

#include <fmt/format.h>

#include <memory>

#include "conformance/buffered_cmd.h"
#include "conformance/buffered_option.h"
#include "conformance/crossing.h"
#include "conformance/expect.h"
#include "motion/core/obj/kin_pose.h"

namespace motion::conformance {
namespace {

using comm::datalayer::DlResult;
using comm::datalayer::IProviderNode;
using comm::datalayer::Variant;
using core::FctResult;
using core::job::JobListTypes;
using core::job::JobResult;

const std::string NODE = "motion/state/functions/kavo/signals/07";
const std::string FOLDER = "motion/state/functions/kavo/signals";

class Play {
 public:
  explicit Play(Subject& subject)
      : m_subject(subject),
        m_axis(subject.host.objMgr.addAxis("A")),
        m_otherAxis(subject.host.objMgr.addAxis("B")),
        m_kinematics(subject.host.objMgr.addKinematics("K")) {}

  PlayReport run() {
    m_subject.giveEverything();
    m_report.startStatus = crossing("start", [&] { return m_subject.component().start(); });
    m_report.callsOfStart = m_subject.host.calls.all().size();
    if (m_report.startStatus == 0) {
      useEverything();
    }
    m_report.callsBeforeStop = m_subject.host.calls.all().size();
    expectEqual("status of stop", crossing("stop", [&] { return m_subject.component().stop(); }), 0);
    m_report.calls = m_subject.host.calls.all().size();
    for (const auto& trace : m_subject.traces()) {
      m_report.hasComplained = m_report.hasComplained || !trace.starts_with("Info");
    }
    m_report.leftNothing = attempt("leaving nothing", [&] { m_subject.expectNothingLeft(); });
    return std::move(m_report);
  }

 private:
  /// False when the step did not succeed; an exception of the component is more than that.
  template <typename STEP>
  bool attempt(const std::string& name, const STEP& step) {
    try {
      step();
      return true;
    } catch (const Mismatch& mismatch) {
      if (mismatch.found() == "an exception") {
        throw;
      }
      m_report.refused.push_back(fmt::format("{}: {}", name, mismatch.what()));
      return false;
    }
  }

  void useEverything() {
    useSystemFunctions();
    useNodes();
    useCommandFunctions();
    useSignalCommands();
    useJoin();
    useSignalOption();
    usePathOption();
  }

  void useSystemFunctions() {
    const auto& functions = m_subject.host.sysSync;
    attempt("set a signal", [&] {
      expectEqual("setSignal", crossing("setSignal", [&] { return functions.setSignal(nullptr, 5); }), FctResult::Okay);
    });
    attempt("get a signal", [&] {
      bool value = false;
      expectEqual("getSignal", crossing("getSignal", [&] { return functions.getSignal(nullptr, 5, value); }),
                  FctResult::Okay);
      expectTrue("signal 5", value);
    });
    attempt("reset a signal", [&] {
      expectEqual("resetSignal", crossing("resetSignal", [&] { return functions.resetSignal(nullptr, 5); }),
                  FctResult::Okay);
    });
  }

  void useNodes() {
    const auto& nodes = m_subject.host.dataLayer.m_lastProvider->m_nodes;
    auto& signal = *nodes.at(FOLDER + "/*");
    auto& folder = *nodes.at(FOLDER);
    const Variant value(true);
    ask("write a node", DlResult(0), [&](const auto& answer) { signal.onWrite(NODE, &value, answer); });
    ask("read a node", DlResult(0), [&](const auto& answer) { signal.onRead(NODE, nullptr, answer); });
    const Variant off(false);
    ask("reset a node", DlResult(0), [&](const auto& answer) { signal.onWrite(NODE, &off, answer); });
    ask("browse a node", DlResult(0), [&](const auto& answer) { signal.onBrowse(FOLDER, answer); });
    ask("metadata of a node", DlResult(0), [&](const auto& answer) { signal.onMetadata(NODE, answer); });
    ask("metadata of the folder", DlResult(0), [&](const auto& answer) { folder.onMetadata(FOLDER, answer); });
    ask("read of the folder", comm::datalayer::DL_UNSUPPORTED,
        [&](const auto& answer) { folder.onRead(FOLDER, nullptr, answer); });
  }

  /// One answer must come in any case; what it is may depend on what fails.
  template <typename QUESTION>
  void ask(const std::string& name, DlResult expected, const QUESTION& question) {
    int answers = 0;
    DlResult answered;
    const IProviderNode::ResponseCallback answer = [&](DlResult result, const Variant* /*data*/) {
      ++answers;
      answered = result;
    };
    crossing(name, [&] { question(answer); });
    if (answers != 1) {
      throw Mismatch("answers to: " + name, "1", fmt::format("{}", answers));
    }
    attempt(name, [&] { expectEqual("answer", answered, expected); });
  }

  void useCommandFunctions() {
    const auto& general = m_subject.host.cmdGeneral;
    auto& context = m_subject.host.cmdContext;
    unsigned long id = 0;
    const auto call = [this](const std::string& name, const auto& function) {
      attempt(name, [&] { expectEqual(name, crossing(name, function), FctResult::Okay); });
    };
    const std::vector<std::string> group{"B", "K"};
    const double target[] = {1, 2, 3};
    call("setSignalCmd", [&] { return general.setSignalCmd(&context, source(), "A", 1, id); });
    call("resetSignalCmd", [&] { return general.resetSignalCmd(&context, source(), "K", 1, id); });
    call("setSignalCmdOpt", [&] { return general.setSignalCmdOpt(&context, source(), "A", 1); });
    call("waitForSignalCmd", [&] { return general.waitForSignalCmd(&context, source(), "A", 1, true, id); });
    call("waitForSignalResetCmd", [&] { return general.waitForSignalResetCmd(&context, source(), "A", 1, id); });
    call("joinCmd", [&] { return general.joinCmd(&context, source(), "A", group, true, id); });
    call("kinSwitchOnPathCmdOpt", [&] {
      return m_subject.host.cmdKin.kinSwitchOnPathCmdOpt(&context, source(), core::cmd::CmdOptPermType::ONCE, "K", {}, 1, {},
                                                         target, 4, 5);
    });
  }

  void useCommand(test::FakeObj& obj, const std::string& name, const Variant& parameters) {
    attempt(name, [&] {
      BufferedCmd command(m_subject, obj, ++m_lastId, name, parameters);
      command.prepareWithJobs();
      expectEqual("result of the job of " + name, command.cycle(), JobResult::CmdFinished);
      command.changeState(core::cmd::CmdState::DONE);
    });
  }

  void useSignalCommands() {
    useCommand(m_axis, "SetSignal", signalParameters(11));
    useCommand(m_kinematics, "WaitForSignal", waitParameters(11, true));
    useCommand(m_axis, "WaitForSignalReset", signalParameters(11));
    useCommand(m_kinematics, "SetSignal", signalParameters(11));
    useCommand(m_axis, "WaitForSignal", waitParameters(11, false));
    useCommand(m_kinematics, "ResetSignal", signalParameters(11));
    useCommand(m_axis, "ResetSignal", signalParameters(11));
    useCommand(m_kinematics, "WaitForSignalReset", signalParameters(11));
  }

  void useJoin() {
    attempt("Join", [&] {
      const std::vector<std::string> group{"A", "B", "K"};
      std::vector<std::unique_ptr<BufferedCmd>> members;
      for (auto* obj : {&m_axis, &m_otherAxis, &m_kinematics}) {
        members.push_back(std::make_unique<BufferedCmd>(m_subject, *obj, ++m_lastId, "Join", joinParameters(group, true)));
        members.back()->prepareWithJobs();
      }
      for (const auto& member : members) {
        member->obj().m_currentCmdID = member->frame.getCmdID();
        member->obj().m_latestPreparedCmdID = ++m_lastId;  // a next command is there
        member->changeState(core::cmd::CmdState::ACTIVE);
      }
      std::size_t finished = 0;
      for (int cycle = 1; cycle <= 4 && finished < members.size(); ++cycle) {
        for (const auto& member : members) {
          member->obj().m_cycleCount = static_cast<std::uint64_t>(cycle);
          finished += member->cycle() == JobResult::CmdFinished ? 1 : 0;
        }
      }
      expectEqual("members that have joined", finished, members.size());
    });
    attempt("abort of a Join", [&] {
      BufferedCmd member(m_subject, m_axis, ++m_lastId, "Join", joinParameters({"B"}, false));
      member.prepareWithJobs();
      member.changeState(core::cmd::CmdState::ABORTED);
    });
  }

  /// Gives the jobs of an option their inputs, and runs them for some cycles.
  void runJobs(const BufferedOption& option, test::FakeObj& obj) {
    CmdFrame frame(++m_lastId);
    Inputs inputs(m_subject, obj, frame);
    core::KinPose pose;
    inputs.offer(core::KinPose::getMyID(), "GEOMETRY_TOOL_OFFSET", &pose);
    const auto jobs = option.makeJobs();
    expectFalse("no job", jobs.empty());
    test::FakeJobList list(m_subject.host.calls);
    for (const auto& job : jobs) {
      const auto inputsResult = crossing("registerInputs", [&] { return job->registerInputs(&inputs.handler); });
      expectEqual("registerInputs", inputsResult, JobResult::NoEffect);
      const auto listResult =
          crossing("addJobsToJoblist", [&] { return job->addJobsToJoblist(&list, JobListTypes::CYCLIC_EXECUTION); });
      expectEqual("addJobsToJoblist", listResult, JobResult::NoEffect);
    }
    for (int cycle = 0; cycle < 3; ++cycle) {
      pose.set({0.1 * cycle, 0, 0, 0, 0, 0});
      for (const auto& entry : list.m_jobs) {
        expectEqual("result of the option's job", crossing(entry.name, entry.job), JobResult::NoEffect);
      }
    }
  }

  void useSignalOption() {
    attempt("option SetSignal", [&] {
      const BufferedOption option(m_subject, m_axis, "SetSignal", signalOptionParameters("Once", 21));
      runJobs(option, m_axis);
    });
  }

  void usePathOption() {
    attempt("option SwitchOnPath", [&] {
      const PathParameters first{"PermOn", 31, false, {100, 0, 0}, 1, 0};
      const BufferedOption active(m_subject, m_kinematics, "SwitchOnPath", pathParameters(first));
      ActiveOptions options;
      options.m_data[{core::ObjectType::KINEMATICS, "SwitchOnPath"}] = &active.parameters();
      const PathParameters second{"PermOn", 32, false, {200, 0, 0}, 1, 0.01};
      const BufferedOption stacked(m_subject, m_kinematics, "SwitchOnPath", pathParameters(second), options);
      runJobs(stacked, m_kinematics);
    });
  }

  Subject& m_subject;
  test::FakeObj& m_axis;
  test::FakeObj& m_otherAxis;
  test::FakeObj& m_kinematics;
  std::uint64_t m_lastId = 100;
  PlayReport m_report;
};

}  // namespace

PlayReport playEverything(Subject& subject) {
  return Play(subject).run();
}

}  // namespace motion::conformance
