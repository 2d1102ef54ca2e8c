// The published functions of the commands: from an object's name and parameters to a command.
#include <fmt/format.h>

#include <functional>

#include "conformance/checks/frame_parts.h"
#include "conformance/checks/function_checks.h"
#include "conformance/expect.h"
#include "conformance/records.h"
#include "conformance/subject.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::FctResult;

constexpr unsigned long UNTOUCHED = 12345;
const Texts GROUP = {"X", "no such", ""};
const core::dia::CmdSourceInfo SOURCE{"a client", "a program", 12};

struct CommandFunction {
  std::string name;
  std::string command;
  /// Calls it for signal 42 and, where it takes one, with the flag.
  std::function<FctResult(const core::MotionCmdGeneralFctT&, core::cmd::ICmdContext*, const char*, bool, unsigned long&)>
      call;
  std::string record;  ///< its parameters in words, with {} for the flag
};

const std::vector<CommandFunction>& functions() {
  static const std::vector<CommandFunction> all = {
      {"setSignalCmd", "SetSignal",
       [](const auto& record, auto* context, const char* name, bool /*flag*/, unsigned long& cmdId) {
         return record.setSignalCmd(context, SOURCE, name, 42, cmdId);
       },
       "CmdSendSignalPars signalId=42"},
      {"resetSignalCmd", "ResetSignal",
       [](const auto& record, auto* context, const char* name, bool /*flag*/, unsigned long& cmdId) {
         return record.resetSignalCmd(context, SOURCE, name, 42, cmdId);
       },
       "CmdSendSignalPars signalId=42"},
      {"waitForSignalCmd", "WaitForSignal",
       [](const auto& record, auto* context, const char* name, bool flag, unsigned long& cmdId) {
         return record.waitForSignalCmd(context, SOURCE, name, 42, flag, cmdId);
       },
       "WaitForSignalJobPars signalId=42 autoReset={}"},
      {"waitForSignalResetCmd", "WaitForSignalReset",
       [](const auto& record, auto* context, const char* name, bool /*flag*/, unsigned long& cmdId) {
         return record.waitForSignalResetCmd(context, SOURCE, name, 42, cmdId);
       },
       "WaitForSignalResetJobPars signalId=42"},
      {"joinCmd", "Join",
       [](const auto& record, auto* context, const char* name, bool flag, unsigned long& cmdId) {
         return record.joinCmd(context, SOURCE, name, GROUP, flag, cmdId);
       },
       "CmdJoinPars group=[X,no such,] sync={}"},
  };
  return all;
}

/// A started component in a host with an axis, a kinematics and an object that is neither.
class CallerSubject : public Subject {
 public:
  explicit CallerSubject(const Bundle& bundle) : Subject(bundle) {
    host.objMgr.addAxis("X");
    host.objMgr.addKinematics("Robot");
    host.objMgr.addEncoder("Encoder");
    start();
  }

  [[nodiscard]] std::uint32_t call(const CommandFunction& function, const char* name, bool flag = false) {
    return static_cast<std::uint32_t>(function.call(host.cmdGeneral, &host.cmdContext, name, flag, cmdId));
  }

  unsigned long cmdId = UNTOUCHED;
};

std::string error(const std::string& function, const std::string& text) {
  return errorOf("motion_kavo_cmd", function, text);
}

void expectNoCommand(const CallerSubject& subject) {
  expectEqual("calls into the context", subject.host.calls.of({"context."}), Texts{});
  expectEqual("the caller's command ID", subject.cmdId, UNTOUCHED);
}

void handsOver(const Bundle& bundle, const CommandFunction& function, const char* name, bool flag) {
  CallerSubject subject(bundle);
  std::string record;
  subject.host.cmdContext.m_onValues = [&record](const core::IContainer& values) { record = describe(&values); };
  expectEqual("result", subject.call(function, name, flag), 0x00100000U);
  expectEqual(
      "calls", subject.host.calls.of({"objMgr.", "context."}),
      Texts{fmt::format("objMgr.findObj({}, 0)", name), fmt::format("context.addCmd({}, {}, 1)", name, function.command)});
  expectEqual("parameters", record, fmt::format(fmt::runtime(function.record), flag));
  expectTrue("the source is the caller's", subject.host.cmdContext.m_source == &SOURCE);
  expectTrue("the address of the command ID is the caller's", subject.host.cmdContext.m_cmdIdAddress == &subject.cmdId);
  expectEqual("the caller's command ID", subject.cmdId, subject.host.cmdContext.m_nextCmdId);
  expectEqual("traces", subject.traces(), Texts{});
}

