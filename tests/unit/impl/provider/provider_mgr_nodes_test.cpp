// How the manager waits until the data layer lists its nodes.
#include <algorithm>
#include <chrono>
#include <csignal>
#include <memory>
#include <optional>

#include <sys/time.h>

#include "impl/provider/provider_mgr.h"
#include "provider_fixture.h"

namespace motion::kavo {
namespace {

using comm::datalayer::Variant;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

const std::string MADE = "dataLayer.createClient(inproc:///tmp/datalayer/frontend)";
const std::string READ = "client.readSync(datalayer/nodes)";
const std::string SLEPT = "sleep(50)";
const std::string DELETED = "client.destroyed()";

class ProviderMgrNodesTest : public ProviderTest {
 protected:
  ProviderMgrNodesTest() { list({}); }

  /// From the n-th question on (from 1) all nodes are listed.
  [[nodiscard]] std::shared_ptr<const void> listAllFrom(int nth) {
    return m_host.calls.onCall("client.readSync", [this, nth] {
      if (m_host.calls.count("client.readSync") == nth) {
        listAllNodes();
      }
    });
  }
  /// Asks once; nothing when the data layer does not answer.
  [[nodiscard]] std::optional<bool> check(bool before) {
    const std::unique_ptr<comm::datalayer::IClient> client(m_host.dataLayer.createClient("any"));
    bool allFound = before;
    if (m_sut->checkForAllNodes(client.get(), allFound)) {
      return allFound;
    }
    EXPECT_EQ(allFound, before) << "without an answer it is not written";
    return std::nullopt;
  }

