// The description and the door say the same.
#include "host/door/openapi.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <utility>

#include "host/door/door_limits.h"
#include "host/door/event_reader.h"
#include "host/door/routes.h"
#include "live_door.h"
#include "raw_client.h"
#include "schema_check.h"

namespace motion::host::door {
namespace {

using testing::IsEmpty;
using Json = nlohmann::json;

std::string upper(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
  return text;
}

class OpenApiTest : public testing::Test {
 protected:
  /// Everything that the document says of an answer to that operation.
  const Json& described(const std::string& method, const std::string& path, int status) {
    const Json& responses = m_document.at("paths").at(path).at(method).at("responses");
    m_seen.emplace(method + " " + path, status);
    EXPECT_TRUE(responses.contains(std::to_string(status))) << method << " " << path << " does not describe " << status;
    return responses.contains(std::to_string(status)) ? resolve(m_document, responses.at(std::to_string(status)))
                                                      : m_nothing;
  }

  /// Asks the door, and holds the answer against the document.
  void expectDescribed(const std::string& method, const std::string& path, const std::string& target, int status,
                       const std::string& headers = "", const std::string& body = "") {
    SCOPED_TRACE(method + " " + target);
    const RawAnswer answer = ask(m_live.socket(), upper(method), target, headers, body);
    ASSERT_EQ(answer.status, status) << answer.body;
    const Json& response = described(method, path, status);
    const Json content = response.value("content", Json::object());
    ASSERT_EQ(content.size(), 1U);
    EXPECT_EQ(answer.headers.at("content-type"), content.begin().key());
    EXPECT_THAT(mismatches(m_document, content.begin().value().at("schema"), Json::parse(answer.body)), IsEmpty());
    const Json described = response.value("headers", Json::object());
    for (const auto& [name, header] : described.items()) {
      std::string key = name;
      std::ranges::transform(key, key.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
      EXPECT_TRUE(!header.value("required", false) || answer.headers.contains(key)) << name;
    }
  }

  const Json m_document = Json::parse(openApiDocument());
  const Json m_nothing = Json::object();
  std::set<std::pair<std::string, int>> m_seen;
  LiveDoor m_live;
};

TEST_F(OpenApiTest, IsTheFileOfTheDocs) {
  std::ifstream file(KAVO_SOURCE_DIR "/docs/openapi/kavo-v1.json", std::ios::binary);
  ASSERT_TRUE(file);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), openApiDocument());
}

TEST_F(OpenApiTest, HasEveryRouteAndNoOther) {
  std::set<std::pair<std::string, std::string>> documented;
  for (const auto& [path, methods] : m_document.at("paths").items()) {
    for (const auto& [method, operation] : methods.items()) {
      documented.emplace(upper(method), path);
    }
  }
  std::set<std::pair<std::string, std::string>> served;
  for (const Route& route : ROUTES) {
    served.emplace(route.method, route.path);
  }
  EXPECT_EQ(documented, served);
}

TEST_F(OpenApiTest, EverythingThatIsServedIsAsDescribed) {
  const std::string value = R"({"value":true})";
  expectDescribed("get", "/v1", "/v1", 200);
  expectDescribed("get", "/v1/signals", "/v1/signals", 200);
  expectDescribed("get", "/v1/signals/{id}", "/v1/signals/5", 200);
  expectDescribed("get", "/v1/signals/{id}", "/v1/signals/6", 200);
  expectDescribed("get", "/v1/signals/{id}", "/v1/signals/x", 400);
  expectDescribed("get", "/v1/signals/{id}", "/v1/signals/100", 404);
  expectDescribed("put", "/v1/signals/{id}", "/v1/signals/5", 200, "Content-Type: application/json\r\n", value);
  expectDescribed("put", "/v1/signals/{id}", "/v1/signals/7", 400, "", "{}");
  expectDescribed("put", "/v1/signals/{id}", "/v1/signals/7", 403, "Kavo-Scopes: motion.view\r\n", value);
  expectDescribed("put", "/v1/signals/{id}", "/v1/signals/100", 404, "", value);
  expectDescribed("put", "/v1/signals/{id}", "/v1/signals/7", 413, "", std::string(MAX_BODY + 1, ' '));
  expectDescribed("put", "/v1/signals/{id}", "/v1/signals/7", 415, "Content-Type: text/plain\r\n", value);
  expectDescribed("get", "/v1/why", "/v1/why", 200);
  expectDescribed("get", "/v1/openapi.json", "/v1/openapi.json", 200);
  for (const char* const path : {"/v1", "/v1/signals", "/v1/signals/{id}", "/v1/events", "/v1/why", "/v1/openapi.json"}) {
    const std::string target = path == std::string("/v1/signals/{id}") ? "/v1/signals/1" : path;
    expectDescribed("get", path, target, 403, "Kavo-Scopes: unknown\r\n");
    expectDescribed("get", path, target + "?unknown=1", 400);
    expectDescribed("get", path, target + "?" + std::string(MAX_TARGET, 'x'), 414);
    expectDescribed("get", path, target, 431, "Long: " + std::string(MAX_HEAD, 'x') + "\r\n");
  }
  // What remains of the success answers: the stream, in the test below.
  for (const Route& route : ROUTES) {
    const std::string method = route.method == "GET" ? "get" : "put";
    EXPECT_TRUE(route.operation == Operation::WATCH || m_seen.contains({method + " " + std::string(route.path), 200}))
        << route.path;
  }
}

TEST_F(OpenApiTest, OtherMethodsAreRefusedAsDescribed) {
  for (const auto& [path, methods] : m_document.at("paths").items()) {
    const std::string target = path == "/v1/signals/{id}" ? "/v1/signals/1" : path;
    const RawAnswer answer = ask(m_live.socket(), "PATCH", target);
    EXPECT_EQ(answer.status, 405);
    for (const auto& [method, operation] : methods.items()) {
      EXPECT_THAT(answer.headers.at("allow"), testing::HasSubstr(upper(method)));
      const Json& schema = described(method, path, 405).at("content").at("application/json").at("schema");
      EXPECT_THAT(mismatches(m_document, schema, Json::parse(answer.body)), IsEmpty());
    }
  }
}

TEST_F(OpenApiTest, TheEventsAreAsDescribed) {
  const Json& response = described("get", "/v1/events", 200);
  EXPECT_TRUE(response.at("content").contains("text/event-stream"));
  const Json schemas = m_document.at("components").at("schemas");
  std::set<std::string> names;
  std::promise<void> hasBegun;
  std::thread watcher([&] {
    const Reply reply = m_live.client().watch("/v1/events?signals=5", [&](const std::string& name, const Json& data) {
      const char* const schema = name == "signal" ? "SignalEvent" : name == "lost" ? "LostEvent" : "EndEvent";
      EXPECT_THAT(mismatches(m_document, schemas.at(schema), data), IsEmpty()) << name;
      if (names.insert(name).second && name == "signal") {
        hasBegun.set_value();
      }
    });
    EXPECT_TRUE(reply.isFine()) << reply.problem;
  });
  hasBegun.get_future().wait();
  EXPECT_TRUE(m_live.client().put("/v1/signals/5", {{"value", true}}).isFine());
  m_live.finish();
  watcher.join();
  EXPECT_THAT(names, testing::ElementsAre("end", "signal"));
  EXPECT_THAT(mismatches(m_document, schemas.at("LostEvent"), Json::parse(R"({"count":3})")), IsEmpty());
}

TEST_F(OpenApiTest, EveryReferenceLeadsSomewhere) {
  std::function<void(const Json&)> visit = [&](const Json& element) {
    if (element.is_object() && element.contains("$ref")) {
      EXPECT_NO_THROW(static_cast<void>(resolve(m_document, element))) << element;
    }
    if (element.is_structured()) {
      for (const Json& child : element) {
        visit(child);
      }
    }
  };
  visit(m_document);
}

TEST(OpenApiRateTest, TooManyRequestsAndTheirAnswerAreDescribed) {
  DoorConfig config{"kavo test", {"motion.operate"}};
  config.clock = [] { return std::chrono::steady_clock::time_point(); };
  const Json document = Json::parse(openApiDocument());
  LiveDoor live(config);
  RawClient client(live.socket());
  RawAnswer answer;
  for (int i = 0; i <= static_cast<int>(REQUEST_BURST); ++i) {
    client.send("GET /v1 HTTP/1.1\r\nHost: x\r\n\r\n");
    answer = client.readAnswer();
  }
  ASSERT_EQ(answer.status, 429);
  const Json& response = resolve(document, document.at("paths").at("/v1").at("get").at("responses").at("429"));
  EXPECT_THAT(mismatches(document, response.at("content").at("application/json").at("schema"), Json::parse(answer.body)),
              IsEmpty());
  EXPECT_THAT(mismatches(document, response.at("headers").at("Retry-After").at("schema"),
                         Json::parse(answer.headers.at("retry-after"))),
              IsEmpty());
}

TEST(SchemaCheckTest, FindsWhatDoesNotMatch) {
  const Json schema = Json::parse(R"({"type":"object","required":["a"],"additionalProperties":false,"properties":{
      "a":{"type":"integer","minimum":1,"maximum":3},"b":{"type":"array","items":{"type":"string","pattern":"^x"},"maxItems":2},
      "c":{"type":"string","nullable":true,"enum":["u","v"]}}})");
  for (const char* const good : {R"({"a":1})", R"({"a":3,"b":["x","xy"],"c":null})", R"({"a":2,"c":"u"})"}) {
    EXPECT_THAT(mismatches(schema, schema, Json::parse(good)), IsEmpty()) << good;
  }
  for (const char* const bad :
       {"[]", "{}", R"({"a":0})", R"({"a":4})", R"({"a":1.5})", R"({"a":null})", R"({"a":1,"d":1})", R"({"a":1,"b":"x"})",
        R"({"a":1,"b":["y"]})", R"({"a":1,"b":["x","x","x"]})", R"({"a":1,"c":"w"})"}) {
    EXPECT_FALSE(mismatches(schema, schema, Json::parse(bad)).empty()) << bad;
  }
  EXPECT_FALSE(mismatches(schema, Json::parse(R"({"typ":"integer"})"), 1).empty()) << "an unknown keyword";
}

}  // namespace
}  // namespace motion::host::door