void axis(const Bundle& bundle, const CommandFunction& function) {
  handsOver(bundle, function, "X", false);
}
void kinematics(const Bundle& bundle, const CommandFunction& function) {
  handsOver(bundle, function, "Robot", true);
}

void passesResultOn(const Bundle& bundle, const CommandFunction& function) {
  CallerSubject subject(bundle);
  for (const std::uint32_t code : {0xF0100013U, 0xF0100001U, 0x00100001U}) {
    subject.host.calls.failNothing();
    subject.host.calls.fail("context.addCmd", code);
    expectEqual("result", subject.call(function, "X"), code);
  }
  expectEqual("traces", subject.traces(), Texts{});
}

void noContext(const Bundle& bundle, const CommandFunction& function) {
  CallerSubject subject(bundle);
  const auto result = function.call(subject.host.cmdGeneral, nullptr, "X", false, subject.cmdId);
  expectEqual("result", static_cast<std::uint32_t>(result), 0xF010000EU);
  expectEqual("calls into the host", subject.host.calls.all(), Texts{});
  expectEqual("traces", subject.traces(), Texts{});
}

void unknownObject(const Bundle& bundle, const CommandFunction& function) {
  CallerSubject subject(bundle);
  expectEqual("result", subject.call(function, "Nobody"), 0xF0100004U);
  expectEqual("traces", subject.traces(),
              Texts{error("getObjectType", "Can't find motion object Nobody"),
                    error(function.name, "getObjectType failed with requested motion object does not exist")});
  expectNoCommand(subject);
}

void neither(const Bundle& bundle, const CommandFunction& function) {
  CallerSubject subject(bundle);
  expectEqual("result", subject.call(function, "Encoder"), 0xF0100001U);
  expectEqual("traces", subject.traces(),
              Texts{error("getObjectType", "Encoder has an invalid motion object type (must be an axis or kinematic)"),
                    error(function.name, "getObjectType failed with not okay")});
  expectNoCommand(subject);
}

void noObjectManager(const Bundle& bundle, const CommandFunction& function) {
  CallerSubject subject(bundle);
  subject.host.parts.objMgr = nullptr;
  expectEqual("result", subject.call(function, "X"), 0xF010000EU);
  expectEqual("traces", subject.traces(),
              Texts{error("getObjectType", "Invalid object manager"),
                    error(function.name, "getObjectType failed with unknown error")});
  expectNoCommand(subject);
}

void oldPointer(const Bundle& bundle, const CommandFunction& function) {
  CallerSubject subject(bundle);
  const auto kept = subject.host.cmdGeneral;
  subject.component().stop();
  subject.forget();
  const auto result = function.call(kept, &subject.host.cmdContext, "X", false, subject.cmdId);
  expectEqual("result", static_cast<std::uint32_t>(result), 0xF010000EU);
  expectEqual("traces", subject.traces(),
              Texts{error("getObjectType", "Invalid motion extended interface"),
                    error(function.name, "getObjectType failed with unknown error")});
  expectNoCommand(subject);
}

}  // namespace

Checks publishedCommandChecks() {
  static constexpr FunctionCheck<CommandFunction> BODIES[] = {
      {"axis", "adds its command for an axis, with its parameters, once", axis},
      {"kinematics", "adds its command for a kinematics, with its parameters, once", kinematics},
      {"result", "answers with the context's result", passesResultOn},
      {"no-context", "answers 0xF010000E without a context, and traces nothing", noContext},
      {"unknown-object", "refuses an object that does not exist", unknownObject},
      {"neither", "refuses an object that is neither axis nor kinematics", neither},
      {"no-object-manager", "answers 0xF010000E without an object manager", noObjectManager},
      {"old-pointer", "called through a pointer kept over a stop answers 0xF010000E", oldPointer},
  };
  Checks checks;
  addFunctionChecks<CommandFunction>(checks, functions(), BODIES);
  return checks;
}

}  // namespace motion::conformance
