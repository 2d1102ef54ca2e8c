// Clients that may do everything: what they get from providers that answer, and from those that misbehave.
#include "host/datalayer/client.h"

#include <gmock/gmock.h>

#include <atomic>
#include <future>
#include <latch>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/datalayer/provider.h"
#include "scripted_node.h"
#include "support/fake_allocation.h"

namespace motion::host::datalayer {
namespace {

using namespace comm::datalayer;
using namespace std::chrono_literals;
using motion::host::test::NodeCall;
using motion::host::test::ScriptedNode;
using testing::ElementsAre;

constexpr auto LONG = 30s;  ///< never waited for
constexpr auto SHORT = 20ms;

class ClientTest : public testing::Test {
 protected:
  ClientTest() {
    EXPECT_EQ(m_provider->registerNode("a/*", &m_node), DL_OK);
    EXPECT_EQ(m_provider->start(), DL_OK);
    EXPECT_EQ(m_good->registerNode("good", &m_goodNode), DL_OK);
    EXPECT_EQ(m_good->start(), DL_OK);
  }

  std::unique_ptr<Client> clientWith(std::chrono::milliseconds limit) const {
    return std::make_unique<Client>(m_hub, std::nullopt, limit);
  }
  /// From now on, once no callback is in the script before.
  void play(ScriptedNode::Script script) {
    m_nodes->waitUntilIdle();
    m_script = std::move(script);
  }
  void expectOthersUnharmed() {
    Variant data;
    EXPECT_EQ(m_sut->readSync("good", &data), DL_OK);
    ASSERT_NE(data.getString(), nullptr);
    EXPECT_EQ(*data.getString(), "read good");
  }

