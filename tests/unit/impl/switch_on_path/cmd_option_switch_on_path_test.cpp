// The command option SwitchOnPath: what it checks, keeps and hands to its jobs.
#include "impl/switch_on_path/cmd_option_switch_on_path.h"

#include "switch_on_path/switch_on_path_fixture.h"

namespace motion::kavo::cmd {
namespace {

using core::cmd::CmdResult;
using core::job::IJobObject;
using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

class CmdOptionSwitchOnPathTest : public CommandTest {
 protected:
  CmdOptionSwitchOnPathTest() {
    m_host.objFactory.m_prototypes["JobObjSwitchOnPath"] = std::make_unique<job::JobObjSwitchOnPath>();
    forget();
  }

  [[nodiscard]] CmdResult set(SwitchOnPathParsListT conditions) {
    const auto values = listOf(std::move(conditions));
    return m_sut.setParameter(&values, m_host.objFactory, m_obj, m_dia);
  }
  [[nodiscard]] SwitchOnPathParsListT kept() {
    const core::IContainer* values = nullptr;
    EXPECT_EQ((core::toCode(callSlot<CmdResult, const core::IContainer*&>(&m_sut, 5, values))), 0x00110000U);
    const auto* const list = SwitchOnPathParsList::safeCast(values);
    EXPECT_NE(list, nullptr);
    return list != nullptr ? list->get() : SwitchOnPathParsListT();
  }
  [[nodiscard]] SwitchOnPathParsListT dataOfNewJob() {
    const auto jobs = m_sut.createJobs(m_host.objFactory);
    EXPECT_EQ(jobs.size(), 1U);
    if (jobs.empty()) {
      return {};
    }
    const std::unique_ptr<IJobObject> job(jobs.front());
    EXPECT_NE(dynamic_cast<job::JobObjSwitchOnPath*>(job.get()), nullptr);
    return SwitchOnPathParsList::safeCast(job->getJobData())->get();
  }

  test::FakeObj m_obj{m_host.calls};
  CmdOptionSwitchOnPath m_sut;
};

TEST_F(CmdOptionSwitchOnPathTest, KeepsNothingAtFirst) {
  EXPECT_THAT(kept(), IsEmpty());
  EXPECT_THAT(dataOfNewJob(), IsEmpty());
}

TEST_F(CmdOptionSwitchOnPathTest, KeepsGoodConditionsAndSharesThemWithEachJob) {
  const auto first = sphere(7, {1, 2, 3}, 1);
  const auto second = sphere(8, {1, 2, 3}, 1);
  EXPECT_EQ(set({first, second}), CmdResult::Okay);
  EXPECT_THAT(kept(), ElementsAre(first, second));
  EXPECT_THAT(dataOfNewJob(), ElementsAre(first, second));
  EXPECT_THAT(dataOfNewJob(), ElementsAre(first, second));
  EXPECT_EQ(set({second}), CmdResult::Okay);
  EXPECT_THAT(kept(), ElementsAre(second));
  EXPECT_THAT(m_dia.m_reports, IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(CmdOptionSwitchOnPathTest, ReportsABadConditionAndKeepsThoseBefore) {
  const auto good = sphere(7, {1, 2, 3}, 1);
  ASSERT_EQ(set({good}), CmdResult::Okay);
  EXPECT_EQ(core::toCode(set({sphere(8, {1, 2, 3}, 1), sphere(100, {1, 2, 3}, 1)})), 0xF011001DU);
  EXPECT_THAT(traces(), ElementsAre("Error cmd_option_switch_on_path setParameter: jobObj->checkParameter() failed: " +
                                    std::to_string(static_cast<std::int32_t>(0xF0000016))));
  ASSERT_EQ(m_dia.m_reports.size(), 1U);
  EXPECT_EQ(m_dia.m_reports[0].mainCode, 0x090F2030U);
  EXPECT_EQ(m_dia.m_reports[0].detailCode, 0x0C5701B1U);
  EXPECT_EQ(m_dia.m_reports[0].text, "invalid 'signalId': should be in range [0..99]");
  EXPECT_THAT(kept(), ElementsAre(good));
}

TEST_F(CmdOptionSwitchOnPathTest, RefusesModesAndActionsThatDoNotExist) {
  EXPECT_EQ(core::toCode(set({condition({.mode = static_cast<SwitchOnPathMode>(1)})})), 0xF011001DU);
  EXPECT_EQ(core::toCode(set({condition({.action = static_cast<SwitchOnPathAction>(2)})})), 0xF011001DU);
  ASSERT_EQ(m_dia.m_reports.size(), 2U);
  EXPECT_EQ(m_dia.m_reports[0].text, "invalid 'mode': only ENTER_SPHERE is currently supported");
  EXPECT_EQ(m_dia.m_reports[1].text, "invalid 'action': should be SET_SIGNAL or RESET_SIGNAL");
}

TEST_F(CmdOptionSwitchOnPathTest, RefusesAnEmptyList) {
  EXPECT_EQ(core::toCode(set({})), 0xF011001DU);
  EXPECT_THAT(traces(), ElementsAre("Error job_obj_switch_on_path checkParameter: empty parameter container",
                                    "Error cmd_option_switch_on_path setParameter: jobObj->checkParameter() failed: " +
                                        std::to_string(static_cast<std::int32_t>(0xF0000004))));
}

TEST_F(CmdOptionSwitchOnPathTest, KeepsTheOldConditionsWhenAnAllocationFails) {
  const auto old = sphere(7, {1, 2, 3}, 1);
  ASSERT_EQ(set({old}), CmdResult::Okay);
  const auto added = sphere(8, {1, 2, 3}, 1);
  const auto values = listOf({added, added});
  CmdResult result{};
  const int failures =
      withEachAllocationFailing([&] { result = m_sut.setParameter(&values, m_host.objFactory, m_obj, m_dia); },
                                [&](bool hasFailed) {
                                  EXPECT_EQ(core::isFailure(result), hasFailed);
                                  EXPECT_EQ(kept().front(), hasFailed ? old : added);
                                });
  EXPECT_GT(failures, 2);
}

TEST_F(CmdOptionSwitchOnPathTest, ReturnsWhatItHoldsBehindItsBase) {
  const core::IContainer* values = nullptr;
  ASSERT_EQ(m_sut.getParameter(values), CmdResult::Okay);
  EXPECT_EQ(reinterpret_cast<const std::byte*>(values) - reinterpret_cast<const std::byte*>(&m_sut),
            static_cast<std::ptrdiff_t>(sizeof(core::cmd::GenericCmdOption)));
}

}  // namespace
}  // namespace motion::kavo::cmd
