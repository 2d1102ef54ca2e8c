// The command Join: names of objects become the group that its job reads.
#include <fmt/format.h>

#include "conformance/buffered_cmd.h"
#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/join_world.h"
#include "conformance/records.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::ObjectType;
using core::cmd::CmdResult;
using core::cmd::CmdState;
using kavo::cmd::CmdJoinPars;

constexpr CmdResult OKAY{0x00110000};
constexpr CmdResult REFUSED{0xF011001D};
constexpr CmdResult NULL_POINTER{0xF0110011};

/// A Join that is issued on "B", in a host with the objects A to C and some more.
class LooseJoin {
 public:
  LooseJoin(const Bundle& bundle, ObjectType type) : m_subject(bundle) {
    auto& objMgr = m_subject.host.objMgr;
    for (const char* name : {"A", "C", "a", "aa", "Z", "\xC3\xA4"}) {
      objMgr.addAxis(name);
    }
    m_obj = type == ObjectType::AXIS ? &objMgr.addAxis("B") : &objMgr.addKinematics("B");
    m_subject.start();
    m_cmd = create(m_subject, type, "Join").cmd;
    expectNotNull("command", m_cmd != nullptr);
    m_subject.forget();
  }

  [[nodiscard]] CmdResult setGroup(const std::vector<std::string>& group, bool syncStartNextCmd = false) {
    const CmdJoinPars values({group, syncStartNextCmd});
    return m_cmd->onSetCmdValues(&values, source(), m_obj, false);
  }
  [[nodiscard]] CmdResult validate() { return m_cmd->onValidate(source(), &m_obj->m_dia); }
  /// What its job reads, in words.
  [[nodiscard]] std::string published() {
    CmdFrame frame(11);
    Inputs inputs(m_subject, *m_obj, frame);
    expectEqual("result of onRegisterJobListsInputs", m_cmd->onRegisterJobListsInputs(inputs.handler), OKAY);
    const auto section = m_subject.host.sectionMgr.valueOf("CMD_DATA");
    const auto found = inputs.handler.m_published.find({kavo::job::JoinJobPars::getMyID(), section});
    return found != inputs.handler.m_published.end() ? describe(found->second, &m_subject.host.objMgr) : "nothing";
  }
  void expectTraced(const std::string& function, const std::string& text) {
    expectEqual("traces", m_subject.traces(), Texts{errorOf("cmd_join", function, text)});
  }

  Subject m_subject;
  test::FakeObj* m_obj = nullptr;
  std::unique_ptr<core::cmd::ICmdGeneric> m_cmd;
};

void group(const Bundle& bundle, ObjectType type, const std::vector<std::string>& names, const std::string& expected) {
  LooseJoin join(bundle, type);
  expectEqual("result of onSetCmdValues", join.setGroup(names), OKAY);
  expectEqual("result of onValidate", join.validate(), OKAY);
  expectEqual("what its job reads", join.published(), "JoinJobPars group=" + expected + " sync=false");
  expectEqual("traces", join.m_subject.traces(), Texts{});
  expectEqual("diagnoses", join.m_obj->m_dia.m_reports.size(), 0U);
}

void flag(const Bundle& bundle, ObjectType type) {
  LooseJoin join(bundle, type);
  expectEqual("result of onSetCmdValues", join.setGroup({"A"}, true), OKAY);
  expectEqual("result of onValidate", join.validate(), OKAY);
  expectEqual("what its job reads", join.published(), "JoinJobPars group=[A,B] sync=true");
}

void looksUpInOrder(const Bundle& bundle, ObjectType type) {
  LooseJoin join(bundle, type);
  expectEqual("result", join.setGroup({"C", "A", "C"}), OKAY);
  expectEqual("calls", join.m_subject.host.calls.of({"objMgr.findObj"}),
              Texts{"objMgr.findObj(C, 0)", "objMgr.findObj(A, 0)", "objMgr.findObj(C, 0)"});
}

void keepsOrderBeforeValidation(const Bundle& bundle, ObjectType type) {
  LooseJoin join(bundle, type);
  expectEqual("result", join.setGroup({"C", "A"}), OKAY);
  expectEqual("what its job would read", join.published(), "JoinJobPars group=[C,A] sync=false");
}

