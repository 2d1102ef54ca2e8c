#include "host/run/nodes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace motion::host::run {
namespace {

using datalayer::NodeView;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* SIGNALS = "motion/state/functions/kavo/signals";

NodesResult look(std::optional<std::vector<std::string>> scopes, const std::filesystem::path& bundle = KAVO_BUNDLE) {
  NodesOptions options;
  options.play.file = KAVO_SOURCE_DIR "/examples/04_from_outside.yaml";
  options.play.bundleDir = bundle;
  options.play.journal = false;
  options.scopes = std::move(scopes);
  return lookAtNodes(options);
}

const NodeView* find(const std::vector<NodeView>& nodes, const std::string& address) {
  for (const NodeView& node : nodes) {
    if (node.address == address) {
      return &node;
    }
    if (const NodeView* below = find(node.children, address); below != nullptr) {
      return below;
    }
  }
  return nullptr;
}

std::vector<std::string> addresses(const std::vector<NodeView>& nodes) {
  std::vector<std::string> result;
  for (const NodeView& node : nodes) {
    result.push_back(node.address);
  }
  return result;
}

TEST(NodesTest, AreAllThereForTheHostItself) {
  const NodesResult sut = look(std::nullopt);
  ASSERT_TRUE(sut.seen) << sut.play.failure;
  EXPECT_EQ(sut.play.outcome, Outcome::FINE);
  EXPECT_TRUE(sut.seen->isUnrestricted);
  EXPECT_THAT(addresses(sut.seen->roots), ElementsAre("datalayer", "motion"));
  EXPECT_THAT(sut.seen->knownScopes, ElementsAre("motion.manage", "motion.operate", "motion.view"));
  const NodeView* folder = find(sut.seen->roots, SIGNALS);
  ASSERT_NE(folder, nullptr);
  EXPECT_EQ(folder->metadata->description, "Kavo signals");
  EXPECT_EQ(folder->metadata->nodeClass, 7U);
  ASSERT_EQ(folder->children.size(), 100U);
  const NodeView& signal = folder->children[99];
  EXPECT_EQ(signal.address, std::string(SIGNALS) + "/99");
  EXPECT_EQ(signal.metadata->description, "Kavo signal");
  EXPECT_EQ(signal.metadata->nodeClass, 3U);
  EXPECT_EQ(signal.metadata->readType, "types/datalayer/bool8");
  EXPECT_EQ(signal.metadata->writeType, "types/datalayer/bool8");
  ASSERT_TRUE(signal.value);
  EXPECT_EQ(*signal.value->getBool(), false);
  EXPECT_FALSE(signal.error);
}

TEST(NodesTest, BeginWhereTheScopesBegin) {
  for (const auto& [scope, root, mayWrite] : {std::tuple{"motion.view", "motion/state", false},
                                              {"motion.operate", "motion/state", true},
                                              {"motion.manage", "motion", true}}) {
    const NodesResult sut = look({{scope}});
    ASSERT_TRUE(sut.seen) << scope;
    EXPECT_THAT(addresses(sut.seen->roots), ElementsAre(root));
    const NodeView* signal = find(sut.seen->roots, std::string(SIGNALS) + "/07");
    ASSERT_NE(signal, nullptr) << scope;
    EXPECT_TRUE(sut.seen->may(datalayer::Right::READ, *signal));
    EXPECT_EQ(sut.seen->may(datalayer::Right::WRITE, *signal), mayWrite) << scope;
    EXPECT_EQ(sut.seen->may(datalayer::Right::CREATE_AND_REMOVE, *signal), scope == std::string("motion.manage"));
    EXPECT_EQ(sut.seen->names.at(signal->address), "release");
  }
}

TEST(NodesTest, AreNoneForNobody) {
  const NodesResult sut = look({std::vector<std::string>()});
  ASSERT_TRUE(sut.seen);
  EXPECT_EQ(sut.play.outcome, Outcome::FINE);
  EXPECT_TRUE(sut.seen->roots.empty());
  EXPECT_FALSE(sut.seen->isUnrestricted);
}

TEST(NodesTest, RefusesScopesThatNobodyRegistered) {
  const NodesResult sut = look({{"motion.view", "motion.veiw"}});
  EXPECT_FALSE(sut.seen);
  EXPECT_EQ(sut.play.outcome, Outcome::BAD_INPUT);
  EXPECT_EQ(sut.play.failure, "there is no scope 'motion.veiw'; known here: motion.manage, motion.operate, motion.view");
}

TEST(NodesTest, TellsWhyABundleDoesNotStart) {
  const NodesResult sut = look(std::nullopt, "/no/such/bundle");
  EXPECT_FALSE(sut.seen);
  EXPECT_EQ(sut.play.outcome, Outcome::NO_BUNDLE);
  EXPECT_THAT(sut.play.failure, HasSubstr("/no/such/bundle"));
}

}  // namespace
}  // namespace motion::host::run
