// One answer to each request, whatever happens while it is made.
#include "impl/provider/node_answer.h"

#include <new>
#include <stdexcept>

#include "provider_fixture.h"

namespace motion::kavo {
namespace {

using comm::datalayer::DlResult;
using comm::datalayer::Variant;
using ResponseCallback = comm::datalayer::IProviderNode::ResponseCallback;

constexpr auto sut = [](const ResponseCallback& callback, const auto& work) { answerOnce(callback, work); };

void expectOutOfMemory(const Answers& answers) {
  EXPECT_EQ(answers.only().result.code(), 0x80010003U);
  EXPECT_FALSE(answers.only().hasData);
}

TEST(NodeAnswerTest, PassesTheAnswerOn) {
  Answers answers;
  const Variant value(std::string("text"));
  sut(answers.callback(), [&value](const ResponseCallback& answer) { answer(DlResult(0x80010005), &value); });
  EXPECT_EQ(answers.only().result.code(), 0x80010005U);
  ASSERT_NE(answers.only().data.getString(), nullptr);
  EXPECT_EQ(*answers.only().data.getString(), "text");
}

TEST(NodeAnswerTest, PassesAnAnswerWithoutDataOn) {
  Answers answers;
  sut(answers.callback(), [](const ResponseCallback& answer) { answer(comm::datalayer::DL_OK, nullptr); });
  EXPECT_EQ(answers.only().result.code(), 0U);
  EXPECT_FALSE(answers.only().hasData);
}

TEST(NodeAnswerTest, AnswersForWorkThatFailsBefore) {
  Answers answers;
  sut(answers.callback(), [](const ResponseCallback& /*answer*/) { throw std::bad_alloc(); });
  expectOutOfMemory(answers);
  answers.clear();
  sut(answers.callback(), [](const ResponseCallback& /*answer*/) { throw 5; });
  expectOutOfMemory(answers);
}

TEST(NodeAnswerTest, AnswersForWorkThatDoesNot) {
  Answers answers;
  sut(answers.callback(), [](const ResponseCallback& /*answer*/) {});
  expectOutOfMemory(answers);
}

TEST(NodeAnswerTest, DoesNotAnswerAgainForWorkThatFailsAfterwards) {
  Answers answers;
  sut(answers.callback(), [](const ResponseCallback& answer) {
    answer(comm::datalayer::DL_OK, nullptr);
    throw std::runtime_error("too late");
  });
  EXPECT_EQ(answers.only().result.code(), 0U);
}

TEST(NodeAnswerTest, CallsACallbackThatThrowsOnlyOnce) {
  int calls = 0;
  const ResponseCallback throwing = [&calls](DlResult /*result*/, const Variant* /*data*/) {
    ++calls;
    throw std::runtime_error("no");
  };
  sut(throwing, [](const ResponseCallback& answer) { answer(comm::datalayer::DL_OK, nullptr); });
  EXPECT_EQ(calls, 1) << "as an answer";
  sut(throwing, [](const ResponseCallback& /*answer*/) { throw std::bad_alloc(); });
  EXPECT_EQ(calls, 2) << "for work that failed";
}

TEST(NodeAnswerTest, LetsNothingOutWithoutACallback) {
  bool isDone = false;
  sut(ResponseCallback(), [&isDone](const ResponseCallback& answer) {
    isDone = true;
    answer(comm::datalayer::DL_OK, nullptr);
  });
  EXPECT_TRUE(isDone);
  sut(ResponseCallback(), [](const ResponseCallback& /*answer*/) { throw std::bad_alloc(); });
}

TEST(NodeAnswerTest, NeedsNoMemoryOfItsOwn) {
  Answers answers;
  const test::AllocationCount allocations;
  sut(answers.callback(), [](const ResponseCallback& answer) { answer(comm::datalayer::DL_OK, nullptr); });
  EXPECT_EQ(allocations.get(), 0);
}

}  // namespace
}  // namespace motion::kavo
