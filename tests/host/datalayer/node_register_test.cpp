// Which provider has which address, and who is found for a request.
#include "host/datalayer/node_register.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <latch>
#include <memory>
#include <string>
#include <thread>

#include "scripted_node.h"
#include "support/fake_allocation.h"

namespace motion::host::datalayer {
namespace {

using namespace comm::datalayer;
using motion::host::test::listOfScopes;
using motion::host::test::ScriptedNode;
using motion::test::failsDuring;
using testing::ElementsAre;
using testing::IsEmpty;

/// Nothing but an identity.
class NamelessProvider final : public IProvider {
 public:
  DlResult start() override { return DL_UNSUPPORTED; }
  DlResult stop() override { return DL_UNSUPPORTED; }
  DlResult registerNode(const std::string&, IProviderNode*) override { return DL_UNSUPPORTED; }
  DlResult unregisterNode(const std::string&) override { return DL_UNSUPPORTED; }
  DlResult registerType(const std::string&, const Variant&) override { return DL_UNSUPPORTED; }
  DlResult unregisterType(const std::string&) override { return DL_UNSUPPORTED; }
  bool isStarted() const override { return false; }
};

class NodeRegisterTest : public testing::Test {
 protected:
  NodeRegisterTest() {
    m_sut.addProvider(&m_first, m_core);
    m_sut.addProvider(&m_second, m_otherCore);
  }
  ~NodeRegisterTest() override {
    static_cast<void>(m_core->stop());
    static_cast<void>(m_otherCore->stop());
  }

  DlResult add(const std::string& address) { return m_sut.addNode(&m_first, address, &m_node); }
  std::string found(const std::string& address) const {
    const auto route = m_sut.find(address);
    return route ? route->node : "nobody";
  }

