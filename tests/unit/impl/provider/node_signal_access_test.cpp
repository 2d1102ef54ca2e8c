// Reading and writing signals through the signal node, and each way in which that is refused.
#include "impl/provider/node_signal.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "node_signal_fixture.h"

namespace motion::kavo {
namespace {

using comm::datalayer::Variant;
using core::FctResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t INVALID_ADDRESS = 0x80010001;
constexpr std::uint32_t TYPE_MISMATCH = 0x80010006;
constexpr std::uint32_t INVALID_HANDLE = 0x8001000A;
constexpr std::uint32_t BAD_REQUEST = 0x0C570101;
constexpr std::uint32_t INTERNAL = 0x0C560270;

/// Endings of addresses that name no signal.
const std::vector<std::string> NO_NUMBERS = {"abc", "", "5x", "-1", "4294967296"};

/// Negative results of the host's functions and the detail codes that they lead to.
const std::vector<std::pair<std::uint32_t, std::uint32_t>> REFUSALS = {
    {0xF010000C, BAD_REQUEST}, {0xF0100001, INTERNAL}, {0xF010000E, INTERNAL}, {0xF010000D, INTERNAL},
    {0xF011000C, INTERNAL},    {0x80000000, INTERNAL}, {0xFFFFFFFF, INTERNAL}};

TEST_F(NodeSignalTest, AnswersWithTheSignal) {
  for (const bool value : {true, false}) {
    s_value = value;
    Answers answers;
    read(answers, "07");
    const Answer answer = answers.only();
    EXPECT_EQ(answer.result.code(), 0U);
    EXPECT_EQ(static_cast<std::uint32_t>(answer.data.getType()), 1U);
    ASSERT_NE(answer.data.getBool(), nullptr);
    EXPECT_EQ(*answer.data.getBool(), value);
  }
  EXPECT_THAT(s_calls, ElementsAre("getSignal(null, 7)", "getSignal(null, 7)"));
}

TEST_F(NodeSignalTest, LooksAtNoDataToRead) {
  const Variant data(std::string("text"));
  Answers answers;
  m_sut.onRead(FOLDER_PREFIX + "99", &data, answers.callback());
  EXPECT_EQ(answers.only().result.code(), 0U);
  EXPECT_THAT(s_calls, ElementsAre("getSignal(null, 99)"));
}

TEST_F(NodeSignalTest, RefusesToReadAnAddressWithoutANumber) {
  for (const auto& ending : NO_NUMBERS) {
    Answers answers;
    read(answers, ending);
    expectError(answers, INVALID_ADDRESS, BAD_REQUEST,
                "Can not get signalId: motion/state/functions/kavo/signals/" + ending + " ,DLResult: DL_INVALID_ADDRESS");
  }
  Answers answers;
  m_sut.onRead("%s%n", nullptr, answers.callback());
  expectError(answers, INVALID_ADDRESS, BAD_REQUEST, "Can not get signalId: %s%n ,DLResult: DL_INVALID_ADDRESS");
  EXPECT_THAT(s_calls, IsEmpty());
}

TEST_F(NodeSignalTest, LooksAtTheAddressBeforeItLooksForTheFunction) {
  m_host.sysIf.getSignal = nullptr;
  m_host.sysIf.setSignal = nullptr;
  Answers answers;
  read(answers, "abc");
  expectError(answers, INVALID_ADDRESS, BAD_REQUEST,
              "Can not get signalId: motion/state/functions/kavo/signals/abc ,DLResult: DL_INVALID_ADDRESS");
  answers.clear();
  write(answers, "abc", Variant(true));
  expectError(answers, INVALID_ADDRESS, BAD_REQUEST,
              "Can not get signalId: motion/state/functions/kavo/signals/abc ,DLResult: DL_INVALID_ADDRESS");
}

TEST_F(NodeSignalTest, RefusesToReadWithoutTheFunction) {
  m_host.sysIf.getSignal = nullptr;
  Answers answers;
  read(answers, "05");
  expectError(answers, INVALID_HANDLE, INTERNAL, "motionSysIF.getSignal==nullptr ,DLResult: DL_INVALID_HANDLE");
  EXPECT_THAT(s_calls, IsEmpty());
}

TEST_F(NodeSignalTest, AnswersThatASignalCannotBeRead) {
  for (const auto& [result, detail] : REFUSALS) {
    s_result = static_cast<FctResult>(result);
    Answers answers;
    read(answers, "100");
    expectError(answers, INVALID_HANDLE, detail,
                "Can not get signalId: motion/state/functions/kavo/signals/100 ,DLResult: DL_INVALID_HANDLE");
  }
  EXPECT_EQ(s_calls.size(), REFUSALS.size());
  EXPECT_EQ(s_calls.front(), "getSignal(null, 100)") << "the function looks whether there is such a signal";
}

TEST_F(NodeSignalTest, TakesEveryResultThatIsNotNegativeForASuccess) {
  for (const std::uint32_t result : {0x00000000U, 0x00100001U, 0x7FFFFFFFU}) {
    s_result = static_cast<FctResult>(result);
    s_value = true;
    Answers answers;
    read(answers, "05");
    EXPECT_EQ(answers.only().result.code(), 0U);
    ASSERT_NE(answers.only().data.getBool(), nullptr);
    EXPECT_TRUE(*answers.only().data.getBool());
    answers.clear();
    write(answers, "05", Variant(true));
    EXPECT_EQ(answers.only().result.code(), 0U);
  }
}

TEST_F(NodeSignalTest, SetsTheSignalForTrueAndResetsItForFalse) {
  Answers answers;
  write(answers, "05", Variant(true));
  EXPECT_EQ(answers.only().result.code(), 0U);
  EXPECT_FALSE(answers.only().hasData);
  answers.clear();
  write(answers, "6", Variant(false));
  EXPECT_EQ(answers.only().result.code(), 0U);
  EXPECT_FALSE(answers.only().hasData);
  EXPECT_THAT(s_calls, ElementsAre("setSignal(null, 5)", "resetSignal(null, 6)"));
}

TEST_F(NodeSignalTest, RefusesToWriteNothing) {
  Answers answers;
  m_sut.onWrite(FOLDER_PREFIX + "05", nullptr, answers.callback());
  expectError(answers, INVALID_HANDLE, BAD_REQUEST, "Invalid data ,DLResult: DL_INVALID_HANDLE");
  EXPECT_THAT(s_calls, IsEmpty());
}

TEST_F(NodeSignalTest, RefusesToWriteAnythingButABoolean) {
  const std::vector<std::uint8_t> bytes = {1};
  for (const auto& data :
       {Variant(), Variant(std::int32_t{1}), Variant(std::uint32_t{1}), Variant(1.0), Variant(std::string("true")),
        Variant(Variant::Strings{"true"}), Variant::fromFlatBuffer(bytes)}) {
    Answers answers;
    write(answers, "05", data);
    expectError(answers, TYPE_MISMATCH, BAD_REQUEST, "no data provided, expected boolean ,DLResult: DL_TYPE_MISMATCH");
  }
  EXPECT_THAT(s_calls, IsEmpty());
}

TEST_F(NodeSignalTest, LooksAtTheDataBeforeItLooksAtTheAddress) {
  Answers answers;
  m_sut.onWrite("abc", nullptr, answers.callback());
  expectError(answers, INVALID_HANDLE, BAD_REQUEST, "Invalid data ,DLResult: DL_INVALID_HANDLE");
  answers.clear();
  write(answers, "abc", Variant(std::int32_t{1}));
  expectError(answers, TYPE_MISMATCH, BAD_REQUEST, "no data provided, expected boolean ,DLResult: DL_TYPE_MISMATCH");
}

TEST_F(NodeSignalTest, RefusesToWriteToAnAddressWithoutANumber) {
  for (const bool value : {true, false}) {
    for (const auto& ending : NO_NUMBERS) {
      Answers answers;
      write(answers, ending, Variant(value));
      expectError(answers, INVALID_ADDRESS, BAD_REQUEST,
                  "Can not get signalId: motion/state/functions/kavo/signals/" + ending + " ,DLResult: DL_INVALID_ADDRESS");
    }
  }
  EXPECT_THAT(s_calls, IsEmpty());
}

TEST_F(NodeSignalTest, RefusesToSetWithoutTheFunction) {
  m_host.sysIf.setSignal = nullptr;
  Answers answers;
  write(answers, "05", Variant(true));
  expectError(answers, INVALID_HANDLE, INTERNAL, "motionSysIF.setSignal==nullptr ,DLResult: DL_INVALID_HANDLE");
  EXPECT_THAT(s_calls, IsEmpty());
  answers.clear();
  write(answers, "05", Variant(false));
  EXPECT_EQ(answers.only().result.code(), 0U) << "a reset does not need it";
}

TEST_F(NodeSignalTest, RefusesToResetWithoutTheFunction) {
  m_host.sysIf.resetSignal = nullptr;
  Answers answers;
  write(answers, "05", Variant(false));
  expectError(answers, INVALID_HANDLE, INTERNAL, "motionSysIF.resetSignal==nullptr ,DLResult: DL_INVALID_HANDLE");
  EXPECT_THAT(s_calls, IsEmpty());
  answers.clear();
  write(answers, "05", Variant(true));
  EXPECT_EQ(answers.only().result.code(), 0U) << "a set does not need it";
}

TEST_F(NodeSignalTest, AnswersThatASignalCannotBeSetOrReset) {
  for (const auto& [result, detail] : REFUSALS) {
    s_result = static_cast<FctResult>(result);
    Answers answers;
    write(answers, "100", Variant(true));
    expectError(answers, INVALID_HANDLE, detail,
                "Can not set signalId: motion/state/functions/kavo/signals/100 ,DLResult: DL_INVALID_HANDLE");
    answers.clear();
    write(answers, "100", Variant(false));
    expectError(answers, INVALID_HANDLE, detail,
                "Can not reset signalId: motion/state/functions/kavo/signals/100 ,DLResult: DL_INVALID_HANDLE");
  }
  ASSERT_EQ(s_calls.size(), 2 * REFUSALS.size());
  EXPECT_EQ(s_calls[0], "setSignal(null, 100)");
  EXPECT_EQ(s_calls[1], "resetSignal(null, 100)");
}

TEST_F(NodeSignalTest, LooksForTheFunctionsAtEachCall) {
  const core::MotionSysIfT published = m_host.sysIf;
  m_host.sysIf = {};
  Answers answers;
  read(answers, "05");
  EXPECT_EQ(answers.only().result.code(), INVALID_HANDLE);
  m_host.sysIf = published;
  answers.clear();
  read(answers, "05");
  EXPECT_EQ(answers.only().result.code(), 0U);
}

TEST_F(NodeSignalTest, CutsALongAddressInTheText) {
  Answers answers;
  read(answers, std::string(300, '9'));
  expectError(answers, INVALID_ADDRESS, BAD_REQUEST,
              ("Can not get signalId: " + FOLDER_PREFIX + std::string(300, '9')).substr(0, 255));
}

TEST_F(NodeSignalTest, AnswersEveryRequestOnceWhateverCannotBeAllocated) {
  const std::string good = FOLDER_PREFIX + "05";
  const std::string bad = FOLDER_PREFIX + "abc";
  const Variant value(true);
  const Variant number(std::int32_t{1});
  Answers answers;
  const std::vector<std::pair<std::uint32_t, std::function<void()>>> requests = {
      {0, [&] { m_sut.onRead(good, nullptr, answers.callback()); }},
      {INVALID_ADDRESS, [&] { m_sut.onRead(bad, nullptr, answers.callback()); }},
      {0, [&] { m_sut.onWrite(good, &value, answers.callback()); }},
      {INVALID_ADDRESS, [&] { m_sut.onWrite(bad, &value, answers.callback()); }},
      {INVALID_HANDLE, [&] { m_sut.onWrite(good, nullptr, answers.callback()); }},
      {TYPE_MISMATCH, [&] { m_sut.onWrite(good, &number, answers.callback()); }}};
  for (const auto& [result, request] : requests) {
    const int failures = withEachAllocationFailing(request, [&, expected = result](bool hasFailed) {
      EXPECT_EQ(answers.only().result.code(), hasFailed ? 0x80010003U : expected);
      answers.clear();
    });
    EXPECT_EQ(failures > 0, result != 0) << "only an error takes memory";
  }
}

}  // namespace
}  // namespace motion::kavo