void emptyGroup(const Bundle& bundle, ObjectType type) {
  LooseJoin join(bundle, type);
  expectEqual("result", join.setGroup({}), REFUSED);
  join.expectTraced("onSetCmdValues", "No motion objects specified for the join command");
}

void unknownName(const Bundle& bundle, ObjectType type) {
  LooseJoin join(bundle, type);
  expectEqual("result", join.setGroup({"A", "nobody", "nothing", "C"}), REFUSED);
  join.expectTraced("onSetCmdValues", "motion object nobody is not found");
  expectEqual("objects looked for", join.m_subject.host.calls.count("objMgr.findObj"), 2);
  expectEqual("what its job would read", join.published(), "JoinJobPars group=[A] sync=false");
}

void aloneInGroup(const Bundle& bundle, ObjectType type) {
  LooseJoin join(bundle, type);
  expectEqual("result of onSetCmdValues", join.setGroup({"B"}), OKAY);
  expectEqual("result of onValidate", join.validate(), REFUSED);
  join.expectTraced("onValidate", "No motion object(s) specified to join with.");
}

void withoutExtension(const Bundle& bundle, ObjectType type) {
  LooseJoin join(bundle, type);
  expectEqual("status of stop", join.m_subject.component().stop(), 0);
  join.m_subject.forget();
  expectEqual("result of onSetCmdValues", join.setGroup({"A"}), NULL_POINTER);
  join.expectTraced("onSetCmdValues", "Invalid motion extended interface");
  join.m_subject.forget();
  expectEqual("result of onValidate", join.validate(), NULL_POINTER);
  join.expectTraced("onValidate", "Invalid motion extended interface");
  join.m_subject.forget();
  expectEqual("result of onSetCmdValues without names", join.setGroup({}), REFUSED);
  join.expectTraced("onSetCmdValues", "No motion objects specified for the join command");
}

void withoutObjMgr(const Bundle& bundle, ObjectType type) {
  LooseJoin join(bundle, type);
  join.m_subject.host.calls.fail("ext.getObjMgr", 0);
  expectEqual("result of onSetCmdValues", join.setGroup({"A"}), NULL_POINTER);
  join.expectTraced("onSetCmdValues", "Invalid object manager");
  join.m_subject.forget();
  expectEqual("result of onValidate", join.validate(), NULL_POINTER);
  join.expectTraced("onValidate", "Invalid object manager");
}

void readsItsObject(const Bundle& bundle, ObjectType type) {
  LooseJoin join(bundle, type);
  CmdFrame frame(11);
  Inputs inputs(join.m_subject, *join.m_obj, frame);
  join.m_subject.forget();
  expectEqual("result", join.m_cmd->onRegisterJobListsInputs(inputs.handler), OKAY);
  const auto& sections = join.m_subject.host.sectionMgr;
  expectEqual("calls of the host", join.m_subject.host.calls.of({"handler."}),
              Texts{fmt::format("handler.registerPublish({}, {}, onRegisterJobListsInputs)",
                                kavo::job::JoinJobPars::getMyID(), sections.valueOf("CMD_DATA")),
                    fmt::format("handler.registerRead({}, {}, 1, onRegisterJobListsInputs)", core::IObjPtr::getMyID(),
                                sections.valueOf("OBJ_DATA"))});
}

void refusedRead(const Bundle& bundle, ObjectType type) {
  LooseJoin join(bundle, type);
  test::FakeJobDataHandler handler(join.m_subject.host.calls);
  expectEqual("result", join.m_cmd->onRegisterJobListsInputs(handler), REFUSED);
  join.expectTraced("onRegisterJobListsInputs", "IObjPtr::registerRead failed: [0xF0000020]");
}

/// A frame whose state differs from the one that is told.
class OddFrame : public CmdFrame {
 public:
  using CmdFrame::CmdFrame;
  [[nodiscard]] CmdState getCmdState() const override { return m_shown; }
  CmdState m_shown = CmdState::CREATED;
};

void otherStates(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"});
  world.subject.forget();
  for (const std::uint32_t state : {0U, 1U, 2U, 3U, 4U, 6U, 7U}) {
    a->changeState(CmdState{state});
  }
  expectEqual("traces", world.subject.traces(), Texts{});
  a->changeState(CmdState{5});
  expectEqual("traces of the abort", world.subject.traces(),
              Texts{warningOf("job_obj_join", "onAbort", "A: joinCmd seq=1: ABORTED")});
}