  NamelessProvider m_first;
  NamelessProvider m_second;
  std::shared_ptr<ProviderCore> m_core = std::make_shared<ProviderCore>();
  std::shared_ptr<ProviderCore> m_otherCore = std::make_shared<ProviderCore>();
  ScriptedNode m_node;
  NodeRegister m_sut;
};

TEST_F(NodeRegisterTest, KnowsItsProviders) {
  auto& sut = m_sut;
  const NamelessProvider stranger;
  EXPECT_EQ(sut.providerCount(), 2U);
  EXPECT_TRUE(sut.hasProvider(&m_first));
  EXPECT_FALSE(sut.hasProvider(&stranger));
  EXPECT_FALSE(sut.hasProvider(nullptr));
  sut.removeProvider(&stranger);
  sut.removeProvider(&m_first);
  EXPECT_FALSE(sut.hasProvider(&m_first));
  EXPECT_EQ(sut.providerCount(), 1U);
}

TEST_F(NodeRegisterTest, NodesNeedANodeAnAddressAndAProvider) {
  auto& sut = m_sut;
  const NamelessProvider stranger;
  EXPECT_EQ(sut.addNode(&m_first, "a", nullptr), DL_INVALID_HANDLE);
  EXPECT_EQ(sut.addNode(&stranger, "a", &m_node), DL_INVALID_HANDLE);
  for (const std::string address : {"", "/", "a/", "a//b", "*/a", "a/**", "..", "a/../b", "\xFF"}) {
    EXPECT_EQ(add(address), DL_INVALID_ADDRESS) << address;
  }
  EXPECT_THAT(sut.addresses(), IsEmpty());
}

TEST_F(NodeRegisterTest, AddressHasOneNodeOverAllProviders) {
  auto& sut = m_sut;
  EXPECT_EQ(add("a/*"), DL_OK);
  EXPECT_EQ(add("a/*"), DL_ALREADY_EXISTS);
  EXPECT_EQ(sut.addNode(&m_second, "a/*", &m_node), DL_ALREADY_EXISTS);
  EXPECT_EQ(sut.removeNode(&m_second, "a/*"), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.removeNode(&m_first, "a/*"), DL_OK);
  EXPECT_EQ(sut.removeNode(&m_first, "a/*"), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.addNode(&m_second, "a/*", &m_node), DL_OK);
}

TEST_F(NodeRegisterTest, VeryAddressComesBeforeTheWildcardOfItsFolder) {
  ASSERT_EQ(add("a/*"), DL_OK);
  ASSERT_EQ(add("a/b"), DL_OK);
  ASSERT_EQ(m_sut.addNode(&m_second, "*", &m_node), DL_OK);
  EXPECT_EQ(found("a/b"), "a/b");
  EXPECT_EQ(found("a/c"), "a/*");
  EXPECT_EQ(found("a"), "*");
  EXPECT_EQ(m_sut.find("a")->core, m_otherCore);
  EXPECT_EQ(m_sut.find("a/c")->core, m_core);
}

TEST_F(NodeRegisterTest, WildcardStandsForOneLevel) {
  ASSERT_EQ(add("a/*"), DL_OK);
  for (const std::string address : {"a", "a/b/c", "ab/c", "A/b", "b/a", "b"}) {
    EXPECT_EQ(found(address), "nobody") << address;
  }
}

TEST_F(NodeRegisterTest, ContentOfAFolderIsItsWildcardNode) {
  auto& sut = m_sut;
  ASSERT_EQ(add("a/*"), DL_OK);
  ASSERT_EQ(add("b/c"), DL_OK);
  ASSERT_TRUE(sut.findContent("a").has_value());
  EXPECT_EQ(sut.findContent("a")->node, "a/*");
  EXPECT_FALSE(sut.findContent("").has_value());
  EXPECT_FALSE(sut.findContent("b").has_value());
  EXPECT_FALSE(sut.findContent("a/b").has_value());
}

TEST_F(NodeRegisterTest, ChildrenAreTheNextLevels) {
  auto& sut = m_sut;
  for (const std::string address : {"a/b/c", "a/b/d", "a/e", "a/*", "ab/x", "a.b/x", "z"}) {
    ASSERT_EQ(add(address), DL_OK);
  }
  EXPECT_THAT(sut.childrenOf("a"), ElementsAre("b", "e"));
  EXPECT_THAT(sut.childrenOf("a/b"), ElementsAre("c", "d"));
  EXPECT_THAT(sut.childrenOf("a/b/c"), IsEmpty());
  EXPECT_THAT(sut.childrenOf(""), ElementsAre("a", "a.b", "ab", "z"));
}

TEST_F(NodeRegisterTest, FolderHasSomethingBelow) {
  auto& sut = m_sut;
  ASSERT_EQ(add("a/b/*"), DL_OK);
  ASSERT_EQ(add("abc"), DL_OK);
  EXPECT_TRUE(sut.isFolder("a"));
  EXPECT_TRUE(sut.isFolder("a/b"));
  EXPECT_FALSE(sut.isFolder("a/b/c"));
  EXPECT_FALSE(sut.isFolder("ab"));
  EXPECT_FALSE(sut.isFolder("abc"));
}

TEST_F(NodeRegisterTest, AddressesAreListedAsTheyWereRegistered) {
  ASSERT_EQ(add("b/*"), DL_OK);
  ASSERT_EQ(m_sut.addNode(&m_second, "a", &m_node), DL_OK);
  EXPECT_THAT(m_sut.addresses(), ElementsAre("a", "b/*"));
}

TEST_F(NodeRegisterTest, ProviderThatGoesTakesItsOwnAlong) {
  auto& sut = m_sut;
  const Variant type(true);
  ASSERT_EQ(add("a"), DL_OK);
  ASSERT_EQ(add("b/*"), DL_OK);
  ASSERT_EQ(sut.addType(&m_first, "t", type), DL_OK);
  ASSERT_EQ(sut.addType(&m_first, "scopes/a", listOfScopes({{"first", {"x"}, {}, {}, {}}})), DL_OK);
  ASSERT_EQ(sut.addNode(&m_second, "c", &m_node), DL_OK);
  ASSERT_EQ(sut.addType(&m_second, "scopes/b", listOfScopes({{"second", {"x"}, {}, {}, {}}})), DL_OK);
  sut.removeProvider(&m_first);
  EXPECT_THAT(sut.addresses(), ElementsAre("c"));
  EXPECT_THAT(sut.scopes().identifiers(), ElementsAre("second"));
  EXPECT_FALSE(m_core->remove("a")) << "nothing is left there either";
  EXPECT_EQ(sut.addType(&m_second, "t", type), DL_OK);
}

TEST_F(NodeRegisterTest, TypesBelowScopesAreListsOfScopes) {
  auto& sut = m_sut;
  const Variant list = listOfScopes({{"a", {"x"}, {}, {}, {}}});
  EXPECT_EQ(sut.addType(nullptr, "scopes/a", list), DL_INVALID_HANDLE) << "such a provider was not added";
  EXPECT_TRUE(sut.scopes().identifiers().empty());
  EXPECT_EQ(sut.addType(&m_first, "scopes/a", Variant(true)), DL_INVALID_VALUE);
  EXPECT_EQ(sut.addType(&m_first, "scopes/a", list), DL_OK) << "the refused one is not there";
  EXPECT_EQ(sut.addType(&m_second, "scopes/a", list), DL_ALREADY_EXISTS);
  EXPECT_EQ(sut.addType(&m_second, "scopes/b", list), DL_ALREADY_EXISTS) << "the identifier is taken";
  EXPECT_EQ(sut.removeType(&m_second, "scopes/a"), DL_INVALID_ADDRESS);
  EXPECT_THAT(sut.scopes().identifiers(), ElementsAre("a"));
  EXPECT_EQ(sut.removeType(&m_first, "scopes/a"), DL_OK);
  EXPECT_THAT(sut.scopes().identifiers(), IsEmpty());
  EXPECT_EQ(sut.addType(&m_second, "scopes/b", list), DL_OK);
}

TEST_F(NodeRegisterTest, OtherTypesAreAnything) {
  auto& sut = m_sut;
  for (const std::string address : {"scopes", "Scopes/a", "types/scopes/a", "scopesa"}) {
    EXPECT_EQ(sut.addType(&m_first, address, listOfScopes({{"a", {"**"}, {}, {}, {}}})), DL_OK) << address;
  }
  EXPECT_THAT(sut.scopes().identifiers(), IsEmpty());
  EXPECT_EQ(sut.addType(&m_first, "t", Variant()), DL_INVALID_VALUE);
  for (const std::string address : {"", "a/*", "scopes/", "scopes/../x", "scopes/**", "\xFF"}) {
    EXPECT_EQ(sut.addType(&m_first, address, Variant(true)), DL_INVALID_ADDRESS) << address;
  }
}

TEST_F(NodeRegisterTest, FailedAllocationAddsNothing) {
  auto& sut = m_sut;
  const std::string address = "scopes/of/so/many/levels/that/an/allocation/is/needed";
  const Variant list = listOfScopes({{"an identifier that needs an allocation", {"x"}, {}, {}, {}}});
  for (const bool isNode : {true, false}) {
    int number = 1;
    for (bool hasFailed = true; hasFailed; ++number) {
      bool hasThrown = false;
      hasFailed = failsDuring(number, [&] {
        try {
          static_cast<void>(isNode ? add(address) : sut.addType(&m_first, address, list));
        } catch (const std::bad_alloc&) {
          hasThrown = true;
        }
      });
      ASSERT_EQ(hasThrown, hasFailed) << number;
      ASSERT_EQ((isNode ? sut.addresses() : sut.scopes().identifiers()).size(), hasFailed ? 0U : 1U) << number;
    }
    EXPECT_GT(number, 4);
  }
  EXPECT_EQ(sut.removeNode(&m_first, address), DL_OK);
  EXPECT_EQ(sut.removeType(&m_first, address), DL_OK);
}

TEST_F(NodeRegisterTest, WaitUntilIdleWaitsForWithdrawnNodesToo) {
  auto& sut = m_sut;
  ASSERT_EQ(add("a"), DL_OK);
  ASSERT_TRUE(m_core->start());
  std::latch isWithdrawn(1);
  std::atomic<bool> hasEnded{false};
  ASSERT_TRUE(sut.find("a")->core->post("a", [&](IProviderNode&) {
    EXPECT_EQ(sut.removeNode(&m_first, "a"), DL_OK);
    isWithdrawn.count_down();
    for (int i = 0; i < 1000; ++i) {
      std::this_thread::yield();
    }
    hasEnded = true;
  }));
  isWithdrawn.wait();
  sut.waitUntilIdle();
  EXPECT_TRUE(hasEnded);
}

TEST_F(NodeRegisterTest, CallbackRegistersWhileSomebodyWaitsForIt) {
  auto& sut = m_sut;
  ASSERT_EQ(add("a"), DL_OK);
  ASSERT_TRUE(m_core->start());
  ASSERT_TRUE(sut.find("a")->core->post("a", [&](IProviderNode&) {
    EXPECT_EQ(add("b"), DL_OK);
    EXPECT_EQ(sut.removeNode(&m_first, "a"), DL_OK);
  }));
  sut.waitUntilIdle();
  EXPECT_THAT(sut.addresses(), ElementsAre("b"));
}

TEST_F(NodeRegisterTest, WaitingForIdlenessNeedsNoMemory) {
  ASSERT_EQ(add("a"), DL_OK);
  ASSERT_TRUE(m_core->start());
  std::atomic<int> calls{0};
  ASSERT_TRUE(m_core->post("a", [&](IProviderNode&) { ++calls; }));
  EXPECT_FALSE(failsDuring(1, [&] { m_sut.waitUntilIdle(); }));
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace motion::host::datalayer
