// The answers that every node gives: metadata and errors.
#include "impl/provider/provider_helper.h"

#include <functional>
#include <stdexcept>

#include "provider_fixture.h"

namespace motion::kavo {
namespace {

using comm::datalayer::AllowedOperations;
using comm::datalayer::DlResult;
using comm::datalayer::Metadata;
using comm::datalayer::Variant;
using testing::ElementsAre;
using testing::IsEmpty;
using sut = ProviderHelper;
using ResponseCallback = comm::datalayer::IProviderNode::ResponseCallback;

constexpr const char* TYPE = "types/some/type";

comm::datalayer::MetadataT metadataOf(std::uint32_t operations, const std::string& type, bool browse) {
  Answers answers;
  sut::createMetaData(type, {"a description", "an url", 3, operations}, answers.callback(), "", browse);
  return metadataIn(answers);
}

TEST(ProviderHelperTest, DescribesTheNode) {
  Answers answers;
  sut::createMetaData(TYPE, {"a description", "an url", 7, NODE_READ}, answers.callback(), "an extra text", false);
  const auto metadata = metadataIn(answers);
  EXPECT_EQ(metadata.nodeClass, 7U);
  EXPECT_EQ(metadata.description, "a description");
  EXPECT_EQ(metadata.descriptionUrl, "an url");
  EXPECT_EQ(metadata.extraText, "an extra text");
  EXPECT_EQ(allowedBy(metadata), "r----");
  EXPECT_THAT(referencesOf(metadata), ElementsAre("readType types/some/type"));
}

TEST(ProviderHelperTest, TakesEachOperationFromItsBit) {
  EXPECT_EQ(allowedBy(metadataOf(0, TYPE, false)), "-----");
  EXPECT_EQ(allowedBy(metadataOf(1, TYPE, false)), "r----");
  EXPECT_EQ(allowedBy(metadataOf(2, TYPE, false)), "-w---");
  EXPECT_EQ(allowedBy(metadataOf(4, TYPE, false)), "--c--");
  EXPECT_EQ(allowedBy(metadataOf(8, TYPE, false)), "---d-");
  EXPECT_EQ(allowedBy(metadataOf(0, TYPE, true)), "----b");
  EXPECT_EQ(allowedBy(metadataOf(15, TYPE, true)), "rwcdb");
  EXPECT_EQ(allowedBy(metadataOf(0xFFFFFFF0, TYPE, false)), "-----") << "the other bits mean nothing";
}

TEST(ProviderHelperTest, RefersToTheTypeOfEachOperationSortedByKind) {
  EXPECT_THAT(referencesOf(metadataOf(0, TYPE, true)), IsEmpty());
  EXPECT_THAT(referencesOf(metadataOf(1, TYPE, true)), ElementsAre("readType types/some/type"));
  EXPECT_THAT(referencesOf(metadataOf(2, TYPE, true)), ElementsAre("writeType types/some/type"));
  EXPECT_THAT(referencesOf(metadataOf(4, TYPE, true)), ElementsAre("createType types/some/type"));
  EXPECT_THAT(referencesOf(metadataOf(8, TYPE, true)), IsEmpty()) << "removing takes no value";
  EXPECT_THAT(referencesOf(metadataOf(15, TYPE, true)),
              ElementsAre("createType types/some/type", "readType types/some/type", "writeType types/some/type"));
}

TEST(ProviderHelperTest, LeavesOnlyTheReferenceForCreatingOutWithoutAType) {
  EXPECT_THAT(referencesOf(metadataOf(15, "", true)), ElementsAre("readType ", "writeType "));
  EXPECT_THAT(referencesOf(metadataOf(4, "", true)), IsEmpty());
  EXPECT_EQ(allowedBy(metadataOf(4, "", true)), "--c-b");
}

TEST(ProviderHelperTest, LetsAReferenceBeFoundByItsKey) {
  Answers answers;
  sut::createMetaData(TYPE, {"", "", 3, 7}, answers.callback(), "", true);
  const Answer answer = answers.only();
  const auto* const references = comm::datalayer::GetMetadata(answer.data.getFlatBuffer().data())->references();
  ASSERT_NE(references, nullptr);
  for (const char* key : {"readType", "writeType", "createType"}) {
    const auto* const reference = references->LookupByKey(key);
    ASSERT_NE(reference, nullptr) << key;
    EXPECT_EQ(reference->targetAddress()->str(), TYPE);
  }
}

TEST(ProviderHelperTest, StoresAnExtraTextOnlyWhenThereIsOne) {
  for (const std::string extraText : {"", "x"}) {
    Answers answers;
    sut::createMetaData(TYPE, {"", "", 3, 0}, answers.callback(), extraText, true);
    const Answer answer = answers.only();
    const auto* const metadata = comm::datalayer::GetMetadata(answer.data.getFlatBuffer().data());
    EXPECT_EQ(metadata->extraText() != nullptr, !extraText.empty());
  }
}

TEST(ProviderHelperTest, StoresNoDefaults) {
  const auto isStored = [](const auto* table, flatbuffers::voffset_t field) {
    return reinterpret_cast<const flatbuffers::Table*>(table)->GetOptionalFieldOffset(field) != 0;
  };
  Answers answers;
  sut::createMetaData(TYPE, {"", "", 0, NODE_WRITE}, answers.callback(), "", false);
  const Answer answer = answers.only();
  const auto* const metadata = comm::datalayer::GetMetadata(answer.data.getFlatBuffer().data());
  EXPECT_FALSE(isStored(metadata, Metadata::VT_NODECLASS));
  EXPECT_FALSE(isStored(metadata->operations(), AllowedOperations::VT_READ));
  EXPECT_TRUE(isStored(metadata->operations(), AllowedOperations::VT_WRITE));
  EXPECT_FALSE(isStored(metadata->operations(), AllowedOperations::VT_BROWSE));
}

TEST(ProviderHelperTest, AnswersWithTheResultBothCodesAndTheText) {
  Answers answers;
  sut::sendDlErrorResponse(answers.callback(), DlResult(0x80010006), 0x090F2040, 0x0C570101, "%d apples of %s", 12, "me");
  EXPECT_EQ(answers.only().result.code(), 0x80010006U);
  EXPECT_EQ(errorRecordIn(answers.only().data), "80010006 090F2040 0C570101 12 apples of me ,DLResult: DL_TYPE_MISMATCH");
  answers.clear();
  sut::sendDlErrorResponse(answers.callback(), DlResult(0x80000001), 0xFFFFFFFF, 0, "%s", "");
  EXPECT_EQ(errorRecordIn(answers.only().data), "80000001 FFFFFFFF 00000000  ,DLResult: DL_FAILED");
}

TEST(ProviderHelperTest, NamesAResultWithoutANameUnknown) {
  for (const std::uint32_t code : {0x80010008U, 0x8FFFFFFFU, 0x00000003U}) {
    Answers answers;
    sut::sendDlErrorResponse(answers.callback(), DlResult(code), 1, 2, "%s", "text");
    EXPECT_EQ(answers.only().result.code(), code);
    EXPECT_EQ(errorRecordIn(answers.only().data), fmt::format("{:08X} 00000001 00000002 text ,DLResult: unknown", code));
  }
}

/// The text of an error whose message is that long.
std::string textOf(std::size_t length) {
  Answers answers;
  const std::string message(length, 'x');
  sut::sendDlErrorResponse(answers.callback(), comm::datalayer::DL_FAILED, 0, 0, "%s", message.c_str());
  const Answer answer = answers.only();
  return comm::datalayer::GetDiagnosis(answer.data.getFlatBuffer().data())->text()->str();
}

TEST(ProviderHelperTest, CutsTheNameOfTheResult) {
  EXPECT_EQ(textOf(234), std::string(234, 'x') + " ,DLResult: DL_FAILED") << "fits to the last character";
  EXPECT_EQ(textOf(234).size(), 255U);
  EXPECT_EQ(textOf(235), std::string(235, 'x') + " ,DLResult: DL_FAILE");
  EXPECT_EQ(textOf(243), std::string(243, 'x') + " ,DLResult: ");
  EXPECT_EQ(textOf(244), std::string(244, 'x') + " ,DLResult:");
}

TEST(ProviderHelperTest, CutsALongMessage) {
  EXPECT_EQ(textOf(254), std::string(254, 'x') + " ");
  EXPECT_EQ(textOf(255), std::string(255, 'x'));
  EXPECT_EQ(textOf(256), std::string(255, 'x'));
  EXPECT_EQ(textOf(300), std::string(255, 'x'));
}

TEST(ProviderHelperTest, CutsEveryLengthAtTheSamePlace) {
  for (std::size_t length = 0; length <= 300; ++length) {
    EXPECT_EQ(textOf(length), (std::string(length, 'x') + " ,DLResult: DL_FAILED").substr(0, 255)) << length;
  }
}

TEST(ProviderHelperTest, NeedsACallback) {
  const ResponseCallback none;
  EXPECT_THROW(sut::createMetaData(TYPE, {}, none, "", true), std::bad_function_call);
  EXPECT_THROW(sut::sendDlErrorResponse(none, comm::datalayer::DL_FAILED, 0, 0, "%s", ""), std::bad_function_call);
}

TEST(ProviderHelperTest, PassesOnWhatTheCallbackThrows) {
  const ResponseCallback throwing = [](DlResult /*result*/, const Variant* /*data*/) { throw std::logic_error("no"); };
  EXPECT_THROW(sut::createMetaData(TYPE, {}, throwing, "", true), std::logic_error);
  EXPECT_THROW(sut::sendDlErrorResponse(throwing, comm::datalayer::DL_FAILED, 0, 0, "%s", ""), std::logic_error);
}

TEST(ProviderHelperTest, EitherAnswersOrRunsOutOfMemory) {
  for (const bool isMetadata : {true, false}) {
    Answers answers;
    bool isThrown = false;
    int refusals = 0;
    withEachAllocationFailing(
        [&] {
          try {
            if (isMetadata) {
              sut::createMetaData(TYPE, {"a description of the node", "", 3, 15}, answers.callback(), "extra", true);
            } else {
              sut::sendDlErrorResponse(answers.callback(), comm::datalayer::DL_FAILED, 0, 0, "%s", "text");
            }
          } catch (const std::bad_alloc&) {
            isThrown = true;
          }
        },
        [&](bool hasFailed) {
          EXPECT_TRUE(hasFailed || !isThrown) << "sorting gets by without memory, nothing else does";
          EXPECT_EQ(answers.all().size(), isThrown ? 0U : 1U);
          refusals += isThrown ? 1 : 0;
          isThrown = false;
          answers.clear();
        });
    EXPECT_GT(refusals, 0);
  }
}

}  // namespace
}  // namespace motion::kavo
