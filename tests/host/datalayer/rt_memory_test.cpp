// Accesses to real-time memories: results, memory maps, what an access may cost, and several threads at once.
#include "host/datalayer/rt_memory.h"

#include <gmock/gmock.h>

#include <atomic>
#include <barrier>
#include <memory>
#include <string>
#include <thread>

#include "host/datalayer/data_layer.h"
#include "memory_maps.h"
#include "support/fake_allocation.h"
#include "support/realtime_guard.h"

namespace motion::host::datalayer {
namespace {

using namespace comm::datalayer;
using motion::test::failsDuring;
using motion::test::Violations;
using motion::test::violationsOf;
using test::memoryMap;

constexpr std::uint32_t SIZE = 4;
constexpr const char* ADDRESS = "memory";

class RtMemoryTest : public testing::Test {
 protected:
  RtMemoryTest() {
    EXPECT_EQ(m_dataLayer.createMemorySync(m_owner, ADDRESS, m_provider.get(), SIZE, MemoryType::INPUT), DL_OK);
    EXPECT_EQ(m_dataLayer.openMemory(m_user, ADDRESS), DL_OK);
  }

  DlResult begin(IMemory& sut, std::uint32_t revision = 0) {
    std::uint8_t* data = nullptr;
    const DlResult result = sut.beginAccess(data, revision);
    EXPECT_EQ(data == nullptr, isFailure(result));
    return result;
  }

