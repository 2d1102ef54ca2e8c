// Access control: what clients may do with the scopes that they hold, and how they try to get past it.
#include "host/datalayer/client.h"

#include <gmock/gmock.h>

#include <atomic>
#include <functional>
#include <latch>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "host/datalayer/data_layer.h"
#include "scripted_node.h"

namespace motion::host::datalayer {
namespace {

using namespace comm::datalayer;
using motion::host::test::listOfScopes;
using motion::host::test::NodeCall;
using motion::host::test::ScriptedNode;
using motion::host::test::TestScope;
using testing::ElementsAre;

const std::string BACKEND{DataLayer::PROVIDER_ENDPOINT};
constexpr const char* SIGNALS = "motion/state/functions/kavo/signals";

std::vector<TestScope> motionScopes() {
  return {{"motion.view", {"motion/state/**"}, {}, {}, {}},
          {"motion.operate", {"motion/state/**"}, {"motion/state/functions/kavo/signals/*"}, {}, {}},
          {"motion.manage", {}, {}, {}, {"motion/**"}},
          {"motion.use", {}, {}, {"motion/**"}, {}}};
}

class ClientAccessTest : public testing::Test {
 protected:
  using Operation = std::function<DlResult(Client&, const std::string&)>;

  ClientAccessTest() {
    EXPECT_EQ(m_provider->registerType("scopes/motion", listOfScopes(motionScopes())), DL_OK);
    for (const char* const address :
         {SIGNALS, "motion/state/functions/kavo/signals/*", "motion/cfg", "other", "motion2/state"}) {
      EXPECT_EQ(m_provider->registerNode(address, &m_node), DL_OK);
    }
    EXPECT_EQ(m_provider->start(), DL_OK);
  }

  /// Which operations get through to the address.
  std::vector<std::string> allowed(Client& sut, const std::string& address) {
    const std::pair<const char*, Operation> operations[] = {
        {"read", [](Client& client, const std::string& at) { return readInto(&Client::readSync, client, at); }},
        {"browse", [](Client& client, const std::string& at) { return readInto(&Client::browseSync, client, at); }},
        {"metadata", [](Client& client, const std::string& at) { return readInto(&Client::metadataSync, client, at); }},
        {"write", [](Client& client, const std::string& at) { return readInto(&Client::writeSync, client, at); }},
        {"create", [](Client& client, const std::string& at) { return readInto(&Client::createSync, client, at); }},
        {"remove", [](Client& client, const std::string& at) { return client.removeSync(at); }}};
    std::vector<std::string> result;
    for (const auto& [name, operation] : operations) {
      const int calls = m_node.calls();
      if (operation(sut, address) != DL_SEC_UNAUTHORIZED) {
        result.emplace_back(name);
      } else {
        EXPECT_EQ(m_node.calls(), calls) << name << " was refused after the provider had been asked";
      }
    }
    return result;
  }
  void expectNothingAllowed(Client& sut, const std::string& address) {
    EXPECT_THAT(allowed(sut, address), ElementsAre()) << address;
  }

  ScriptedNode m_node;
  DataLayer m_dataLayer;
  std::unique_ptr<IProvider> m_provider{m_dataLayer.createProvider(BACKEND)};

