// Providers: their registrations, their state, and what their deletion takes along.
#include "host/datalayer/provider.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "host/datalayer/data_layer.h"
#include "support/fake_allocation.h"

namespace motion::host::datalayer {
namespace {

using namespace comm::datalayer;
using motion::test::failsDuring;

constexpr const char* ENDPOINT = "inproc:///tmp/datalayer/backend";
const std::string ADDRESS = "motion/state/functions/kavo/signals/*";

/// Nobody calls it.
class SilentNode : public IProviderNode {
 public:
  void onCreate(const std::string&, const Variant*, const ResponseCallback&) override {}
  void onRemove(const std::string&, const ResponseCallback&) override {}
  void onBrowse(const std::string&, const ResponseCallback&) override {}
  void onRead(const std::string&, const Variant*, const ResponseCallback&) override {}
  void onWrite(const std::string&, const Variant*, const ResponseCallback&) override {}
  void onMetadata(const std::string&, const ResponseCallback&) override {}
};

class ProviderTest : public testing::Test {
 protected:
  DataLayer m_dataLayer;
  std::unique_ptr<IProvider> m_sut{m_dataLayer.createProvider(ENDPOINT)};
  std::unique_ptr<IProvider> m_other{m_dataLayer.createProvider(ENDPOINT)};
  SilentNode m_node;
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
  EXPECT_EQ(sut.registerType(ADDRESS, m_type), DL_OK);
  EXPECT_EQ(sut.registerType(ADDRESS, m_type), DL_ALREADY_EXISTS);
  EXPECT_EQ(m_other->registerType(ADDRESS, m_type), DL_ALREADY_EXISTS);
  EXPECT_EQ(sut.unregisterType(ADDRESS), DL_OK);
  EXPECT_EQ(sut.unregisterType(ADDRESS), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_other->registerType(ADDRESS, m_type), DL_OK);
}

TEST_F(ProviderTest, NodesAndTypesAreApart) {
  auto& sut = *m_sut;
  EXPECT_EQ(sut.registerNode(ADDRESS, &m_node), DL_OK);
  EXPECT_EQ(sut.unregisterType(ADDRESS), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.registerType(ADDRESS, m_type), DL_OK);
  EXPECT_EQ(sut.unregisterNode(ADDRESS), DL_OK);
  EXPECT_EQ(sut.unregisterType(ADDRESS), DL_OK);
}

TEST_F(ProviderTest, WithdrawsOnlyWhatIsItsOwn) {
  auto& sut = *m_sut;
  ASSERT_EQ(m_other->registerNode(ADDRESS, &m_node), DL_OK);
  ASSERT_EQ(m_other->registerType(ADDRESS, m_type), DL_OK);
  EXPECT_EQ(sut.unregisterNode(ADDRESS), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.unregisterType(ADDRESS), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_other->unregisterNode(ADDRESS), DL_OK);
  EXPECT_EQ(m_other->unregisterType(ADDRESS), DL_OK);
}

TEST_F(ProviderTest, RefusesWhatIsNoRegistration) {
  auto& sut = *m_sut;
  EXPECT_EQ(sut.registerNode("", &m_node), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.registerNode(ADDRESS, nullptr), DL_INVALID_HANDLE);
  EXPECT_EQ(sut.registerType("", m_type), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.registerType(ADDRESS, Variant()), DL_INVALID_VALUE);
  EXPECT_EQ(sut.unregisterNode(ADDRESS), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.unregisterType(ADDRESS), DL_INVALID_ADDRESS);
}

TEST_F(ProviderTest, DeletionWithdrawsItsRegistrationsAndLeavesTheOthers) {
  ASSERT_EQ(m_sut->registerNode(ADDRESS, &m_node), DL_OK);
  ASSERT_EQ(m_sut->registerType(ADDRESS, m_type), DL_OK);
  ASSERT_EQ(m_other->registerNode("other", &m_node), DL_OK);
  ASSERT_EQ(m_sut->start(), DL_OK);
  m_sut.reset();
  EXPECT_EQ(m_other->registerNode(ADDRESS, &m_node), DL_OK);
  EXPECT_EQ(m_other->registerType(ADDRESS, m_type), DL_OK);
  EXPECT_EQ(m_other->registerNode("other", &m_node), DL_ALREADY_EXISTS);
  EXPECT_EQ(m_dataLayer.providerCount(), 1U);
}

TEST_F(ProviderTest, FailedAllocationRegistersNothing) {
  auto& sut = *m_sut;
  int number = 1;
  for (bool hasFailed = true; hasFailed; ++number) {
    DlResult ofType;
    hasFailed = failsDuring(number, [&] { ofType = sut.registerType(ADDRESS, m_type); });
    ASSERT_EQ(ofType, hasFailed ? DL_OUT_OF_MEMORY : DL_OK) << number;
  }
  EXPECT_GT(number, 4) << "value, address, place in the map";
  DlResult ofNode;
  EXPECT_TRUE(failsDuring(1, [&] { ofNode = sut.registerNode(ADDRESS, &m_node); }));
  EXPECT_EQ(ofNode, DL_OUT_OF_MEMORY);
  EXPECT_EQ(sut.unregisterNode(ADDRESS), DL_INVALID_ADDRESS);
}

}  // namespace
}  // namespace motion::host::datalayer
