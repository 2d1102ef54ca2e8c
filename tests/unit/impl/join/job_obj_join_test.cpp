// The job of Join: its lists, its inputs, the names in its traces, and what it says of itself.
#include "impl/join/job_obj_join.h"

#include "join_fixture.h"

namespace motion::kavo::job {
namespace {

using core::job::JobListTypes;
using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

class JobObjJoinTest : public JoinTest {
 protected:
  [[nodiscard]] JobResult registerInputs() { return m_member.m_job.registerInputs(&m_member.m_handler); }
  [[nodiscard]] std::string read(core::DataID id, core::SectionValue section) const {
    return fmt::format("handler.registerRead({}, {}, 1, registerInputs)", id, section);
  }
  void expectError(const std::string& text) {
    EXPECT_THAT(traces(), ElementsAre("Error job_obj_join registerInputs: " + text));
    EXPECT_THAT(formats(), ElementsAre("%s"));
  }

  JoinMember m_member{m_host, m_a, 11, m_abc, true};
  JobObjJoin& m_sut = m_member.m_job;
};

TEST_F(JobObjJoinTest, HasItsName) {
  EXPECT_STREQ(m_sut.getID(), "kavo_job_join");
  EXPECT_STREQ(JobObjJoin::JOB_NAME, "kavo_job_join");
}

TEST_F(JobObjJoinTest, HasTheResultCodesOfTheHost) {
  EXPECT_EQ(core::toCode(JobResult::CmdFinished), 0x0A06U);
  EXPECT_EQ(core::toCode(JobResult::NoEffect), 0U);
  EXPECT_EQ(core::toCode(JobResult::InvalidObject), 0xF0000008U);
}

TEST_F(JobObjJoinTest, HasItsOperationsInOrder) {
  ASSERT_EQ((callSlot<JobResult, core::job::IJobDataHandler*>(&m_sut, 7, &m_member.m_handler)), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getMotionObj(), &m_a);
  EXPECT_STREQ(callSlot<const char*>(&m_sut, 3), "kavo_job_join");
  EXPECT_EQ((callSlot<JobResult, core::job::IJobList*, JobListTypes>(&m_sut, 5, &m_jobList, JobListTypes::CYCLIC_EXECUTION)),
            JobResult::NoEffect);
  EXPECT_EQ(callSlot<std::string>(&m_sut, 10), m_sut.getJobString());
  const std::unique_ptr<core::IAmCreatable> clone(callSlot<core::IAmCreatable*>(&m_sut, 2));
  EXPECT_STREQ(clone->getID(), "kavo_job_join");
}

TEST_F(JobObjJoinTest, LeavesTheOtherOperationsToItsBase) {
  EXPECT_EQ(m_sut.registerOutputs(&m_member.m_handler), JobResult::NoEffect);
  EXPECT_EQ(m_sut.setJobData(&m_member.m_pars), JobResult::NoEffect);
  EXPECT_EQ(m_sut.checkParameter(&m_member.m_pars, &m_dia), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobData(), nullptr);
  EXPECT_EQ(m_sut.getGroup(), nullptr);
}

TEST_F(JobObjJoinTest, ServesAllThreeLists) {
  ASSERT_EQ(registerInputs(), JobResult::NoEffect);
  forget();
  for (const auto type : {JobListTypes::COMMAND_PREPARED, JobListTypes::BEFORE_EXECUTION, JobListTypes::CYCLIC_EXECUTION}) {
    EXPECT_EQ(m_sut.addJobsToJoblist(&m_jobList, type), JobResult::NoEffect);
  }
  const auto added = fmt::format("jobList.addJob(kavo_job_join, {})", cmdDataSection());
  EXPECT_THAT(m_host.calls.all(), ElementsAre(added, added, added));
  ASSERT_EQ(m_jobList.m_jobs.size(), 3U);
  EXPECT_EQ(m_jobList.m_jobs[0].job(), JobResult::NoEffect);
  EXPECT_NE(m_sut.getContext(), nullptr);
  m_a.m_latestPreparedCmdID = m_a.m_currentCmdID = 11;
  EXPECT_EQ(m_jobList.m_jobs[1].job(), JobResult::NoEffect);
  m_a.m_latestPreparedCmdID = 12;
  EXPECT_EQ(m_jobList.m_jobs[2].job(), JobResult::NoEffect);
  EXPECT_THAT(traces(),
              ElementsAre("Info job_obj_join registerForJoin: A: joinCmd seq=1: group=[A,B,C], syncStartnextCmd=true, "
                          "command PREPARED",
                          "Info job_obj_join joinPreExecute: A: joinCmd seq=1: wait for next prepared command",
                          "Info job_obj_join joinAndWait: A: joinCmd seq=1: finished waiting for next prepared command",
                          "Info job_obj_join joinAndWait: A: joinCmd seq=1: A has joined"));
}

TEST_F(JobObjJoinTest, ServesNoOtherList) {
  for (const std::uint32_t type : {3U, 4U, 0xFFFFFFFFU}) {
    EXPECT_EQ(core::toCode(m_sut.addJobsToJoblist(&m_jobList, static_cast<JobListTypes>(type))), 0xF000000FU);
  }
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
}

TEST_F(JobObjJoinTest, PassesTheResultOfTheListOn) {
  m_host.calls.fail("jobList.addJob", 0xF0000022);
  for (const auto type : {JobListTypes::COMMAND_PREPARED, JobListTypes::BEFORE_EXECUTION, JobListTypes::CYCLIC_EXECUTION}) {
    EXPECT_EQ(core::toCode(m_sut.addJobsToJoblist(&m_jobList, type)), 0xF0000022U);
  }
}

TEST_F(JobObjJoinTest, ReadsItsInputsInOrder) {
  EXPECT_EQ(registerInputs(), JobResult::NoEffect);
  EXPECT_THAT(m_host.calls.of({"handler."}), ElementsAre(read(core::IObjPtr::getMyID(), objDataSection()),
                                                         read(core::cmd::ICmdPtr::getMyID(), cmdDataSection()),
                                                         read(JoinJobPars::getMyID(), cmdDataSection())));
  EXPECT_EQ(m_sut.getMotionObj(), &m_a);
  EXPECT_EQ(m_sut.getCmdId(), 11U);
  ASSERT_NE(m_sut.getGroup(), nullptr);
  EXPECT_EQ(*m_sut.getGroup(), m_abc);
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(JobObjJoinTest, HasNothingAtFirst) {
  EXPECT_EQ(m_sut.getMotionObj(), nullptr);
  EXPECT_EQ(m_sut.getCmdId(), 0U);
  EXPECT_EQ(m_sut.getGroup(), nullptr);
  EXPECT_EQ(m_sut.getContext(), nullptr);
}

TEST_F(JobObjJoinTest, ListsNoNamesWithoutInputs) {
  EXPECT_EQ(m_sut.initObjectNamesList(), JobResult::InvalidObject);
  EXPECT_EQ(m_sut.getJobString(), "join(group=[],syncStartNextCmd=)");
}

TEST_F(JobObjJoinTest, FollowsWhatItsInputsLeadTo) {
  ASSERT_EQ(registerInputs(), JobResult::NoEffect);
  m_member.m_objPtr.set(&m_b);
  EXPECT_EQ(m_sut.getMotionObj(), &m_b);
  m_member.m_objPtr.set(nullptr);
  EXPECT_EQ(m_sut.getMotionObj(), nullptr);
  m_member.m_cmdPtr.set(nullptr);
  EXPECT_EQ(m_sut.getCmdId(), 0U);
}

TEST_F(JobObjJoinTest, FailsWithoutAccessToItsObject) {
  m_host.calls.fail("handler.registerRead", 0xF0ABCDEF, 1);
  EXPECT_EQ(core::toCode(registerInputs()), 0xF0ABCDEFU);
  expectError("IObjPtr::registerRead failed");
  EXPECT_EQ(m_host.calls.count("handler.registerRead"), 1);
}

TEST_F(JobObjJoinTest, FailsWithoutAnObject) {
  m_member.m_objPtr.set(nullptr);
  EXPECT_EQ(core::toCode(registerInputs()), 0xF0000008U);
  expectError("Motion object is invalid");
  EXPECT_EQ(m_host.calls.count("handler.registerRead"), 1);
}

TEST_F(JobObjJoinTest, FailsWithoutAccessToItsCommand) {
  m_host.calls.fail("handler.registerRead", 0xF0ABCDEF, 2);
  EXPECT_EQ(core::toCode(registerInputs()), 0xF0ABCDEFU);
  expectError("ICmdPtr::registerRead failed");
  EXPECT_EQ(m_host.calls.count("handler.registerRead"), 2);
}

TEST_F(JobObjJoinTest, FailsWithoutACommand) {
  m_member.m_cmdPtr.set(nullptr);
  EXPECT_EQ(core::toCode(registerInputs()), 0xF0000008U);
  expectError("m_joinCmdPtr is null");
  EXPECT_EQ(m_host.calls.count("handler.registerRead"), 2);
}

TEST_F(JobObjJoinTest, FailsWithoutItsParameters) {
  m_member.m_handler.m_published.erase({JoinJobPars::getMyID(), cmdDataSection()});
  EXPECT_EQ(core::toCode(registerInputs()), 0xF0000020U);
  expectError("JoinJobPars::registerRead failed");
  EXPECT_EQ(m_host.calls.count("handler.registerRead"), 3);
  EXPECT_EQ(m_host.calls.count("ext.getObjMgr"), 0) << "no names without a group";
}

TEST_F(JobObjJoinTest, RefusesRecordsOfAnotherTypeAndNone) {
  JoinJobPars wrong;
  for (auto& [key, container] : m_member.m_handler.m_published) {
    auto* const right = container;
    container = key.first == JoinJobPars::getMyID() ? static_cast<core::IContainer*>(&m_member.m_objPtr) : &wrong;
    EXPECT_TRUE(core::isFailure(registerInputs()));
    container = nullptr;
    EXPECT_TRUE(core::isFailure(registerInputs()));
    container = right;
  }
  EXPECT_EQ(registerInputs(), JobResult::NoEffect);
}

TEST_F(JobObjJoinTest, FailsWithoutAnObjectManager) {
  m_host.parts.objMgr = nullptr;
  EXPECT_EQ(core::toCode(registerInputs()), 0xF0000008U);
  EXPECT_THAT(traces(), ElementsAre("Error job_obj_join initObjectNamesList: Invalid object manager"));
  EXPECT_THAT(formats(), ElementsAre("%s"));
}

TEST_F(JobObjJoinTest, FailsWithoutAnExtensionInterface) {
  ASSERT_EQ(registerInputs(), JobResult::NoEffect);
  ExtDepMgr::getInstance().setMotionExtIF(nullptr);
  forget();
  EXPECT_EQ(core::toCode(m_sut.initObjectNamesList()), 0xF0000008U);
  EXPECT_THAT(traces(), ElementsAre("Error job_obj_join initObjectNamesList: Invalid motion extended interface"));
  EXPECT_THAT(formats(), ElementsAre("%s"));
}

TEST_F(JobObjJoinTest, ListsTheNamesInGroupOrder) {
  m_member.m_pars.set({{&m_c, &m_a, &m_b}, false});
  ASSERT_EQ(registerInputs(), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobString(), "join(group=[C,A,B],syncStartNextCmd=false)");
  EXPECT_EQ(m_sut.initObjectNamesList(), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobString(), "join(group=[C,A,B],syncStartNextCmd=false)") << "made anew, not longer";
}

TEST_F(JobObjJoinTest, GoesOnBehindMembersWithoutAName) {
  m_member.m_pars.set({{&m_stranger, &m_a, nullptr, &m_b}, true});
  EXPECT_EQ(core::toCode(registerInputs()), 0xF0000016U);
  const std::string expected = "Error job_obj_join initObjectNamesList: Invalid motion object found";
  EXPECT_THAT(traces(), ElementsAre(expected, expected));
  EXPECT_THAT(formats(), ElementsAre("%s", "%s"));
  EXPECT_EQ(m_sut.getJobString(), "join(group=[<?>,A,<?>,B],syncStartNextCmd=true)");
}

TEST_F(JobObjJoinTest, NamesAnObjectWithoutANameByAMark) {
  m_member.m_objPtr.set(&m_stranger);
  m_member.m_pars.set({{&m_a, &m_b}, false});
  EXPECT_EQ(registerInputs(), JobResult::NoEffect) << "only members need a name";
  forget();
  ASSERT_EQ(m_sut.registerForJoin(), JobResult::NoEffect);
  EXPECT_THAT(traces(), ElementsAre("Info job_obj_join registerForJoin: <?>: joinCmd seq=1: group=[A,B], "
                                    "syncStartnextCmd=false, command PREPARED"));
}

TEST_F(JobObjJoinTest, DescribesItself) {
  EXPECT_EQ(m_sut.getJobString(), "join(group=[],syncStartNextCmd=)");
  ASSERT_EQ(registerInputs(), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobString(), "join(group=[A,B,C],syncStartNextCmd=true)");
  m_member.m_pars.set({m_abc, false});
  EXPECT_EQ(m_sut.getJobString(), "join(group=[A,B,C],syncStartNextCmd=false)");
}

TEST_F(JobObjJoinTest, DescribesAGroupOfMany) {
  JoinGroup group;
  std::string names;
  for (int number = 0; number < 200; ++number) {
    const auto name = fmt::format("an axis with a long name {:03}", number);
    group.push_back(&m_host.objMgr.addAxis(name));
    names += (number == 0 ? "" : ",") + name;
  }
  m_member.m_pars.set({group, true});
  ASSERT_EQ(registerInputs(), JobResult::NoEffect);
  EXPECT_EQ(m_sut.getJobString(), "join(group=[" + names + "],syncStartNextCmd=true)");
}

TEST_F(JobObjJoinTest, MakesFreshClones) {
  ASSERT_EQ(registerInputs(), JobResult::NoEffect);
  ASSERT_EQ(m_sut.registerForJoin(), JobResult::NoEffect);
  const std::unique_ptr<core::IAmCreatable> made(m_sut.createNew());
  const auto& clone = dynamic_cast<JobObjJoin&>(*made);
  EXPECT_EQ(clone.getJobString(), "join(group=[],syncStartNextCmd=)");
  EXPECT_EQ(clone.getMotionObj(), nullptr);
  EXPECT_EQ(clone.getCmdId(), 0U);
  EXPECT_EQ(clone.getContext(), nullptr);
}

TEST_F(JobObjJoinTest, AnswersAnExceptionOfTheHostWithAFailure) {
  for (int nth = 1; nth <= 3; ++nth) {
    m_host.calls.failNothing();
    m_host.calls.fail("handler.registerRead", test::FakeCalls::THROW, nth);
    EXPECT_TRUE(core::isFailure(registerInputs())) << nth;
  }
  m_host.calls.failNothing();
  m_host.calls.fail("ext.getObjMgr", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(registerInputs()));
  m_host.calls.fail("jobList.addJob", test::FakeCalls::THROW);
  EXPECT_TRUE(core::isFailure(m_sut.addJobsToJoblist(&m_jobList, JobListTypes::CYCLIC_EXECUTION)));
}

TEST_F(JobObjJoinTest, IsNotClonedWithoutMemory) {
  core::IAmCreatable* made = nullptr;
  const int failures = withEachAllocationFailing([&] { made = m_sut.createNew(); },
                                                 [&](bool hasFailed) { EXPECT_EQ(made == nullptr, hasFailed); });
  delete made;
  EXPECT_EQ(failures, 1);
}

TEST_F(JobObjJoinTest, FailsToListNamesWithoutMemory) {
  auto& longName = m_host.objMgr.addAxis("an axis with a name that is too long for a small text");
  m_member.m_pars.set({{&m_a, &longName, &m_b}, true});
  JobResult result{};
  const int failures = withEachAllocationFailing([&] { result = registerInputs(); },
                                                 [&](bool hasFailed) { EXPECT_EQ(core::isFailure(result), hasFailed); });
  EXPECT_GT(failures, 0);
  const auto expected = "join(group=[A,an axis with a name that is too long for a small text,B],syncStartNextCmd=true)";
  std::string text;
  withEachAllocationFailing([&] { EXPECT_NO_THROW(text = m_sut.getJobString()); },
                            [&](bool hasFailed) { EXPECT_TRUE(hasFailed || text == expected) << text; });
}

}  // namespace
}  // namespace motion::kavo::job
