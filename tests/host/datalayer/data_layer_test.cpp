// The data layer as a whole: which memories exist, who holds them, when they go, and what is refused.
#include "host/datalayer/data_layer.h"
#include "scripted_node.h"
#include "support/fake_allocation.h"
#include "support/realtime_guard.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

namespace motion::host::datalayer {
namespace {

using namespace comm::datalayer;
using motion::host::test::listOfScopes;
using motion::host::test::NodeCall;
using motion::host::test::ScriptedNode;
using motion::test::failsDuring;

constexpr std::uint32_t SIZE = 100;
const std::string ADDRESS = "a/long/enough/address/to/need/an/allocation";

class DataLayerTest : public testing::Test {
 protected:
  DlResult create(const std::string& address = ADDRESS) {
    return m_sut.createMemorySync(m_owner, address, m_provider.get(), SIZE, MemoryType::INPUT);
  }
  DlResult open(const std::string& address = ADDRESS) { return m_sut.openMemory(m_user, address); }

  DataLayer m_sut;
  std::unique_ptr<IProvider> m_provider{m_sut.createProvider("inproc:///tmp/datalayer/backend")};
  std::shared_ptr<IMemoryOwner> m_owner;
  std::shared_ptr<IMemoryUser> m_user;
};

TEST_F(DataLayerTest, MakesProvidersForItsEndpointOnly) {
  auto& sut = m_sut;
  EXPECT_NE(m_provider, nullptr);
  EXPECT_EQ(sut.createProvider(""), nullptr);
  EXPECT_EQ(sut.createProvider("inproc:///tmp/datalayer/frontend"), nullptr);
  EXPECT_EQ(sut.createProvider("inproc:///tmp/datalayer/backend "), nullptr);
  EXPECT_EQ(sut.providerCount(), 1U);
  m_provider.reset();
  EXPECT_EQ(sut.providerCount(), 0U);
}

TEST_F(DataLayerTest, MakesClientsForItsEndpointOnly) {
  auto& sut = m_sut;
  const std::unique_ptr<IClient> client(sut.createClient("inproc:///tmp/datalayer/frontend"));
  ASSERT_NE(client, nullptr);
  EXPECT_EQ(client->readSync("datalayer/nodes", nullptr), DL_OK);
  EXPECT_EQ(sut.createClient(""), nullptr);
  EXPECT_EQ(sut.createClient("inproc:///tmp/datalayer/backend"), nullptr);
  EXPECT_EQ(sut.createClient("inproc:///tmp/datalayer/frontend "), nullptr);
}

TEST_F(DataLayerTest, ConnectsClientsWithTheirScopes) {
  auto& sut = m_sut;
  const Variant list = listOfScopes({{"lists", {"datalayer/**"}, {}, {}, {}}});
  ASSERT_EQ(m_provider->registerType("scopes/lists", list), DL_OK);
  EXPECT_EQ(sut.connect({"lists"})->readSync("datalayer/nodes", nullptr), DL_OK);
  EXPECT_EQ(sut.connect({})->readSync("datalayer/nodes", nullptr), DL_SEC_UNAUTHORIZED);
}

TEST_F(DataLayerTest, ClosesClientsUntilTheyAreOpened) {
  auto& sut = m_sut;
  const std::unique_ptr<IClient> client(sut.createClient("inproc:///tmp/datalayer/frontend"));
  sut.closeClients();
  EXPECT_EQ(client->readSync("datalayer/nodes", nullptr), DL_CLIENT_NOT_CONNECTED);
  const std::unique_ptr<IClient> late(sut.createClient("inproc:///tmp/datalayer/frontend"));
  EXPECT_EQ(late->browseSync("datalayer", nullptr), DL_CLIENT_NOT_CONNECTED);
  sut.openClients();
  EXPECT_EQ(client->readSync("datalayer/nodes", nullptr), DL_OK);
  EXPECT_EQ(late->browseSync("datalayer", nullptr), DL_OK);
}

TEST_F(DataLayerTest, ClosingWaitsForCallbacksThatNobodyWaitsForAnyMore) {
  auto& sut = m_sut;
  const std::unique_ptr<IClient> client(sut.createClient("inproc:///tmp/datalayer/frontend"));
  std::atomic<bool> hasEnded{false};
  ScriptedNode node([&](const NodeCall&) {
    while (client->readSync("unknown", nullptr) != DL_CLIENT_NOT_CONNECTED) {
      std::this_thread::yield();
    }
    hasEnded = true;
  });
  ASSERT_EQ(m_provider->registerNode("a", &node), DL_OK);
  ASSERT_EQ(m_provider->registerType("scopes/all", listOfScopes({{"all", {"**"}, {}, {}, {}}})), DL_OK);
  ASSERT_EQ(m_provider->start(), DL_OK);
  while (node.calls() == 0) {  // what is given up too early does not begin
    EXPECT_EQ(sut.connect({"all"}, std::chrono::milliseconds(20))->readSync("a", nullptr), DL_TIMEOUT);
  }
  sut.closeClients();
  EXPECT_TRUE(hasEnded);
  m_provider.reset();
}

TEST_F(DataLayerTest, ClosingGivesUpWaitingForACallbackThatDoesNotComeBack) {
  auto& sut = m_sut;
  std::atomic<bool> mayEnd{false};
  ScriptedNode node([&](const NodeCall&) {
    while (!mayEnd) {
      std::this_thread::yield();
    }
  });
  ASSERT_EQ(m_provider->registerNode("a", &node), DL_OK);
  ASSERT_EQ(m_provider->registerType("scopes/all", listOfScopes({{"all", {"**"}, {}, {}, {}}})), DL_OK);
  ASSERT_EQ(m_provider->start(), DL_OK);
  while (node.calls() == 0) {  // what is given up too early does not begin
    EXPECT_EQ(sut.connect({"all"}, std::chrono::milliseconds(20))->readSync("a", nullptr), DL_TIMEOUT);
  }
  EXPECT_FALSE(sut.closeClients(std::chrono::milliseconds(20)));
  mayEnd = true;
  EXPECT_TRUE(sut.closeClients());
}

TEST_F(DataLayerTest, ProvidersAreAskedNothingOnceClientsAreClosed) {
  constexpr int CLIENTS = 3;
  for (int round = 0; round < 30; ++round) {
    ScriptedNode node;
    DataLayer sut;
    const std::unique_ptr<IProvider> provider(sut.createProvider("inproc:///tmp/datalayer/backend"));
    ASSERT_EQ(provider->registerNode("a", &node), DL_OK);
    ASSERT_EQ(provider->start(), DL_OK);
    std::latch start(CLIENTS + 1);
    std::vector<std::thread> threads;
    for (int number = 0; number < CLIENTS; ++number) {
      threads.emplace_back([&] {
        const std::unique_ptr<IClient> client(sut.createClient("inproc:///tmp/datalayer/frontend"));
        start.arrive_and_wait();
        DlResult result;
        while ((result = client->readSync("a", nullptr)) == DL_OK) {
        }
        EXPECT_EQ(result, DL_CLIENT_NOT_CONNECTED);
      });
    }
    start.arrive_and_wait();
    sut.closeClients();
    const int calls = node.calls();
    for (std::thread& thread : threads) {
      thread.join();
    }
    EXPECT_EQ(node.calls(), calls);
  }
}

TEST_F(DataLayerTest, NewMemoryIsZero) {
  ASSERT_EQ(create(), DL_OK);
  ASSERT_NE(m_owner, nullptr);
  EXPECT_EQ(m_owner->getSize(), SIZE);
  std::uint8_t* data = nullptr;
  ASSERT_EQ(m_owner->beginAccess(data, 0), DL_OK);
  EXPECT_TRUE(std::all_of(data, data + SIZE, [](std::uint8_t byte) { return byte == 0; }));
  EXPECT_EQ(m_owner->endAccess(), DL_OK);
}

TEST_F(DataLayerTest, OwnerAndUsersShareTheBytes) {
  auto& sut = m_sut;
  ASSERT_EQ(create(), DL_OK);
  ASSERT_EQ(open(), DL_OK);
  std::shared_ptr<IMemoryUser> second;
  ASSERT_EQ(sut.openMemory(second, ADDRESS), DL_OK);
  EXPECT_NE(second, m_user);
  EXPECT_EQ(second->getSize(), SIZE);
  std::uint8_t* ofOwner = nullptr;
  std::uint8_t* ofUser = nullptr;
  std::uint8_t* ofSecond = nullptr;
  ASSERT_EQ(m_owner->beginAccess(ofOwner, 0), DL_OK);
  ASSERT_EQ(m_user->beginAccess(ofUser, 0), DL_OK);
  ASSERT_EQ(second->beginAccess(ofSecond, 0), DL_OK);
  EXPECT_EQ(ofOwner, ofUser);
  EXPECT_EQ(ofOwner, ofSecond);
}

TEST_F(DataLayerTest, RefusesToMakeWhatIsNoMemory) {
  auto& sut = m_sut;
  auto* const provider = m_provider.get();
  EXPECT_EQ(sut.createMemorySync(m_owner, ADDRESS, provider, 0, MemoryType::INPUT), DL_SIZE_MISMATCH);
  EXPECT_EQ(sut.createMemorySync(m_owner, "", provider, SIZE, MemoryType::INPUT), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.createMemorySync(m_owner, ADDRESS, nullptr, SIZE, MemoryType::INPUT), DL_INVALID_HANDLE);
  EXPECT_EQ(sut.createMemorySync(m_owner, ADDRESS, provider, SIZE, static_cast<MemoryType>(3)), DL_INVALID_VALUE);
  DataLayer other;
  const std::unique_ptr<IProvider> stranger(other.createProvider("inproc:///tmp/datalayer/backend"));
  EXPECT_EQ(sut.createMemorySync(m_owner, ADDRESS, stranger.get(), SIZE, MemoryType::INPUT), DL_INVALID_HANDLE);
  EXPECT_EQ(m_owner, nullptr);
  EXPECT_EQ(sut.memoryCount(), 0U);
  EXPECT_EQ(sut.openHandleCount(), 0U);
}

TEST_F(DataLayerTest, TakenAddressIsRefusedAndNothingChanges) {
  auto& sut = m_sut;
  ASSERT_EQ(create(), DL_OK);
  std::shared_ptr<IMemoryOwner> second;
  EXPECT_EQ(sut.createMemorySync(second, ADDRESS, m_provider.get(), 1, MemoryType::OUTPUT), DL_ALREADY_EXISTS);
  EXPECT_EQ(second, nullptr);
  EXPECT_EQ(sut.memoryCount(), 1U);
  ASSERT_EQ(open(), DL_OK);
  EXPECT_EQ(m_user->getSize(), SIZE);
}

TEST_F(DataLayerTest, OpeningNeedsAnOwnedMemory) {
  auto& sut = m_sut;
  EXPECT_EQ(open(), DL_INVALID_ADDRESS);
  ASSERT_EQ(create(), DL_OK);
  EXPECT_EQ(open(ADDRESS + "x"), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_user, nullptr);
  ASSERT_EQ(sut.deleteMemorySync(m_owner), DL_OK);
  EXPECT_EQ(open(), DL_INVALID_ADDRESS);
}

TEST_F(DataLayerTest, HandlesAreGivenBackOnce) {
  auto& sut = m_sut;
  ASSERT_EQ(create(), DL_OK);
  ASSERT_EQ(open(), DL_OK);
  EXPECT_EQ(sut.closeMemory(nullptr), DL_INVALID_HANDLE);
  EXPECT_EQ(sut.closeMemory(m_user), DL_OK);
  EXPECT_EQ(sut.closeMemory(m_user), DL_INVALID_HANDLE);
  EXPECT_EQ(sut.deleteMemorySync(nullptr), DL_INVALID_HANDLE);
  EXPECT_EQ(sut.deleteMemorySync(m_owner), DL_OK);
  EXPECT_EQ(sut.deleteMemorySync(m_owner), DL_INVALID_HANDLE);
}

TEST_F(DataLayerTest, HandlesOfStrangersAreRefused) {
  ASSERT_EQ(create(), DL_OK);
  ASSERT_EQ(open(), DL_OK);
  DataLayer sut;
  EXPECT_EQ(sut.closeMemory(m_user), DL_INVALID_HANDLE);
  EXPECT_EQ(sut.deleteMemorySync(m_owner), DL_INVALID_HANDLE);
  EXPECT_EQ(m_sut.openHandleCount(), 2U);
  EXPECT_EQ(m_sut.memoryCount(), 1U);
}

TEST_F(DataLayerTest, UserHandleMayBeClosedAfterTheMemoryIsDeleted) {
  auto& sut = m_sut;
  ASSERT_EQ(create(), DL_OK);
  ASSERT_EQ(open(), DL_OK);
  ASSERT_EQ(sut.deleteMemorySync(m_owner), DL_OK);
  EXPECT_EQ(sut.openHandleCount(), 1U);
  EXPECT_EQ(sut.closeMemory(m_user), DL_OK);
  EXPECT_EQ(sut.openHandleCount(), 0U);
}

TEST_F(DataLayerTest, DeletedAddressIsFreeForANewMemory) {
  auto& sut = m_sut;
  ASSERT_EQ(create(), DL_OK);
  std::uint8_t* old = nullptr;
  ASSERT_EQ(m_owner->beginAccess(old, 0), DL_OK);
  old[0] = 7;
  const auto oldOwner = m_owner;
  ASSERT_EQ(sut.deleteMemorySync(m_owner), DL_OK);
  ASSERT_EQ(create(), DL_OK);
  ASSERT_EQ(open(), DL_OK);
  std::uint8_t* data = nullptr;
  ASSERT_EQ(m_user->beginAccess(data, 0), DL_OK);
  EXPECT_NE(data, old);
  EXPECT_EQ(data[0], 0);
  EXPECT_EQ(old[0], 7);
  EXPECT_EQ(oldOwner->endAccess(), DL_OK);
}

TEST_F(DataLayerTest, CountsWhatIsNotGivenBack) {
  auto& sut = m_sut;
  ASSERT_EQ(create(), DL_OK);
  ASSERT_EQ(open(), DL_OK);
  EXPECT_EQ(sut.memoryCount(), 1U);
  EXPECT_EQ(sut.openHandleCount(), 2U);
  m_owner.reset();
  m_user.reset();
  m_provider.reset();
  EXPECT_EQ(sut.memoryCount(), 1U) << "dropped, not deleted";
  EXPECT_EQ(sut.openHandleCount(), 2U) << "dropped, not closed";
  EXPECT_EQ(open(), DL_OK) << "the memory is still owned";
}

TEST_F(DataLayerTest, HandleThatSomebodyHoldsIsNotReclaimed) {
  auto& sut = m_sut;
  ASSERT_EQ(create(), DL_OK);
  ASSERT_EQ(sut.deleteMemorySync(m_owner), DL_OK);
  EXPECT_EQ(sut.reclaim(), 1U);
  EXPECT_EQ(m_owner->getSize(), SIZE);
  m_owner.reset();
  EXPECT_EQ(sut.reclaim(), 0U);
}

TEST_F(DataLayerTest, OpenAccessKeepsHandleAndBytes) {
  auto& sut = m_sut;
  ASSERT_EQ(create(), DL_OK);
  ASSERT_EQ(open(), DL_OK);
  IMemoryUser* const user = m_user.get();
  std::uint8_t* data = nullptr;
  ASSERT_EQ(user->beginAccess(data, 0), DL_OK);
  ASSERT_EQ(sut.deleteMemorySync(m_owner), DL_OK);
  ASSERT_EQ(sut.closeMemory(m_user), DL_OK);
  m_owner.reset();
  m_user.reset();
  EXPECT_EQ(sut.reclaim(), 1U);
  std::fill_n(data, SIZE, std::uint8_t{5});
  EXPECT_EQ(data[SIZE - 1], 5);
  EXPECT_EQ(user->endAccess(), DL_OK);
  EXPECT_EQ(sut.reclaim(), 0U);
}

TEST_F(DataLayerTest, FreesOnlyInItsOwnOperations) {
  auto& sut = m_sut;
  ASSERT_EQ(create(), DL_OK);
  IMemoryOwner* const owner = m_owner.get();
  std::uint8_t* data = nullptr;
  ASSERT_EQ(owner->beginAccess(data, 0), DL_OK);
  ASSERT_EQ(sut.deleteMemorySync(m_owner), DL_OK);
  EXPECT_EQ(motion::test::violationsOf([&] { m_owner.reset(); }).deallocations, 0U);
  EXPECT_EQ(motion::test::violationsOf([&] { (void)owner->endAccess(); }).deallocations, 0U);
  EXPECT_GT(motion::test::violationsOf([&] { (void)sut.openMemory(m_user, "unknown"); }).deallocations, 0U);
  EXPECT_EQ(sut.reclaim(), 0U);
}

TEST_F(DataLayerTest, FailedAllocationMakesNoMemory) {
  auto& sut = m_sut;
  int number = 1;
  for (bool hasFailed = true; hasFailed; ++number) {
    DlResult result;
    hasFailed = failsDuring(number, [&] { result = create(); });
    ASSERT_EQ(result, hasFailed ? DL_OUT_OF_MEMORY : DL_OK) << number;
    ASSERT_EQ(m_owner == nullptr, hasFailed) << number;
    ASSERT_EQ(sut.memoryCount(), hasFailed ? 0U : 1U) << number;
    ASSERT_EQ(sut.openHandleCount(), hasFailed ? 0U : 1U) << number;
  }
  EXPECT_GT(number, 5) << "block, bytes, handle, place in the map";
}

TEST_F(DataLayerTest, FailedAllocationOpensNothing) {
  auto& sut = m_sut;
  ASSERT_EQ(create(), DL_OK);
  int number = 1;
  for (bool hasFailed = true; hasFailed; ++number) {
    DlResult result;
    hasFailed = failsDuring(number, [&] { result = open(); });
    ASSERT_EQ(result, hasFailed ? DL_OUT_OF_MEMORY : DL_OK) << number;
    ASSERT_EQ(m_user == nullptr, hasFailed) << number;
    ASSERT_EQ(sut.openHandleCount(), hasFailed ? 1U : 2U) << number;
  }
  EXPECT_GT(number, 3) << "handle, place in the list";
}

TEST_F(DataLayerTest, FailedAllocationMakesNoProvider) {
  auto& sut = m_sut;
  const std::string endpoint = "inproc:///tmp/datalayer/backend";
  for (const int number : {1, 2}) {
    IProvider* provider = m_provider.get();
    ASSERT_TRUE(failsDuring(number, [&] { provider = sut.createProvider(endpoint); })) << number;
    EXPECT_EQ(provider, nullptr) << number;
    EXPECT_EQ(sut.providerCount(), 1U) << number;
  }
}

TEST_F(DataLayerTest, FailedAllocationMakesNoClient) {
  const std::string endpoint = "inproc:///tmp/datalayer/frontend";
  std::unique_ptr<IClient> client;
  ASSERT_TRUE(failsDuring(1, [&] { client.reset(m_sut.createClient(endpoint)); }));
  EXPECT_EQ(client, nullptr);
}

TEST_F(DataLayerTest, GivingBackNeedsNoMemory) {
  auto& sut = m_sut;
  ASSERT_EQ(create(), DL_OK);
  ASSERT_EQ(open(), DL_OK);
  DlResult closed;
  DlResult deleted;
  EXPECT_FALSE(failsDuring(1, [&] {
    closed = sut.closeMemory(m_user);
    deleted = sut.deleteMemorySync(m_owner);
  }));
  EXPECT_EQ(closed, DL_OK);
  EXPECT_EQ(deleted, DL_OK);
}

TEST_F(DataLayerTest, HandlesAndProvidersMaySurviveTheDataLayer) {
  auto sut = std::make_unique<DataLayer>();
  const std::unique_ptr<IProvider> provider(sut->createProvider("inproc:///tmp/datalayer/backend"));
  ASSERT_EQ(sut->createMemorySync(m_owner, ADDRESS, provider.get(), SIZE, MemoryType::INPUT), DL_OK);
  sut.reset();
  std::uint8_t* data = nullptr;
  EXPECT_EQ(m_owner->beginAccess(data, 0), DL_OK);
  EXPECT_EQ(data[0], 0);
  EXPECT_EQ(m_owner->endAccess(), DL_OK);
  EXPECT_EQ(provider->start(), DL_OK);
}

TEST_F(DataLayerTest, OperationsComeFromSeveralThreads) {
  auto& sut = m_sut;
  constexpr int THREADS = 4;
  constexpr int ROUNDS = 200;
  std::vector<std::thread> threads;
  for (int number = 0; number < THREADS; ++number) {
    threads.emplace_back([&sut, number] {
      const std::unique_ptr<IProvider> provider(sut.createProvider("inproc:///tmp/datalayer/backend"));
      for (int round = 0; round < ROUNDS; ++round) {
        std::shared_ptr<IMemoryOwner> owner;
        std::shared_ptr<IMemoryUser> user;
        const std::string address = "memory/" + std::to_string(number);
        EXPECT_EQ(sut.createMemorySync(owner, address, provider.get(), SIZE, MemoryType::OUTPUT), DL_OK);
        EXPECT_EQ(sut.openMemory(user, address), DL_OK);
        EXPECT_EQ(sut.deleteMemorySync(owner), DL_OK);
        EXPECT_EQ(sut.closeMemory(user), DL_OK);
      }
    });
  }
  for (auto& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(sut.memoryCount(), 0U);
  EXPECT_EQ(sut.openHandleCount(), 0U);
  EXPECT_EQ(sut.reclaim(), 0U);
  EXPECT_EQ(sut.providerCount(), 1U);
}

}  // namespace
}  // namespace motion::host::datalayer
