// How the signals get on with a data layer that throws or breaks its word, and with a lock that fails.
#include <cstddef>
#include <memory>
#include <string>
#include <system_error>

#include "impl/signals.h"
#include "impl_fixture.h"
#include "signals_mutex.h"

namespace motion::kavo {
namespace {

using comm::datalayer::DlResult;
using comm::datalayer::IMemoryUser;
using core::FctResult;
using test::FakeCalls;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t ID = 5;
const std::string NOT_OPENED = "Error signals Signals: Failed to open memory to real-time signals";

class SignalsExceptionsTest : public SignalTest {
 protected:
  ~SignalsExceptionsTest() override {
    EXPECT_EQ(openAccesses(), 0);
    EXPECT_EQ(m_host.dataLayer.m_openUsers, 0);
  }
};

TEST_F(SignalsExceptionsTest, TakesAnExceptionForAMemoryThatCannotBeOpened) {
  for (const int nth : {1, 2}) {
    forget();
    m_host.calls.failNothing();
    m_host.calls.fail("dataLayer.openMemory", FakeCalls::THROW, nth);
    {
      Signals sut(m_host.dataLayer);
      EXPECT_THAT(traces(), ElementsAre(NOT_OPENED));
      EXPECT_EQ(m_host.calls.count("dataLayer.openMemory"), nth);
      EXPECT_EQ(sut.set(ID), FctResult::NotOkay);
    }
    EXPECT_EQ(m_host.calls.count("dataLayer.closeMemory"), nth - 1) << "only what was opened";
  }
}

TEST_F(SignalsExceptionsTest, TakesAnExceptionForAMemoryThatRefuses) {
  Signals sut(m_host.dataLayer);
  for (const std::string name : {"signals_out", "signals_in"}) {
    forget();
    m_host.calls.fail("memory.beginAccess " + name, FakeCalls::THROW, 1);
    bool value = true;
    EXPECT_EQ(sut.get(ID, value), FctResult::NotOkay);
    EXPECT_TRUE(value);
    EXPECT_THAT(traces(), ElementsAre("Error signals beginAccess: Failed to access motion/state/functions/kavo/rt-data/" +
                                      name + ": Error(DL_FAILED)"));
    EXPECT_EQ(m_host.calls.count("memory.endAccess signals_out"), name == "signals_in" ? 1 : 0);
    EXPECT_TRUE(canAnotherThreadLock(sut));
  }
}

TEST_F(SignalsExceptionsTest, TakesAnExceptionForAnAccessThatCannotBeEnded) {
  Signals sut(m_host.dataLayer);
  std::uint8_t* inBytes = nullptr;
  std::uint8_t* outBytes = nullptr;
  for (const std::string name : {"signals_in", "signals_out"}) {
    ASSERT_EQ(sut.beginAccess(inBytes, outBytes, ID), FctResult::Okay);
    forget();
    m_host.calls.fail("memory.endAccess " + name, FakeCalls::THROW, 1);
    EXPECT_EQ(sut.endAccess(), FctResult::NotOkay);
    EXPECT_EQ(m_host.calls.count("memory.endAccess signals_out"), name == "signals_in" ? 0 : 1);
    EXPECT_TRUE(canAnotherThreadLock(sut)) << name;
    EXPECT_THAT(traces(), IsEmpty());
  }
  EXPECT_EQ(sut.set(ID), FctResult::Okay);
  m_host.dataLayer.m_memories.at(SIGNALS_OUT_ADDRESS)->openAccesses = 0;
}

TEST_F(SignalsExceptionsTest, TakesAnExceptionWhileEndingTheAccessThatItGaveUp) {
  Signals sut(m_host.dataLayer);
  m_host.calls.fail("memory.beginAccess signals_in", FakeCalls::THROW, 1);
  m_host.calls.fail("memory.endAccess signals_out", FakeCalls::THROW, 1);
  EXPECT_EQ(sut.set(ID), FctResult::NotOkay);
  EXPECT_TRUE(canAnotherThreadLock(sut));
}

TEST_F(SignalsExceptionsTest, TakesAnExceptionForAFailureToClose) {
  {
    const Signals sut(m_host.dataLayer);
    m_host.calls.fail("dataLayer.closeMemory", FakeCalls::THROW);
  }
  EXPECT_THAT(
      traces(),
      ElementsAre("Error signals ~Signals: Failed to close  motion/state/functions/kavo/rt-data/signals_out: Error(DL_OK)",
                  "Error signals ~Signals: Failed to close  motion/state/functions/kavo/rt-data/ignals_in: Error(DL_OK)"));
  EXPECT_EQ(m_host.calls.count("dataLayer.closeMemory"), 2);
}

TEST_F(SignalsExceptionsTest, LetsOutTheErrorOfALockThatFails) {
  Signals sut(m_host.dataLayer);
  forget();
  const UnlockableMutex mutex(sut);
  std::uint8_t* inBytes = nullptr;
  std::uint8_t* outBytes = nullptr;
  EXPECT_THROW(static_cast<void>(sut.beginAccess(inBytes, outBytes, ID)), std::system_error);
  EXPECT_THAT(m_host.calls.all(), IsEmpty()) << "the memories come after the lock";
}

/// Opens memories, yet says of the n-th (from 1) that it could not.
class OddDataLayer : public test::FakeDataLayer {
 public:
  OddDataLayer(FakeCalls& calls, int nth) : FakeDataLayer(calls), m_nth(nth) {
    addMemory(SIGNALS_OUT_ADDRESS, SIGNAL_COUNT);
    addMemory(SIGNALS_IN_ADDRESS, SIGNAL_COUNT);
  }
  DlResult openMemory(std::shared_ptr<IMemoryUser>& memory, const std::string& address) override {
    const DlResult result = FakeDataLayer::openMemory(memory, address);
    return --m_nth == 0 ? comm::datalayer::DL_FAILED : result;
  }

