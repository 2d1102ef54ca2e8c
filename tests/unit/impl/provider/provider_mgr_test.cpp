// How the provider is brought up and taken down, and what each failure leaves.
#include "impl/provider/provider_mgr.h"

#include <new>
#include <type_traits>

#include "impl/provider/node_signal.h"
#include "impl/provider/node_signals_folder.h"
#include "provider_fixture.h"

namespace motion::kavo {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr std::uint32_t REFUSAL = 0x80010004;

const std::vector<std::string> RUN_CALLS = {
    "dataLayer.createProvider(inproc:///tmp/datalayer/backend)",
    "provider.registerNode(motion/state/functions/kavo/signals)",
    "provider.registerNode(motion/state/functions/kavo/signals/*)",
    "provider.registerType(scopes/motion)",
    "provider.start()",
    "dataLayer.createClient(inproc:///tmp/datalayer/frontend)",
    "client.readSync(datalayer/nodes)",
    "client.destroyed()",
};
const std::vector<std::string> TAKE_BACK_CALLS = {"provider.unregisterType(scopes/motion)", "provider.destroyed()"};

const std::string SCOPES_MADE =
    "Info provider_mgr registerScopes: Creation of scopes at datalayer/security/scopes succeeded";
const std::string SCOPES_DELETED = "Info provider_mgr unregisterScopes: Deletion of scopes succeeded";

class ProviderMgrTest : public ProviderTest {
 protected:
  ProviderMgrTest() { listAllNodes(); }

  /// The field at that place, counted in pointers.
  [[nodiscard]] const void* fieldAt(std::size_t place) const {
    return reinterpret_cast<const void* const*>(m_sut.get())[place];
  }

  std::unique_ptr<ProviderMgr> m_sut = makeManager();
};

TEST_F(ProviderMgrTest, RegistersNothingWhenMade) {
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
  EXPECT_EQ(&m_sut->getMotionSysIF(), &m_host.sysIf);
}

TEST_F(ProviderMgrTest, KeepsRecordFactoryNodesAndProviderInThisOrder) {
  EXPECT_EQ(fieldAt(1), &m_host.sysIf);
  EXPECT_EQ(fieldAt(2), &m_host.dataLayer);
  constexpr std::size_t ENTRY = sizeof(std::string) + sizeof(void*);
  EXPECT_EQ(static_cast<const std::byte*>(fieldAt(4)) - static_cast<const std::byte*>(fieldAt(3)), 2 * ENTRY);
  EXPECT_EQ(fieldAt(6), nullptr);
  ASSERT_TRUE(m_sut->run());
  EXPECT_EQ(fieldAt(6), m_host.dataLayer.m_lastProvider);
}

TEST_F(ProviderMgrTest, KeepsAnAddressAndANodeInEachEntry) {
  ASSERT_TRUE(m_sut->run());
  struct Entry {
    std::string address;
    NodeBase* node;
  };
  const auto* const entries = static_cast<const Entry*>(fieldAt(3));
  const auto& registered = m_host.dataLayer.m_lastProvider->m_nodes;
  EXPECT_EQ(entries[0].address, "motion/state/functions/kavo/signals");
  EXPECT_EQ(entries[0].node, registered.at(FOLDER));
  EXPECT_EQ(entries[1].address, "motion/state/functions/kavo/signals/*");
  EXPECT_EQ(entries[1].node, registered.at(EVERY_SIGNAL));
}

TEST_F(ProviderMgrTest, HasOnlyItsDestructorInItsTable) {
  EXPECT_TRUE(std::has_virtual_destructor_v<ProviderMgr>);
  ASSERT_TRUE(m_sut->run());
  forget();
  callSlot<void>(m_sut.release(), 1);
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(TAKE_BACK_CALLS));
}

TEST_F(ProviderMgrTest, BringsTheProviderUp) {
  EXPECT_TRUE(m_sut->run());
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(RUN_CALLS));
  EXPECT_THAT(traces(), ElementsAre(SCOPES_MADE));
  EXPECT_TRUE(m_host.dataLayer.m_lastProvider->isStarted());
}

TEST_F(ProviderMgrTest, RegistersTheFolderAndTheNodeOfEverySignal) {
  ASSERT_TRUE(m_sut->run());
  const auto& nodes = m_host.dataLayer.m_lastProvider->m_nodes;
  ASSERT_EQ(nodes.size(), 2U);
  EXPECT_NE(dynamic_cast<const NodeSignalsFolder*>(nodes.at("motion/state/functions/kavo/signals")), nullptr);
  const auto* const signal = dynamic_cast<const NodeSignal*>(nodes.at("motion/state/functions/kavo/signals/*"));
  ASSERT_NE(signal, nullptr);
  EXPECT_EQ(&signal->getMotionSysIF(), &m_host.sysIf) << "the node belongs to the manager";
}

