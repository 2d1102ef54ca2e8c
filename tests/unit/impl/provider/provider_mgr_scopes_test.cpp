// The traces of what happens to the access scopes.
#include "impl/provider/provider_mgr.h"
#include "provider_fixture.h"

namespace motion::kavo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class ProviderMgrScopesTest : public ProviderTest {
 protected:
  ProviderMgrScopesTest() { listAllNodes(); }

  void run() {
    ASSERT_TRUE(m_sut->run());
    forget();
  }

  std::unique_ptr<ProviderMgr> m_sut = makeManager();
};

TEST_F(ProviderMgrScopesTest, NeedAProviderToBeRegistered) {
  m_sut->registerScopes();
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), ElementsAre("Error provider_mgr registerScopes: Provider not available"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
}

TEST_F(ProviderMgrScopesTest, NeedAProviderToBeWithdrawn) {
  m_sut->unregisterScopes();
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), ElementsAre("Error provider_mgr unregisterScopes: Provider not available"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
}

TEST_F(ProviderMgrScopesTest, NeedAProviderAgainAfterAFailedRun) {
  m_host.calls.fail("provider.start", 0x80000001);
  ASSERT_FALSE(m_sut->run());
  forget();
  m_sut->registerScopes();
  m_sut->unregisterScopes();
  EXPECT_THAT(m_host.calls.all(), IsEmpty());
  EXPECT_THAT(traces(), ElementsAre("Error provider_mgr registerScopes: Provider not available",
                                    "Error provider_mgr unregisterScopes: Provider not available"));
}

TEST_F(ProviderMgrScopesTest, AreRegisteredAndWithdrawnAtOneAddress) {
  run();
  m_sut->unregisterScopes();
  EXPECT_THAT(m_host.dataLayer.m_lastProvider->m_types, IsEmpty());
  m_sut->registerScopes();
  EXPECT_EQ(m_host.dataLayer.m_lastProvider->m_types.count("scopes/motion"), 1U);
  EXPECT_THAT(m_host.calls.all(),
              ElementsAre("provider.unregisterType(scopes/motion)", "provider.registerType(scopes/motion)"));
  EXPECT_THAT(traces(),
              ElementsAre("Info provider_mgr unregisterScopes: Deletion of scopes succeeded",
                          "Info provider_mgr registerScopes: Creation of scopes at datalayer/security/scopes succeeded"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
  EXPECT_EQ(m_host.traceSink.entries()[1].format, "%s");
}

TEST_F(ProviderMgrScopesTest, AreRefusedWithATrace) {
  m_host.calls.fail("provider.registerType", 0x80010014);
  EXPECT_TRUE(m_sut->run());
  EXPECT_THAT(traces(), ElementsAre("Error provider_mgr registerScopes: Creation of scopes at datalayer/security/scopes "
                                    "failed : 'DL_PERMISSION_DENIED'"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "Creation of scopes at datalayer/security/scopes failed : '%s'");
}

TEST_F(ProviderMgrScopesTest, AreNotWithdrawnWithATrace) {
  run();
  m_host.calls.fail("provider.unregisterType", 0x80010008);
  m_sut->unregisterScopes();
  EXPECT_THAT(traces(), ElementsAre("Error provider_mgr unregisterScopes: Deletion of scopes failed: 'unknown'"));
  EXPECT_EQ(m_host.traceSink.entries()[0].format, "Deletion of scopes failed: '%s'");
}

TEST_F(ProviderMgrScopesTest, FailWithATraceWhenTheProviderThrows) {
  run();
  m_host.calls.fail("provider.registerType", test::FakeCalls::THROW);
  m_host.calls.fail("provider.unregisterType", test::FakeCalls::THROW);
  m_sut->registerScopes();
  m_sut->unregisterScopes();
  EXPECT_THAT(traces(), ElementsAre(testing::StartsWith("Error provider_mgr registerScopes: Creation of scopes at "
                                                        "datalayer/security/scopes failed : 'DL_"),
                                    testing::StartsWith("Error provider_mgr unregisterScopes: Deletion of scopes failed: "
                                                        "'DL_")));
}

TEST_F(ProviderMgrScopesTest, FailWithATraceWithoutMemory) {
  run();
  const int failures =
      withEachAllocationFailing([this] { m_sut->registerScopes(); },
                                [this](bool hasFailed) {
                                  ASSERT_EQ(m_host.traceSink.entries().size(), 1U);
                                  EXPECT_EQ(m_host.traceSink.entries()[0].level(), hasFailed ? "Error" : "Info");
                                  forget();
                                });
  EXPECT_GT(failures, 0);
}

}  // namespace
}  // namespace motion::kavo
