// Providers: their registrations, their state, and what their deletion takes along.
#include "host/datalayer/provider.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <utility>

#include "host/datalayer/data_layer.h"
#include "scripted_node.h"
#include "support/fake_allocation.h"

namespace motion::host::datalayer {
namespace {

using namespace comm::datalayer;
using motion::host::test::listOfScopes;
using motion::host::test::NodeCall;
using motion::host::test::ScriptedNode;
using motion::test::failsDuring;

constexpr const char* ENDPOINT = "inproc:///tmp/datalayer/backend";
const std::string ADDRESS = "motion/state/functions/kavo/signals/*";
const std::string TYPE_ADDRESS = "types/motion/a/name/that/needs/an/allocation";

class ProviderTest : public testing::Test {
 protected:
  std::unique_ptr<IClient> client() {
    return std::unique_ptr<IClient>(m_dataLayer.createClient("inproc:///tmp/datalayer/frontend"));
  }

  ScriptedNode::Script m_script = ScriptedNode::sayWhatWasAsked;
  ScriptedNode m_node{[this](const NodeCall& call) { m_script(call); }};
  DataLayer m_dataLayer;
  std::unique_ptr<IProvider> m_sut{m_dataLayer.createProvider(ENDPOINT)};
  std::unique_ptr<IProvider> m_other{m_dataLayer.createProvider(ENDPOINT)};
  Variant m_type{std::string("a value that needs an allocation of its own")};
};

TEST_F(ProviderTest, StartsAndStopsInTurn) {
  auto& sut = *m_sut;
  EXPECT_FALSE(sut.isStarted());
  EXPECT_EQ(sut.stop(), DL_FAILED);
  EXPECT_EQ(sut.start(), DL_OK);
  EXPECT_TRUE(sut.isStarted());
  EXPECT_EQ(sut.start(), DL_FAILED);
  EXPECT_TRUE(sut.isStarted());
  EXPECT_EQ(sut.stop(), DL_OK);
  EXPECT_FALSE(sut.isStarted());
  EXPECT_EQ(sut.stop(), DL_FAILED);
  EXPECT_EQ(sut.start(), DL_OK);
}

TEST_F(ProviderTest, NodeAddressIsTakenOnce) {
  auto& sut = *m_sut;
  EXPECT_EQ(sut.registerNode(ADDRESS, &m_node), DL_OK);
  EXPECT_EQ(sut.registerNode(ADDRESS, &m_node), DL_ALREADY_EXISTS);
  EXPECT_EQ(m_other->registerNode(ADDRESS, &m_node), DL_ALREADY_EXISTS);
  EXPECT_EQ(sut.unregisterNode(ADDRESS), DL_OK);
  EXPECT_EQ(sut.unregisterNode(ADDRESS), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_other->registerNode(ADDRESS, &m_node), DL_OK);
}

TEST_F(ProviderTest, TypeAddressIsTakenOnce) {
  auto& sut = *m_sut;
  EXPECT_EQ(sut.registerType(TYPE_ADDRESS, m_type), DL_OK);
  EXPECT_EQ(sut.registerType(TYPE_ADDRESS, m_type), DL_ALREADY_EXISTS);
  EXPECT_EQ(m_other->registerType(TYPE_ADDRESS, m_type), DL_ALREADY_EXISTS);
  EXPECT_EQ(sut.unregisterType(TYPE_ADDRESS), DL_OK);
  EXPECT_EQ(sut.unregisterType(TYPE_ADDRESS), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_other->registerType(TYPE_ADDRESS, m_type), DL_OK);
}

TEST_F(ProviderTest, NodesAndTypesAreApart) {
  auto& sut = *m_sut;
  EXPECT_EQ(sut.registerNode(ADDRESS, &m_node), DL_OK);
  EXPECT_EQ(sut.unregisterType(TYPE_ADDRESS), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.registerType(TYPE_ADDRESS, m_type), DL_OK);
  EXPECT_EQ(sut.unregisterNode(ADDRESS), DL_OK);
  EXPECT_EQ(sut.unregisterType(TYPE_ADDRESS), DL_OK);
}

TEST_F(ProviderTest, WithdrawsOnlyWhatIsItsOwn) {
  auto& sut = *m_sut;
  ASSERT_EQ(m_other->registerNode(ADDRESS, &m_node), DL_OK);
  ASSERT_EQ(m_other->registerType(TYPE_ADDRESS, m_type), DL_OK);
  EXPECT_EQ(sut.unregisterNode(ADDRESS), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.unregisterType(TYPE_ADDRESS), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_other->unregisterNode(ADDRESS), DL_OK);
  EXPECT_EQ(m_other->unregisterType(TYPE_ADDRESS), DL_OK);
}

TEST_F(ProviderTest, RefusesWhatIsNoRegistration) {
  auto& sut = *m_sut;
  EXPECT_EQ(sut.registerNode("", &m_node), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.registerNode("a//b", &m_node), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.registerNode("*/b", &m_node), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.registerNode(ADDRESS, nullptr), DL_INVALID_HANDLE);
  EXPECT_EQ(sut.registerType("", m_type), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.registerType("types/*", m_type), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.registerType("scopes/motion", m_type), DL_INVALID_VALUE);
  EXPECT_EQ(sut.registerType(TYPE_ADDRESS, Variant()), DL_INVALID_VALUE);
  EXPECT_EQ(sut.unregisterNode(ADDRESS), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.unregisterType(TYPE_ADDRESS), DL_INVALID_ADDRESS);
}

TEST_F(ProviderTest, DeletionWithdrawsItsRegistrationsAndLeavesTheOthers) {
  ASSERT_EQ(m_sut->registerNode(ADDRESS, &m_node), DL_OK);
  ASSERT_EQ(m_sut->registerType(TYPE_ADDRESS, m_type), DL_OK);
  ASSERT_EQ(m_other->registerNode("other", &m_node), DL_OK);
  ASSERT_EQ(m_sut->start(), DL_OK);
  m_sut.reset();
  EXPECT_EQ(m_other->registerNode(ADDRESS, &m_node), DL_OK);
  EXPECT_EQ(m_other->registerType(TYPE_ADDRESS, m_type), DL_OK);
  EXPECT_EQ(m_other->registerNode("other", &m_node), DL_ALREADY_EXISTS);
  EXPECT_EQ(m_dataLayer.providerCount(), 1U);
}

TEST_F(ProviderTest, FailedAllocationRegistersNothing) {
  auto& sut = *m_sut;
  int number = 1;
  for (bool hasFailed = true; hasFailed; ++number) {
    DlResult ofType;
    hasFailed = failsDuring(number, [&] { ofType = sut.registerType(TYPE_ADDRESS, m_type); });
    ASSERT_EQ(ofType, hasFailed ? DL_OUT_OF_MEMORY : DL_OK) << number;
  }
  EXPECT_GT(number, 4) << "value, address, place in the map";
  DlResult ofNode;
  EXPECT_TRUE(failsDuring(1, [&] { ofNode = sut.registerNode(ADDRESS, &m_node); }));
  EXPECT_EQ(ofNode, DL_OUT_OF_MEMORY);
  EXPECT_EQ(sut.unregisterNode(ADDRESS), DL_INVALID_ADDRESS);
}

TEST_F(ProviderTest, ListsOfScopesAreTypes) {
  const Variant list = listOfScopes({{"motion.view", {"motion/**"}, {}, {}, {}}});
  EXPECT_EQ(m_sut->registerType("scopes/motion", list), DL_OK);
  EXPECT_EQ(m_other->registerType("scopes/motion", list), DL_ALREADY_EXISTS);
  EXPECT_EQ(m_sut->unregisterType("scopes/motion"), DL_OK);
  EXPECT_EQ(m_other->registerType("scopes/motion", list), DL_OK);
}

TEST_F(ProviderTest, ThreadsThatCannotBeStartedLeaveItStopped) {
  auto& sut = *m_sut;
  int number = 1;
  for (bool hasFailed = true; hasFailed; ++number) {
    DlResult result;
    hasFailed = failsDuring(number, [&] { result = sut.start(); });
    ASSERT_EQ(result, hasFailed ? DL_OUT_OF_MEMORY : DL_OK) << number;
    ASSERT_EQ(sut.isStarted(), !hasFailed) << number;
  }
  EXPECT_GT(number, 3) << "places for the threads, and the threads";
}

TEST_F(ProviderTest, NodeWithdrawsItselfWhileItAnswers) {
  ASSERT_EQ(m_sut->registerNode("a", &m_node), DL_OK);
  ASSERT_EQ(m_sut->start(), DL_OK);
  m_script = [this](const NodeCall& call) { call.answer(m_sut->unregisterNode("a"), nullptr); };
  EXPECT_EQ(client()->readSync("a", nullptr), DL_OK);
  EXPECT_EQ(client()->readSync("a", nullptr), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_other->registerNode("a", &m_node), DL_OK);
}

TEST_F(ProviderTest, NodeStopsItsProviderWhileItAnswers) {
  ASSERT_EQ(m_sut->registerNode("a", &m_node), DL_OK);
  ASSERT_EQ(m_sut->start(), DL_OK);
  std::promise<void> left;
  m_script = [&](const NodeCall& call) {
    left.set_value_at_thread_exit();
    call.answer(m_sut->stop(), nullptr);
  };
  EXPECT_EQ(client()->readSync("a", nullptr), DL_OK);
  EXPECT_FALSE(m_sut->isStarted());
  EXPECT_EQ(m_sut->stop(), DL_FAILED);
  left.get_future().get();
  m_script = ScriptedNode::sayWhatWasAsked;
  EXPECT_EQ(m_sut->start(), DL_OK);
  EXPECT_EQ(client()->readSync("a", nullptr), DL_OK);
}

TEST_F(ProviderTest, DeletionWaitsForCallbacksWhoseNodeAndProviderAreWithdrawn) {
  std::atomic<bool> hasEnded{false};
  ASSERT_EQ(m_sut->registerNode("a", &m_node), DL_OK);
  ASSERT_EQ(m_sut->start(), DL_OK);
  m_script = [&](const NodeCall& call) {
    EXPECT_EQ(m_sut->unregisterNode("a"), DL_OK);
    EXPECT_EQ(m_sut->stop(), DL_OK);
    call.answer(DL_OK, nullptr);
    for (int i = 0; i < 1000; ++i) {
      std::this_thread::yield();
    }
    hasEnded = true;
  };
  EXPECT_EQ(client()->readSync("a", nullptr), DL_OK);
  m_sut.reset();
  EXPECT_TRUE(hasEnded);
}

TEST_F(ProviderTest, NodeDeletesItsProviderWhileItAnswers) {
  ASSERT_EQ(m_sut->registerNode("a", &m_node), DL_OK);
  ASSERT_EQ(m_sut->start(), DL_OK);
  std::promise<void> left;
  m_script = [&](const NodeCall& call) {
    left.set_value_at_thread_exit();
    m_sut.reset();
    call.answer(DL_OK, nullptr);
  };
  EXPECT_EQ(client()->readSync("a", nullptr), DL_OK);
  EXPECT_EQ(m_dataLayer.providerCount(), 1U);
  EXPECT_EQ(client()->readSync("a", nullptr), DL_INVALID_ADDRESS);
  left.get_future().get();
}

TEST_F(ProviderTest, DeletionLeavesTheAnswerToWhoeverKeptTheCallback) {
  std::promise<IProviderNode::ResponseCallback> kept;
  ASSERT_EQ(m_sut->registerNode("a", &m_node), DL_OK);
  ASSERT_EQ(m_sut->start(), DL_OK);
  m_script = [&](const NodeCall& call) { kept.set_value(call.answer); };
  auto result = std::async(std::launch::async, [this] { return client()->writeSync("a", nullptr); });
  auto answer = kept.get_future().get();
  m_sut.reset();
  answer(DL_LIMIT_MIN, nullptr);
  EXPECT_EQ(result.get(), DL_LIMIT_MIN);
}

}  // namespace
}  // namespace motion::host::datalayer
