// Identity and announcement of the record of WaitForSignalReset.
#include "impl/wait_for_signal_reset/wait_for_signal_reset_pars.h"

#include <cstddef>
#include <functional>
#include <string_view>

#include "impl/send_signal/send_signal_pars.h"
#include "impl/wait_for_signal/wait_for_signal_pars.h"
#include "impl_fixture.h"

namespace motion::kavo::job {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class WaitForSignalResetParsTest : public ImplTest {};

TEST_F(WaitForSignalResetParsTest, HasTheIdentityThatFollowsFromItsFunctionText) {
  constexpr std::string_view TEXT =
      "static motion::core::DataID motion::core::NamedType<BASETYPE, SEMANTIC>::getMyID() [with BASETYPE = "
      "motion::kavo::job::WaitForSignalResetJobParsT; SEMANTIC = motion::kavo::job::WaitForSignalResetJobPars___t; "
      "motion::core::DataID = long unsigned int]";
  constexpr std::size_t SEED = 0xc70f6907;
  EXPECT_EQ(std::_Hash_bytes(TEXT.data(), TEXT.size(), SEED), 0xc365ea9df78dfca7U);
  EXPECT_EQ(WaitForSignalResetJobPars::getMyID(), 0xc365ea9df78dfca7U);
}

TEST_F(WaitForSignalResetParsTest, HasAnIdentityOfItsOwn) {
  EXPECT_EQ(WaitForSignalResetJobPars().getID(), WaitForSignalResetJobPars::getMyID());
  EXPECT_NE(WaitForSignalResetJobPars::getMyID(), SendSignalJobPars::getMyID());
  EXPECT_NE(WaitForSignalResetJobPars::getMyID(), cmd::CmdSendSignalPars::getMyID());
  EXPECT_NE(WaitForSignalJobPars::getMyID(), WaitForSignalResetJobPars::getMyID());
}

TEST_F(WaitForSignalResetParsTest, HasItsFieldsInOrder) {
  EXPECT_EQ(offsetof(WaitForSignalResetJobParsT, signalId), 0U);
  EXPECT_EQ(sizeof(WaitForSignalResetJobParsT), 4U);
}

TEST_F(WaitForSignalResetParsTest, IsEmptyAtFirst) {
  EXPECT_EQ(WaitForSignalResetJobPars().get().signalId, 0U);
}

TEST_F(WaitForSignalResetParsTest, AnnouncesItsRecord) {
  registerWaitForSignalResetDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(m_host.calls.all(), ElementsAre("idMgr.addID(WaitForSignalResetJobPars)"));
  EXPECT_EQ(m_host.jobDataIDMgr.getID("WaitForSignalResetJobPars"), WaitForSignalResetJobPars::getMyID());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(WaitForSignalResetParsTest, WarnsOnceOfARecordThatIsKnown) {
  registerWaitForSignalResetDataTypes(m_host.jobDataIDMgr);
  registerWaitForSignalResetDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(traces(), ElementsAre("Warning wait_for_signal_reset_pars registerWaitForSignalResetDataTypes: "
                                    "WaitForSignalResetJobPars was already registered"));
}

}  // namespace
}  // namespace motion::kavo::job
