// Identity and announcement of the record of the option SetSignal.
#include "impl/send_signal/option_set_signal_pars.h"

#include <cstddef>
#include <string_view>

#include "impl/send_signal/send_signal_pars.h"
#include "impl_fixture.h"

namespace motion::kavo::cmd {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class OptionSetSignalParsTest : public ImplTest {};

TEST_F(OptionSetSignalParsTest, HasTheIdentityThatFollowsFromItsFunctionText) {
  constexpr std::string_view TEXT =
      "static motion::core::DataID motion::core::NamedType<BASETYPE, SEMANTIC>::getMyID() [with BASETYPE = "
      "motion::kavo::cmd::CmdOptionSetSignalParsT; SEMANTIC = motion::kavo::cmd::CmdOptionSetSignalPars___t; "
      "motion::core::DataID = long unsigned int]";
  constexpr std::size_t SEED = 0xc70f6907;
  const auto expected = std::_Hash_bytes(TEXT.data(), TEXT.size(), SEED);
  EXPECT_EQ(CmdOptionSetSignalPars::getMyID(), expected);
  EXPECT_EQ(CmdOptionSetSignalPars().getID(), expected);
}

TEST_F(OptionSetSignalParsTest, IsNotTheRecordOfTheCommandNorOfTheJob) {
  CmdOptionSetSignalPars sut(CmdOptionSetSignalParsT{5});
  const core::IContainer* const container = &sut;
  EXPECT_EQ(CmdOptionSetSignalPars::safeCast(container), &sut);
  EXPECT_EQ(CmdSendSignalPars::safeCast(container), nullptr);
  EXPECT_EQ(job::SendSignalJobPars::safeCast(container), nullptr);
}

TEST_F(OptionSetSignalParsTest, HoldsASignalAndNothingElse) {
  EXPECT_EQ(offsetof(CmdOptionSetSignalParsT, signalId), 0U);
  EXPECT_EQ(sizeof(CmdOptionSetSignalParsT), 4U);
  EXPECT_EQ(CmdOptionSetSignalPars().get().signalId, 0U);
}

TEST_F(OptionSetSignalParsTest, AnnouncesItsRecord) {
  registerOptionSetSignalDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(m_host.calls.all(), ElementsAre("idMgr.addID(CmdOptionSetSignalPars)"));
  EXPECT_EQ(m_host.jobDataIDMgr.getID("CmdOptionSetSignalPars"), CmdOptionSetSignalPars::getMyID());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(OptionSetSignalParsTest, WarnsOnceOfARecordThatIsKnown) {
  registerOptionSetSignalDataTypes(m_host.jobDataIDMgr);
  registerOptionSetSignalDataTypes(m_host.jobDataIDMgr);
  EXPECT_THAT(traces(), ElementsAre("Warning option_set_signal_pars registerOptionSetSignalDataTypes: "
                                    "CmdOptionSetSignalPars was already registered"));
}

}  // namespace
}  // namespace motion::kavo::cmd