TEST_F(ProviderMgrTest, LeavesTheRunningProviderAloneWhenRunAgain) {
  ASSERT_TRUE(m_sut->run());
  forget();
  EXPECT_FALSE(m_sut->run());
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), ElementsAre("Error provider_mgr run: Provider is already running!"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_TRUE(m_host.dataLayer.m_lastProvider->isStarted());
  EXPECT_EQ(m_host.dataLayer.m_lastProvider->m_nodes.size(), 2U);
  EXPECT_EQ(m_host.dataLayer.m_lastProvider->m_types.size(), 1U);
}

TEST_F(ProviderMgrTest, NeedsAProvider) {
  m_host.calls.fail("dataLayer.createProvider", REFUSAL);
  EXPECT_FALSE(m_sut->run());
  EXPECT_THAT(m_host.calls.all(), ElementsAre(RUN_CALLS.front()));
  EXPECT_THAT(traces(), ElementsAre("Error provider_mgr run: DlFactory does not provide a provider"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  m_host.calls.failNothing();
  forget();
  EXPECT_TRUE(m_sut->run());
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(RUN_CALLS));
}

TEST_F(ProviderMgrTest, GoesOnWithoutScopes) {
  m_host.calls.fail("provider.registerType", REFUSAL);
  EXPECT_TRUE(m_sut->run());
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(RUN_CALLS));
}

struct FailureCase {
  std::string operation;
  int nth;
  std::size_t callsBefore;  ///< calls up to and with the one that fails
  std::vector<std::string> callsAfter;
  std::vector<std::string> traces;
};

class ProviderMgrFailureTest : public ProviderMgrTest, public testing::WithParamInterface<FailureCase> {};

TEST_P(ProviderMgrFailureTest, TakesEverythingBackAndMayBeRunAgain) {
  m_host.calls.fail(GetParam().operation, REFUSAL, GetParam().nth);
  EXPECT_FALSE(m_sut->run());
  auto expected =
      std::vector<std::string>(RUN_CALLS.begin(), RUN_CALLS.begin() + static_cast<std::ptrdiff_t>(GetParam().callsBefore));
  expected.insert(expected.end(), GetParam().callsAfter.begin(), GetParam().callsAfter.end());
  expected.insert(expected.end(), TAKE_BACK_CALLS.begin(), TAKE_BACK_CALLS.end());
  EXPECT_EQ(m_host.calls.all(), expected);
  EXPECT_EQ(traces(), GetParam().traces);
  EXPECT_EQ(fieldAt(6), nullptr) << "no provider is left";

  m_host.calls.failNothing();
  forget();
  EXPECT_TRUE(m_sut->run());
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(RUN_CALLS));
  EXPECT_THAT(traces(), ElementsAre(SCOPES_MADE));
}

TEST_P(ProviderMgrFailureTest, LeavesNothingForTheDestructor) {
  m_host.calls.fail(GetParam().operation, REFUSAL, GetParam().nth);
  ASSERT_FALSE(m_sut->run());
  forget();
  m_sut.reset();
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

std::string notRegistered(const std::string& address) {
  return "Error provider_mgr run: Failed to register the node address " + address + " with error DL_LIMIT_MIN";
}

INSTANTIATE_TEST_SUITE_P(
    All, ProviderMgrFailureTest,
    testing::Values(
        FailureCase{
            "provider.registerNode", 1, 2, {}, {notRegistered("motion/state/functions/kavo/signals"), SCOPES_DELETED}},
        FailureCase{
            "provider.registerNode", 2, 3, {}, {notRegistered("motion/state/functions/kavo/signals/*"), SCOPES_DELETED}},
        FailureCase{"provider.start", 1, 5, {}, {SCOPES_MADE, SCOPES_DELETED}},
        FailureCase{"dataLayer.createClient", 1, 6, {}, {SCOPES_MADE, SCOPES_DELETED}},
        FailureCase{"client.readSync", 1, 7, {"client.destroyed()"}, {SCOPES_MADE, SCOPES_DELETED}}));

TEST_F(ProviderMgrTest, TracesTheAddressAndTheResultOfARefusedNode) {
  m_host.calls.fail("provider.registerNode", 0x80010008);
  EXPECT_FALSE(m_sut->run());
  EXPECT_THAT(traces(), ElementsAre("Error provider_mgr run: Failed to register the node address "
                                    "motion/state/functions/kavo/signals with error unknown",
                                    SCOPES_DELETED));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "Failed to register the node address %s with error %s");
}

TEST_F(ProviderMgrTest, KeepsItsNodesAfterAFailure) {
  const void* const entries = fieldAt(3);
  const void* const end = fieldAt(4);
  m_host.calls.fail("provider.start", REFUSAL);
  ASSERT_FALSE(m_sut->run());
  EXPECT_EQ(fieldAt(3), entries);
  EXPECT_EQ(fieldAt(4), end);
}

