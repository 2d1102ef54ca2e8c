// What clients see: nodes with what they say of themselves, values and errors.
#include "host/datalayer/node_walk.h"

#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "host/datalayer/data_layer.h"
#include "schemas/datalayer/diagnosis_generated.h"
#include "schemas/datalayer/metadata_generated.h"
#include "scripted_node.h"

namespace motion::host::datalayer {
namespace {

using namespace comm::datalayer;
using motion::host::test::NodeCall;
using motion::host::test::ScriptedNode;

Variant errorRecord(const char* text) {
  flatbuffers::FlatBufferBuilder builder;
  builder.Finish(CreateDiagnosisDirect(builder, DL_INVALID_HANDLE.code(), 0x090F2040, 0x0C570101, text));
  return Variant::fromFlatBuffer(builder.GetBufferSpan());
}

Variant fullMetadata() {
  flatbuffers::FlatBufferBuilder builder;
  std::vector<flatbuffers::Offset<Reference>> references{CreateReferenceDirect(builder, "readType", "types/r"),
                                                         CreateReferenceDirect(builder, "writeType", "types/w")};
  const auto operations = CreateAllowedOperations(builder, true, false, true, true, true);
  builder.Finish(
      CreateMetadataDirect(builder, 3, operations, "a node", "https://example.invalid/node", nullptr, &references));
  return Variant::fromFlatBuffer(builder.GetBufferSpan());
}

class NodeWalkTest : public testing::Test {
 protected:
  void serve(const std::string& address, ScriptedNode& node) {
    ASSERT_EQ(m_provider->registerNode(address, &node), DL_OK);
    ASSERT_EQ(m_provider->start(), DL_OK);
  }

