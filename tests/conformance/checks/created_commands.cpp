// Commands and options as their registered functions make them.
#include <fmt/format.h>

#include "conformance/buffered_cmd.h"
#include "conformance/buffered_option.h"
#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/expected_commands.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::ObjectType;
using core::cmd::CmdResult;

const std::string NOT_BUFFERED = "this command can not be used as a non - buffered command";

void buffered(const Bundle& bundle, const ExpectedCommand& expected) {
  Subject subject(bundle);
  subject.start();
  const auto created = create(subject, expected.id.objectType, expected.id.name, true, "an older text");
  expectEqual("result", created.result, CmdResult{0x00110000});
  expectNotNull("command", created.cmd != nullptr);
  expectEqual("text of the error", created.errText, "");
  expectEqual("traces", subject.traces(), Texts{});
  const auto other = create(subject, expected.id.objectType, expected.id.name);
  expectTrue("each call makes a command of its own", created.cmd.get() != other.cmd.get());
}

void notBuffered(const Bundle& bundle, const ExpectedCommand& expected) {
  Subject subject(bundle);
  subject.start();
  const auto created = create(subject, expected.id.objectType, expected.id.name, false, "an older text");
  expectEqual("result", created.result, CmdResult{0xF011001D});
  expectNull("command", created.cmd == nullptr);
  expectEqual("text of the error", created.errText, NOT_BUFFERED);
  expectEqual("traces", subject.traces(), Texts{errorOf(expected.unit, "onCreate", NOT_BUFFERED)});
  expectEqual("format of the trace", subject.host.traceSink.entries().at(0).format, "%s");
}

/// Looks into the base of a command, whose fields have a fixed order.
template <ObjectType TYPE>
class Base : public core::cmd::CmdGeneric<TYPE> {
  using Cmd = core::cmd::CmdGeneric<TYPE>;

 public:
  static void expect(const core::cmd::ICmdGeneric& made, const std::string& name) {
    const auto& cmd = static_cast<const Cmd&>(made);
    expectEqual("the host's value", cmd.*(&Base::m_hostData), 0U);
    expectEqual("name", cmd.getName(), name);
    expectTrue("the flag of commands for the buffer", cmd.*(&Base::m_bufferedOnly));
  }
};

void base(const Bundle& bundle, const ExpectedCommand& expected) {
  Subject subject(bundle);
  subject.start();
  const auto created = create(subject, expected.id.objectType, expected.id.name);
  if (expected.isAxis()) {
    Base<ObjectType::AXIS>::expect(*created.cmd, expected.id.name);
  } else {
    Base<ObjectType::KINEMATICS>::expect(*created.cmd, expected.id.name);
  }
}

void jobNames(const Bundle& bundle, const ExpectedCommand& expected) {
  Subject subject(bundle);
  subject.start();
  const auto one = create(subject, expected.id.objectType, expected.id.name);
  const auto other = create(subject, expected.id.objectType, expected.id.name);
  expectEqual("job names", one.cmd->getJobNames(), Texts{expected.job});
  expectTrue("all commands of a class have one list", &one.cmd->getJobNames() == &other.cmd->getJobNames());
}

void types(const Bundle& bundle, const ExpectedCommand& expected) {
  Subject subject(bundle);
  subject.start();
  const auto created = create(subject, expected.id.objectType, expected.id.name);
  expectEqual("onGetCmdType", created.cmd->onGetCmdType(), expected.isAxis() ? 35U : 18U);
  expectEqual("onGetPlcOpenCmdType", created.cmd->onGetPlcOpenCmdType(), expected.isAxis() ? 39U : 4108U);
}

void option(const Bundle& bundle, const ExpectedOption& expected) {
  Subject subject(bundle);
  subject.start();
  const auto& onCreate = subject.host.cmdOptionFactory.m_options.at(expected.id).onCreate;
  core::cmd::GenericCmdOption* made = nullptr;
  core::cmd::GenericCmdOption* another = nullptr;
  std::string errText = "an older text";
  const auto result = onCreate(made, errText);
  const auto secondResult = onCreate(another, errText);
  const std::unique_ptr<core::cmd::GenericCmdOption> owner(made);
  const std::unique_ptr<core::cmd::GenericCmdOption> otherOwner(another);
  expectEqual("result", result, CmdResult{0x00110000});
  expectEqual("second result", secondResult, CmdResult{0x00110000});
  expectTrue("each call makes an option of its own", made != nullptr && another != nullptr && made != another);
  expectEqual("text of the error", errText, "");
  expectEqual("traces", subject.traces(), Texts{});
}

void duration(const Bundle& bundle, const ExpectedOption& expected) {
  using core::cmd::CmdOptDuration;
  using core::cmd::CmdOptPermType;
  Subject subject(bundle);
  subject.start();
  const auto made = makeOption(subject, expected.id.objectType, expected.id.name);
  std::vector<std::uint32_t> found;
  for (const auto permType : {CmdOptPermType::ONCE, CmdOptPermType::PERM_ON, CmdOptPermType::PERM_OFF}) {
    CmdOptDuration value{};
    expectEqual("result of getDuration", made->getDuration(permType, value), CmdResult{0x00110000});
    found.push_back(static_cast<std::uint32_t>(value));
  }
  expectEqual("durations of Once, PermOn, PermOff", found, std::vector<std::uint32_t>{1, 3, 0});
  CmdOptDuration value{};
  expectEqual("result for another permanence", made->getDuration(CmdOptPermType{3}, value), CmdResult{0xF011001A});
}

void inherited(const Bundle& bundle, const ExpectedOption& expected) {
  Subject subject(bundle);
  auto& obj =
      expected.id.objectType == ObjectType::AXIS ? subject.host.objMgr.addAxis("X") : subject.host.objMgr.addKinematics("K");
  subject.start();
  const auto made = makeOption(subject, expected.id.objectType, expected.id.name);
  expectNull("eternal container", made->getEternalContainer(obj) == nullptr);
  expectEqual("exit strategy", made->getCmdOptExitStrategy(), 0U);
}

}  // namespace

Checks createdCommandChecks() {
  Checks checks;
  for (const auto& expected : expectedCommands()) {
    const auto with = [&expected](auto* body) {
      return [&expected, body](const Bundle& bundle) { body(bundle, expected); };
    };
    checks.push_back(
        {"registration.create-" + expected.label, "a buffered command is made and the error text cleared", with(&buffered)});
    checks.push_back({"registration.not-buffered-" + expected.label, "use outside of the buffer is refused with its text",
                      with(&notBuffered)});
    checks.push_back(
        {"registration.base-" + expected.label, "a new command has its name and is for the buffer", with(&base)});
    checks.push_back({"registration.job-names-" + expected.label,
                      "a command names its one job, in a list for all of its class", with(&jobNames)});
    checks.push_back(
        {"registration.types-" + expected.label, "a command has the type numbers of its type of object", with(&types)});
  }
  for (const auto& expected : expectedOptions()) {
    const auto with = [&expected](auto* body) {
      return [&expected, body](const Bundle& bundle) { body(bundle, expected); };
    };
    checks.push_back(
        {"registration.create-" + expected.label, "an option is made and the error text cleared", with(&option)});
    checks.push_back(
        {"registration.duration-" + expected.label, "an option lasts 1, 3 or 0, as its permanence says", with(&duration)});
    checks.push_back({"registration.inherited-" + expected.label,
                      "an option keeps no eternal container and no exit strategy", with(&inherited)});
  }
  return checks;
}

}  // namespace motion::conformance