TEST_F(ProviderMgrTest, TakesAResultThatIsNoFailureForASuccess) {
  m_host.calls.fail("provider.registerNode", 0x00000002);
  m_host.calls.fail("provider.registerType", 0x00000002);
  m_host.calls.fail("provider.start", 0x00000001);
  EXPECT_TRUE(m_sut->run());
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(RUN_CALLS));
  EXPECT_THAT(traces(), ElementsAre(SCOPES_MADE));
}

TEST_F(ProviderMgrTest, DoesNothingWhenDeletedWithoutAProvider) {
  m_sut.reset();
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(ProviderMgrTest, WithdrawsTheScopesAndDeletesTheProviderWhenDeleted) {
  ASSERT_TRUE(m_sut->run());
  forget();
  bool isAsBefore = false;
  const auto withdrawing = m_host.calls.onCall("provider.unregisterType", [this, &isAsBefore] {
    const auto& provider = *m_host.dataLayer.m_lastProvider;
    isAsBefore = provider.isStarted() && provider.m_nodes.size() == 2;
  });
  m_sut.reset();
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(TAKE_BACK_CALLS)) << "no node is withdrawn, and nothing is stopped";
  EXPECT_THAT(traces(), ElementsAre(SCOPES_DELETED));
  EXPECT_TRUE(isAsBefore);
}

TEST_F(ProviderMgrTest, DeletesItsNodesBeforeItWithdrawsTheScopes) {
  ASSERT_TRUE(m_sut->run());
  long held = 0;
  const auto withdrawing = m_host.calls.onCall("provider.unregisterType", [&held] { held = test::liveAllocations(); });
  forget();
  m_sut->unregisterScopes();
  const long heldWithNodes = held;
  forget();
  m_sut.reset();
  EXPECT_EQ(held, heldWithNodes - 4) << "two nodes and their addresses";
}

TEST_F(ProviderMgrTest, DeletesTheProviderAlsoWhenTheScopesStay) {
  ASSERT_TRUE(m_sut->run());
  forget();
  m_host.calls.fail("provider.unregisterType", REFUSAL);
  m_sut.reset();
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(TAKE_BACK_CALLS));
  EXPECT_THAT(traces(), ElementsAre("Error provider_mgr unregisterScopes: Deletion of scopes failed: 'DL_LIMIT_MIN'"));
}

TEST_F(ProviderMgrTest, TakesAnExceptionOfTheDataLayerForAFailure) {
  for (const char* operation : {"dataLayer.createProvider", "provider.registerNode", "provider.start",
                                "dataLayer.createClient", "client.readSync"}) {
    m_host.calls.fail(operation, test::FakeCalls::THROW, 1);
    EXPECT_FALSE(m_sut->run()) << operation;
    EXPECT_EQ(fieldAt(6), nullptr) << operation;
    m_host.calls.failNothing();
    EXPECT_TRUE(m_sut->run()) << operation;
    m_sut = makeManager();
  }
  m_host.calls.fail("provider.registerType", test::FakeCalls::THROW);
  m_host.calls.fail("provider.unregisterType", test::FakeCalls::THROW);
  EXPECT_TRUE(m_sut->run()) << "scopes are not needed";
  forget();
  m_sut.reset();
  EXPECT_THAT(m_host.calls.all(), ElementsAreArray(TAKE_BACK_CALLS));
}

TEST_F(ProviderMgrTest, IsUpOrHasLeftNothingAfterAFailureToAllocate) {
  bool isUp = false;
  const int failures = withEachAllocationFailing([&] { isUp = m_sut->run(); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_TRUE(isUp || hasFailed);
                                                   EXPECT_EQ(livingProviders(), isUp ? 1 : 0);
                                                   EXPECT_EQ(m_host.calls.count("client.destroyed"),
                                                             m_host.calls.count("dataLayer.createClient"));
                                                   m_sut = makeManager();
                                                   forget();
                                                 });
  EXPECT_GT(failures, 3) << "endpoints, scopes and the set of nodes take memory";
}

TEST_F(ProviderMgrTest, IsMadeOrLeavesNothingBehind) {
  const long before = test::liveAllocations();
  long after = 0;
  bool isThrown = false;
  const int failures = withEachAllocationFailing(
      [&] {
        isThrown = false;
        try {
          const ProviderMgr sut(m_host.sysIf, m_host.dataLayer);
        } catch (const std::bad_alloc&) {
          isThrown = true;
        }
        after = test::liveAllocations();
      },
      [&](bool hasFailed) {
        EXPECT_EQ(isThrown, hasFailed);
        EXPECT_EQ(after, before);
      });
  EXPECT_GT(failures, 4) << "two nodes, their addresses and the list";
}

}  // namespace
}  // namespace motion::kavo
