// The order of the component's operations and fields, seen as a framework sees them that knows nothing but the order.
#include <cstddef>
#include <cstring>

#include "cmp_fixture.h"

namespace motion::kavo::bundle {
namespace {

using testing::ElementsAre;

class MotionKavoCmpSlotsTest : public MotionKavoCmpTest {
 protected:
  void call(std::size_t slot) { callSlot<void>(m_sut.get(), slot); }
  /// Calls the operation in a slot with a pointer.
  void callWith(std::size_t slot, const void* argument) { callSlot<void, const void*>(m_sut.get(), slot, argument); }
  [[nodiscard]] std::int32_t status(std::size_t slot) { return callSlot<std::int32_t>(m_sut.get(), slot); }
};

TEST_F(MotionKavoCmpSlotsTest, HasTheLifecycleFirst) {
  EXPECT_EQ(status(2), 0);
  EXPECT_EQ(traces().back(), info("init", "Init Motion.Kavo " + VERSION_TEXT));
  EXPECT_EQ(status(3), START_FAILED);
  EXPECT_EQ(traces().back(), FAILED);
  EXPECT_EQ(status(4), 0);
  EXPECT_EQ(traces().back(), info("stop", "Motion.Kavo stopped"));
  EXPECT_EQ(status(5), 0);
  EXPECT_EQ(traces().back(), info("deinit", "Motion.Kavo deinit"));
}

TEST_F(MotionKavoCmpSlotsTest, HasASetAndARemoveOperationPerService) {
  const std::vector<std::string> names = {"MotionExt",
                                          "dataLayer factory",
                                          "deprecated motion.core command interface",
                                          "deprecated motion.core system interface",
                                          "motion.core command interface",
                                          "motion.core system interface",
                                          "motion.core data interface"};
  std::size_t slot = 6;
  for (const auto& name : names) {
    forget();
    callWith(slot++, nullptr);
    callWith(slot++, nullptr);
    ASSERT_EQ(traces().size(), 3U) << name;
    EXPECT_EQ(m_host.traceSink.entries()[0].text, "Add " + name + " service dependency");
    EXPECT_EQ(m_host.traceSink.entries()[2].text, "Remove " + name + " service dependency");
  }
  EXPECT_EQ(slot, 20U);
}

TEST_F(MotionKavoCmpSlotsTest, HasPathAndNameThen) {
  callWith(20, nullptr);
  EXPECT_EQ(traces().back(), error("setBundlePath", "bundlePath is NULL"));
  callWith(22, nullptr);
  EXPECT_EQ(traces().back(), error("setBundleName", "bundleName is NULL"));
  setServices();
  callWith(20, "/by slot");
  callWith(22, "name by slot");
  EXPECT_EQ(status(3), 0);
  EXPECT_EQ(m_host.m_version.componentName, "name by slot");
  EXPECT_EQ(m_host.cmdFactory.m_commands.at(EXPECTED_ROWS[0][0].id).schemaPath, "/by slot/bfbs/cmdWaitForSignal.bfbs");
  EXPECT_EQ(status(4), 0);
  call(21);
  EXPECT_EQ(status(3), 0);
  EXPECT_EQ(m_host.m_version.componentName, "name by slot");
  EXPECT_EQ(m_host.cmdFactory.m_commands.at(EXPECTED_ROWS[0][0].id).schemaPath, "/bfbs/cmdWaitForSignal.bfbs");
  EXPECT_EQ(status(4), 0);
  call(23);
  EXPECT_EQ(status(3), 0);
  EXPECT_EQ(m_host.m_version.componentName, "");
}

TEST_F(MotionKavoCmpSlotsTest, HasTheTraceServiceLast) {
  test::FakeTraceSink sink;
  test::FakeTraceService service(m_host.calls, sink);
  callWith(24, static_cast<common::log::trace::IRegistrationRealTime3*>(&service));
  EXPECT_EQ(DebugTrace::getTrace(), &sink);
  callWith(25, static_cast<common::log::trace::IRegistrationRealTime3*>(&service));
  EXPECT_EQ(DebugTrace::getTrace(), DebugTrace::getBufferedTrace());
}

TEST_F(MotionKavoCmpSlotsTest, BeginsWithThePairOfDestructors) {
  start();
  callSlot<void>(m_sut.release(), 1);
  EXPECT_EQ(m_host.m_extensionsAlive, 0) << "the second one also frees the memory, which a leak check would see";
  MotionKavoCmd::terminate(&m_host.ext);
  MotionKavoSys::terminate();
  ExtDepMgr::getInstance().setMotionExtIF(nullptr);

  alignas(MotionKavoCmp) std::array<std::byte, sizeof(MotionKavoCmp)> memory{};
  auto* const inPlace = new (memory.data()) MotionKavoCmp();
  callSlot<void>(inPlace, 0);

  m_sut = std::make_unique<MotionKavoCmp>();
}

TEST_F(MotionKavoCmpSlotsTest, HasItsFieldsInOrder) {
  const auto* const begin = reinterpret_cast<const std::byte*>(m_sut.get());
  const auto text = [begin](std::size_t offset) { return *reinterpret_cast<const std::string*>(begin + offset); };
  const auto pointer = [begin](std::size_t offset) {
    const void* value = nullptr;
    std::memcpy(&value, begin + offset, sizeof(value));
    return value;
  };
  constexpr std::size_t PATH = sizeof(void*);
  constexpr std::size_t NAME = PATH + sizeof(std::string);
  constexpr std::size_t POINTERS = NAME + sizeof(std::string);
  constexpr std::size_t POINTER_COUNT = 8;
  ASSERT_EQ(sizeof(MotionKavoCmp), POINTERS + POINTER_COUNT * sizeof(void*));
  EXPECT_EQ(text(PATH), "");
  EXPECT_EQ(text(NAME), "");
  const auto pointers = [&pointer] {
    std::vector<const void*> values;
    for (std::size_t i = 0; i < POINTER_COUNT; ++i) {
      values.push_back(pointer(POINTERS + i * sizeof(void*)));
    }
    return values;
  };
  EXPECT_THAT(pointers(), testing::Each(nullptr));
  start();
  EXPECT_EQ(text(PATH), "/a bundle");
  EXPECT_EQ(text(NAME), "a name");
  EXPECT_THAT(pointers(), ElementsAre(&m_host.cmdIf, &m_host.sysIf, &m_host.cmdIf2, &m_host.sysIf2, &m_host.dataIf,
                                      static_cast<comm::datalayer::IDataLayerFactory*>(&m_host.dataLayer), &m_host.extension,
                                      ExtDepMgr::getInstance().getMotionExtIF()));
}

}  // namespace
}  // namespace motion::kavo::bundle