 private:
  int m_nth;
};

TEST_F(SignalsExceptionsTest, KeepsNoHandleOfAMemoryThatCouldNotBeOpened) {
  for (const int nth : {1, 2}) {
    forget();
    OddDataLayer dataLayer(m_host.calls, nth);
    {
      Signals sut(dataLayer);
      EXPECT_EQ(fieldOf<std::shared_ptr<IMemoryUser>>(sut, SIGNALS_OUT_MEMORY) != nullptr, nth == 2);
      EXPECT_EQ(fieldOf<std::shared_ptr<IMemoryUser>>(sut, SIGNALS_IN_MEMORY), nullptr);
      EXPECT_THAT(traces(), ElementsAre(NOT_OPENED));
      EXPECT_EQ(sut.set(ID), FctResult::NotOkay);
      EXPECT_EQ(m_host.calls.count("memory.beginAccess signals_out"), 0);
    }
    EXPECT_EQ(m_host.calls.count("dataLayer.closeMemory"), nth - 1);
  }
}

TEST_F(SignalsExceptionsTest, HasItsFieldsInOrder) {
  Signals sut(m_host.dataLayer);
  EXPECT_EQ(fieldOf<comm::datalayer::IDataLayerFactory*>(sut, SIGNALS_FACTORY), &m_host.dataLayer);
  std::uint8_t* data = nullptr;
  for (const auto& [place, bytes] : {std::pair(SIGNALS_OUT_MEMORY, &out(0)), std::pair(SIGNALS_IN_MEMORY, &in(0))}) {
    auto& memory = fieldOf<std::shared_ptr<IMemoryUser>>(sut, place);
    ASSERT_EQ(memory->beginAccess(data, 0), comm::datalayer::DL_OK);
    EXPECT_EQ(data, bytes);
    EXPECT_EQ(memory->endAccess(), comm::datalayer::DL_OK);
  }
}

}  // namespace
}  // namespace motion::kavo
