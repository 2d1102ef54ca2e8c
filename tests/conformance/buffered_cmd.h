// A command of the bundle in the buffer of a motion object, driven as a host drives it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "conformance/subject.h"
#include "motion/core/cmd/cmd_generic.h"
#include "motion/core/cmd/i_cmd.h"
#include "motion/core/i_obj.h"
#include "motion/core/job/job_object_base.h"
#include "support/fake_jobs.h"

namespace motion::conformance {

/// The frame in which a host keeps a command: its ID, its state and its job objects.
class CmdFrame : public core::cmd::ICmdFrame, public core::job::IJobHandler {
 public:
  explicit CmdFrame(std::uint64_t cmdId) : m_cmdId(cmdId) {}

  [[nodiscard]] std::uint64_t getCmdID() const override { return m_cmdId; }
  [[nodiscard]] core::cmd::CmdState getCmdState() const override { return m_state; }
  [[nodiscard]] const core::job::IJobHandler& getJobHandler() const override { return *this; }
  [[nodiscard]] core::job::IJobObject* findJobObject(const char* name) const override;

  core::cmd::CmdState m_state = core::cmd::CmdState::CREATED;
  std::vector<std::unique_ptr<core::job::IJobObject>> m_jobs;

 private:
  std::uint64_t m_cmdId;
};

/// What a marshalling function answered.
struct Marshalled {
  core::cmd::CmdResult result{};
  std::unique_ptr<core::IContainer> container;  ///< null when there is none
  bool isOwned = false;
};

/// Calls the marshalling function of a registered command; a null variant is passed on. A Mismatch when the command is not
/// registered.
[[nodiscard]] Marshalled marshal(Subject& subject, core::ObjectType type, const std::string& name,
                                 const comm::datalayer::Variant* data);

/// Calls the create function of a registered command.
struct Created {
  core::cmd::CmdResult result{};
  std::unique_ptr<core::cmd::ICmdGeneric> cmd;  ///< null when there is none
  std::string errText;
};
[[nodiscard]] Created create(Subject& subject, core::ObjectType type, const std::string& name, bool buffered = true,
                             const std::string& errTextBefore = "");

/// A job list for each type of list.
struct JobLists {
  explicit JobLists(test::FakeCalls& calls) : cyclic(calls), before(calls), prepared(calls) {}

  test::FakeJobList cyclic;
  test::FakeJobList before;
  test::FakeJobList prepared;
};

/// Offers the object, the command and, for a kinematics, nothing more; records are found by type and section.
class Inputs {
 public:
  Inputs(Subject& subject, test::FakeObj& obj, core::cmd::ICmd& cmd);

  void offer(core::DataID id, const std::string& section, core::IContainer* container);
  void withdraw(core::DataID id, const std::string& section);

  test::FakeJobDataHandler handler;

 private:
  Subject& m_subject;
  core::IObjPtr m_objPtr;
  core::cmd::ICmdPtr m_cmdPtr;
};

/// One command from its parameters to its end. Each step is a Mismatch when it fails, unless the step returns the result.
class BufferedCmd {
 public:
  /// Creates the command, gives it the parameters and validates it. The object is an axis or a kinematics, and the command's
  /// registration is taken accordingly.
  BufferedCmd(Subject& subject, test::FakeObj& obj, std::uint64_t cmdId, const std::string& name,
              const comm::datalayer::Variant& parameters);
  BufferedCmd(const BufferedCmd&) = delete;
  BufferedCmd& operator=(const BufferedCmd&) = delete;

  /// The command publishes its records, its job objects are made and find their inputs, and the lists are filled.
  void giveJobs();
  /// Runs the jobs of the list "command prepared"; the first result other than "no effect", or that.
  [[nodiscard]] core::job::JobResult prepare();
  /// Runs the jobs of the list "before execution".
  [[nodiscard]] core::job::JobResult begin();
  /// Runs the cyclic jobs once.
  [[nodiscard]] core::job::JobResult cycle();
  /// giveJobs and prepare, for commands whose preparation has to succeed; the object knows the command as its latest.
  void prepareWithJobs();
  /// The state changes, and the command is told. The object answers with it when it is asked for this command.
  void changeState(core::cmd::CmdState state);

  [[nodiscard]] core::cmd::ICmdGeneric& cmd() const { return *m_cmd; }
  [[nodiscard]] core::job::IJobObject& job() const { return *frame.m_jobs.at(0); }
  [[nodiscard]] test::FakeObj& obj() const { return m_obj; }

  CmdFrame frame;
  JobLists lists;
  Inputs inputs;

 private:
  [[nodiscard]] static core::job::JobResult run(const test::FakeJobList& list);

  Subject& m_subject;
  test::FakeObj& m_obj;
  std::unique_ptr<core::IContainer> m_parameters;
  std::unique_ptr<core::cmd::ICmdGeneric> m_cmd;
};

/// The type of object that a fake object is.
[[nodiscard]] core::ObjectType typeOf(const test::FakeObj& obj);

/// Clones the job object that the component registered under that name; a Mismatch when there is none.
[[nodiscard]] std::unique_ptr<core::job::IJobObject> makeJob(Subject& subject, const std::string& name);

/// @name Parameters as clients send them.
/// @{
[[nodiscard]] comm::datalayer::Variant signalParameters(std::uint32_t signalId);
[[nodiscard]] comm::datalayer::Variant waitParameters(std::uint32_t signalId, bool autoReset);
[[nodiscard]] comm::datalayer::Variant joinParameters(const std::vector<std::string>& group, bool syncStartNextCmd);
/// @}

/// Who issued the commands of a check.
[[nodiscard]] const core::dia::CmdSourceInfo& source();

}  // namespace motion::conformance
