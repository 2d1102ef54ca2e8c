// The published functions of the command options: from an object's name and parameters to an option.
#include <fmt/format.h>

#include <array>
#include <limits>

#include "conformance/checks/frame_parts.h"
#include "conformance/checks/function_checks.h"
#include "conformance/expect.h"
#include "conformance/records.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::cmd::CmdOptPermType;

constexpr std::array<double, 3> TARGET = {1.5, -2.25, 64.0};
const core::dia::CmdSourceInfo SOURCE{"a client", "a program", 12};

class OptionSubject : public Subject {
 public:
  explicit OptionSubject(const Bundle& bundle) : Subject(bundle) {
    host.objMgr.addAxis("X");
    host.objMgr.addKinematics("Robot");
    host.objMgr.addEncoder("Encoder");
    start();
    host.cmdContext.m_onValues = [this](const core::IContainer& values) { record = describe(&values); };
  }

  std::string record;  ///< the parameters of the last option
};

struct OptionFunction {
  std::string name;
  core::FctResult (*issue)(const test::FakeHost& host, core::cmd::ICmdContext* context, const char* objName);
  std::string call;    ///< as the context notes it
  std::string record;  ///< its parameters in words
};

const std::vector<OptionFunction>& functions() {
  static const std::vector<OptionFunction> all = {
      {"setSignalCmdOpt",
       [](const test::FakeHost& host, core::cmd::ICmdContext* context, const char* objName) {
         return host.cmdGeneral.setSignalCmdOpt(context, SOURCE, objName, 42);
       },
       "context.addCmdOption(Robot, SetSignal, 0)", "CmdOptionSetSignalPars signalId=42"},
      {"kinSwitchOnPathCmdOpt",
       [](const test::FakeHost& host, core::cmd::ICmdContext* context, const char* objName) {
         return host.cmdKin.kinSwitchOnPathCmdOpt(context, SOURCE, CmdOptPermType::PERM_ON, objName,
                                                  kavo::SwitchOnPathMode::ENTER_SPHERE, 42,
                                                  kavo::SwitchOnPathAction::RESET_SIGNAL, TARGET.data(), 0.125, 0.25);
       },
       "context.addCmdOption(Robot, SwitchOnPath, 1)",
       "SwitchOnPathParsList (mode=0 signalId=42 action=1 target=(1.5,-2.25,64) radius=0.125 preTriggerTime=0.25 "
       "reached=false)"},
  };
  return all;
}

std::uint32_t issue(OptionSubject& subject, const OptionFunction& function, const char* objName) {
  return static_cast<std::uint32_t>(function.issue(subject.host, &subject.host.cmdContext, objName));
}

std::string error(const std::string& function, const std::string& text) {
  return errorOf("motion_kavo_cmd", function, text);
}

void handsOver(const Bundle& bundle, const OptionFunction& function) {
  OptionSubject subject(bundle);
  expectEqual("result", issue(subject, function, "Robot"), 0x00100000U);
  expectEqual("calls", subject.host.calls.of({"objMgr.", "context."}), Texts{"objMgr.findObj(Robot, 0)", function.call});
  expectEqual("parameters", subject.record, function.record);
  expectTrue("the source is the caller's", subject.host.cmdContext.m_source == &SOURCE);
  expectEqual("traces", subject.traces(), Texts{});
}

void passesResultOn(const Bundle& bundle, const OptionFunction& function) {
  OptionSubject subject(bundle);
  for (const std::uint32_t code : {0xF0100013U, 0xF0100001U, 0x00100001U}) {
    subject.host.calls.failNothing();
    subject.host.calls.fail("context.addCmdOption", code);
    expectEqual("result", issue(subject, function, "Robot"), code);
  }
  expectEqual("traces", subject.traces(), Texts{});
}

void noContext(const Bundle& bundle, const OptionFunction& function) {
  OptionSubject subject(bundle);
  expectEqual("result", static_cast<std::uint32_t>(function.issue(subject.host, nullptr, "Robot")), 0xF010000EU);
  expectEqual("calls into the host", subject.host.calls.all(), Texts{});
  expectEqual("traces", subject.traces(), Texts{});
}

void unknownObject(const Bundle& bundle, const OptionFunction& function) {
  OptionSubject subject(bundle);
  expectEqual("result", issue(subject, function, "Nobody"), 0xF0100004U);
  expectEqual("traces", subject.traces(),
              Texts{error("getObjectType", "Can't find motion object Nobody"),
                    error(function.name, "getObjectType failed with requested motion object does not exist")});
  expectEqual("calls into the context", subject.host.calls.of({"context."}), Texts{});
}

