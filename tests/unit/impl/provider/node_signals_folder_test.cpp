// The folder of the signal nodes.
#include "impl/provider/node_signals_folder.h"

#include <stdexcept>

#include "provider_fixture.h"

namespace motion::kavo {
namespace {

using comm::datalayer::DlResult;
using comm::datalayer::Variant;
using testing::IsEmpty;

constexpr const char* NOT_IMPLEMENTED = "not implemented ,DLResult: DL_UNSUPPORTED";

class NodeSignalsFolderTest : public ProviderTest {
 protected:
  std::unique_ptr<ProviderMgr> m_manager = makeManager();
  NodeSignalsFolder m_sut{*m_manager};
};

TEST_F(NodeSignalsFolderTest, SaysWhatItIs) {
  EXPECT_EQ(m_sut.getDescription(), "Kavo signals");
  EXPECT_EQ(m_sut.getDescriptionUrl(), "");
  EXPECT_EQ(&m_sut.getMotionSysIF(), &m_host.sysIf);
}

TEST_F(NodeSignalsFolderTest, AllowsOnlyToBeBrowsed) {
  Answers answers;
  m_sut.onMetadata(FOLDER, answers.callback());
  const auto metadata = metadataIn(answers);
  EXPECT_EQ(metadata.nodeClass, 7U);
  EXPECT_EQ(metadata.description, "Kavo signals");
  EXPECT_EQ(metadata.descriptionUrl, "");
  EXPECT_EQ(metadata.extraText, "");
  EXPECT_EQ(allowedBy(metadata), "----b");
  EXPECT_THAT(referencesOf(metadata), IsEmpty());
}

TEST_F(NodeSignalsFolderTest, RefusesEverythingElse) {
  const Variant data(true);
  Answers answers;
  m_sut.onBrowse(FOLDER, answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  answers.clear();
  m_sut.onRead(FOLDER, nullptr, answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  answers.clear();
  m_sut.onWrite(FOLDER, &data, answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  answers.clear();
  m_sut.onCreate(FOLDER, &data, answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  answers.clear();
  m_sut.onRemove(FOLDER, answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
}

TEST_F(NodeSignalsFolderTest, AnswersOnceWhateverCannotBeAllocated) {
  Answers answers;
  const int failures = withEachAllocationFailing([&] { m_sut.onMetadata(FOLDER, answers.callback()); },
                                                 [&](bool hasFailed) {
                                                   const Answer answer = answers.only();
                                                   EXPECT_EQ(answer.result.code(), hasFailed ? 0x80010003U : 0U);
                                                   EXPECT_EQ(answer.hasData, !hasFailed);
                                                   answers.clear();
                                                 });
  EXPECT_GT(failures, 0);
}

TEST_F(NodeSignalsFolderTest, LetsNoExceptionOfTheCallbackOut) {
  int calls = 0;
  m_sut.onMetadata(FOLDER, [&calls](DlResult /*result*/, const Variant* /*data*/) {
    ++calls;
    throw std::runtime_error("no");
  });
  EXPECT_EQ(calls, 1);
}

}  // namespace
}  // namespace motion::kavo