 private:
  static DlResult readInto(DlResult (Client::*operation)(const std::string&, Variant*) noexcept, Client& client,
                           const std::string& address) {
    Variant data(std::string("what was there before"));
    const DlResult result = (client.*operation)(address, &data);
    if (result == DL_SEC_UNAUTHORIZED) {
      EXPECT_EQ(data.getType(), VariantType::UNKNOWN) << "a refusal tells nothing";
    }
    return result;
  }
};

const std::string SIGNAL = std::string(SIGNALS) + "/05";

TEST_F(ClientAccessTest, DefaultIsNothing) {
  for (const Client::Scopes& scopes :
       {Client::Scopes{}, {""}, {"unknown"}, {"motion"}, {"Motion.view"}, {"motion.view "}, {"motion.*"}, {"**"}}) {
    const auto sut = m_dataLayer.connect(scopes);
    for (const std::string& address :
         {SIGNAL, std::string("other"), std::string("datalayer/nodes"), std::string("datalayer/security/scopes"),
          std::string("datalayer"), std::string("nothing/there")}) {
      expectNothingAllowed(*sut, address);
    }
  }
  EXPECT_EQ(m_node.calls(), 0);
}

TEST_F(ClientAccessTest, ReaderReads) {
  const auto sut = m_dataLayer.connect({"motion.view"});
  EXPECT_THAT(allowed(*sut, SIGNAL), ElementsAre("read", "browse", "metadata"));
  EXPECT_THAT(allowed(*sut, SIGNALS), ElementsAre("read", "browse", "metadata"));
  expectNothingAllowed(*sut, "motion/cfg");
  expectNothingAllowed(*sut, "motion");
}

TEST_F(ClientAccessTest, OperatorWritesTheSignalsOnly) {
  const auto sut = m_dataLayer.connect({"motion.operate"});
  EXPECT_THAT(allowed(*sut, SIGNAL), ElementsAre("read", "browse", "metadata", "write"));
  EXPECT_THAT(allowed(*sut, SIGNALS), ElementsAre("read", "browse", "metadata"));
  EXPECT_THAT(allowed(*sut, SIGNAL + "/x"), ElementsAre("read", "browse", "metadata"));
  expectNothingAllowed(*sut, "motion/cfg");
}

TEST_F(ClientAccessTest, ManagerDoesAllBelowMotion) {
  const auto sut = m_dataLayer.connect({"motion.manage"});
  for (const std::string& address : {SIGNAL, std::string("motion/cfg"), std::string("motion")}) {
    EXPECT_THAT(allowed(*sut, address), ElementsAre("read", "browse", "metadata", "write", "create", "remove")) << address;
  }
  for (const std::string address : {"other", "motion2/state", "datalayer/nodes", "datalayer/security/scopes"}) {
    expectNothingAllowed(*sut, address);
  }
}

TEST_F(ClientAccessTest, UseIsNeitherReadingNorWriting) {
  const auto sut = m_dataLayer.connect({"motion.use"});
  expectNothingAllowed(*sut, SIGNAL);
}

TEST_F(ClientAccessTest, SeveralScopesAddUp) {
  ASSERT_EQ(m_provider->registerType("scopes/lists", listOfScopes({{"lists", {"datalayer/**"}, {}, {}, {}}})), DL_OK);
  const auto sut = m_dataLayer.connect({"lists", "motion.view", "motion.view"});
  EXPECT_THAT(allowed(*sut, "datalayer/nodes"), ElementsAre("read", "browse", "metadata"));
  EXPECT_THAT(allowed(*sut, SIGNAL), ElementsAre("read", "browse", "metadata"));
}

TEST_F(ClientAccessTest, AddressesThatOnlyLookLikeGrantedOnesAreRefused) {
  const auto sut = m_dataLayer.connect({"motion.manage"});
  const std::string tail = "/state/functions/kavo/signals/05";
  const std::vector<std::string> lookAlikes = {"Motion" + tail,
                                               "MOTION" + tail,
                                               "motion2" + tail,
                                               "xmotion" + tail,
                                               "motio" + tail,
                                               "x/motion" + tail,
                                               "/motion" + tail,
                                               "motion/" + tail,
                                               "motion" + tail + "/",
                                               "motion/./state",
                                               "motion/../other",
                                               "motion/..",
                                               "./motion/cfg",
                                               "motion/",
                                               "motion\\state",
                                               " motion" + tail,
                                               "motion " + tail,
                                               "motion%2Fcfg",
                                               std::string("motion\0/cfg", 11),
                                               std::string("motion/cfg\0", 11),
                                               std::string("motion/*"),
                                               std::string("motion/**"),
                                               std::string("**"),
                                               std::string("*"),
                                               std::string("*/cfg"),
                                               std::string(""),
                                               std::string("/"),
                                               std::string("motion/\xFF"),
                                               std::string("motion\xC0\xAF"
                                                           "cfg"),
                                               std::string("motion/\xED\xA0\x80"),
                                               std::string("m\xC3\xB6tion/cfg"),
                                               "motion/" + std::string(2'000, 'a'),
                                               "motion/" + std::string(1'017, 'a') + "b"};
  for (const std::string& address : lookAlikes) {
    expectNothingAllowed(*sut, address);
  }
  EXPECT_EQ(m_node.calls(), 0);
}

TEST_F(ClientAccessTest, RefusalIsTheSameWhetherTheAddressExistsOrNot) {
  const auto sut = m_dataLayer.connect({"motion.view"});
  for (const std::string address :
       {"other", "othe", "datalayer/nodes", "datalayer/node", "motion/cfg", "motion/cf", "scopes/motion", "..", ""}) {
    expectNothingAllowed(*sut, address);
  }
  ASSERT_EQ(m_provider->stop(), DL_OK);
  expectNothingAllowed(*sut, "other");
  Variant data;
  EXPECT_EQ(sut->readSync(SIGNAL, &data), DL_RESOURCE_UNAVAILABLE) << "who may read is told why it fails";
  EXPECT_EQ(sut->readSync("motion/state/nothing", &data), DL_INVALID_ADDRESS);
}

TEST_F(ClientAccessTest, WithdrawnScopeIsTakenFromClientsThatAreConnected) {
  const auto sut = m_dataLayer.connect({"motion.operate"});
  ASSERT_EQ(sut->readSync(SIGNAL, nullptr), DL_OK);
  ASSERT_EQ(m_provider->unregisterType("scopes/motion"), DL_OK);
  expectNothingAllowed(*sut, SIGNAL);
  ASSERT_EQ(m_provider->registerType("scopes/motion", listOfScopes({{"motion.operate", {"other"}, {}, {}, {}}})), DL_OK);
  expectNothingAllowed(*sut, SIGNAL);
  EXPECT_EQ(sut->readSync("other", nullptr), DL_OK) << "the name stands for what is registered now";
}

TEST_F(ClientAccessTest, ScopeThatComesLaterCounts) {
  const auto sut = m_dataLayer.connect({"late"});
  expectNothingAllowed(*sut, "other");
  ASSERT_EQ(m_provider->registerType("scopes/late", listOfScopes({{"late", {}, {"other"}, {}, {}}})), DL_OK);
  EXPECT_THAT(allowed(*sut, "other"), ElementsAre("read", "browse", "metadata", "write"));
}

TEST_F(ClientAccessTest, ScopeThatIsRegisteredTwiceWidensNothing) {
  const std::unique_ptr<IProvider> other(m_dataLayer.createProvider(BACKEND));
  const auto sut = m_dataLayer.connect({"motion.view"});
  ASSERT_EQ(sut->readSync(SIGNAL, nullptr), DL_OK);
  const Variant wider = listOfScopes({{"motion.view", {}, {}, {}, {"**"}}});
  EXPECT_EQ(m_provider->registerType("scopes/motion", wider), DL_ALREADY_EXISTS);
  EXPECT_EQ(m_provider->registerType("scopes/wider", wider), DL_ALREADY_EXISTS);
  EXPECT_EQ(other->registerType("scopes/motion", wider), DL_ALREADY_EXISTS);
  EXPECT_EQ(other->registerType("scopes/wider", wider), DL_ALREADY_EXISTS);
  EXPECT_EQ(other->unregisterType("scopes/motion"), DL_INVALID_ADDRESS);
  EXPECT_EQ(other->registerType("types/wider", wider), DL_OK) << "a type like any other";
  EXPECT_THAT(allowed(*sut, SIGNAL), ElementsAre("read", "browse", "metadata"));
  expectNothingAllowed(*sut, "other");
}

TEST_F(ClientAccessTest, ScopesGoWithTheirProvider) {
  auto other = std::unique_ptr<IProvider>(m_dataLayer.createProvider(BACKEND));
  ASSERT_EQ(other->registerType("scopes/other", listOfScopes({{"other", {"other"}, {}, {}, {}}})), DL_OK);
  const auto sut = m_dataLayer.connect({"other"});
  ASSERT_EQ(sut->readSync("other", nullptr), DL_OK);
  other.reset();
  expectNothingAllowed(*sut, "other");
}

TEST_F(ClientAccessTest, ScopesComeAndGoWhileClientsAsk) {
  const auto sut = m_dataLayer.connect({"motion.operate"});
  std::atomic<bool> isOver{false};
  std::latch start(3);
  std::vector<std::thread> asking;
  for (int number = 0; number < 2; ++number) {
    asking.emplace_back([&] {
      start.arrive_and_wait();
      while (!isOver) {
        const DlResult read = sut->readSync(SIGNAL, nullptr);
        EXPECT_TRUE(read == DL_OK || read == DL_SEC_UNAUTHORIZED) << read.toString();
        EXPECT_EQ(sut->removeSync(SIGNAL), DL_SEC_UNAUTHORIZED);
        EXPECT_EQ(sut->readSync("other", nullptr), DL_SEC_UNAUTHORIZED);
      }
    });
  }
  const Variant list = listOfScopes(motionScopes());
  start.arrive_and_wait();
  for (int round = 0; round < 200; ++round) {
    EXPECT_EQ(m_provider->unregisterType("scopes/motion"), DL_OK);
    EXPECT_EQ(sut->readSync(SIGNAL, nullptr), DL_SEC_UNAUTHORIZED) << "at once";
    EXPECT_EQ(m_provider->registerType("scopes/motion", list), DL_OK);
    EXPECT_EQ(sut->readSync(SIGNAL, nullptr), DL_OK) << "at once";
  }
  isOver = true;
  for (std::thread& thread : asking) {
    thread.join();
  }
}

TEST_F(ClientAccessTest, ClosedDataLayerTellsNothingElse) {
  const auto sut = m_dataLayer.connect({"motion.manage"});
  m_dataLayer.closeClients();
  for (const std::string& address : {SIGNAL, std::string("other"), std::string("..")}) {
    EXPECT_EQ(sut->readSync(address, nullptr), DL_CLIENT_NOT_CONNECTED) << address;
    EXPECT_EQ(sut->removeSync(address), DL_CLIENT_NOT_CONNECTED) << address;
  }
  EXPECT_EQ(m_node.calls(), 0);
}

}  // namespace
}  // namespace motion::host::datalayer