void neither(const Bundle& bundle, const OptionFunction& function) {
  OptionSubject subject(bundle);
  expectEqual("result", issue(subject, function, "Encoder"), 0xF0100001U);
  expectEqual("traces", subject.traces(),
              Texts{error("getObjectType", "Encoder has an invalid motion object type (must be an axis or kinematic)"),
                    error(function.name, "getObjectType failed with not okay")});
}

void noObjectManager(const Bundle& bundle, const OptionFunction& function) {
  OptionSubject subject(bundle);
  subject.host.parts.objMgr = nullptr;
  expectEqual("result", issue(subject, function, "Robot"), 0xF010000EU);
  expectEqual("traces", subject.traces(),
              Texts{error("getObjectType", "Invalid object manager"),
                    error(function.name, "getObjectType failed with unknown error")});
}

void setSignalOfAxis(const Bundle& bundle) {
  OptionSubject subject(bundle);
  const auto result = subject.host.cmdIf.setSignalCmdOpt(&subject.host.cmdContext, SOURCE, "X", 0xFFFFFFFF);
  expectEqual("result", static_cast<std::uint32_t>(result), 0x00100000U);
  expectEqual("calls", subject.host.calls.of({"context."}), Texts{"context.addCmdOption(X, SetSignal, 0)"});
  expectEqual("parameters", subject.record, "CmdOptionSetSignalPars signalId=4294967295");
}

void switchOnPathOfAxis(const Bundle& bundle) {
  OptionSubject subject(bundle);
  expectEqual("result", issue(subject, functions()[1], "X"), 0xF010000DU);
  expectEqual("traces", subject.traces(),
              Texts{error("kinSwitchOnPathCmdOpt", "kinSwitchOnPathCmdOpt not supported for object type 'Axis'")});
  expectEqual("calls into the context", subject.host.calls.of({"context."}), Texts{});
}

/// An object that says to be both is an axis.
void axisFirst(const Bundle& bundle) {
  OptionSubject subject(bundle);
  subject.host.objMgr.addAxis("Both").m_isKinematics = true;
  expectEqual("result", issue(subject, functions()[1], "Both"), 0xF010000DU);
  expectEqual("traces", subject.traces(),
              Texts{error("kinSwitchOnPathCmdOpt", "kinSwitchOnPathCmdOpt not supported for object type 'Axis'")});
}

void permanence(const Bundle& bundle, std::uint32_t permType) {
  OptionSubject subject(bundle);
  const auto result = subject.host.cmdKin.kinSwitchOnPathCmdOpt(
      &subject.host.cmdContext, SOURCE, static_cast<CmdOptPermType>(permType), "Robot", kavo::SwitchOnPathMode::ENTER_SPHERE,
      3, kavo::SwitchOnPathAction::SET_SIGNAL, TARGET.data(), -1.0, -2.0);
  expectEqual("result", static_cast<std::uint32_t>(result), 0x00100000U);
  expectEqual("calls", subject.host.calls.of({"context."}),
              Texts{fmt::format("context.addCmdOption(Robot, SwitchOnPath, {})", permType)});
  expectEqual(
      "parameters", subject.record,
      "SwitchOnPathParsList (mode=0 signalId=3 action=0 target=(1.5,-2.25,64) radius=-1 preTriggerTime=-2 reached=false)");
}

}  // namespace

Checks publishedOptionChecks() {
  static constexpr FunctionCheck<OptionFunction> BODIES[] = {
      {"kinematics", "adds its option for a kinematics, with its parameters", handsOver},
      {"result", "answers with the context's result", passesResultOn},
      {"no-context", "answers 0xF010000E without a context, and traces nothing", noContext},
      {"unknown-object", "refuses an object that does not exist", unknownObject},
      {"neither", "refuses an object that is neither axis nor kinematics", neither},
      {"no-object-manager", "answers 0xF010000E without an object manager", noObjectManager},
  };
  Checks checks = {
      {"command-functions.setSignalCmdOpt-axis", "setSignalCmdOpt serves axes, too, and asks for no valid signal",
       setSignalOfAxis},
      {"command-functions.kinSwitchOnPathCmdOpt-axis", "kinSwitchOnPathCmdOpt refuses an axis", switchOnPathOfAxis},
      {"command-functions.axis-first", "an object is asked whether it is an axis before it is asked for a kinematics",
       axisFirst},
  };
  for (const std::uint32_t permType : {0U, 1U, 2U}) {
    checks.push_back({fmt::format("command-functions.kinSwitchOnPathCmdOpt-permanence-{}", permType),
                      "kinSwitchOnPathCmdOpt passes the permanence on, and the numbers as they are",
                      [permType](const Bundle& bundle) { permanence(bundle, permType); }});
  }
  addFunctionChecks<OptionFunction>(checks, functions(), BODIES);
  return checks;
}

}  // namespace motion::conformance
