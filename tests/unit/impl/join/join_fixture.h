// Base of the tests of the command Join: motion objects, and members of a group whose jobs meet.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "impl/join/job_obj_join.h"
#include "impl/join/join_cmd_global_context.h"
#include "impl/join/join_pars.h"
#include "impl_fixture.h"
#include "motion/core/cmd/i_cmd.h"

namespace motion::kavo::job {

/// A command of which only the host's ID is known.
class FakeCmd : public core::cmd::ICmd {
 public:
  explicit FakeCmd(std::uint64_t cmdId) : m_cmdId(cmdId) {}
  std::uint64_t getCmdID() const override { return m_cmdId; }

 private:
  std::uint64_t m_cmdId;
};

/// One member's command in the buffer of its object: the job object and what the host and the command offer it.
class JoinMember {
 public:
  JoinMember(test::FakeHost& host, test::FakeObj& obj, std::uint64_t cmdId, JoinGroup group, bool syncStartNextCmd = false)
      : m_obj(obj),
        m_cmd(cmdId),
        m_objPtr(&obj),
        m_cmdPtr(&m_cmd),
        m_pars(JoinJobParsT{std::move(group), syncStartNextCmd}),
        m_handler(host.calls) {
    m_handler.m_published[{core::IObjPtr::getMyID(), host.sectionMgr.valueOf("OBJ_DATA")}] = &m_objPtr;
    m_handler.m_published[{core::cmd::ICmdPtr::getMyID(), host.sectionMgr.valueOf("CMD_DATA")}] = &m_cmdPtr;
    m_handler.m_published[{JoinJobPars::getMyID(), host.sectionMgr.valueOf("CMD_DATA")}] = &m_pars;
  }
  JoinMember(const JoinMember&) = delete;
  JoinMember& operator=(const JoinMember&) = delete;

  test::FakeObj& m_obj;
  FakeCmd m_cmd;
  core::IObjPtr m_objPtr;
  core::cmd::ICmdPtr m_cmdPtr;
  JoinJobPars m_pars;
  test::FakeJobDataHandler m_handler;
  JobObjJoin m_job;
};

class JoinTest : public CommandTest {
 protected:
  JoinTest() { JoinCmdGlobalContext::reset(); }
  ~JoinTest() override { JoinCmdGlobalContext::reset(); }

  /// A member whose job has its inputs.
  [[nodiscard]] std::unique_ptr<JoinMember> member(test::FakeObj& obj, std::uint64_t cmdId, const JoinGroup& group,
                                                   bool syncStartNextCmd = false) {
    auto made = std::make_unique<JoinMember>(m_host, obj, cmdId, group, syncStartNextCmd);
    EXPECT_EQ(made->m_job.registerInputs(&made->m_handler), core::job::JobResult::NoEffect);
    return made;
  }
  /// A member whose command is prepared, too.
  [[nodiscard]] std::unique_ptr<JoinMember> prepared(test::FakeObj& obj, std::uint64_t cmdId, const JoinGroup& group,
                                                     bool syncStartNextCmd = false) {
    auto made = member(obj, cmdId, group, syncStartNextCmd);
    EXPECT_EQ(made->m_job.registerForJoin(), core::job::JobResult::NoEffect);
    return made;
  }
  [[nodiscard]] core::SectionValue objDataSection() const { return m_host.sectionMgr.valueOf("OBJ_DATA"); }
  /// The formats of the traces.
  [[nodiscard]] std::vector<std::string> formats() const {
    std::vector<std::string> result;
    for (const auto& entry : m_host.traceSink.entries()) {
      result.push_back(entry.format);
    }
    return result;
  }
  /// The format of the first trace, empty when there is none.
  [[nodiscard]] std::string firstFormat() const {
    const auto all = formats();
    return all.empty() ? std::string() : all.front();
  }

  test::FakeObj& m_a = m_host.objMgr.addAxis("A");
  test::FakeObj& m_b = m_host.objMgr.addAxis("B");
  test::FakeObj& m_c = m_host.objMgr.addKinematics("C");
  test::FakeObj m_stranger{m_host.calls};  ///< unknown to the object manager
  const JoinGroup m_ab{&m_a, &m_b};
  const JoinGroup m_abc{&m_a, &m_b, &m_c};
};

}  // namespace motion::kavo::job
