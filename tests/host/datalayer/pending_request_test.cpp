// A request and its answer, whoever comes first.
#include "host/datalayer/pending_request.h"

#include <gtest/gtest.h>

#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/fake_allocation.h"

namespace motion::host::datalayer {
namespace {

using namespace comm::datalayer;
using namespace std::chrono_literals;

constexpr auto LONG = 10s;

TEST(PendingRequestTest, AnswerThatIsThereIsHandedOutAtOnce) {
  PendingRequest sut;
  const Variant data(std::string("data"));
  sut.answer(DL_OK_NO_CONTENT, &data);
  const auto answer = sut.waitFor(0ms);
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(answer->result, DL_OK_NO_CONTENT);
  ASSERT_NE(answer->data.getString(), nullptr);
  EXPECT_EQ(*answer->data.getString(), "data");
}

TEST(PendingRequestTest, AnswerNeedsNoData) {
  PendingRequest sut;
  sut.answer(DL_UNSUPPORTED, nullptr);
  const auto answer = sut.waitFor(0ms);
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(answer->result, DL_UNSUPPORTED);
  EXPECT_EQ(answer->data.getType(), VariantType::UNKNOWN);
}

TEST(PendingRequestTest, FirstAnswerCounts) {
  PendingRequest sut;
  const Variant first(true);
  const Variant second(std::string("second"));
  sut.answer(DL_FAILED, &first);
  sut.answer(DL_OK, &second);
  const auto answer = sut.waitFor(0ms);
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(answer->result, DL_FAILED);
  EXPECT_NE(answer->data.getBool(), nullptr);
}

TEST(PendingRequestTest, WaitEndsWithTheLimit) {
  PendingRequest sut;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(sut.waitFor(20ms).has_value());
  EXPECT_GE(std::chrono::steady_clock::now() - start, 20ms);
  EXPECT_FALSE(sut.waitFor(0ms).has_value());
  EXPECT_FALSE(sut.waitFor(-1ms).has_value());
}

TEST(PendingRequestTest, AnswerOfAnotherThreadEndsTheWait) {
  PendingRequest sut;
  std::latch isWaiting(1);
  std::thread provider([&] {
    isWaiting.wait();
    sut.answer(DL_OK, nullptr);
  });
  isWaiting.count_down();
  const auto answer = sut.waitFor(LONG);
  provider.join();
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(answer->result, DL_OK);
}

TEST(PendingRequestTest, OneOfManyAnswersAtOnceIsTaken) {
  PendingRequest sut;
  std::latch start(3);
  std::vector<std::thread> providers;
  for (const std::uint32_t number : {1U, 2U, 3U}) {
    providers.emplace_back([&sut, &start, number] {
      const Variant data(number);
      start.arrive_and_wait();
      sut.answer(DlResult(number), &data);
    });
  }
  const auto answer = sut.waitFor(LONG);
  for (std::thread& provider : providers) {
    provider.join();
  }
  ASSERT_TRUE(answer.has_value());
  ASSERT_NE(answer->data.getUnsigned(), nullptr);
  EXPECT_EQ(*answer->data.getUnsigned(), answer->result.code()) << "not a mixture of two";
  EXPECT_EQ(sut.waitFor(0ms)->result, answer->result);
}

TEST(PendingRequestTest, AnswerAfterTheLimitDoesNoHarm) {
  auto sut = std::make_shared<PendingRequest>();
  std::thread provider;
  {
    const auto client = sut;
    EXPECT_FALSE(client->waitFor(0ms).has_value());
  }
  provider = std::thread([kept = std::move(sut)] {
    const Variant data(std::string("nobody reads this"));
    kept->answer(DL_OK, &data);
    EXPECT_TRUE(kept->waitFor(0ms).has_value());
  });
  provider.join();
}

TEST(PendingRequestTest, AnswerIsHandedOutWithoutMemory) {
  PendingRequest sut;
  const Variant data(std::string("so long that it needs an allocation of its own"));
  sut.answer(DL_OK, &data);
  std::optional<Answer> answer;
  EXPECT_FALSE(motion::test::failsDuring(1, [&] { answer = sut.waitFor(0ms); }));
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(*answer->data.getString(), *data.getString());
  sut.answer(DL_FAILED, nullptr);
  EXPECT_EQ(sut.waitFor(0ms)->result, DL_OK) << "still the first one";
}

TEST(PendingRequestTest, AnswerThatCannotBeCopiedIsAnAnswer) {
  PendingRequest sut;
  const Variant data(std::string("so long that it needs an allocation of its own"));
  ASSERT_TRUE(motion::test::failsDuring(1, [&] { sut.answer(DL_OK, &data); }));
  const auto answer = sut.waitFor(0ms);
  ASSERT_TRUE(answer.has_value());
  EXPECT_EQ(answer->result, DL_OUT_OF_MEMORY);
  EXPECT_EQ(answer->data.getType(), VariantType::UNKNOWN);
}

}  // namespace
}  // namespace motion::host::datalayer