  DataLayer m_dataLayer;
  std::unique_ptr<IProvider> m_provider{m_dataLayer.createProvider(std::string(DataLayer::PROVIDER_ENDPOINT))};
  std::unique_ptr<IClient> m_client{m_dataLayer.createClient(std::string(DataLayer::CLIENT_ENDPOINT))};
};

TEST_F(NodeWalkTest, FindsTypesThatAreNotInOrder) {
  ScriptedNode node([](const NodeCall& call) {
    flatbuffers::FlatBufferBuilder builder;
    const std::vector<flatbuffers::Offset<Reference>> references{CreateReferenceDirect(builder, "writeType", "types/w"),
                                                                 CreateReferenceDirect(builder, "readType", "types/r")};
    const auto unsorted = builder.CreateVector(references);
    builder.Finish(CreateMetadata(builder, 3, 0, 0, 0, 0, unsorted));
    const Variant metadata = Variant::fromFlatBuffer(builder.GetBufferSpan());
    call.answer(DL_OK, &metadata);
  });
  serve("a/b", node);
  const NodeView sut = walkNodes(*m_client, "a/b");
  ASSERT_TRUE(sut.metadata);
  EXPECT_EQ(sut.metadata->readType, "types/r");
  EXPECT_EQ(sut.metadata->writeType, "types/w");
}

TEST_F(NodeWalkTest, TellsWhatANodeSaysOfItself) {
  ScriptedNode node([](const NodeCall& call) {
    const Variant value = call.operation == "metadata" ? fullMetadata() : Variant(7U);
    call.answer(DL_OK, &value);
  });
  serve("a/b", node);
  const NodeView sut = walkNodes(*m_client, "a/b");
  ASSERT_TRUE(sut.metadata);
  EXPECT_EQ(sut.address, "a/b");
  EXPECT_EQ(sut.metadata->nodeClass, 3U);
  EXPECT_EQ(sut.metadata->description, "a node");
  EXPECT_EQ(sut.metadata->descriptionUrl, "https://example.invalid/node");
  EXPECT_TRUE(sut.metadata->canRead);
  EXPECT_FALSE(sut.metadata->canWrite);
  EXPECT_TRUE(sut.metadata->canCreate);
  EXPECT_TRUE(sut.metadata->canRemove);
  EXPECT_TRUE(sut.metadata->canBrowse);
  EXPECT_EQ(sut.metadata->readType, "types/r");
  EXPECT_EQ(sut.metadata->writeType, "types/w");
  ASSERT_TRUE(sut.value);
  EXPECT_EQ(*sut.value->getUnsigned(), 7U);
  EXPECT_FALSE(sut.error);
  EXPECT_TRUE(sut.children.empty());
}

TEST_F(NodeWalkTest, GoesDownLevelByLevel) {
  ScriptedNode node;
  serve("a/b/*", node);
  const NodeView sut = walkNodes(*m_client, "a");
  ASSERT_EQ(sut.children.size(), 1U);
  EXPECT_EQ(sut.children[0].address, "a/b");
  ASSERT_EQ(sut.children[0].children.size(), 1U);
  EXPECT_EQ(sut.children[0].children[0].address, "a/b/listed");
  EXPECT_EQ(sut.children[0].children[0].metadata->description, "metadata a/b/listed");
}

TEST_F(NodeWalkTest, StopsAtTheDepth) {
  ScriptedNode node;
  serve("a/b/c/d", node);
  const NodeView sut = walkNodes(*m_client, "a", 2);
  ASSERT_EQ(sut.children.size(), 1U);
  ASSERT_EQ(sut.children[0].children.size(), 1U);
  EXPECT_EQ(sut.children[0].children[0].address, "a/b/c");
  EXPECT_TRUE(sut.children[0].children[0].children.empty());
}

TEST_F(NodeWalkTest, DoesNotReadWhatCannotBeRead) {
  ScriptedNode node;  // its metadata allow nothing
  serve("a", node);
  const NodeView sut = walkNodes(*m_client, "a");
  EXPECT_TRUE(sut.metadata);
  EXPECT_FALSE(sut.value);
  EXPECT_FALSE(sut.error);
}

TEST_F(NodeWalkTest, ExplainsWhatFailed) {
  ScriptedNode node([](const NodeCall& call) {
    if (call.operation == "metadata") {
      const Variant metadata = fullMetadata();
      call.answer(DL_OK, &metadata);
    } else {
      const Variant record = errorRecord("no such thing");
      call.answer(DL_INVALID_HANDLE, &record);
    }
  });
  serve("a", node);
  const NodeView sut = walkNodes(*m_client, "a");
  EXPECT_TRUE(sut.metadata);
  EXPECT_FALSE(sut.value);
  ASSERT_TRUE(sut.error);
  EXPECT_EQ(sut.error->result, DL_INVALID_HANDLE);
  EXPECT_EQ(sut.error->mainCode, 0x090F2040U);
  EXPECT_EQ(sut.error->detailCode, 0x0C570101U);
  EXPECT_EQ(sut.error->text, "no such thing");
  EXPECT_EQ(sut.error->toString(), "no such thing (0x090F2040, 0x0C570101)");
}

TEST_F(NodeWalkTest, TellsOfAnAddressThatNobodyAnswers) {
  const NodeView sut = walkNodes(*m_client, "nowhere");
  EXPECT_FALSE(sut.metadata);
  ASSERT_TRUE(sut.error);
  EXPECT_EQ(sut.error->result, DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.error->toString(), "DL_INVALID_ADDRESS");
}

TEST(ErrorOfTest, TellsTheResultThatTheProviderNames) {
  EXPECT_EQ(errorOf(DL_FAILED, errorRecord("why")).result, DL_INVALID_HANDLE);
  flatbuffers::FlatBufferBuilder builder;
  builder.Finish(CreateDiagnosisDirect(builder, DL_OK.code(), 1, 2, "fine?"));
  EXPECT_EQ(errorOf(DL_FAILED, Variant::fromFlatBuffer(builder.GetBufferSpan())).result, DL_FAILED) << "no failure is none";
}

TEST(ErrorOfTest, MakesNothingOfGarbage) {
  constexpr std::uint8_t garbage[] = {0xFF, 0xFF, 0xFF, 0x7F, 1, 2, 3, 4, 5, 6, 7, 8};
  for (const Variant& answer : {Variant(), Variant(true), Variant(std::string("text")), Variant::fromFlatBuffer(garbage)}) {
    const NodeError sut = errorOf(DL_TIMEOUT, answer);
    EXPECT_EQ(sut.result, DL_TIMEOUT);
    EXPECT_EQ(sut.mainCode, 0U);
    EXPECT_EQ(sut.text, "");
    EXPECT_EQ(sut.toString(), "DL_TIMEOUT");
  }
}

}  // namespace
}  // namespace motion::host::datalayer