void stateOfFrame(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"});
  OddFrame frame(11);
  frame.m_jobs = std::move(a->frame.m_jobs);
  world.subject.forget();
  frame.m_shown = CmdState::ACTIVE;
  a->cmd().onCmdStateChanged(frame, CmdState::ABORTED);
  expectEqual("traces when the frame is not aborted", world.subject.traces(), Texts{});
  frame.m_shown = CmdState::ABORTED;
  a->cmd().onCmdStateChanged(frame, CmdState::ACTIVE);
  expectEqual("traces when the frame is aborted", world.subject.traces(),
              Texts{warningOf("job_obj_join", "onAbort", "A: joinCmd seq=1: ABORTED")});
  a->frame.m_jobs = std::move(frame.m_jobs);
}

void abortWithoutJobs(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.buffered(world.a, 11, {"B"});
  a->changeState(CmdState::ABORTED);
  expectEqual("traces", world.subject.traces(), Texts{});
}

Checks groupChecks(ObjectType type, const std::string& suffix) {
  struct Row {
    std::string what;
    std::vector<std::string> names;
    std::string group;
  };
  const std::vector<Row> rows = {
      {"completed", {"A", "C"}, "[A,B,C]"},
      {"not-extended", {"B", "A", "C"}, "[A,B,C]"},
      {"of-two", {"A"}, "[A,B]"},
      {"sorted-byte-by-byte", {"\xC3\xA4", "aa", "a", "Z", "C"}, "[B,C,Z,a,aa,\xC3\xA4]"},
      {"in-another-order", {"C", "B", "A"}, "[A,B,C]"},
      {"with-duplicates", {"C", "A", "C"}, "[A,B,C,C]"},
      {"with-issuer-twice", {"B", "B"}, "[B,B]"},
  };
  Checks checks;
  for (const auto& row : rows) {
    checks.push_back({"join.group-" + row.what + suffix, "the group is completed by the issuer and sorted by name, as it is",
                      [row, type](const Bundle& bundle) { group(bundle, type, row.names, row.group); }});
  }
  return checks;
}

Checks refusalChecks(ObjectType type, const std::string& suffix) {
  const auto with = [type](auto* body) { return [type, body](const Bundle& bundle) { body(bundle, type); }; };
  return {
      {"join.flag" + suffix, "the flag reaches the job", with(&flag)},
      {"join.looks-up-in-order" + suffix, "each name is looked up, in the order in which it was written",
       with(&looksUpInOrder)},
      {"join.sorted-by-validation" + suffix, "the group has the user's order before validation",
       with(&keepsOrderBeforeValidation)},
      {"join.empty-group" + suffix, "an empty group is refused with its text", with(&emptyGroup)},
      {"join.unknown-name" + suffix, "the first unknown name is refused and named; objects before it stay",
       with(&unknownName)},
      {"join.alone" + suffix, "a group of the issuer alone is refused with its text", with(&aloneInGroup)},
      {"join.without-extension" + suffix, "without an extension interface both steps fail with its text",
       with(&withoutExtension)},
      {"join.without-object-manager" + suffix, "without an object manager both steps fail with its text",
       with(&withoutObjMgr)},
      {"join.reads-its-object" + suffix, "the command offers its record and reads its object, in their sections",
       with(&readsItsObject)},
      {"join.object-not-offered" + suffix, "an object that cannot be read refuses the command", with(&refusedRead)},
  };
}

}  // namespace

Checks joinCommandChecks() {
  const Checks states = {
      {"join.other-states", "of all states only \"aborted\" reaches the job", otherStates},
      {"join.state-of-frame", "the state is the one that the frame reports", stateOfFrame},
      {"join.abort-without-jobs", "an abort before there are jobs is silent", abortWithoutJobs},
  };
  return together({groupChecks(ObjectType::AXIS, "-axis"), groupChecks(ObjectType::KINEMATICS, "-kinematics"),
                   refusalChecks(ObjectType::AXIS, "-axis"), refusalChecks(ObjectType::KINEMATICS, "-kinematics"), states});
}

}  // namespace motion::conformance
