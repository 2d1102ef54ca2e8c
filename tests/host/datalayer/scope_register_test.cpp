// Lists of scopes: which are taken, what they grant, and what is left when they go.
#include "host/datalayer/scope_register.h"

#include <gmock/gmock.h>

#include <atomic>
#include <latch>
#include <string>
#include <thread>
#include <vector>

#include "scripted_node.h"
#include "support/fake_allocation.h"

namespace motion::host::datalayer {
namespace {

using namespace comm::datalayer;
using motion::host::test::listOfScopes;
using motion::test::failsDuring;
using testing::ElementsAre;
using testing::IsEmpty;

const std::string ADDRESS = "scopes/a";
constexpr Right ALL_RIGHTS[] = {Right::READ, Right::WRITE, Right::CREATE_AND_REMOVE, Right::USE};

std::vector<Right> rightsAt(const AccessRights& rights, const std::string& address) {
  std::vector<Right> result;
  for (const Right right : ALL_RIGHTS) {
    if (rights.allows(right, address)) {
      result.push_back(right);
    }
  }
  return result;
}

TEST(ScopeRegisterTest, IsEmptyAtFirst) {
  const ScopeRegister sut;
  EXPECT_THAT(sut.identifiers(), IsEmpty());
  EXPECT_THAT(rightsAt(sut.rightsOf({"a", ""}), "a"), IsEmpty());
}

TEST(ScopeRegisterTest, EachPermissionGrantsItsRights) {
  ScopeRegister sut;
  ASSERT_EQ(sut.add(ADDRESS, listOfScopes({{"all", {"r"}, {"rw"}, {"x"}, {"rwx"}}})), DL_OK);
  const AccessRights rights = sut.rightsOf({"all"});
  EXPECT_THAT(rightsAt(rights, "r"), ElementsAre(Right::READ));
  EXPECT_THAT(rightsAt(rights, "rw"), ElementsAre(Right::READ, Right::WRITE));
  EXPECT_THAT(rightsAt(rights, "x"), ElementsAre(Right::USE));
  EXPECT_THAT(rightsAt(rights, "rwx"), ElementsAre(Right::READ, Right::WRITE, Right::CREATE_AND_REMOVE, Right::USE));
  EXPECT_THAT(rightsAt(rights, "other"), IsEmpty());
}

TEST(ScopeRegisterTest, RightsAreThoseOfTheAskedScopesOnly) {
  ScopeRegister sut;
  ASSERT_EQ(sut.add(ADDRESS, listOfScopes({{"first", {"a", "b"}, {}, {}, {}}, {"second", {"c"}, {}, {}, {}}})), DL_OK);
  ASSERT_EQ(sut.add("scopes/b", listOfScopes({{"third", {"d"}, {}, {}, {}}})), DL_OK);
  const AccessRights rights = sut.rightsOf({"third", "first", "first", "unknown", "First", "firs", "first "});
  EXPECT_TRUE(rights.allows(Right::READ, "a"));
  EXPECT_TRUE(rights.allows(Right::READ, "b"));
  EXPECT_FALSE(rights.allows(Right::READ, "c"));
  EXPECT_TRUE(rights.allows(Right::READ, "d"));
  EXPECT_THAT(rightsAt(sut.rightsOf({}), "a"), IsEmpty());
}

TEST(ScopeRegisterTest, IdentifiersAreInOrder) {
  ScopeRegister sut;
  ASSERT_EQ(sut.add(ADDRESS, listOfScopes({{"c", {}, {}, {}, {}}, {"a", {}, {}, {}, {}}})), DL_OK);
  ASSERT_EQ(sut.add("scopes/b", listOfScopes({{"b", {}, {}, {}, {}}})), DL_OK);
  EXPECT_THAT(sut.identifiers(), ElementsAre("a", "b", "c"));
}

TEST(ScopeRegisterTest, NobodyWidensWhatSomebodyElseHasNamed) {
  ScopeRegister sut;
  ASSERT_EQ(sut.add(ADDRESS, listOfScopes({{"view", {"a"}, {}, {}, {}}})), DL_OK);
  const auto version = sut.version();
  EXPECT_EQ(sut.add("scopes/b", listOfScopes({{"new", {"x"}, {}, {}, {}}, {"view", {}, {}, {}, {"**"}}})),
            DL_ALREADY_EXISTS);
  EXPECT_THAT(sut.identifiers(), ElementsAre("view")) << "none of the list is taken";
  EXPECT_THAT(rightsAt(sut.rightsOf({"view", "new"}), "x"), IsEmpty());
  EXPECT_EQ(sut.version(), version);
}

TEST(ScopeRegisterTest, ListDoesNotNameAScopeTwice) {
  ScopeRegister sut;
  EXPECT_EQ(sut.add(ADDRESS, listOfScopes({{"a", {"x"}, {}, {}, {}}, {"a", {"y"}, {}, {}, {}}})), DL_ALREADY_EXISTS);
  EXPECT_THAT(sut.identifiers(), IsEmpty());
}

TEST(ScopeRegisterTest, WithdrawalTakesOneListOnly) {
  ScopeRegister sut;
  ASSERT_EQ(sut.add(ADDRESS, listOfScopes({{"a", {"x"}, {}, {}, {}}, {"b", {"x"}, {}, {}, {}}})), DL_OK);
  ASSERT_EQ(sut.add("scopes/a/b", listOfScopes({{"c", {"x"}, {}, {}, {}}})), DL_OK);
  const auto version = sut.version();
  sut.remove("scopes/unknown");
  EXPECT_EQ(sut.version(), version);
  sut.remove(ADDRESS);
  EXPECT_NE(sut.version(), version);
  EXPECT_THAT(sut.identifiers(), ElementsAre("c"));
  EXPECT_THAT(rightsAt(sut.rightsOf({"a", "b"}), "x"), IsEmpty());
  EXPECT_EQ(sut.add(ADDRESS, listOfScopes({{"a", {"y"}, {}, {}, {}}})), DL_OK);
  EXPECT_THAT(rightsAt(sut.rightsOf({"a"}), "x"), IsEmpty()) << "the new one, not the old one";
  EXPECT_THAT(rightsAt(sut.rightsOf({"a"}), "y"), ElementsAre(Right::READ));
}

TEST(ScopeRegisterTest, RefusesWhatIsNoPattern) {
  ScopeRegister sut;
  for (const std::string pattern : {"", "/", "a/", "**/a", "a*", "../**", "a//b", "\xFF"}) {
    EXPECT_EQ(sut.add(ADDRESS, listOfScopes({{"a", {"x", pattern}, {}, {}, {}}})), DL_INVALID_VALUE) << pattern;
    EXPECT_EQ(sut.add(ADDRESS, listOfScopes({{"a", {}, {pattern}, {}, {}}})), DL_INVALID_VALUE) << pattern;
    EXPECT_EQ(sut.add(ADDRESS, listOfScopes({{"a", {}, {}, {pattern}, {}}})), DL_INVALID_VALUE) << pattern;
    EXPECT_EQ(sut.add(ADDRESS, listOfScopes({{"a", {}, {}, {}, {pattern}}})), DL_INVALID_VALUE) << pattern;
  }
  EXPECT_EQ(sut.add(ADDRESS, listOfScopes({{"good", {}, {}, {}, {}}, {"", {"x"}, {}, {}, {}}})), DL_INVALID_VALUE)
      << "no identifier";
  EXPECT_THAT(sut.identifiers(), IsEmpty());
  EXPECT_EQ(sut.version(), ScopeRegister().version());
}

TEST(ScopeRegisterTest, RefusesWhatIsNoListOfScopes) {
  ScopeRegister sut;
  EXPECT_EQ(sut.add(ADDRESS, Variant()), DL_INVALID_VALUE);
  EXPECT_EQ(sut.add(ADDRESS, Variant(std::string("scopes"))), DL_INVALID_VALUE);
  flatbuffers::FlatBufferBuilder builder;
  builder.Finish(CreateScopes(builder));
  EXPECT_EQ(sut.add(ADDRESS, Variant::fromFlatBuffer(builder.GetBufferSpan())), DL_INVALID_VALUE) << "without a list";
  flatbuffers::FlatBufferBuilder nameless;
  const std::vector<flatbuffers::Offset<Scope>> scopes = {CreateScope(nameless)};
  nameless.Finish(CreateScopesDirect(nameless, &scopes));
  EXPECT_EQ(sut.add(ADDRESS, Variant::fromFlatBuffer(nameless.GetBufferSpan())), DL_INVALID_VALUE)
      << "without an identifier";
  EXPECT_THAT(sut.identifiers(), IsEmpty());
}

TEST(ScopeRegisterTest, DamagedListsNeverHarm) {
  const Variant whole = listOfScopes({{"a", {"x/**"}, {"y/*"}, {}, {}}});
  const auto buffer = whole.getFlatBuffer();
  int refused = 0;
  for (std::size_t length = 0; length < buffer.size(); ++length) {
    ScopeRegister sut;
    if (sut.add(ADDRESS, Variant::fromFlatBuffer(buffer.first(length))) == DL_INVALID_VALUE) {
      ++refused;
      EXPECT_THAT(sut.identifiers(), IsEmpty());
    }
  }
  EXPECT_GT(refused, 0);
  for (std::size_t place = 0; place < buffer.size(); ++place) {
    std::vector<std::uint8_t> damaged(buffer.begin(), buffer.end());
    damaged[place] ^= 0xFF;
    ScopeRegister sut;
    const DlResult result = sut.add(ADDRESS, Variant::fromFlatBuffer(damaged));
    EXPECT_TRUE(result == DL_OK || result == DL_INVALID_VALUE) << place;
    EXPECT_EQ(sut.identifiers().size(), result == DL_OK ? 1U : 0U) << place;
  }
}

TEST(ScopeRegisterTest, FailedAllocationChangesNothing) {
  ScopeRegister sut;
  const Variant list =
      listOfScopes({{"an identifier that needs an allocation", {"a/pattern/that/needs/an/allocation"}, {}, {}, {}}});
  int number = 1;
  for (bool hasFailed = true; hasFailed; ++number) {
    bool hasThrown = false;
    const auto version = sut.version();
    hasFailed = failsDuring(number, [&] {
      try {
        static_cast<void>(sut.add(ADDRESS, list));
      } catch (const std::bad_alloc&) {
        hasThrown = true;
      }
    });
    ASSERT_EQ(hasThrown, hasFailed) << number;
    ASSERT_EQ(sut.version() == version, hasFailed) << number;
    ASSERT_EQ(sut.identifiers().size(), hasFailed ? 0U : 1U) << number;
  }
  EXPECT_GT(number, 4);
}

TEST(ScopeRegisterTest, TellsWhereReadableNodesBegin) {
  ScopeRegister sut;
  const Variant list = listOfScopes({{"a", {"m/s/**", "m/s/x/*", "m/s2", "m/*/x"}, {}, {}, {}},
                                     {"writes", {}, {"n/w/*"}, {}, {}},
                                     {"uses", {}, {}, {"u/**"}, {}},
                                     {"all", {}, {}, {}, {"**"}},
                                     {"manages", {}, {}, {}, {"m/**"}}});
  ASSERT_EQ(sut.add(ADDRESS, list), DL_OK);
  using Texts = std::vector<std::string>;
  EXPECT_EQ(sut.readableRootsOf({"a"}), (Texts{"m"})) << "everything else lies below it";
  EXPECT_EQ(sut.readableRootsOf({"writes"}), (Texts{"n/w"}));
  EXPECT_EQ(sut.readableRootsOf({"uses"}), Texts());
  EXPECT_EQ(sut.readableRootsOf({"writes", "manages"}), (Texts{"m", "n/w"}));
  EXPECT_EQ(sut.readableRootsOf({"writes", "all"}), (Texts{""}));
  EXPECT_EQ(sut.readableRootsOf({"unknown"}), Texts());
  EXPECT_EQ(sut.readableRootsOf({}), Texts());
  sut.remove(ADDRESS);
  ASSERT_EQ(sut.add(ADDRESS, listOfScopes({{"b", {"m/s/**", "m/s/x/*", "m/s2"}, {}, {}, {}}})), DL_OK);
  EXPECT_EQ(sut.readableRootsOf({"b"}), (Texts{"m/s", "m/s2"}));
}

TEST(ScopeRegisterTest, ListsComeAndGoWhileOthersAskForTheirRights) {
  ScopeRegister sut;
  std::atomic<bool> isOver{false};
  std::latch start(2);
  std::thread asking([&] {
    start.arrive_and_wait();
    while (!isOver) {
      const AccessRights rights = sut.rightsOf({"a"});
      EXPECT_EQ(rights.allows(Right::READ, "x"), rights.allows(Right::READ, "y")) << "half a scope";
      EXPECT_LE(sut.identifiers().size(), 1U);
    }
  });
  const Variant list = listOfScopes({{"a", {"x", "y"}, {}, {}, {}}});
  start.arrive_and_wait();
  for (int round = 0; round < 300; ++round) {
    EXPECT_EQ(sut.add(ADDRESS, list), DL_OK);
    sut.remove(ADDRESS);
  }
  isOver = true;
  asking.join();
}

}  // namespace
}  // namespace motion::host::datalayer