  DataLayer m_dataLayer;
  std::unique_ptr<IProvider> m_provider{m_dataLayer.createProvider("inproc:///tmp/datalayer/backend")};
  std::shared_ptr<IMemoryOwner> m_owner;
  std::shared_ptr<IMemoryUser> m_user;
};

TEST_F(RtMemoryTest, EachAccessIsEndedOnce) {
  for (IMemory* sut : {static_cast<IMemory*>(m_owner.get()), static_cast<IMemory*>(m_user.get())}) {
    EXPECT_EQ(sut->endAccess(), DL_RT_NOTOPEN);
    EXPECT_EQ(begin(*sut), DL_OK);
    EXPECT_EQ(begin(*sut), DL_OK) << "nested";
    EXPECT_EQ(sut->endAccess(), DL_OK);
    EXPECT_EQ(sut->endAccess(), DL_OK);
    EXPECT_EQ(sut->endAccess(), DL_RT_NOTOPEN);
    EXPECT_EQ(begin(*sut), DL_OK);
    EXPECT_EQ(sut->endAccess(), DL_OK);
  }
}

TEST_F(RtMemoryTest, AccessesBelongToTheirHandle) {
  EXPECT_EQ(begin(*m_owner), DL_OK);
  EXPECT_EQ(m_user->endAccess(), DL_RT_NOTOPEN);
  EXPECT_EQ(m_owner->endAccess(), DL_OK);
}

TEST_F(RtMemoryTest, RefusedAccessIsNotOpen) {
  EXPECT_EQ(begin(*m_user, 1), DL_RT_WRONGREVISON);
  EXPECT_EQ(m_user->endAccess(), DL_RT_NOTOPEN);
  ASSERT_EQ(m_dataLayer.deleteMemorySync(m_owner), DL_OK);
  EXPECT_EQ(begin(*m_user), DL_RT_INVALIDOBJECT);
  EXPECT_EQ(m_user->endAccess(), DL_RT_NOTOPEN);
}

TEST_F(RtMemoryTest, RevisionIsThatOfTheMap) {
  EXPECT_EQ(begin(*m_user, 0), DL_OK) << "before there is a map";
  ASSERT_EQ(m_owner->setMemoryMap(memoryMap({{"a", 0, 8}}, 7)), DL_OK);
  for (IMemory* sut : {static_cast<IMemory*>(m_owner.get()), static_cast<IMemory*>(m_user.get())}) {
    EXPECT_EQ(begin(*sut, 0), DL_RT_WRONGREVISON);
    EXPECT_EQ(begin(*sut, 8), DL_RT_WRONGREVISON);
    EXPECT_EQ(begin(*sut, 7), DL_OK);
  }
  EXPECT_EQ(m_user->endAccess(), DL_OK);
  EXPECT_EQ(m_user->endAccess(), DL_OK) << "the access from before the map";
}

TEST_F(RtMemoryTest, DeletedMemoryRefusesNewAccessesAndKeepsOpenOnes) {
  std::uint8_t* data = nullptr;
  ASSERT_EQ(m_user->beginAccess(data, 0), DL_OK);
  ASSERT_EQ(m_dataLayer.deleteMemorySync(m_owner), DL_OK);
  EXPECT_EQ(begin(*m_user), DL_RT_INVALIDOBJECT);
  EXPECT_EQ(begin(*m_owner), DL_RT_INVALIDOBJECT);
  data[SIZE - 1] = 5;
  EXPECT_EQ(data[SIZE - 1], 5);
  EXPECT_EQ(m_user->getSize(), SIZE);
  EXPECT_EQ(m_user->endAccess(), DL_OK);
}

TEST_F(RtMemoryTest, ClosedHandleRefusesNewAccesses) {
  ASSERT_EQ(begin(*m_user), DL_OK);
  ASSERT_EQ(m_dataLayer.closeMemory(m_user), DL_OK);
  EXPECT_EQ(begin(*m_user), DL_RT_INVALIDOBJECT);
  EXPECT_EQ(begin(*m_owner), DL_OK) << "the memory is still there";
  EXPECT_EQ(m_user->endAccess(), DL_OK);
}

TEST_F(RtMemoryTest, UsersSeeTheMap) {
  Variant map{true};
  EXPECT_EQ(m_user->getMemoryMap(map), DL_RT_NOVALIDDATA);
  EXPECT_EQ(map.getType(), VariantType::BOOL8) << "left as it was";
  ASSERT_EQ(m_owner->setMemoryMap(memoryMap({{"a", 0, 8}, {"b", 24, 8}}, 3)), DL_OK);
  ASSERT_EQ(m_user->getMemoryMap(map), DL_OK);
  const auto* const content = GetMemoryMap(map.getFlatBuffer().data());
  ASSERT_EQ(content->variables()->size(), 2U);
  EXPECT_EQ(content->variables()->Get(1)->name()->str(), "b");
  EXPECT_EQ(content->revision(), 3U);
}

TEST_F(RtMemoryTest, MapsEndWithTheMemory) {
  const Variant map = memoryMap({{"a", 0, 8}});
  ASSERT_EQ(m_owner->setMemoryMap(map), DL_OK);
  ASSERT_EQ(m_dataLayer.deleteMemorySync(m_owner), DL_OK);
  Variant copy;
  EXPECT_EQ(m_user->getMemoryMap(copy), DL_RT_INVALIDOBJECT);
  EXPECT_EQ(m_owner->setMemoryMap(map), DL_RT_INVALIDOBJECT);
}

TEST_F(RtMemoryTest, VariablesLieWithinTheMemory) {
  constexpr std::uint32_t BITS = SIZE * 8;
  EXPECT_EQ(m_owner->setMemoryMap(memoryMap({})), DL_OK);
  EXPECT_EQ(m_owner->setMemoryMap(memoryMap({{"all", 0, BITS}})), DL_OK);
  EXPECT_EQ(m_owner->setMemoryMap(memoryMap({{"last", BITS - 1, 1}})), DL_OK);
  EXPECT_EQ(m_owner->setMemoryMap(memoryMap({{"long", 0, BITS + 1}})), DL_RT_INVALIDMEMORYMAP);
  EXPECT_EQ(m_owner->setMemoryMap(memoryMap({{"behind", BITS, 1}})), DL_RT_INVALIDMEMORYMAP);
  EXPECT_EQ(m_owner->setMemoryMap(memoryMap({{"good", 0, 8}, {"straddles", BITS - 4, 8}})), DL_RT_INVALIDMEMORYMAP);
  EXPECT_EQ(m_owner->setMemoryMap(memoryMap({{"wraps", 0xFFFFFFFF, 8}})), DL_RT_INVALIDMEMORYMAP);
}

TEST_F(RtMemoryTest, RefusedMapChangesNothing) {
  ASSERT_EQ(m_owner->setMemoryMap(memoryMap({{"a", 0, 8}}, 3)), DL_OK);
  EXPECT_EQ(m_owner->setMemoryMap(memoryMap({{"b", 100, 8}}, 4)), DL_RT_INVALIDMEMORYMAP);
  EXPECT_EQ(m_owner->setMemoryMap(Variant()), DL_RT_INVALIDMEMORYMAP);
  EXPECT_EQ(m_owner->setMemoryMap(Variant(std::string("map"))), DL_RT_INVALIDMEMORYMAP);
  EXPECT_EQ(begin(*m_user, 3), DL_OK);
  Variant map;
  ASSERT_EQ(m_user->getMemoryMap(map), DL_OK);
  EXPECT_EQ(GetMemoryMap(map.getFlatBuffer().data())->variables()->Get(0)->name()->str(), "a");
}

TEST_F(RtMemoryTest, DamagedMapsAreRefused) {
  const auto whole = memoryMap({{"a", 0, 8}}, 3);
  const auto buffer = whole.getFlatBuffer();
  for (const std::size_t length : {std::size_t{0}, std::size_t{3}, buffer.size() / 2}) {
    EXPECT_EQ(m_owner->setMemoryMap(Variant::fromFlatBuffer(buffer.first(length))), DL_RT_INVALIDMEMORYMAP) << length;
  }
  std::vector<std::uint8_t> damaged(buffer.begin(), buffer.end());
  damaged[0] = 0xFF;  // the root lies far behind the end
  damaged[1] = 0xFF;
  EXPECT_EQ(m_owner->setMemoryMap(Variant::fromFlatBuffer(damaged)), DL_RT_INVALIDMEMORYMAP);
}

TEST_F(RtMemoryTest, FailedAllocationOfAMapChangesNothing) {
  const auto map = memoryMap({{"a", 0, 8}}, 3);
  DlResult result;
  ASSERT_TRUE(failsDuring(1, [&] { result = m_owner->setMemoryMap(map); }));
  EXPECT_EQ(result, DL_OUT_OF_MEMORY);
  EXPECT_EQ(begin(*m_user, 0), DL_OK);
  ASSERT_EQ(m_owner->setMemoryMap(map), DL_OK);
  Variant copy;
  ASSERT_TRUE(failsDuring(1, [&] { result = m_user->getMemoryMap(copy); }));
  EXPECT_EQ(result, DL_OUT_OF_MEMORY);
  EXPECT_EQ(copy.getType(), VariantType::UNKNOWN);
}

TEST_F(RtMemoryTest, AccessesAreRealTime) {
  for (IMemory* sut : {static_cast<IMemory*>(m_owner.get()), static_cast<IMemory*>(m_user.get())}) {
    std::uint8_t* data = nullptr;
    DlResult opened;
    DlResult refused;
    DlResult ended;
    DlResult surplus;
    EXPECT_EQ(violationsOf([&] {
                opened = sut->beginAccess(data, 0);
                refused = sut->beginAccess(data, 1);
                ended = sut->endAccess();
                surplus = sut->endAccess();
                (void)sut->getSize();
              }),
              Violations{});
    EXPECT_EQ(opened, DL_OK);
    EXPECT_EQ(refused, DL_RT_WRONGREVISON);
    EXPECT_EQ(ended, DL_OK);
    EXPECT_EQ(surplus, DL_RT_NOTOPEN);
  }
  ASSERT_EQ(m_dataLayer.deleteMemorySync(m_owner), DL_OK);
  std::uint8_t* data = nullptr;
  EXPECT_EQ(violationsOf([&] { (void)m_user->beginAccess(data, 0); }), Violations{});
}

/// Counts up one byte through a handle until the memory is deleted.
class Accessor {
 public:
  Accessor(std::shared_ptr<IMemory> memory, std::size_t byte, std::barrier<>& start)
      : m_memory(std::move(memory)), m_byte(byte), m_thread([this, &start] { run(start); }) {}

