// The nodes that the data layer has by itself.
#include "host/datalayer/built_in_nodes.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>

#include "host/datalayer/data_layer.h"
#include "schemas/datalayer/metadata_generated.h"
#include "scripted_node.h"

namespace motion::host::datalayer {
namespace {

using namespace comm::datalayer;
using motion::host::test::listOfScopes;
using motion::host::test::ScriptedNode;
using testing::ElementsAre;
using testing::IsEmpty;

class BuiltInNodesTest : public testing::Test {
 protected:
  Variant::Strings read(const std::string& address) {
    Variant data;
    EXPECT_EQ(m_sut->readSync(address, &data), DL_OK);
    return data.getStrings() != nullptr ? *data.getStrings() : Variant::Strings{"no list"};
  }

  ScriptedNode m_node;
  DataLayer m_dataLayer;
  std::unique_ptr<IProvider> m_provider{m_dataLayer.createProvider("inproc:///tmp/datalayer/backend")};
  std::unique_ptr<IClient> m_sut{m_dataLayer.createClient("inproc:///tmp/datalayer/frontend")};
};

TEST_F(BuiltInNodesTest, NodesAreListedAsTheyWereRegistered) {
  EXPECT_THAT(read("datalayer/nodes"), ElementsAre("datalayer/nodes", "datalayer/security/scopes"));
  ASSERT_EQ(m_provider->registerNode("b/*", &m_node), DL_OK);
  ASSERT_EQ(m_provider->registerNode("a", &m_node), DL_OK);
  EXPECT_THAT(read("datalayer/nodes"), ElementsAre("datalayer/nodes", "datalayer/security/scopes", "a", "b/*"));
  ASSERT_EQ(m_provider->unregisterNode("a"), DL_OK);
  EXPECT_THAT(read("datalayer/nodes"), ElementsAre("datalayer/nodes", "datalayer/security/scopes", "b/*"));
  m_provider.reset();
  EXPECT_THAT(read("datalayer/nodes"), ElementsAre("datalayer/nodes", "datalayer/security/scopes"));
}

TEST_F(BuiltInNodesTest, ScopesAreListedByTheirIdentifiers) {
  EXPECT_THAT(read("datalayer/security/scopes"), IsEmpty());
  ASSERT_EQ(m_provider->registerType("scopes/motion",
                                     listOfScopes({{"motion.view", {}, {}, {}, {}}, {"motion.manage", {}, {}, {}, {}}})),
            DL_OK);
  EXPECT_THAT(read("datalayer/security/scopes"), ElementsAre("motion.manage", "motion.view"));
  ASSERT_EQ(m_provider->unregisterType("scopes/motion"), DL_OK);
  EXPECT_THAT(read("datalayer/security/scopes"), IsEmpty());
}

TEST_F(BuiltInNodesTest, TheyCanOnlyBeRead) {
  for (const std::string address : {"datalayer/nodes", "datalayer/security/scopes"}) {
    Variant data(Variant::Strings{"forged"});
    EXPECT_EQ(m_sut->writeSync(address, &data), DL_INVALID_ADDRESS);
    EXPECT_EQ(m_sut->createSync(address, &data), DL_INVALID_ADDRESS);
    EXPECT_EQ(m_sut->removeSync(address), DL_INVALID_ADDRESS);
  }
  EXPECT_THAT(read("datalayer/security/scopes"), IsEmpty());
}

TEST_F(BuiltInNodesTest, FoldersLeadToThem) {
  const auto browse = [this](const std::string& address) {
    Variant data;
    EXPECT_EQ(m_sut->browseSync(address, &data), DL_OK) << address;
    return data.getStrings() != nullptr ? *data.getStrings() : Variant::Strings{"no list"};
  };
  EXPECT_THAT(browse("datalayer"), ElementsAre("nodes", "security"));
  EXPECT_THAT(browse("datalayer/security"), ElementsAre("scopes"));
  EXPECT_THAT(browse("datalayer/nodes"), IsEmpty());
  EXPECT_EQ(m_sut->browseSync("datalaye", nullptr), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_sut->browseSync("datalayer/node", nullptr), DL_INVALID_ADDRESS);
}

TEST_F(BuiltInNodesTest, MetadataTellsNodesFromFolders) {
  ASSERT_EQ(m_provider->registerNode("a/b/*", &m_node), DL_OK);
  const auto check = [this](const std::string& address, std::uint32_t nodeClass, bool isReadable) {
    Variant data;
    ASSERT_EQ(m_sut->metadataSync(address, &data), DL_OK) << address;
    const auto* const metadata = GetMetadata(data.getFlatBuffer().data());
    EXPECT_EQ(metadata->nodeClass(), nodeClass) << address;
    const auto* const operations = metadata->operations();
    ASSERT_NE(operations, nullptr) << address;
    EXPECT_EQ(operations->read(), isReadable) << address;
    EXPECT_EQ(operations->browse(), !isReadable) << address;
    EXPECT_FALSE(operations->write() || operations->create() || operations->delete_()) << address;
  };
  check("datalayer/nodes", 3, true);
  check("datalayer/security/scopes", 3, true);
  for (const std::string folder : {"datalayer", "datalayer/security", "a", "a/b"}) {
    check(folder, 7, false);
  }
}

TEST_F(BuiltInNodesTest, NobodySpeaksForThem) {
  EXPECT_EQ(m_provider->registerNode("datalayer/nodes", &m_node), DL_ALREADY_EXISTS);
  EXPECT_EQ(m_provider->registerNode("datalayer/security/scopes", &m_node), DL_ALREADY_EXISTS);
  ASSERT_EQ(m_provider->registerNode("datalayer/*", &m_node), DL_OK) << "for others beside them";
  ASSERT_EQ(m_provider->start(), DL_OK);
  EXPECT_THAT(read("datalayer/nodes"), ElementsAre("datalayer/nodes", "datalayer/security/scopes", "datalayer/*"));
  Variant data;
  ASSERT_EQ(m_sut->metadataSync("datalayer/nodes", &data), DL_OK);
  EXPECT_EQ(m_sut->writeSync("datalayer/nodes", &data), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_sut->createSync("datalayer/nodes", &data), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_sut->removeSync("datalayer/nodes"), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_node.calls(), 0);
  EXPECT_EQ(m_sut->readSync("datalayer/other", &data), DL_OK);
  EXPECT_EQ(m_node.calls(), 1);
}

TEST_F(BuiltInNodesTest, ChildrenAreFoundAtTheRootToo) {
  EXPECT_THAT(builtInChildrenOf(""), ElementsAre("datalayer"));
  EXPECT_THAT(builtInChildrenOf("datalayer/"), IsEmpty());
  EXPECT_THAT(builtInChildrenOf("data"), IsEmpty());
  EXPECT_TRUE(isBuiltIn(NODE_LIST));
  EXPECT_TRUE(isBuiltIn(SCOPE_LIST));
  EXPECT_FALSE(isBuiltIn("datalayer"));
  EXPECT_FALSE(isBuiltIn("Datalayer/nodes"));
  EXPECT_FALSE(readBuiltIn(NodeRegister(), "datalayer").has_value());
}

}  // namespace
}  // namespace motion::host::datalayer