  std::unique_ptr<ProviderMgr> m_sut = makeManager();
};

TEST_F(ProviderMgrNodesTest, FindsAllNodesWhateverElseIsListed) {
  list({FOLDER, EVERY_SIGNAL});
  EXPECT_EQ(check(false), true);
  list({EVERY_SIGNAL, FOLDER});
  EXPECT_EQ(check(false), true) << "in any order";
  list({"another", FOLDER, FOLDER + "/05", EVERY_SIGNAL, FOLDER, ""});
  EXPECT_EQ(check(false), true) << "among others";
}

TEST_F(ProviderMgrNodesTest, MissesANode) {
  list({});
  EXPECT_EQ(check(true), false);
  list({FOLDER});
  EXPECT_EQ(check(true), false);
  list({EVERY_SIGNAL});
  EXPECT_EQ(check(true), false);
  list({FOLDER, FOLDER + "/00", FOLDER + "/99", FOLDER + "/**"});
  EXPECT_EQ(check(true), false) << "the wildcard is not filled in";
  list({FOLDER + "/", EVERY_SIGNAL});
  EXPECT_EQ(check(true), false);
  list({"Motion/state/functions/kavo/signals", EVERY_SIGNAL});
  EXPECT_EQ(check(true), false) << "case matters";
  list({FOLDER, " " + EVERY_SIGNAL});
  EXPECT_EQ(check(true), false);
}

TEST_F(ProviderMgrNodesTest, LeavesTheResultAloneWhenNothingCanBeRead) {
  listAllNodes();
  m_host.calls.fail("client.readSync", 0x8001000F);
  EXPECT_EQ(check(true), std::nullopt);
  EXPECT_EQ(check(false), std::nullopt);
  m_host.calls.failNothing();
  m_host.calls.fail("client.readSync", test::FakeCalls::THROW);
  EXPECT_EQ(check(true), std::nullopt);
  EXPECT_EQ(check(false), std::nullopt);
  m_host.calls.failNothing();
  EXPECT_EQ(check(false), true);
}

TEST_F(ProviderMgrNodesTest, LeavesTheResultAloneWhenTheAnswerIsNoListOfTexts) {
  const std::vector<std::uint8_t> bytes = {1, 2};
  for (const auto& answer : {Variant(), Variant(true), Variant(std::int32_t{1}), Variant(std::uint32_t{24}), Variant(1.0),
                             Variant(FOLDER), Variant::fromFlatBuffer(bytes)}) {
    m_host.dataLayer.m_clientValues[NODE_LIST] = answer;
    EXPECT_EQ(check(true), std::nullopt) << static_cast<std::uint32_t>(answer.getType());
    EXPECT_EQ(check(false), std::nullopt) << static_cast<std::uint32_t>(answer.getType());
  }
}

TEST_F(ProviderMgrNodesTest, LeavesTheResultAloneWithoutMemory) {
  listAllNodes();
  const std::unique_ptr<comm::datalayer::IClient> client(m_host.dataLayer.createClient("any"));
  bool isAnswered = false;
  bool allFound = false;
  const int failures = withEachAllocationFailing(
      [&] {
        allFound = false;
        isAnswered = m_sut->checkForAllNodes(client.get(), allFound);
      },
      [&](bool hasFailed) {
        EXPECT_EQ(isAnswered, !hasFailed);
        EXPECT_EQ(allFound, isAnswered);
      });
  EXPECT_GT(failures, 0);
}

TEST_F(ProviderMgrNodesTest, NeedsAClient) {
  m_host.calls.fail("dataLayer.createClient", 0x80000001);
  EXPECT_FALSE(m_sut->waitForAllNodes(10'000));
  EXPECT_THAT(m_host.calls.all(), ElementsAre(MADE));
  m_host.calls.failNothing();
  m_host.calls.fail("dataLayer.createClient", test::FakeCalls::THROW);
  EXPECT_FALSE(m_sut->waitForAllNodes(10'000));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(ProviderMgrNodesTest, ReadsNothingWithinLessThanOneInterval) {
  listAllNodes();
  for (const std::uint32_t timeout : {0U, 1U, 49U}) {
    forget();
    EXPECT_FALSE(m_sut->waitForAllNodes(timeout)) << timeout;
    EXPECT_THAT(m_host.calls.all(), ElementsAre(MADE, DELETED)) << timeout;
  }
}

TEST_F(ProviderMgrNodesTest, LooksOnceInEachFullInterval) {
  for (const std::uint32_t timeout : {50U, 99U}) {
    forget();
    EXPECT_FALSE(m_sut->waitForAllNodes(timeout)) << timeout;
    EXPECT_THAT(m_host.calls.all(), ElementsAre(MADE, READ, SLEPT, DELETED)) << timeout;
  }
  forget();
  EXPECT_FALSE(m_sut->waitForAllNodes(100));
  EXPECT_THAT(m_host.calls.all(), ElementsAre(MADE, READ, SLEPT, READ, SLEPT, DELETED));
}

TEST_F(ProviderMgrNodesTest, StopsWhenAllAreFound) {
  listAllNodes();
  EXPECT_TRUE(m_sut->waitForAllNodes(50));
  EXPECT_THAT(m_host.calls.all(), ElementsAre(MADE, READ, DELETED));
  list({FOLDER});
  forget();
  const auto listing = listAllFrom(3);
  EXPECT_TRUE(m_sut->waitForAllNodes(10'000));
  EXPECT_THAT(m_host.calls.all(), ElementsAre(MADE, READ, SLEPT, READ, SLEPT, READ, DELETED));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(ProviderMgrNodesTest, DoesNotLookAgainAfterTheLastSleep) {
  const auto listing = listAllFrom(3);
  EXPECT_FALSE(m_sut->waitForAllNodes(100));
  EXPECT_EQ(m_host.calls.count("client.readSync"), 2);
}

TEST_F(ProviderMgrNodesTest, StopsWhenTheListCannotBeRead) {
  m_host.calls.fail("client.readSync", 0x8001000F, 3);
  EXPECT_FALSE(m_sut->waitForAllNodes(10'000));
  EXPECT_THAT(m_host.calls.all(), ElementsAre(MADE, READ, SLEPT, READ, SLEPT, READ, DELETED));
  m_host.dataLayer.m_clientValues[NODE_LIST] = Variant(true);
  forget();
  EXPECT_FALSE(m_sut->waitForAllNodes(10'000));
  EXPECT_THAT(m_host.calls.all(), ElementsAre(MADE, READ, DELETED));
}

TEST_F(ProviderMgrNodesTest, GivesUpAfterTwoHundredLooks) {
  list({FOLDER});
  EXPECT_FALSE(m_sut->run());
  EXPECT_EQ(m_host.calls.count("client.readSync"), 200);
  std::vector<std::string> expected = {MADE};
  for (int i = 0; i < 200; ++i) {
    expected.insert(expected.end(), {READ, SLEPT});
  }
  expected.insert(expected.end(), {DELETED, "provider.unregisterType(scopes/motion)", "provider.destroyed()"});
  const auto calls = m_host.calls.all();
  const auto begin = std::find(calls.begin(), calls.end(), MADE);
  EXPECT_THAT(std::vector<std::string>(begin, calls.end()), ElementsAreArray(expected));
  EXPECT_THAT(traces(),
              ElementsAre("Info provider_mgr registerScopes: Creation of scopes at datalayer/security/scopes succeeded",
                          "Info provider_mgr unregisterScopes: Deletion of scopes succeeded"));
}

TEST_F(ProviderMgrNodesTest, IsContentWithTheLastLook) {
  const auto listing = listAllFrom(200);
  EXPECT_TRUE(m_sut->run());
  EXPECT_EQ(m_host.calls.count("client.readSync"), 200);
  EXPECT_EQ(m_host.calls.count("sleep"), 199);
  EXPECT_THAT(m_host.calls.of({"sleep"}), Each(SLEPT));
  EXPECT_EQ(livingProviders(), 1);
}

TEST_F(ProviderMgrNodesTest, GoesOnAfterASleepThatFails) {
  m_host.calls.fail("sleep", test::FakeCalls::THROW);
  const auto listing = listAllFrom(3);
  EXPECT_TRUE(m_sut->waitForAllNodes(150));
  EXPECT_EQ(m_host.calls.count("sleep"), 2);
}

/// Interrupts this process every few milliseconds.
class Interruptions {
 public:
  Interruptions() {
    struct sigaction action {};
    action.sa_handler = [](int /*signal*/) {};
    sigaction(SIGALRM, &action, &m_oldAction);
    const itimerval every{{0, 5'000}, {0, 5'000}};
    setitimer(ITIMER_REAL, &every, nullptr);
  }
  ~Interruptions() {
    const itimerval never{};
    setitimer(ITIMER_REAL, &never, nullptr);
    sigaction(SIGALRM, &m_oldAction, nullptr);
  }
  Interruptions(const Interruptions&) = delete;
  Interruptions& operator=(const Interruptions&) = delete;

 private:
  struct sigaction m_oldAction {};
};

TEST_F(ProviderMgrNodesTest, SleepsTheWholeIntervalAlsoWhenInterrupted) {
  ProviderMgr sut(m_host.sysIf, m_host.dataLayer);
  const Interruptions interruptions;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_FALSE(sut.waitForAllNodes(100));
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(100));
  EXPECT_THAT(m_host.calls.all(), ElementsAre(MADE, READ, READ, DELETED));
}

}  // namespace
}  // namespace motion::kavo
