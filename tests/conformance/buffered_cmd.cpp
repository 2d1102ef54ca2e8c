// A command of the bundle in the buffer of a motion object, driven as a host drives it.
#include "conformance/buffered_cmd.h"

#include <fmt/format.h>

#include <utility>

#include "conformance/crossing.h"
#include "conformance/expect.h"
#include "support/parameter_table.h"

namespace motion::conformance {

using core::ObjectType;
using core::cmd::CmdResult;
using core::job::JobListTypes;
using core::job::JobResult;

namespace {

constexpr test::ParameterTable::Place FIRST = 4;
constexpr test::ParameterTable::Place SECOND = 6;

const test::FakeCmdRegistration& registration(Subject& subject, ObjectType type, const std::string& name) {
  const auto found = subject.host.cmdFactory.m_commands.find({type, name});
  expectNotNull(fmt::format("registration of command {} for type {}", name, static_cast<std::uint32_t>(type)),
                found != subject.host.cmdFactory.m_commands.end());
  return found->second;
}

template <ObjectType TYPE>
Created createWith(const core::cmd::CmdCreateFn<TYPE>& onCreate, core::IObjFactory& factory, bool buffered,
                   const std::string& errTextBefore) {
  Created created;
  created.errText = errTextBefore;
  core::cmd::CmdGeneric<TYPE>* cmd = nullptr;
  created.result = crossing("onCreate", [&] { return onCreate(factory, buffered, cmd, created.errText); });
  created.cmd.reset(cmd);
  return created;
}

/// "No effect" is the only result after which a job object's list is complete for types that it does not serve.
void addJobs(core::job::IJobObject& job, test::FakeJobList& list, JobListTypes type) {
  const auto result = crossing("addJobsToJoblist", [&] { return job.addJobsToJoblist(&list, type); });
  if (result != JobResult::ListTypeNotServed) {
    expectEqual(fmt::format("addJobsToJoblist of type {}", static_cast<std::uint32_t>(type)), result, JobResult::NoEffect);
  }
}

}  // namespace

core::job::IJobObject* CmdFrame::findJobObject(const char* name) const {
  for (const auto& job : m_jobs) {
    if (std::string_view(job->getID()) == name) {
      return job.get();
    }
  }
  return nullptr;
}

ObjectType typeOf(const test::FakeObj& obj) {
  return obj.m_isAxis ? ObjectType::AXIS : ObjectType::KINEMATICS;
}

Marshalled marshal(Subject& subject, ObjectType type, const std::string& name, const comm::datalayer::Variant* data) {
  Marshalled marshalled;
  core::IContainer* container = nullptr;
  const auto& onMarshal = registration(subject, type, name).onMarshal;
  marshalled.result = crossing("onMarshal", [&] { return onMarshal(data, container, marshalled.isOwned); });
  marshalled.container.reset(container);
  return marshalled;
}

Created create(Subject& subject, ObjectType type, const std::string& name, bool buffered, const std::string& errTextBefore) {
  const auto& known = registration(subject, type, name);
  auto& factory = subject.host.objFactory;
  return type == ObjectType::AXIS ? createWith<ObjectType::AXIS>(known.onCreateAxis, factory, buffered, errTextBefore)
                                  : createWith<ObjectType::KINEMATICS>(known.onCreateKin, factory, buffered, errTextBefore);
}

Inputs::Inputs(Subject& subject, test::FakeObj& obj, core::cmd::ICmd& cmd)
    : handler(subject.host.calls), m_subject(subject), m_objPtr(&obj), m_cmdPtr(&cmd) {
  offer(core::IObjPtr::getMyID(), "OBJ_DATA", &m_objPtr);
  offer(core::cmd::ICmdPtr::getMyID(), "CMD_DATA", &m_cmdPtr);
}

void Inputs::offer(core::DataID id, const std::string& section, core::IContainer* container) {
  handler.m_published[{id, m_subject.host.sectionMgr.valueOf(section)}] = container;
}

void Inputs::withdraw(core::DataID id, const std::string& section) {
  handler.m_published.erase({id, m_subject.host.sectionMgr.valueOf(section)});
}

std::unique_ptr<core::job::IJobObject> makeJob(Subject& subject, const std::string& name) {
  core::job::IJobObject* job = nullptr;
  expectEqual("making the job object " + name,
              crossing("createNew", [&] { return subject.host.objFactory.createObj(name.c_str(), 0, job); }),
              core::ObjFactoryResult::Okay);
  return std::unique_ptr<core::job::IJobObject>(job);
}

BufferedCmd::BufferedCmd(Subject& subject, test::FakeObj& obj, std::uint64_t cmdId, const std::string& name,
                         const comm::datalayer::Variant& parameters)
    : frame(cmdId), lists(subject.host.calls), inputs(subject, obj, frame), m_subject(subject), m_obj(obj) {
  const auto type = typeOf(obj);
  auto marshalled = marshal(subject, type, name, &parameters);
  expectEqual("marshalling of " + name, marshalled.result, CmdResult::Okay);
  m_parameters = std::move(marshalled.container);
  auto created = create(subject, type, name);
  expectEqual("creation of " + name, created.result, CmdResult::Okay);
  m_cmd = std::move(created.cmd);
  expectEqual("onSetCmdValues of " + name, m_cmd->onSetCmdValues(m_parameters.get(), source(), &obj, false),
              CmdResult::Okay);
  expectEqual("onValidate of " + name, m_cmd->onValidate(source(), &obj.m_dia), CmdResult::Okay);
  changeState(core::cmd::CmdState::BUFFERED);
}

void BufferedCmd::giveJobs() {
  const auto offered = crossing("onRegisterJobListsInputs", [&] { return m_cmd->onRegisterJobListsInputs(inputs.handler); });
  expectEqual("onRegisterJobListsInputs", offered, CmdResult::Okay);
  for (const auto& name : m_cmd->getJobNames()) {
    frame.m_jobs.push_back(makeJob(m_subject, name));
    auto& job = *frame.m_jobs.back();
    expectEqual("registerOutputs of " + name,
                crossing("registerOutputs", [&] { return job.registerOutputs(&inputs.handler); }), JobResult::NoEffect);
    expectEqual("registerInputs of " + name, crossing("registerInputs", [&] { return job.registerInputs(&inputs.handler); }),
                JobResult::NoEffect);
    addJobs(job, lists.cyclic, JobListTypes::CYCLIC_EXECUTION);
    addJobs(job, lists.before, JobListTypes::BEFORE_EXECUTION);
    addJobs(job, lists.prepared, JobListTypes::COMMAND_PREPARED);
  }
}

JobResult BufferedCmd::run(const test::FakeJobList& list) {
  auto result = JobResult::NoEffect;
  for (const auto& entry : list.m_jobs) {
    const auto one = crossing(entry.name, entry.job);
    if (result == JobResult::NoEffect) {
      result = one;
    }
  }
  return result;
}

JobResult BufferedCmd::prepare() {
  return run(lists.prepared);
}

JobResult BufferedCmd::begin() {
  return run(lists.before);
}

JobResult BufferedCmd::cycle() {
  return run(lists.cyclic);
}

void BufferedCmd::prepareWithJobs() {
  giveJobs();
  expectEqual("result of the jobs of the list \"command prepared\"", prepare(), JobResult::NoEffect);
  m_obj.m_latestPreparedCmdID = frame.getCmdID();
  changeState(core::cmd::CmdState::PREPARED);
}

void BufferedCmd::changeState(core::cmd::CmdState state) {
  frame.m_state = state;
  m_obj.m_cmdStates[frame.getCmdID()] = state;
  crossing("onCmdStateChanged", [&] { m_cmd->onCmdStateChanged(frame, state); });
}

comm::datalayer::Variant signalParameters(std::uint32_t signalId) {
  return test::ParameterTable().with(FIRST, signalId).finish();
}

comm::datalayer::Variant waitParameters(std::uint32_t signalId, bool autoReset) {
  return test::ParameterTable().with(FIRST, signalId).with<std::uint8_t>(SECOND, autoReset ? 1 : 0).finish();
}

comm::datalayer::Variant joinParameters(const std::vector<std::string>& group, bool syncStartNextCmd) {
  return test::ParameterTable().withTexts(FIRST, group).with<std::uint8_t>(SECOND, syncStartNextCmd ? 1 : 0).finish();
}

const core::dia::CmdSourceInfo& source() {
  static const core::dia::CmdSourceInfo info{"conformance", "a check", 1};
  return info;
}

}  // namespace motion::conformance
