// Slot orders that component and host rely on: each operation is called through its place in the table of virtual
// operations.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "common/log/trace/i_registration_real_time3.h"
#include "motion/core/cmd/i_cmd_context.h"
#include "motion/core/i_motion_ext.h"
#include "motion/core/i_obj.h"

namespace motion::core {
namespace {

/// The place of a virtual operation in its class's table, read from the pointer to the operation (Itanium C++ ABI: table
/// offset plus one). The pair of destructors takes places 0 and 1.
template <typename OPERATION>
std::size_t slotOf(OPERATION operation) {
  std::uintptr_t offset = 0;
  static_assert(sizeof(operation) >= sizeof(offset));
  std::memcpy(&offset, &operation, sizeof(offset));
  EXPECT_EQ(offset % sizeof(void*), 1U) << "not a virtual operation";
  return (offset - 1) / sizeof(void*);
}

TEST(Slots, OfTheMotionObject) {
  EXPECT_EQ(slotOf(&IObj::isKinematics), slotOf(&IObj::isAxis) + 2);
}

TEST(Slots, OfTheExtensionInterface) {
  const std::size_t first = slotOf(&IMotionExt::getJobDataIDMgr);
  EXPECT_EQ(slotOf(&IMotionExt::getSectionMgr) + 1, first);
  EXPECT_EQ(slotOf(&IMotionExt::getObjFactory), first + 1);
  EXPECT_EQ(slotOf(&IMotionExt::getGenericCmdFactory), first + 2);
  EXPECT_EQ(slotOf(&IMotionExt::getGenericCmdOptionFactory), first + 3);
}

TEST(Slots, OfTheObjectFactory) {
  EXPECT_EQ(slotOf(&IObjFactory::registerObj), 2U);
  EXPECT_EQ(slotOf(&IObjFactory::createObj), 3U);
  EXPECT_EQ(slotOf(&IObjFactory::unregisterObj), 4U);
}

TEST(Slots, OfTheOptionFactoryHaveThePlainRegistrationFirst) {
  EXPECT_LT(slotOf(&cmd::IGenericCmdOptionFactory::registerCmdOption),
            slotOf(&cmd::IGenericCmdOptionFactory::registerCmdOptionWithSlots));
}

TEST(Slots, OfTheCommandContext) {
  EXPECT_EQ(slotOf(&cmd::ICmdContext::addCmdOption), slotOf(&cmd::ICmdContext::addCmd) + 1);
}

TEST(Slots, OfTheTraceRegistration) {
  using common::log::trace::IRegistrationRealTime3;
  EXPECT_EQ(slotOf(&IRegistrationRealTime3::registerUnit), 2U);
  EXPECT_EQ(slotOf(&IRegistrationRealTime3::unregisterUnit), 4U);
}

TEST(Slots, OfTheTraceSink) {
  using common::log::trace::ILogRealTime3;
  EXPECT_EQ(slotOf(&ILogRealTime3::logRealTime), 2U);
  EXPECT_EQ(slotOf(&ILogRealTime3::logRealTimeVaList), 3U);
}

TEST(Slots, OfAContainer) {
  struct Meaning;
  using Container = NamedType<int, Meaning>;
  EXPECT_EQ(slotOf(&Container::getID), 2U);
  EXPECT_EQ(slotOf(&Container::getRef), 3U);
  EXPECT_EQ(slotOf(&Container::get), 4U);
  EXPECT_EQ(slotOf(&Container::set), 5U);
}

TEST(Slots, OfACommand) {
  using Sut = cmd::CmdGeneric<ObjectType::AXIS>;
  const std::vector<std::size_t> slots{slotOf(&Sut::getJobNames),        slotOf(&Sut::onSetCmdValues),
                                       slotOf(&Sut::onGetCmdType),       slotOf(&Sut::onRegisterJobListsInputs),
                                       slotOf(&Sut::onValidate),         slotOf(&Sut::onCmdStateChanged),
                                       slotOf(&Sut::onIsAdditional),     slotOf(&Sut::onAdditionalExecute),
                                       slotOf(&Sut::onCmdActivate),      slotOf(&Sut::onCmdExit),
                                       slotOf(&Sut::onGetAddCmdSlotID),  slotOf(&Sut::onDeviceHasToFollow),
                                       slotOf(&Sut::onGetPlcOpenCmdType)};
  for (std::size_t i = 0; i < slots.size(); ++i) {
    EXPECT_EQ(slots[i], i + 2);
  }
}

}  // namespace
}  // namespace motion::core
