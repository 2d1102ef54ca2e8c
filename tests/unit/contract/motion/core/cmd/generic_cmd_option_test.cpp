#include "motion/core/cmd/generic_cmd_option.h"

#include <gtest/gtest.h>

namespace motion::core::cmd {
namespace {

class PlainOption : public GenericCmdOption {
 public:
  CmdResult setParameter(const IContainer*, IObjFactory&, const IObj&, dia::IDia&) override { return CmdResult::Okay; }
  std::vector<job::IJobObject*> createJobs(IObjFactory&) const override { return {}; }
};

TEST(GenericCmdOption, GivesADurationForEachPermanence) {
  const PlainOption sut;
  CmdOptDuration duration = CmdOptDuration::NONE;
  EXPECT_EQ(sut.getDuration(CmdOptPermType::ONCE, duration), CmdResult::Okay);
  EXPECT_EQ(static_cast<std::uint32_t>(duration), 1U);
  EXPECT_EQ(sut.getDuration(CmdOptPermType::PERM_ON, duration), CmdResult::Okay);
  EXPECT_EQ(static_cast<std::uint32_t>(duration), 3U);
  EXPECT_EQ(sut.getDuration(CmdOptPermType::PERM_OFF, duration), CmdResult::Okay);
  EXPECT_EQ(static_cast<std::uint32_t>(duration), 0U);
}

TEST(GenericCmdOption, RefusesAnUnknownPermanence) {
  const PlainOption sut;
  CmdOptDuration duration = CmdOptDuration::PERMANENT;
  EXPECT_EQ(sut.getDuration(static_cast<CmdOptPermType>(3), duration), CmdResult::UnknownPermType);
  EXPECT_EQ(duration, CmdOptDuration::PERMANENT);
}

TEST(GenericCmdOption, KeepsNoParametersByItself) {
  PlainOption sut;
  const IContainer* values = nullptr;
  EXPECT_EQ(sut.getParameter(values), CmdResult::UnknownPermType);
  EXPECT_EQ(sut.getCmdOptExitStrategy(), 0U);
}

}  // namespace
}  // namespace motion::core::cmd
