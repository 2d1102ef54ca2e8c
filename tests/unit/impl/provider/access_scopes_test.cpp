// The rights to motion nodes, to the letter.
#include "impl/provider/access_scopes.h"

#include <algorithm>
#include <new>

#include "provider_fixture.h"
#include "schemas/datalayer/scopes_generated.h"

namespace motion::kavo {
namespace {

using comm::datalayer::Scope;
using comm::datalayer::Scopes;
using comm::datalayer::Variant;
using testing::ElementsAre;
using testing::IsEmpty;

/// The parts of a scope, in the order of its fields.
struct ScopeParts {
  std::string identifier;
  std::string name;
  std::string description;
  std::vector<std::vector<std::string>> lists;
};

std::vector<std::string> copyOf(const flatbuffers::Vector<flatbuffers::Offset<flatbuffers::String>>* list) {
  std::vector<std::string> result;
  if (list != nullptr) {
    for (const auto* const text : *list) {
      result.push_back(text->str());
    }
  }
  return result;
}

std::vector<ScopeParts> scopesIn(const Variant& data) {
  std::vector<ScopeParts> result;
  const auto buffer = data.getFlatBuffer();
  flatbuffers::Verifier verifier(buffer.data(), buffer.size());
  if (!comm::datalayer::VerifyScopesBuffer(verifier)) {
    ADD_FAILURE() << "no list of scopes";
    return result;
  }
  for (const Scope* const scope : *comm::datalayer::GetScopes(buffer.data())->scopes()) {
    result.push_back({scope->identifier()->str(),
                      scope->name()->str(),
                      scope->description()->str(),
                      {copyOf(scope->permissionsR()), copyOf(scope->permissionsRW()), copyOf(scope->permissionsX()),
                       copyOf(scope->permissionsRWX())}});
  }
  return result;
}

class AccessScopesTest : public ProviderTest {
 protected:
  const Variant m_sut = makeAccessScopes();
  const std::vector<ScopeParts> m_scopes = scopesIn(m_sut);
};

TEST_F(AccessScopesTest, AreThreeInAFlatBuffer) {
  EXPECT_EQ(static_cast<std::uint32_t>(m_sut.getType()), 26U);
  ASSERT_EQ(m_scopes.size(), 3U);
}

TEST_F(AccessScopesTest, GrantView) {
  ASSERT_EQ(m_scopes.size(), 3U);
  EXPECT_EQ(m_scopes[0].identifier, "motion.view");
  EXPECT_EQ(m_scopes[0].name, "Motion view");
  EXPECT_EQ(m_scopes[0].description, "Read access to motion related state and configuration datalayer nodes");
  EXPECT_THAT(m_scopes[0].lists, ElementsAre(ElementsAre("motion/state/**"), IsEmpty(), IsEmpty(), IsEmpty()));
}

TEST_F(AccessScopesTest, GrantOperate) {
  ASSERT_EQ(m_scopes.size(), 3U);
  EXPECT_EQ(m_scopes[1].identifier, "motion.operate");
  EXPECT_EQ(m_scopes[1].name, "Motion operate");
  EXPECT_EQ(m_scopes[1].description,
            "Read access to motion related state and configuration datalayer nodes, execute motion commands with current "
            "configuration");
  EXPECT_THAT(m_scopes[1].lists, ElementsAre(ElementsAre("motion/state/**"),
                                             ElementsAre("motion/state/functions/kavo/signals/*"), IsEmpty(), IsEmpty()));
}

TEST_F(AccessScopesTest, GrantManage) {
  ASSERT_EQ(m_scopes.size(), 3U);
  EXPECT_EQ(m_scopes[2].identifier, "motion.manage");
  EXPECT_EQ(m_scopes[2].name, "Motion manage");
  EXPECT_EQ(m_scopes[2].description,
            "Full access for motion: Read and write access to all motion related datalayer nodes, execute motion commands");
  EXPECT_THAT(m_scopes[2].lists, ElementsAre(IsEmpty(), IsEmpty(), IsEmpty(), ElementsAre("motion/**")));
}

TEST_F(AccessScopesTest, KeepTheirListsInTheOrderOfTheRights) {
  EXPECT_EQ(Scope::VT_IDENTIFIER, 4);
  EXPECT_EQ(Scope::VT_NAME, 6);
  EXPECT_EQ(Scope::VT_DESCRIPTION, 8);
  EXPECT_EQ(Scope::VT_PERMISSIONSR, 10);
  EXPECT_EQ(Scope::VT_PERMISSIONSRW, 12);
  EXPECT_EQ(Scope::VT_PERMISSIONSX, 14);
  EXPECT_EQ(Scope::VT_PERMISSIONSRWX, 16);
}

TEST_F(AccessScopesTest, AreWhatTheProviderRegisters) {
  listAllNodes();
  const auto manager = makeManager();
  ASSERT_TRUE(manager->run());
  const auto& types = m_host.dataLayer.m_lastProvider->m_types;
  ASSERT_EQ(types.size(), 1U);
  EXPECT_EQ(types.begin()->first, "scopes/motion");
  const auto registered = types.begin()->second.getFlatBuffer();
  const auto expected = m_sut.getFlatBuffer();
  EXPECT_TRUE(std::equal(registered.begin(), registered.end(), expected.begin(), expected.end()));
}

TEST_F(AccessScopesTest, TakeMemory) {
  bool isThrown = false;
  const long before = test::liveAllocations();
  long after = before;
  const int failures = withEachAllocationFailing(
      [&] {
        isThrown = false;
        try {
          const Variant sut = makeAccessScopes();
        } catch (const std::bad_alloc&) {
          isThrown = true;
        }
        after = test::liveAllocations();
      },
      [&](bool hasFailed) {
        EXPECT_EQ(isThrown, hasFailed);
        EXPECT_EQ(after, before) << "nothing is left";
      });
  EXPECT_GT(failures, 0);
}

}  // namespace
}  // namespace motion::kavo
