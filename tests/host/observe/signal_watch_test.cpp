#include "host/observe/signal_watch.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "host/datalayer/data_layer.h"
#include "motion/kavo/signal_memory.h"

namespace motion::host::observe {
namespace {

class SignalWatchTest : public testing::Test {
 protected:
  void create(const char* address, std::shared_ptr<comm::datalayer::IMemoryOwner>& memory,
              std::uint32_t size = kavo::SIGNAL_COUNT) {
    ASSERT_FALSE(m_dataLayer.createMemorySync(memory, address, m_provider.get(), size, comm::datalayer::MemoryType::INPUT)
                     .isFailure());
  }

  void createBoth() {
    create(kavo::SIGNALS_IN_ADDRESS, m_in);
    create(kavo::SIGNALS_OUT_ADDRESS, m_out);
    ASSERT_TRUE(sut.open(m_problem)) << m_problem;
  }

  static void add(comm::datalayer::IMemoryOwner& memory, std::uint32_t signal, std::uint8_t count) {
    std::uint8_t* data = nullptr;
    ASSERT_FALSE(memory.beginAccess(data, 0).isFailure());
    data[signal] = static_cast<std::uint8_t>(data[signal] + count);
    memory.endAccess();
  }

  std::vector<Event> look(std::uint64_t cycle, std::uint32_t object) {
    EventRing ring(1000);
    sut.look(ring, cycle, object);
    std::vector<Event> events;
    for (Event event; ring.read(event);) {
      events.push_back(event);
    }
    return events;
  }

  datalayer::DataLayer m_dataLayer;
  std::unique_ptr<comm::datalayer::IProvider> m_provider{
      m_dataLayer.createProvider(std::string(datalayer::DataLayer::PROVIDER_ENDPOINT))};
  std::shared_ptr<comm::datalayer::IMemoryOwner> m_in;
  std::shared_ptr<comm::datalayer::IMemoryOwner> m_out;
  std::string m_problem;
  SignalWatch sut{m_dataLayer};
};

TEST_F(SignalWatchTest, NamesTheMissingMemory) {
  create(kavo::SIGNALS_IN_ADDRESS, m_in);
  EXPECT_FALSE(sut.open(m_problem));
  EXPECT_EQ(m_problem,
            std::string("the component publishes no signals at '") + kavo::SIGNALS_OUT_ADDRESS + "' (DL_INVALID_ADDRESS)");
  EXPECT_EQ(m_dataLayer.openHandleCount(), 1U);
}

TEST_F(SignalWatchTest, RefusesMemoriesOfAnotherSize) {
  create(kavo::SIGNALS_IN_ADDRESS, m_in, 10);
  create(kavo::SIGNALS_OUT_ADDRESS, m_out);
  EXPECT_FALSE(sut.open(m_problem));
}

TEST_F(SignalWatchTest, SeesNothingWhenNothingChanges) {
  createBoth();
  EXPECT_TRUE(look(1, 0).empty());
}

TEST_F(SignalWatchTest, TakesTheStateAtOpeningAsKnown) {
  create(kavo::SIGNALS_IN_ADDRESS, m_in);
  create(kavo::SIGNALS_OUT_ADDRESS, m_out);
  add(*m_in, 4, 1);
  ASSERT_TRUE(sut.open(m_problem));
  EXPECT_TRUE(look(1, 0).empty());
  EXPECT_TRUE(sut.value(4));
}

TEST_F(SignalWatchTest, AJobsChangeBelongsToTheObject) {
  createBoth();
  add(*m_in, 7, 1);
  const auto events = look(12, 3);
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events[0].kind, EventKind::SIGNAL_SET);
  EXPECT_EQ(events[0].cycle, 12U);
  EXPECT_EQ(events[0].object, 3U);
  EXPECT_EQ(events[0].detail, 7U);
  EXPECT_TRUE(sut.value(7));
}

TEST_F(SignalWatchTest, ASystemFunctionsChangeComesFromOutside) {
  createBoth();
  add(*m_out, 99, 1);
  const auto events = look(2, 3);
  ASSERT_EQ(events.size(), 1U);
  EXPECT_EQ(events[0].object, OUTSIDE);
  EXPECT_EQ(events[0].detail, 99U);
}

TEST_F(SignalWatchTest, ASetFromOutsideThatAJobConsumedIsTwoChanges) {
  createBoth();
  add(*m_out, 0, 1);
  add(*m_in, 0, 1);
  const auto events = look(2, 1);
  ASSERT_EQ(events.size(), 2U);
  EXPECT_EQ(events[0].kind, EventKind::SIGNAL_SET);
  EXPECT_EQ(events[0].object, OUTSIDE);
  EXPECT_EQ(events[1].kind, EventKind::SIGNAL_RESET);
  EXPECT_EQ(events[1].object, 1U);
  EXPECT_FALSE(sut.value(0));
}

TEST_F(SignalWatchTest, ASetOfASetSignalIsNoChange) {
  createBoth();
  add(*m_in, 5, 1);
  EXPECT_EQ(look(1, 0).size(), 1U);
  add(*m_in, 5, 1);
  EXPECT_TRUE(look(2, 0).empty());
}

TEST_F(SignalWatchTest, LooksAtNothingOnceClosedOrWithdrawn) {
  createBoth();
  m_dataLayer.deleteMemorySync(m_in);
  EXPECT_TRUE(look(1, 0).empty());
  sut.close();
  EXPECT_TRUE(look(1, 0).empty());
}

}  // namespace
}  // namespace motion::host::observe