  /// Waits until the byte was counted up at least `number` times.
  void waitForAccesses(int number) const {
    while (m_accesses < number) {
      std::this_thread::yield();
    }
  }
  /// How the last access was refused.
  DlResult join() {
    m_thread.join();
    return m_last;
  }

 private:
  void run(std::barrier<>& start) {
    start.arrive_and_wait();
    for (;;) {
      std::uint8_t* data = nullptr;
      m_last = m_memory->beginAccess(data, 0);
      if (isFailure(m_last)) {
        break;
      }
      const std::atomic_ref<std::uint8_t> own(data[m_byte]);
      const std::atomic_ref<std::uint8_t> foreign(data[1 - m_byte]);
      own.store(static_cast<std::uint8_t>(own.load() + (foreign.load() & 1U) + 1U));
      ++m_accesses;
      if (m_memory->endAccess() != DL_OK) {
        ADD_FAILURE() << "an open access was not known";
      }
    }
    m_memory.reset();
  }

  std::shared_ptr<IMemory> m_memory;
  std::size_t m_byte;
  std::atomic<int> m_accesses{0};
  DlResult m_last;
  std::thread m_thread;
};

TEST_F(RtMemoryTest, OwnerDeletesUnderTheAccessesOfOtherThreads) {
  constexpr int ROUNDS = 50;
  for (int round = 0; round < ROUNDS; ++round) {
    std::barrier start(2);
    Accessor first(m_owner, 0, start);
    Accessor second(m_user, 1, start);
    first.waitForAccesses(round);
    second.waitForAccesses(round);
    m_user.reset();
    ASSERT_EQ(m_dataLayer.deleteMemorySync(m_owner), DL_OK);
    m_owner.reset();
    m_dataLayer.reclaim();
    EXPECT_EQ(first.join(), DL_RT_INVALIDOBJECT);
    EXPECT_EQ(second.join(), DL_RT_INVALIDOBJECT);
    EXPECT_EQ(m_dataLayer.reclaim(), 0U) << "the user handle was dropped, but it was never closed and so counts as open";
    ASSERT_EQ(m_dataLayer.createMemorySync(m_owner, ADDRESS, m_provider.get(), SIZE, MemoryType::INPUT), DL_OK);
    ASSERT_EQ(m_dataLayer.openMemory(m_user, ADDRESS), DL_OK);
  }
}

TEST_F(RtMemoryTest, BytesAreFreedOnlyAfterTheLastAccessOfAnotherThread) {
  constexpr int ROUNDS = 50;
  for (int round = 0; round < ROUNDS; ++round) {
    std::barrier opened(2);
    std::thread accessor([&opened, memory = m_user.get()] {
      std::uint8_t* data = nullptr;
      const DlResult result = memory->beginAccess(data, 0);
      opened.arrive_and_wait();
      ASSERT_EQ(result, DL_OK);
      for (int i = 0; i < 1000; ++i) {
        data[i % SIZE] = static_cast<std::uint8_t>(i);
      }
      EXPECT_EQ(memory->endAccess(), DL_OK);
    });
    opened.arrive_and_wait();
    ASSERT_EQ(m_dataLayer.closeMemory(m_user), DL_OK);
    ASSERT_EQ(m_dataLayer.deleteMemorySync(m_owner), DL_OK);
    m_user.reset();
    m_owner.reset();
    while (m_dataLayer.reclaim() > 0) {
      std::this_thread::yield();
    }
    accessor.join();
    ASSERT_EQ(m_dataLayer.createMemorySync(m_owner, ADDRESS, m_provider.get(), SIZE, MemoryType::INPUT), DL_OK);
    ASSERT_EQ(m_dataLayer.openMemory(m_user, ADDRESS), DL_OK);
  }
}

TEST_F(RtMemoryTest, MapsAreSetAndReadWhileOthersAccess) {
  std::barrier start(3);
  Accessor first(m_owner, 0, start);
  Accessor second(m_user, 1, start);
  start.arrive_and_wait();
  for (std::uint32_t length = 1; length <= 200; ++length) {
    ASSERT_EQ(m_owner->setMemoryMap(memoryMap({{"a", 0, length % 32}})), DL_OK);
    Variant map;
    ASSERT_EQ(m_user->getMemoryMap(map), DL_OK);
  }
  ASSERT_EQ(m_dataLayer.deleteMemorySync(m_owner), DL_OK);
  EXPECT_EQ(first.join(), DL_RT_INVALIDOBJECT);
  EXPECT_EQ(second.join(), DL_RT_INVALIDOBJECT);
}

/// So many accesses in a row that this thread is the home thread of the handle.
void makeHome(IMemory& sut) {
  std::uint8_t* data = nullptr;
  for (std::uint32_t i = 0; i <= AccessGate::HOME_AFTER; ++i) {
    ASSERT_EQ(sut.beginAccess(data, 0), DL_OK);
    ASSERT_EQ(sut.endAccess(), DL_OK);
  }
}

TEST_F(RtMemoryTest, EachAccessOfTheHomeThreadIsEndedOnce) {
  makeHome(*m_user);
  EXPECT_EQ(m_user->endAccess(), DL_RT_NOTOPEN);
  EXPECT_EQ(begin(*m_user), DL_OK);
  EXPECT_EQ(begin(*m_user), DL_OK) << "nested";
  EXPECT_EQ(m_user->endAccess(), DL_OK);
  EXPECT_EQ(m_user->endAccess(), DL_OK);
  EXPECT_EQ(m_user->endAccess(), DL_RT_NOTOPEN);
  EXPECT_EQ(begin(*m_user, 1), DL_RT_WRONGREVISON);
  EXPECT_EQ(m_user->endAccess(), DL_RT_NOTOPEN);
}

TEST_F(RtMemoryTest, AccessBegunBeforeTheThreadBecameTheHomeThreadIsEndedByIt) {
  EXPECT_EQ(begin(*m_user), DL_OK);
  makeHome(*m_user);
  EXPECT_EQ(begin(*m_user), DL_OK);
  EXPECT_EQ(m_user->endAccess(), DL_OK);
  EXPECT_EQ(m_user->endAccess(), DL_OK);
  EXPECT_EQ(m_user->endAccess(), DL_RT_NOTOPEN);
}

TEST_F(RtMemoryTest, OtherThreadsAccessBesidesTheHomeThread) {
  makeHome(*m_user);
  EXPECT_EQ(begin(*m_user), DL_OK);
  std::thread other([this] {
    EXPECT_EQ(m_user->endAccess(), DL_RT_NOTOPEN) << "that of the home thread is not its own";
    makeHome(*m_user);
    EXPECT_EQ(begin(*m_user), DL_OK);
    EXPECT_EQ(m_user->endAccess(), DL_OK);
    EXPECT_EQ(m_user->endAccess(), DL_RT_NOTOPEN);
  });
  other.join();
  EXPECT_EQ(m_user->endAccess(), DL_OK);
  EXPECT_EQ(m_user->endAccess(), DL_RT_NOTOPEN);
}

TEST_F(RtMemoryTest, OpenAccessOfTheHomeThreadKeepsHandleAndBytes) {
  makeHome(*m_user);
  IMemoryUser* const user = m_user.get();
  std::uint8_t* data = nullptr;
  ASSERT_EQ(user->beginAccess(data, 0), DL_OK);
  ASSERT_EQ(m_dataLayer.closeMemory(m_user), DL_OK);
  ASSERT_EQ(m_dataLayer.deleteMemorySync(m_owner), DL_OK);
  m_user.reset();
  m_owner.reset();
  EXPECT_EQ(m_dataLayer.reclaim(), 1U);
  EXPECT_EQ(user->beginAccess(data, 0), DL_RT_INVALIDOBJECT);
  data[SIZE - 1] = 5;
  EXPECT_EQ(data[SIZE - 1], 5);
  EXPECT_EQ(user->endAccess(), DL_OK);
  EXPECT_EQ(m_dataLayer.reclaim(), 0U);
}

TEST_F(RtMemoryTest, BytesAreFreedOnlyAfterTheLastAccessOfTheHomeThread) {
  constexpr int ROUNDS = 50;
  for (int round = 0; round < ROUNDS; ++round) {
    std::barrier opened(2);
    std::thread accessor([&opened, memory = m_user.get()] {
      makeHome(*memory);
      std::uint8_t* data = nullptr;
      const DlResult result = memory->beginAccess(data, 0);
      opened.arrive_and_wait();
      ASSERT_EQ(result, DL_OK);
      for (int i = 0; i < 1000; ++i) {
        data[i % SIZE] = static_cast<std::uint8_t>(i);
      }
      EXPECT_EQ(memory->endAccess(), DL_OK);
    });
    opened.arrive_and_wait();
    ASSERT_EQ(m_dataLayer.closeMemory(m_user), DL_OK);
    ASSERT_EQ(m_dataLayer.deleteMemorySync(m_owner), DL_OK);
    m_user.reset();
    m_owner.reset();
    while (m_dataLayer.reclaim() > 0) {
      std::this_thread::yield();
    }
    accessor.join();
    ASSERT_EQ(m_dataLayer.createMemorySync(m_owner, ADDRESS, m_provider.get(), SIZE, MemoryType::INPUT), DL_OK);
    ASSERT_EQ(m_dataLayer.openMemory(m_user, ADDRESS), DL_OK);
  }
}

}  // namespace
}  // namespace motion::host::datalayer
