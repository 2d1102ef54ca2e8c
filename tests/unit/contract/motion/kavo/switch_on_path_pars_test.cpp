// The record of switching conditions that option, job and host share.
#include "motion/kavo/switch_on_path_pars.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <string_view>
#include <type_traits>

namespace motion::kavo {
namespace {

TEST(SwitchOnPathPars, HasItsFieldsInOrder) {
  EXPECT_EQ(offsetof(SwitchOnPathPars, mode), 0U);
  EXPECT_EQ(offsetof(SwitchOnPathPars, signalId), 4U);
  EXPECT_EQ(offsetof(SwitchOnPathPars, action), 8U);
  EXPECT_EQ(offsetof(SwitchOnPathPars, targetPos), 16U);
  EXPECT_EQ(offsetof(SwitchOnPathPars, radius), 40U);
  EXPECT_EQ(offsetof(SwitchOnPathPars, preTriggerTime), 48U);
  EXPECT_EQ(offsetof(SwitchOnPathPars, reached), 56U);
  EXPECT_EQ(sizeof(SwitchOnPathPars), 64U);
}

TEST(SwitchOnPathPars, HasItsNumbers) {
  EXPECT_EQ(static_cast<std::uint32_t>(SwitchOnPathMode::ENTER_SPHERE), 0U);
  EXPECT_EQ(static_cast<std::uint32_t>(SwitchOnPathAction::SET_SIGNAL), 0U);
  EXPECT_EQ(static_cast<std::uint32_t>(SwitchOnPathAction::RESET_SIGNAL), 1U);
  EXPECT_EQ(sizeof(SwitchOnPathMode), 4U);
  EXPECT_EQ(sizeof(SwitchOnPathAction), 4U);
}

TEST(SwitchOnPathPars, IsArmedAndEmptyWhenMade) {
  const SwitchOnPathPars sut;
  EXPECT_EQ(sut.mode, SwitchOnPathMode::ENTER_SPHERE);
  EXPECT_EQ(sut.signalId, 0U);
  EXPECT_EQ(sut.action, SwitchOnPathAction::SET_SIGNAL);
  EXPECT_EQ(sut.targetPos, (std::array<double, 3>{}));
  EXPECT_EQ(sut.radius, 0.0);
  EXPECT_EQ(sut.preTriggerTime, 0.0);
  EXPECT_FALSE(sut.reached);
  EXPECT_FALSE(sut.isReached());
}

TEST(SwitchOnPathPars, SharesItsFlagBetweenLists) {
  const auto condition = std::make_shared<SwitchOnPathPars>();
  const SwitchOnPathParsList first(SwitchOnPathParsListT{condition});
  const SwitchOnPathParsList second(first.get());
  first.get().front()->setReached();
  EXPECT_TRUE(second.get().front()->isReached());
  EXPECT_TRUE(condition->reached);
  EXPECT_EQ(second.get().front(), condition);
}

TEST(SwitchOnPathParsList, HasTheIdentityThatFollowsFromItsFunctionText) {
  constexpr std::string_view TEXT =
      "static motion::core::DataID motion::core::NamedType<BASETYPE, SEMANTIC>::getMyID() [with BASETYPE = "
      "std::vector<std::shared_ptr<motion::kavo::SwitchOnPathPars> >; SEMANTIC = "
      "motion::kavo::SwitchOnPathParsList___t; motion::core::DataID = long unsigned int]";
  EXPECT_EQ(SwitchOnPathParsList::getMyID(), std::hash<std::string_view>{}(TEXT));
  EXPECT_EQ(SwitchOnPathParsList().getID(), SwitchOnPathParsList::getMyID());
  EXPECT_TRUE(SwitchOnPathParsList().get().empty());
}

}  // namespace
}  // namespace motion::kavo
