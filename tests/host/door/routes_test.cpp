#include "host/door/routes.h"

#include <gtest/gtest.h>

#include <set>
#include <utility>

namespace motion::host::door {
namespace {

bool isMatch(std::string_view pattern, std::string_view path) {
  std::string_view parameter;
  return matches(pattern, path, parameter);
}

TEST(RoutesTest, MatchWholePaths) {
  EXPECT_TRUE(isMatch("/v1", "/v1"));
  EXPECT_TRUE(isMatch("/v1/signals", "/v1/signals"));
  for (const char* const path : {"", "/", "/v", "/v2", "/v1/", "/v10", "v1", "//v1", "/V1", "/v1/signals"}) {
    EXPECT_FALSE(isMatch("/v1", path)) << path;
  }
}

TEST(RoutesTest, AParameterStandsForOneLevelThatIsNotEmpty) {
  std::string_view parameter;
  EXPECT_TRUE(matches("/v1/signals/{id}", "/v1/signals/17", parameter));
  EXPECT_EQ(parameter, "17");
  EXPECT_TRUE(matches("/v1/signals/{id}", "/v1/signals/any thing", parameter));
  for (const char* const path : {"/v1/signals", "/v1/signals/", "/v1/signals//", "/v1/signals/1/", "/v1/signals/1/2"}) {
    EXPECT_FALSE(isMatch("/v1/signals/{id}", path)) << path;
  }
}

TEST(RoutesTest, EachIsThereOnce) {
  std::set<std::pair<std::string_view, std::string_view>> seen;
  std::set<Operation> operations;
  for (const Route& route : ROUTES) {
    EXPECT_TRUE(seen.emplace(route.method, route.path).second) << route.path;
    EXPECT_TRUE(operations.insert(route.operation).second) << route.path;
  }
}

}  // namespace
}  // namespace motion::host::door
