// How nodes are shown.
#include "host/observe/nodes_report.h"

#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include "host/observe/signal_nodes.h"

namespace motion::host::observe {
namespace {

using comm::datalayer::Variant;
using datalayer::NodeDescription;
using datalayer::NodeView;
using datalayer::Right;

NodeView variable(const std::string& address) {
  NodeView node;
  node.address = address;
  node.metadata = NodeDescription{3, "A value", "", true, true, false, false, false, "types/a", "types/a"};
  node.value = Variant(true);
  return node;
}

NodesSeen oneFolder() {
  NodesSeen seen;
  seen.file = "cell.yaml";
  seen.scopes = {"look"};
  seen.knownScopes = {"change", "look"};
  seen.rights.grant("a/**", static_cast<datalayer::Rights>(Right::READ));
  NodeView folder;
  folder.address = "a/b";
  folder.metadata = NodeDescription{7, "", "", false, false, false, false, true, "", ""};
  folder.children = {variable("a/b/05"), variable("a/b/06")};
  seen.roots = {folder};
  seen.names["a/b/05"] = "part in place";
  return seen;
}

TEST(SignalAddressTest, HasTwoDigits) {
  EXPECT_EQ(signalAddress(5), "motion/state/functions/kavo/signals/05");
  EXPECT_EQ(signalAddress(99), "motion/state/functions/kavo/signals/99");
}

TEST(NodesTextTest, IsATree) {
  EXPECT_EQ(nodesText(oneFolder()),
            "what a client sees that holds look:\n"
            "a/b                                           folder; browse\n"
            "  05                                  true    'part in place'; A value; variable; read (write); types/a\n"
            "  06                                  true    A value; variable; read (write); types/a\n");
}

TEST(NodesTextTest, ShowsWhatTheClientMay) {
  NodesSeen seen = oneFolder();
  seen.rights.grant("a/b/05", Right::READ | Right::WRITE);
  const std::string text = nodesText(seen);
  EXPECT_NE(text.find("A value; variable; read write; types/a\n  06"), std::string::npos) << text;
  seen.isUnrestricted = true;
  EXPECT_EQ(nodesText(seen).find('('), std::string::npos);
  EXPECT_EQ(nodesText(seen).find("what the host itself sees:\n"), 0U);
}

TEST(NodesTextTest, TellsNobodyWhatCouldBeGranted) {
  NodesSeen seen;
  seen.knownScopes = {"change", "look"};
  EXPECT_EQ(nodesText(seen), "a client without scopes sees nothing; scopes that can be granted: change, look\n");
}

TEST(NodesTextTest, ShowsListsErrorsAndOtherTypes) {
  NodesSeen seen;
  seen.isUnrestricted = true;
  NodeView list = variable("list");
  list.value = Variant(Variant::Strings{"one", "two"});
  list.metadata->writeType = "types/other";
  NodeView broken;
  broken.address = "broken";
  broken.error = datalayer::NodeError{comm::datalayer::DL_INVALID_HANDLE, 0x090F2040, 0x0C570101, "no such thing"};
  NodeView odd = variable("odd");
  odd.metadata->nodeClass = 42;
  odd.value = Variant(-3);
  seen.roots = {list, broken, odd};
  EXPECT_EQ(nodesText(seen),
            "what the host itself sees:\n"
            "list                                  2 texts A value; variable; read write; types/a; to write types/other\n"
            "  - one\n"
            "  - two\n"
            "broken\n"
            "  ! no such thing (0x090F2040, 0x0C570101)\n"
            "odd                                   -3      A value; class 42; read write; types/a\n");
}

TEST(NodesJsonTest, SaysTheSameToPrograms) {
  const auto json = nlohmann::json::parse(nodesJson(oneFolder()));
  EXPECT_EQ(json.at("file"), "cell.yaml");
  EXPECT_EQ(json.at("unrestricted"), false);
  EXPECT_EQ(json.at("scopes"), nlohmann::json::array({"look"}));
  EXPECT_EQ(json.at("knownScopes"), (nlohmann::json{"change", "look"}));
  const auto& folder = json.at("nodes").at(0);
  EXPECT_EQ(folder.at("address"), "a/b");
  EXPECT_EQ(folder.at("metadata").at("nodeClass"), 7);
  EXPECT_EQ(folder.at("metadata").at("readType"), nullptr);
  EXPECT_FALSE(folder.contains("value"));
  ASSERT_EQ(folder.at("children").size(), 2U);
  const auto& signal = folder.at("children").at(0);
  EXPECT_EQ(signal.at("name"), "part in place");
  EXPECT_EQ(signal.at("value"), true);
  const auto& metadata = signal.at("metadata");
  EXPECT_EQ(metadata.at("description"), "A value");
  EXPECT_EQ(metadata.at("offered"),
            (nlohmann::json{{"read", true}, {"write", true}, {"create", false}, {"remove", false}, {"browse", false}}));
  EXPECT_EQ(metadata.at("allowed"),
            (nlohmann::json{{"read", true}, {"write", false}, {"create", false}, {"remove", false}, {"browse", false}}));
  EXPECT_EQ(metadata.at("readType"), "types/a");
  EXPECT_FALSE(folder.at("children").at(1).contains("name"));
}

TEST(NodesJsonTest, HasValuesOfEveryKindAndErrors) {
  NodesSeen seen;
  const auto add = [&seen](const std::string& address, const Variant& value) {
    seen.roots.push_back(variable(address));
    seen.roots.back().value = value;
  };
  constexpr std::uint8_t table[] = {1, 2, 3, 4};
  add("a", Variant(-3));
  add("b", Variant(3U));
  add("c", Variant(0.5));
  add("d", Variant(std::string("text")));
  add("e", Variant(Variant::Strings{"one"}));
  add("f", Variant::fromFlatBuffer(table));
  add("g", Variant());
  seen.roots.push_back({});
  seen.roots.back().error = datalayer::NodeError{comm::datalayer::DL_TIMEOUT, 0, 0, ""};
  seen.roots.push_back({});
  seen.roots.back().error = datalayer::NodeError{comm::datalayer::DL_INVALID_HANDLE, 0x090F2040, 0x0C570101, "why"};
  const auto nodes = nlohmann::json::parse(nodesJson(seen)).at("nodes");
  EXPECT_EQ(nodes.at(0).at("value"), -3);
  EXPECT_EQ(nodes.at(1).at("value"), 3);
  EXPECT_EQ(nodes.at(2).at("value"), 0.5);
  EXPECT_EQ(nodes.at(3).at("value"), "text");
  EXPECT_EQ(nodes.at(4).at("value"), nlohmann::json::array({"one"}));
  EXPECT_EQ(nodes.at(5).at("value"), "table of 4 bytes");
  EXPECT_EQ(nodes.at(6).at("value"), nullptr);
  EXPECT_EQ(nodes.at(7).at("error"), (nlohmann::json{{"result", "DL_TIMEOUT"}, {"text", ""}}));
  EXPECT_EQ(
      nodes.at(8).at("error"),
      (nlohmann::json{
          {"result", "DL_INVALID_HANDLE"}, {"text", "why"}, {"mainCode", "0x090F2040"}, {"detailCode", "0x0C570101"}}));
}

}  // namespace
}  // namespace motion::host::observe