  ScriptedNode::Script m_script = ScriptedNode::sayWhatWasAsked;
  ScriptedNode m_node{[this](const NodeCall& call) { m_script(call); }};
  ScriptedNode m_goodNode;
  std::shared_ptr<NodeRegister> m_nodes = std::make_shared<NodeRegister>();
  std::shared_ptr<ClientHub> m_hub = std::make_shared<ClientHub>(m_nodes);
  std::unique_ptr<Provider> m_provider = std::make_unique<Provider>(m_nodes);
  std::unique_ptr<Provider> m_good = std::make_unique<Provider>(m_nodes);
  std::unique_ptr<Client> m_sut = clientWith(LONG);
};

TEST_F(ClientTest, EachOperationAsksTheNodeForTheAddress) {
  auto& sut = *m_sut;
  Variant data;
  EXPECT_EQ(sut.readSync("a/b", &data), DL_OK);
  EXPECT_EQ(*data.getString(), "read a/b");
  EXPECT_EQ(sut.writeSync("a/b", &data), DL_OK);
  EXPECT_EQ(*data.getString(), "write a/b");
  EXPECT_EQ(sut.createSync("a/c", &data), DL_OK);
  EXPECT_EQ(*data.getString(), "create a/c");
  EXPECT_EQ(sut.removeSync("a/b"), DL_OK);
  EXPECT_EQ(sut.metadataSync("a/b", &data), DL_OK);
  ASSERT_FALSE(data.getFlatBuffer().empty());
  EXPECT_EQ(GetMetadata(data.getFlatBuffer().data())->description()->str(), "metadata a/b");
  EXPECT_EQ(sut.browseSync("a", &data), DL_OK);
  ASSERT_NE(data.getStrings(), nullptr);
  EXPECT_THAT(*data.getStrings(), ElementsAre("listed"));
  EXPECT_EQ(m_node.calls(), 6);
}

TEST_F(ClientTest, ArgumentArrivesAsACopy) {
  const Variant* arrived = nullptr;
  play([&](const NodeCall& call) {
    arrived = call.data;
    ASSERT_NE(call.data, nullptr);
    call.answer(DL_OK, call.data);
  });
  Variant data(true);
  EXPECT_EQ(m_sut->writeSync("a/b", &data), DL_OK);
  EXPECT_NE(arrived, &data);
  ASSERT_NE(data.getBool(), nullptr);
  EXPECT_TRUE(*data.getBool());
}

TEST_F(ClientTest, NobodyNeedsDataToAskOrToAnswer) {
  play([](const NodeCall& call) { call.answer(DL_OK_NO_CONTENT, nullptr); });
  for (const auto operation : {&Client::readSync, &Client::writeSync, &Client::createSync}) {
    EXPECT_EQ((m_sut.get()->*operation)("a/b", nullptr), DL_OK_NO_CONTENT);
    Variant data(true);
    EXPECT_EQ((m_sut.get()->*operation)("a/b", &data), DL_OK_NO_CONTENT);
    EXPECT_EQ(data.getType(), VariantType::UNKNOWN);
  }
  EXPECT_EQ(m_sut->metadataSync("good", nullptr), DL_OK);
  EXPECT_EQ(m_sut->browseSync("good", nullptr), DL_OK);
}

TEST_F(ClientTest, FailureBringsTheErrorRecordOfTheProvider) {
  play([](const NodeCall& call) {
    const Variant record(std::string("why"));
    call.answer(DL_LIMIT_MAX, &record);
  });
  Variant data(true);
  EXPECT_EQ(m_sut->writeSync("a/b", &data), DL_LIMIT_MAX);
  ASSERT_NE(data.getString(), nullptr);
  EXPECT_EQ(*data.getString(), "why");
  EXPECT_EQ(m_sut->metadataSync("a/b", &data), DL_LIMIT_MAX);
  EXPECT_EQ(m_sut->browseSync("a", &data), DL_LIMIT_MAX);
  EXPECT_EQ(*data.getString(), "why");
}

TEST_F(ClientTest, NobodyAnswersForWhatIsNotRegistered) {
  auto& sut = *m_sut;
  for (const std::string address : {"a", "b", "a/b/c", "", "a/", "a//b", "a/*", "a/..", "\xFF", "A/b"}) {
    Variant data(true);
    EXPECT_EQ(sut.readSync(address, &data), DL_INVALID_ADDRESS) << address;
    EXPECT_EQ(data.getType(), VariantType::UNKNOWN) << address;
    EXPECT_EQ(sut.writeSync(address, &data), DL_INVALID_ADDRESS) << address;
    EXPECT_EQ(sut.createSync(address, &data), DL_INVALID_ADDRESS) << address;
    EXPECT_EQ(sut.removeSync(address), DL_INVALID_ADDRESS) << address;
  }
  Variant data;
  EXPECT_EQ(sut.browseSync("b", &data), DL_INVALID_ADDRESS);
  EXPECT_EQ(sut.metadataSync("b", &data), DL_INVALID_ADDRESS);
  EXPECT_EQ(m_node.calls(), 0);
}

TEST_F(ClientTest, FoldersShowWhatIsRegisteredBelowThem) {
  auto& sut = *m_sut;
  ScriptedNode other;
  ASSERT_EQ(m_good->registerNode("a/z/deep", &other), DL_OK);
  Variant data;
  EXPECT_EQ(sut.browseSync("a", &data), DL_OK);
  EXPECT_THAT(*data.getStrings(), ElementsAre("listed", "z"));
  EXPECT_EQ(sut.browseSync("a/z", &data), DL_OK);
  EXPECT_THAT(*data.getStrings(), ElementsAre("deep"));
  EXPECT_EQ(sut.browseSync("a/z/deep", &data), DL_OK);
  EXPECT_TRUE(data.getStrings()->empty());
  EXPECT_EQ(sut.browseSync("datalayer", &data), DL_OK);
  EXPECT_THAT(*data.getStrings(), ElementsAre("nodes", "security"));
  play([](const NodeCall& call) {
    const Variant names(Variant::Strings{"z", "b", "b"});
    call.answer(DL_OK, &names);
  });
  EXPECT_EQ(sut.browseSync("a", &data), DL_OK);
  EXPECT_THAT(*data.getStrings(), ElementsAre("b", "z")) << "each once, in order";
}

TEST_F(ClientTest, GarbageIsNotHandedOn) {
  auto& sut = *m_sut;
  const std::vector<Variant> noLists = {Variant(),
                                        Variant(true),
                                        Variant(Variant::Strings{"ok", ""}),
                                        Variant(Variant::Strings{"a/b"}),
                                        Variant(Variant::Strings{".."}),
                                        Variant(Variant::Strings{"*"}),
                                        Variant(Variant::Strings{"\xFF"})};
  for (const Variant& garbage : noLists) {
    play([&](const NodeCall& call) { call.answer(DL_OK, &garbage); });
    Variant data(true);
    EXPECT_EQ(sut.browseSync("a", &data), DL_TYPE_MISMATCH);
    EXPECT_EQ(data.getType(), VariantType::UNKNOWN);
  }
  const std::vector<std::uint8_t> bytes(64, 0xFF);
  for (const Variant& garbage :
       {Variant(), Variant(std::string("metadata")), Variant::fromFlatBuffer(bytes), Variant::fromFlatBuffer({})}) {
    play([&](const NodeCall& call) { call.answer(DL_OK, &garbage); });
    Variant data(true);
    EXPECT_EQ(sut.metadataSync("a/b", &data), DL_TYPE_MISMATCH);
    EXPECT_EQ(data.getType(), VariantType::UNKNOWN);
  }
  expectOthersUnharmed();
}

TEST_F(ClientTest, SecondAnswerIsIgnored) {
  play([](const NodeCall& call) {
    const Variant first(std::string("first"));
    const Variant second(std::string("second"));
    call.answer(DL_OK, &first);
    call.answer(DL_FAILED, &second);
  });
  Variant data;
  EXPECT_EQ(m_sut->readSync("a/b", &data), DL_OK);
  EXPECT_EQ(*data.getString(), "first");
  expectOthersUnharmed();
}

TEST_F(ClientTest, NobodyWaitsForANodeThatForgetsToAnswer) {
  play([](const NodeCall&) {});
  Variant data(true);
  EXPECT_EQ(m_sut->readSync("a/b", &data), DL_FAILED);
  EXPECT_EQ(data.getType(), VariantType::UNKNOWN);
  EXPECT_EQ(m_sut->browseSync("a", &data), DL_FAILED);
  expectOthersUnharmed();
}

TEST_F(ClientTest, NobodyWaitsForANodeThatThrows) {
  play([](const NodeCall&) { throw std::runtime_error("no right to"); });
  EXPECT_EQ(m_sut->readSync("a/b", nullptr), DL_FAILED);
  play([](const NodeCall& call) {
    call.answer(DL_OK, nullptr);
    throw std::runtime_error("too late");
  });
  EXPECT_EQ(m_sut->readSync("a/b", nullptr), DL_OK);
  expectOthersUnharmed();
}

TEST_F(ClientTest, AnswerMayComeLaterFromAnyThread) {
  std::promise<IProviderNode::ResponseCallback> kept;
  play([&](const NodeCall& call) { kept.set_value(call.answer); });
  std::thread answering([&] {
    const auto answer = kept.get_future().get();
    const Variant value(5.0);
    answer(DL_OK, &value);
  });
  Variant data;
  EXPECT_EQ(m_sut->readSync("a/b", &data), DL_OK);
  answering.join();
  m_nodes->waitUntilIdle();
  ASSERT_NE(data.getDouble(), nullptr);
  EXPECT_EQ(*data.getDouble(), 5.0);
}

TEST_F(ClientTest, AnswerAfterTheClientHasGoneDoesNoHarm) {
  std::promise<IProviderNode::ResponseCallback> kept;
  play([&](const NodeCall& call) { kept.set_value(call.answer); });
  auto sut = clientWith(SHORT);
  Variant data(true);
  while (m_node.calls() == 0) {  // what is given up too early does not begin
    EXPECT_EQ(sut->readSync("a/b", &data), DL_TIMEOUT);
  }
  EXPECT_EQ(data.getType(), VariantType::UNKNOWN);
  sut.reset();
  auto answer = kept.get_future().get();
  m_provider.reset();
  const Variant value(std::string("nobody reads this"));
  answer(DL_OK, &value);
  answer(DL_FAILED, nullptr);
  answer = nullptr;
  EXPECT_EQ(data.getType(), VariantType::UNKNOWN);
  expectOthersUnharmed();
}

TEST_F(ClientTest, ProviderThatHangsCostsItsOwnClientsOnly) {
  std::latch isOver(1);
  play([&](const NodeCall& call) {
    isOver.wait();
    call.answer(DL_OK, nullptr);
  });
  const auto sut = clientWith(SHORT);
  for (std::size_t i = 0; i < ProviderCore::THREADS + 1; ++i) {
    EXPECT_EQ(sut->readSync("a/b", nullptr), DL_TIMEOUT);
  }
  expectOthersUnharmed();
  isOver.count_down();
  m_nodes->waitUntilIdle();
  EXPECT_EQ(m_sut->readSync("a/b", nullptr), DL_OK);
}

TEST_F(ClientTest, RequestThatWasGivenUpIsNotCarriedOutLater) {
  std::latch isOver(1);
  std::atomic<int> writes{0};
  play([&](const NodeCall& call) {
    writes += call.operation == "write" ? 1 : 0;
    isOver.wait();
    call.answer(DL_OK, nullptr);
  });
  const auto sut = clientWith(SHORT);
  while (m_node.calls() < static_cast<int>(ProviderCore::THREADS)) {  // until every thread is busy
    EXPECT_EQ(sut->readSync("a/b", nullptr), DL_TIMEOUT);
  }
  Variant data(true);
  EXPECT_EQ(sut->writeSync("a/b", &data), DL_TIMEOUT);
  isOver.count_down();
  m_nodes->waitUntilIdle();
  EXPECT_EQ(writes, 0);
  EXPECT_EQ(clientWith(LONG)->writeSync("a/b", &data), DL_OK);
  EXPECT_EQ(writes, 1);
}

TEST_F(ClientTest, LimitIsAsLongAsTheClockCanTell) {
  EXPECT_EQ(clientWith(std::chrono::milliseconds::max())->readSync("a/b", nullptr), DL_OK);
  EXPECT_EQ(clientWith(std::chrono::milliseconds(-1))->readSync("b", nullptr), DL_INVALID_ADDRESS);
}

TEST_F(ClientTest, LimitBelowZeroWaitsForNothing) {
  std::latch isOver(1);
  play([&](const NodeCall& call) {
    isOver.wait();
    call.answer(DL_OK, nullptr);
  });
  // The smallest one there is would not fit into the clock's own unit.
  EXPECT_EQ(clientWith(std::chrono::milliseconds::min())->readSync("a/b", nullptr), DL_TIMEOUT);
  isOver.count_down();
  m_nodes->waitUntilIdle();
}

TEST_F(ClientTest, ProviderThatDoesNotRunIsNotAsked) {
  ASSERT_EQ(m_provider->stop(), DL_OK);
  EXPECT_EQ(m_sut->readSync("a/b", nullptr), DL_RESOURCE_UNAVAILABLE);
  EXPECT_EQ(m_sut->browseSync("a", nullptr), DL_RESOURCE_UNAVAILABLE);
  ASSERT_EQ(m_provider->start(), DL_OK);
  EXPECT_EQ(m_sut->readSync("a/b", nullptr), DL_OK);
}

TEST_F(ClientTest, ProviderThatVanishesLeavesNobodyWaiting) {
  std::latch isOccupied(ProviderCore::THREADS);
  std::vector<std::future<DlResult>> results;
  play([&](const NodeCall&) {
    isOccupied.count_down();
    while (m_provider->isStarted()) {  // one request is left waiting when the provider stops
      std::this_thread::yield();
    }
  });
  for (std::size_t i = 0; i < ProviderCore::THREADS; ++i) {
    results.push_back(std::async(std::launch::async, [this] { return m_sut->readSync("a/b", nullptr); }));
  }
  isOccupied.wait();
  results.push_back(std::async(std::launch::async, [this] { return m_sut->writeSync("a/b", nullptr); }));
  EXPECT_EQ(m_provider->stop(), DL_OK);
  for (std::future<DlResult>& result : results) {
    const DlResult answer = result.get();
    EXPECT_TRUE(answer == DL_FAILED || answer == DL_RESOURCE_UNAVAILABLE) << answer.toString();
  }
  m_provider.reset();
  EXPECT_EQ(m_sut->readSync("a/b", nullptr), DL_INVALID_ADDRESS);
  expectOthersUnharmed();
}

TEST_F(ClientTest, ManyClientsAskAtOnce) {
  constexpr int CLIENTS = 4;
  constexpr int ROUNDS = 100;
  std::latch start(CLIENTS);
  std::vector<std::thread> threads;
  for (int number = 0; number < CLIENTS; ++number) {
    threads.emplace_back([&, number] {
      Client& sut = *m_sut;  // one for all of them
      const std::string address = "a/" + std::to_string(number);
      start.arrive_and_wait();
      for (int round = 0; round < ROUNDS; ++round) {
        Variant data;
        EXPECT_EQ(sut.readSync(address, &data), DL_OK);
        ASSERT_NE(data.getString(), nullptr);
        EXPECT_EQ(*data.getString(), "read " + address);
      }
    });
  }
  for (std::thread& thread : threads) {
    thread.join();
  }
  EXPECT_EQ(m_node.calls(), CLIENTS * ROUNDS);
}

TEST_F(ClientTest, NodeMayAskAnotherProvider) {
  play([&](const NodeCall& call) {
    Variant data;
    const DlResult result = m_sut->readSync("good", &data);
    call.answer(result, &data);
  });
  Variant data;
  EXPECT_EQ(m_sut->readSync("a/b", &data), DL_OK);
  EXPECT_EQ(*data.getString(), "read good");
}

TEST_F(ClientTest, FailedAllocationIsAResult) {
  const std::string address = "a/name/that/is/so/long/that/it/needs/an/allocation";
  ASSERT_EQ(m_provider->registerNode(address, &m_node), DL_OK);
  int number = 1;
  for (bool hasFailed = true; hasFailed; ++number) {
    Variant data(true);
    DlResult result;
    hasFailed = motion::test::failsDuring(number, [&] { result = m_sut->writeSync(address, &data); });
    ASSERT_EQ(result, hasFailed ? DL_OUT_OF_MEMORY : DL_OK) << number;
    ASSERT_EQ(data.getType(), hasFailed ? VariantType::UNKNOWN : VariantType::STRING) << number;
  }
  EXPECT_GT(number, 4);
  expectOthersUnharmed();
}

}  // namespace
}  // namespace motion::host::datalayer
