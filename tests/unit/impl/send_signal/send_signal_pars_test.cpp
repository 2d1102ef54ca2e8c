// Identity and announcement of the records of SetSignal and ResetSignal.
#include "impl/send_signal/send_signal_pars.h"

#include <cstddef>
#include <string_view>

#include "impl_fixture.h"

namespace motion::kavo {
namespace {

using cmd::CmdSendSignalPars;
using cmd::CmdSendSignalParsT;
using job::SendSignalJobPars;
using job::SendSignalJobParsT;
using testing::ElementsAre;
using testing::IsEmpty;

class SendSignalParsTest : public ImplTest {};

TEST_F(SendSignalParsTest, HasTheIdentityThatFollowsFromItsFunctionText) {
  constexpr std::string_view TEXT =
      "static motion::core::DataID motion::core::NamedType<BASETYPE, SEMANTIC>::getMyID() [with BASETYPE = "
      "motion::kavo::cmd::CmdSendSignalParsT; SEMANTIC = motion::kavo::cmd::CmdSendSignalPars___t; motion::core::DataID = "
      "long unsigned int]";
  constexpr std::size_t SEED = 0xc70f6907;
  EXPECT_EQ(std::_Hash_bytes(TEXT.data(), TEXT.size(), SEED), 0x499538bceea58feeU);
  EXPECT_EQ(CmdSendSignalPars::getMyID(), 0x499538bceea58feeU);
  EXPECT_EQ(CmdSendSignalPars().getID(), 0x499538bceea58feeU);
}

TEST_F(SendSignalParsTest, HasTheIdentityOfTheJobsRecordToo) {
  constexpr std::string_view TEXT =
      "static motion::core::DataID motion::core::NamedType<BASETYPE, SEMANTIC>::getMyID() [with BASETYPE = "
      "motion::kavo::job::SendSignalJobParsT; SEMANTIC = motion::kavo::job::SendSignalJobPars___t; motion::core::DataID = "
      "long unsigned int]";
  constexpr std::size_t SEED = 0xc70f6907;
  EXPECT_EQ(std::_Hash_bytes(TEXT.data(), TEXT.size(), SEED), 0x42efa5f0e9782926U);
  EXPECT_EQ(SendSignalJobPars::getMyID(), 0x42efa5f0e9782926U);
  EXPECT_EQ(SendSignalJobPars().getID(), 0x42efa5f0e9782926U);
}

TEST_F(SendSignalParsTest, TellsItsRecordsApart) {
  EXPECT_NE(CmdSendSignalPars::getMyID(), SendSignalJobPars::getMyID());
  CmdSendSignalPars issued(CmdSendSignalParsT{5});
  const core::IContainer* const container = &issued;
  EXPECT_EQ(CmdSendSignalPars::safeCast(container), &issued);
  EXPECT_EQ(SendSignalJobPars::safeCast(container), nullptr);
  EXPECT_EQ(CmdSendSignalPars::safeCast(static_cast<const core::IContainer*>(nullptr)), nullptr);
}

TEST_F(SendSignalParsTest, HasItsFieldsInOrder) {
  EXPECT_EQ(offsetof(CmdSendSignalParsT, signalId), 0U);
  EXPECT_EQ(sizeof(CmdSendSignalParsT), 4U);
  EXPECT_EQ(offsetof(SendSignalJobParsT, signalId), 0U);
  EXPECT_EQ(offsetof(SendSignalJobParsT, reset), 4U);
  EXPECT_EQ(sizeof(SendSignalJobParsT), 8U);
}

TEST_F(SendSignalParsTest, IsEmptyAtFirst) {
  EXPECT_EQ(CmdSendSignalPars().get().signalId, 0U);
  EXPECT_EQ(SendSignalJobPars().get().signalId, 0U);
  EXPECT_FALSE(SendSignalJobPars().get().reset);
}

TEST_F(SendSignalParsTest, HasTheOperationsOfARecordInOrder) {
  auto* const sut = new CmdSendSignalPars(CmdSendSignalParsT{5});
  EXPECT_EQ(callSlot<core::DataID>(sut, 2), CmdSendSignalPars::getMyID());
  EXPECT_EQ(&callSlot<CmdSendSignalParsT&>(sut, 3), &sut->getRef());
  EXPECT_EQ(callSlot<CmdSendSignalParsT>(sut, 4).signalId, 5U);
  callSlot<void, CmdSendSignalParsT>(sut, 5, CmdSendSignalParsT{6});
  EXPECT_EQ(sut->get().signalId, 6U);
  EXPECT_EQ(sizeof(CmdSendSignalPars), 2 * sizeof(void*)) << "the payload is its only field";
  callSlot<void>(sut, 1);  // a leak check would see that the second destructor frees the memory
}

TEST_F(SendSignalParsTest, AnnouncesTheRecordOfTheCommand) {
  cmd::registerSendSignalDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(m_host.calls.all(), ElementsAre("idMgr.addID(CmdSendSignalPars)"));
  EXPECT_EQ(m_host.jobDataIDMgr.getID("CmdSendSignalPars"), CmdSendSignalPars::getMyID());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(SendSignalParsTest, AnnouncesTheRecordOfTheJob) {
  job::registerSendSignalDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(m_host.calls.all(), ElementsAre("idMgr.addID(SendSignalJobPars)"));
  EXPECT_EQ(m_host.jobDataIDMgr.getID("SendSignalJobPars"), SendSignalJobPars::getMyID());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(SendSignalParsTest, WarnsOnceOfARecordThatIsKnown) {
  for (int time = 0; time < 2; ++time) {
    cmd::registerSendSignalDataTypes(m_host.jobDataIDMgr);
    job::registerSendSignalDataTypes(m_host.jobDataIDMgr);
  }
  EXPECT_THAT(traces(),
              ElementsAre("Warning send_signal_pars registerSendSignalDataTypes: CmdSendSignalPars was already registered",
                          "Warning send_signal_pars registerSendSignalDataTypes: SendSignalJobPars was already registered"));
}

}  // namespace
}  // namespace motion::kavo
