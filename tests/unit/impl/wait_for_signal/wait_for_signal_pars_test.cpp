// Identity and announcement of the record of WaitForSignal.
#include "impl/wait_for_signal/wait_for_signal_pars.h"

#include <cstddef>
#include <functional>
#include <string_view>

#include "impl/send_signal/send_signal_pars.h"
#include "impl/wait_for_signal_reset/wait_for_signal_reset_pars.h"
#include "impl_fixture.h"

namespace motion::kavo::job {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WaitForSignalParsTest : public ImplTest {};

TEST_F(WaitForSignalParsTest, HasTheIdentityThatFollowsFromItsFunctionText) {
  constexpr std::string_view TEXT =
      "static motion::core::DataID motion::core::NamedType<BASETYPE, SEMANTIC>::getMyID() [with BASETYPE = "
      "motion::kavo::job::WaitForSignalJobParsT; SEMANTIC = motion::kavo::job::WaitForSignalJobPars___t; "
      "motion::core::DataID = long unsigned int]";
  constexpr std::size_t SEED = 0xc70f6907;
  EXPECT_EQ(std::_Hash_bytes(TEXT.data(), TEXT.size(), SEED), 0x1f7ef42d05f900c9U);
  EXPECT_EQ(WaitForSignalJobPars::getMyID(), 0x1f7ef42d05f900c9U);
}

TEST_F(WaitForSignalParsTest, HasAnIdentityOfItsOwn) {
  EXPECT_EQ(WaitForSignalJobPars().getID(), WaitForSignalJobPars::getMyID());
  EXPECT_NE(WaitForSignalJobPars::getMyID(), SendSignalJobPars::getMyID());
  EXPECT_NE(WaitForSignalJobPars::getMyID(), cmd::CmdSendSignalPars::getMyID());
  EXPECT_NE(WaitForSignalJobPars::getMyID(), WaitForSignalResetJobPars::getMyID());
}

TEST_F(WaitForSignalParsTest, HasItsFieldsInOrder) {
  EXPECT_EQ(offsetof(WaitForSignalJobParsT, signalId), 0U);
  EXPECT_EQ(offsetof(WaitForSignalJobParsT, autoReset), 4U);
  EXPECT_EQ(sizeof(WaitForSignalJobParsT), 8U);
}

TEST_F(WaitForSignalParsTest, IsEmptyAtFirst) {
  EXPECT_EQ(WaitForSignalJobPars().get().signalId, 0U);
  EXPECT_FALSE(WaitForSignalJobPars().get().autoReset);
}

TEST_F(WaitForSignalParsTest, AnnouncesItsRecord) {
  registerWaitForSignalDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(m_host.calls.all(), ElementsAre("idMgr.addID(WaitForSignalJobPars)"));
  EXPECT_EQ(m_host.jobDataIDMgr.getID("WaitForSignalJobPars"), WaitForSignalJobPars::getMyID());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(WaitForSignalParsTest, WarnsOnceOfARecordThatIsKnown) {
  registerWaitForSignalDataTypes(m_host.jobDataIDMgr);
  registerWaitForSignalDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(
      traces(),
      ElementsAre(
          "Warning wait_for_signal_pars registerWaitForSignalDataTypes: WaitForSignalJobPars was already registered"));
}

}  // namespace
}  // namespace motion::kavo::job
