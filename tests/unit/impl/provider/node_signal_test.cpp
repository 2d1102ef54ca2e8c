// The signal node: what it is, its list of names, and how it takes the number out of an address.
#include "impl/provider/node_signal.h"

#include <future>
#include <stdexcept>

#include "node_signal_fixture.h"

namespace motion::kavo {
namespace {

using comm::datalayer::DlResult;
using comm::datalayer::Variant;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* NOT_IMPLEMENTED = "not implemented ,DLResult: DL_UNSUPPORTED";
constexpr std::uint32_t UNTOUCHED = 4711;

TEST_F(NodeSignalTest, SaysWhatItIs) {
  EXPECT_EQ(m_sut.getDescription(), "Kavo signal");
  EXPECT_EQ(m_sut.getDescriptionUrl(), "");
  EXPECT_EQ(&m_sut.getMotionSysIF(), &m_host.sysIf);
}

TEST_F(NodeSignalTest, AllowsToBeReadWrittenAndBrowsed) {
  Answers answers;
  m_sut.onMetadata(FOLDER_PREFIX + "05", answers.callback());
  const auto metadata = metadataIn(answers);
  EXPECT_EQ(metadata.nodeClass, 3U);
  EXPECT_EQ(metadata.description, "Kavo signal");
  EXPECT_EQ(metadata.descriptionUrl, "");
  EXPECT_EQ(metadata.extraText, "");
  EXPECT_EQ(allowedBy(metadata), "rw--b");
  EXPECT_THAT(referencesOf(metadata), ElementsAre("readType types/datalayer/bool8", "writeType types/datalayer/bool8"));
  EXPECT_THAT(s_calls, IsEmpty());
}

TEST_F(NodeSignalTest, CannotBeCreatedNorRemoved) {
  const Variant data(true);
  Answers answers;
  m_sut.onCreate(FOLDER_PREFIX + "05", &data, answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  answers.clear();
  m_sut.onRemove(FOLDER_PREFIX + "05", answers.callback());
  expectError(answers, 0x80010002, 0x0C57010B, NOT_IMPLEMENTED);
  EXPECT_THAT(s_calls, IsEmpty());
}

TEST_F(NodeSignalTest, ListsTheNamesOfAllSignals) {
  Answers answers;
  m_sut.onBrowse(EVERY_SIGNAL, answers.callback());
  const Answer answer = answers.only();
  EXPECT_EQ(answer.result.code(), 0U);
  EXPECT_EQ(static_cast<std::uint32_t>(answer.data.getType()), 24U);
  ASSERT_NE(answer.data.getStrings(), nullptr);
  const auto& names = *answer.data.getStrings();
  ASSERT_EQ(names.size(), 100U);
  EXPECT_EQ(names.front(), "00");
  EXPECT_EQ(names[1], "01");
  EXPECT_EQ(names.back(), "99");
  for (std::size_t i = 0; i < names.size(); ++i) {
    EXPECT_EQ(names[i], fmt::format("{:02}", i));
  }
}

TEST_F(NodeSignalTest, ListsTheNamesWhateverTheAddress) {
  for (const std::string address : {"", "somewhere/else", "motion/state/functions/kavo/signals/abc"}) {
    Answers answers;
    m_sut.onBrowse(address, answers.callback());
    ASSERT_NE(answers.only().data.getStrings(), nullptr) << address;
    EXPECT_EQ(answers.only().data.getStrings()->size(), 100U) << address;
  }
}

TEST_F(NodeSignalTest, BuildsTheListOfNamesOnce) {
  std::vector<const Variant*> lists;
  for (int i = 0; i < 3; ++i) {
    m_sut.onBrowse(EVERY_SIGNAL, [&lists](DlResult /*result*/, const Variant* data) { lists.push_back(data); });
  }
  ASSERT_EQ(lists.size(), 3U);
  EXPECT_EQ(lists[0], lists[1]);
  EXPECT_EQ(lists[0], lists[2]);
}

TEST_F(NodeSignalTest, ListsTheNamesToSeveralThreadsAtOnce) {
  const auto browse = [this] {
    Answers answers;
    m_sut.onBrowse(EVERY_SIGNAL, answers.callback());
    const Answer answer = answers.only();
    const auto* const names = answer.data.getStrings();
    return names != nullptr ? names->size() : 0;
  };
  auto first = std::async(std::launch::async, browse);
  auto second = std::async(std::launch::async, browse);
  EXPECT_EQ(first.get(), 100U);
  EXPECT_EQ(second.get(), 100U);
}

struct AddressCase {
  std::string address;
  std::uint32_t signalId;
};

TEST_F(NodeSignalTest, TakesTheNumberOutOfTheAddress) {
  for (const auto& [ending, signalId] :
       {AddressCase{"05", 5}, AddressCase{"5", 5}, AddressCase{"0", 0}, AddressCase{"00", 0}, AddressCase{"99", 99},
        AddressCase{"100", 100}, AddressCase{"0000000000000000000000000007", 7}, AddressCase{"08", 8},
        AddressCase{"010", 10}, AddressCase{"4294967295", 4294967295U}}) {
    std::uint32_t found = UNTOUCHED;
    EXPECT_EQ(NodeSignal::getSignalId(FOLDER_PREFIX + ending, found).code(), 0U) << ending;
    EXPECT_EQ(found, signalId) << ending;
  }
}

TEST_F(NodeSignalTest, RefusesAnEndingThatIsNoNumber) {
  for (const std::string& ending : {std::string(),         std::string("abc"),        std::string("5x"),
                                    std::string("x5"),     std::string("+5"),         std::string("-1"),
                                    std::string("-0"),     std::string(" 5"),         std::string("5 "),
                                    std::string("\t5"),    std::string("0x5"),        std::string("5.0"),
                                    std::string("5/"),     std::string("/5"),         std::string("5/6"),
                                    std::string("*"),      std::string("4294967296"), std::string("99999999999999999999"),
                                    std::string("5\0", 2), std::string("5\n")}) {
    std::uint32_t found = UNTOUCHED;
    EXPECT_EQ(NodeSignal::getSignalId(FOLDER_PREFIX + ending, found).code(), 0x80010001U) << ending;
    EXPECT_EQ(found, UNTOUCHED) << ending;
  }
}

TEST_F(NodeSignalTest, RefusesAnAddressWithoutTheFolder) {
  for (const std::string address : {"", "5", "motion/state/functions/kavo/signals", "motion/state/functions/kavo/signals5",
                                    "Motion/state/functions/kavo/signals/5", "motion/state/functions/kavo/rt-data/5",
                                    "another/folder/that/is/longer/than/the/one/of/the/signals/5"}) {
    std::uint32_t found = UNTOUCHED;
    EXPECT_EQ(NodeSignal::getSignalId(address, found).code(), 0x80010001U) << address;
    EXPECT_EQ(found, UNTOUCHED) << address;
  }
}

TEST_F(NodeSignalTest, CutsTheLengthOfTheFolderOffWhereverTheFolderStands) {
  for (const std::string& address :
       {"x" + FOLDER_PREFIX + "5", "/" + FOLDER_PREFIX + "5", FOLDER_PREFIX + FOLDER_PREFIX + "5", "5" + FOLDER_PREFIX,
        std::string(FOLDER_PREFIX.size(), '1') + FOLDER_PREFIX}) {
    std::uint32_t found = UNTOUCHED;
    EXPECT_EQ(NodeSignal::getSignalId(address, found).code(), 0x80010001U) << address;
    EXPECT_EQ(found, UNTOUCHED) << address;
  }
}

TEST_F(NodeSignalTest, AnswersMetadataOnceWhateverCannotBeAllocated) {
  Answers answers;
  int refusals = 0;
  withEachAllocationFailing([&] { m_sut.onMetadata(EVERY_SIGNAL, answers.callback()); },
                            [&](bool hasFailed) {
                              const Answer answer = answers.only();
                              if (answer.hasData) {
                                EXPECT_EQ(referencesOf(metadataIn(answers)).size(), 2U) << "sorting gets by without memory";
                              } else {
                                EXPECT_TRUE(hasFailed);
                                EXPECT_EQ(answer.result.code(), 0x80010003U);
                                ++refusals;
                              }
                              answers.clear();
                            });
  EXPECT_GT(refusals, 0);
}

TEST_F(NodeSignalTest, ListsTheNamesOrAnswersThatThereIsNoMemory) {
  Answers answers;
  withEachAllocationFailing([&] { m_sut.onBrowse(EVERY_SIGNAL, answers.callback()); },
                            [&](bool hasFailed) {
                              EXPECT_EQ(answers.only().result.code(), hasFailed ? 0x80010003U : 0U);
                              EXPECT_EQ(answers.only().data.getStrings() != nullptr, !hasFailed);
                              answers.clear();
                            });
}

TEST_F(NodeSignalTest, LetsNoExceptionOfTheCallbackOut) {
  int calls = 0;
  const NodeSignal::ResponseCallback throwing = [&calls](DlResult /*result*/, const Variant* /*data*/) {
    ++calls;
    throw std::runtime_error("no");
  };
  const Variant value(true);
  m_sut.onBrowse(EVERY_SIGNAL, throwing);
  EXPECT_EQ(calls, 1);
  m_sut.onMetadata(EVERY_SIGNAL, throwing);
  EXPECT_EQ(calls, 2);
  m_sut.onRead(FOLDER_PREFIX + "5", nullptr, throwing);
  EXPECT_EQ(calls, 3) << "a value";
  m_sut.onRead(FOLDER_PREFIX, nullptr, throwing);
  EXPECT_EQ(calls, 4) << "an error";
  m_sut.onWrite(FOLDER_PREFIX + "5", &value, throwing);
  EXPECT_EQ(calls, 5) << "a success";
  m_sut.onWrite(FOLDER_PREFIX + "5", nullptr, throwing);
  EXPECT_EQ(calls, 6) << "an error";
}

}  // namespace
}  // namespace motion::kavo
