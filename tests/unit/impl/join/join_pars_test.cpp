// Identity, fields and announcement of the records of Join.
#include "impl/join/join_pars.h"

#include <cstddef>
#include <type_traits>

#include "impl/send_signal/send_signal_pars.h"
#include "impl/wait_for_signal/wait_for_signal_pars.h"
#include "impl_fixture.h"

namespace motion::kavo {
namespace {

using cmd::CmdJoinPars;
using cmd::CmdJoinParsT;
using job::JoinJobPars;
using job::JoinJobParsT;
using testing::ElementsAre;
using testing::IsEmpty;

class JoinParsTest : public ImplTest {};

TEST_F(JoinParsTest, HaveIdentitiesOfTheirOwn) {
  EXPECT_EQ(CmdJoinPars().getID(), CmdJoinPars::getMyID());
  EXPECT_EQ(JoinJobPars().getID(), JoinJobPars::getMyID());
  EXPECT_NE(CmdJoinPars::getMyID(), JoinJobPars::getMyID());
  EXPECT_NE(JoinJobPars::getMyID(), job::WaitForSignalJobPars::getMyID());
  EXPECT_NE(CmdJoinPars::getMyID(), cmd::CmdSendSignalPars::getMyID());
}

TEST_F(JoinParsTest, HaveTheIdentityOfTheirFullNames) {
  using CmdRecord = core::NamedType<CmdJoinParsT, cmd::CmdJoinPars___t>;
  using JobRecord = core::NamedType<JoinJobParsT, job::JoinJobPars___t>;
  EXPECT_EQ(CmdJoinPars::getMyID(), CmdRecord::getMyID());
  EXPECT_EQ(JoinJobPars::getMyID(), JobRecord::getMyID());
  const std::string beginning =
      "static motion::core::DataID motion::core::NamedType<BASETYPE, SEMANTIC>::getMyID() [with BASETYPE = ";
  const std::string end = "; motion::core::DataID = long unsigned int]";
  const auto idOf = [&](const std::string& record, const std::string& semantic) {
    return std::hash<std::string>{}(beginning + record + "; SEMANTIC = " + semantic + end);
  };
  EXPECT_EQ(CmdJoinPars::getMyID(), idOf("motion::kavo::cmd::CmdJoinParsT", "motion::kavo::cmd::CmdJoinPars___t"));
  EXPECT_EQ(JoinJobPars::getMyID(), idOf("motion::kavo::job::JoinJobParsT", "motion::kavo::job::JoinJobPars___t"));
}

TEST_F(JoinParsTest, HaveTheirFieldsInOrder) {
  EXPECT_EQ(offsetof(CmdJoinParsT, group), 0U);
  EXPECT_EQ(offsetof(CmdJoinParsT, syncStartNextCmd), sizeof(std::vector<std::string>));
  EXPECT_EQ(offsetof(JoinJobParsT, group), 0U);
  EXPECT_EQ(offsetof(JoinJobParsT, syncStartNextCmd), sizeof(std::vector<const core::IObj*>));
  static_assert(std::is_same_v<decltype(CmdJoinParsT::group), std::vector<std::string>>);
  static_assert(std::is_same_v<decltype(JoinJobParsT::group), std::vector<const core::IObj*>>);
}

TEST_F(JoinParsTest, AreEmptyAtFirst) {
  EXPECT_THAT(CmdJoinPars().get().group, IsEmpty());
  EXPECT_FALSE(CmdJoinPars().get().syncStartNextCmd);
  EXPECT_THAT(JoinJobPars().get().group, IsEmpty());
  EXPECT_FALSE(JoinJobPars().get().syncStartNextCmd);
}

TEST_F(JoinParsTest, AreAnnounced) {
  cmd::registerJoinDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(m_host.calls.all(), ElementsAre("idMgr.addID(CmdJoinPars)", "idMgr.addID(JoinJobPars)"));
  EXPECT_EQ(m_host.jobDataIDMgr.getID("CmdJoinPars"), CmdJoinPars::getMyID());
  EXPECT_EQ(m_host.jobDataIDMgr.getID("JoinJobPars"), JoinJobPars::getMyID());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(JoinParsTest, WarnOnceEachWhenTheyAreKnown) {
  cmd::registerJoinDataTypes(m_host.jobDataIDMgr);
  cmd::registerJoinDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(traces(), ElementsAre("Warning cmd_join registerJoinDataTypes: CmdJoinPars was already registered",
                                    "Warning cmd_join registerJoinDataTypes: JoinJobPars was already registered"));
}

TEST_F(JoinParsTest, SurviveAnExceptionOfTheHost) {
  m_host.calls.fail("idMgr.addID", test::FakeCalls::THROW, 1);
  EXPECT_NO_THROW(cmd::registerJoinDataTypes(m_host.jobDataIDMgr));
  EXPECT_EQ(m_host.jobDataIDMgr.getID("CmdJoinPars"), 0U);
}

}  // namespace
}  // namespace motion::kavo
