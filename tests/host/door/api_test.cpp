#include "host/door/api.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <nlohmann/json.hpp>
#include <thread>

#include "host/door/door_limits.h"
#include "host/door/openapi.h"
#include "host/motion/events.h"
#include "host/observe/signal_nodes.h"
#include "schemas/datalayer/diagnosis_generated.h"
#include "scripted_node.h"

namespace motion::host::door {
namespace {

using namespace comm::datalayer;
using motion::host::test::listOfScopes;
using motion::host::test::NodeCall;
using motion::host::test::ScriptedNode;
using testing::HasSubstr;
using testing::StartsWith;
using Json = nlohmann::json;

Variant diagnosis(std::uint32_t mainCode, std::uint32_t detailCode, const char* text) {
  flatbuffers::FlatBufferBuilder builder;
  DiagnosisT record;
  record.mainDiagnosisCode = mainCode;
  record.detailedDiagnosisCode = detailCode;
  record.text = text;
  builder.Finish(CreateDiagnosis(builder, &record));
  return Variant::fromFlatBuffer(builder.GetBufferSpan());
}

class ApiTest : public testing::Test {
 protected:
  ApiTest() {
    const std::string folder = kavo::SIGNALS_FOLDER_ADDRESS;
    EXPECT_EQ(m_provider->registerType("scopes/motion", listOfScopes({{"view", {"motion/state/**"}, {}, {}, {}},
                                                                      {"operate", {}, {folder + "/*"}, {}, {}},
                                                                      {"three", {}, {folder + "/03"}, {}, {}},
                                                                      {"secret", {}, {}, {}, {"motion/**"}}})),
              DL_OK);
    EXPECT_EQ(m_provider->registerNode(folder + "/*", &m_node), DL_OK);
    EXPECT_EQ(m_provider->start(), DL_OK);
    m_run.begin({"test.yaml", 0.001, {"", "", "", "glue valve"}});
    m_record.signalNames.resize(kavo::SIGNAL_COUNT);
  }
  ~ApiTest() override { m_dataLayer.closeClients(); }

  Response ask(const std::string& method, const std::string& path, const std::string& body = "",
               const std::optional<std::string>& scopes = {}) {
    Request request{method, path, {}, scopes, {}, body};
    if (const std::size_t question = path.find('?'); question != std::string::npos) {
      const std::size_t equals = path.find('=');
      request.path = path.substr(0, question);
      request.query.emplace_back(path.substr(question + 1, equals - question - 1), path.substr(equals + 1));
    }
    return sut.answer(request);
  }

  static Json error(const Response& response, int status) {
    EXPECT_EQ(response.status, status) << response.body;
    EXPECT_EQ(response.contentType, "application/json");
    const Json json = Json::parse(response.body).at("error");
    EXPECT_EQ(json.at("status"), status);
    return json;
  }

  void play(const NodeCall& call) {
    const auto signal = static_cast<std::size_t>(std::stoi(call.address.substr(call.address.size() - 2)));
    if (m_refusal) {
      const Variant record = diagnosis(0x090F2030, 0x0C5701B1, "the component's own words");
      call.answer(*m_refusal, &record);
    } else if (call.operation == "write") {
      m_values.at(signal) = *call.data->getBool();
      call.answer(DL_OK, nullptr);
    } else {
      const Variant value = m_isStrange ? Variant(std::string("strange")) : Variant(m_values.at(signal).load());
      call.answer(DL_OK, &value);
    }
  }

  std::array<std::atomic<bool>, kavo::SIGNAL_COUNT> m_values{};
  std::optional<DlResult> m_refusal;
  bool m_isStrange = false;
  std::chrono::steady_clock::time_point m_now{};
  ScriptedNode m_node{[this](const NodeCall& call) { play(call); }};
  datalayer::DataLayer m_dataLayer;
  std::unique_ptr<IProvider> m_provider{m_dataLayer.createProvider(std::string(datalayer::DataLayer::PROVIDER_ENDPOINT))};
  observe::RunRecord m_record;
  LiveRun m_run;
  Api sut{m_dataLayer, m_run, {"kavo 1", {"view", "operate", "three"}, [this] { return m_now; }}};
};

TEST_F(ApiTest, TellsAboutTheRunAndTheScopes) {
  m_run.look(m_record, 512);
  EXPECT_EQ(Json::parse(ask("GET", "/v1").body),
            Json::parse(R"({"version":1,"program":"kavo 1","scenario":"test.yaml","cycle":512,"cycleTime":0.001,
                            "grantedScopes":["operate","three","view"],"scopes":["operate","three","view"]})"));
  EXPECT_EQ(Json::parse(ask("GET", "/v1", "", "view, three,view").body).at("scopes"), Json({"three", "view"}));
  EXPECT_EQ(Json::parse(ask("GET", "/v1", "", "").body).at("scopes"), Json::array());
}

TEST_F(ApiTest, ShowsASignal) {
  EXPECT_EQ(ask("GET", "/v1/signals/3").body, "{\"id\":3,\"name\":\"glue valve\",\"value\":false}\n");
  m_values[4] = true;
  EXPECT_EQ(ask("GET", "/v1/signals/4").body, "{\"id\":4,\"name\":null,\"value\":true}\n");
}

TEST_F(ApiTest, ShowsAllSignals) {
  m_values[7] = true;
  m_run.look(m_record, 3);
  const Json body = Json::parse(ask("GET", "/v1/signals").body);
  EXPECT_EQ(body.at("cycle"), 3);
  ASSERT_EQ(body.at("signals").size(), 100U);
  for (std::size_t i = 0; i < 100; ++i) {
    EXPECT_EQ(body["signals"][i]["id"], i);
    EXPECT_EQ(body["signals"][i]["value"], i == 7);
  }
}

TEST_F(ApiTest, WritesASignal) {
  EXPECT_EQ(ask("PUT", "/v1/signals/3", R"({"value":true})").body, "{\"id\":3,\"name\":\"glue valve\",\"value\":true}\n");
  EXPECT_TRUE(m_values[3]);
  EXPECT_EQ(ask("PUT", "/v1/signals/3", R"({"value":false})").status, 200);
  EXPECT_FALSE(m_values[3]);
}

TEST_F(ApiTest, WhatIsNotUnderstoodWritesNothing) {
  for (const char* const body : {"", "true", "{}", R"({"value":1})", R"({"value":true,"x":1})"}) {
    EXPECT_EQ(error(ask("PUT", "/v1/signals/3", body), 400).at("code"), "bad-request") << body;
  }
  error(ask("PUT", "/v1/signals/three", R"({"value":true})"), 400);
  error(ask("PUT", "/v1/signals/100", R"({"value":true})"), 404);
  error(ask("PUT", "/v1/signals/3?now=1", R"({"value":true})"), 400);
  EXPECT_EQ(m_node.calls(), 0);
}

TEST_F(ApiTest, TheDataLayerDecidesWhatScopesAllow) {
  EXPECT_EQ(ask("GET", "/v1/signals/5", "", "view").status, 200);
  const int calls = m_node.calls();
  const Json json = error(ask("PUT", "/v1/signals/5", R"({"value":true})", "view"), 403);
  EXPECT_EQ(json.at("code"), "unauthorized");
  EXPECT_EQ(json.at("result"), "DL_SEC_UNAUTHORIZED");
  EXPECT_EQ(json.at("message"), "Signal 5 could not be set: the scopes of this request do not allow it");
  error(ask("PUT", "/v1/signals/5", R"({"value":true})", "three"), 403);
  error(ask("GET", "/v1/signals", "", "three"), 403);
  for (const char* const path : {"/v1/signals", "/v1/signals/3", "/v1/events", "/v1/events?signals=3", "/v1/why"}) {
    error(ask("GET", path, "", ""), 403);
  }
  EXPECT_EQ(m_node.calls(), calls) << "nothing of that was asked of the component";
  EXPECT_EQ(ask("PUT", "/v1/signals/3", R"({"value":true})", "three").status, 200);
}

TEST_F(ApiTest, NobodyGetsMoreThanWasGranted) {
  for (const char* const scopes : {"secret", "view,secret", "View", "view operate", "*"}) {
    const Json json = error(ask("GET", "/v1", "", scopes), 403);
    EXPECT_EQ(json.at("result"), "DL_SEC_UNAUTHORIZED");
    EXPECT_THAT(json.at("message"), HasSubstr("It grants: operate, three, view."));
  }
}

TEST_F(ApiTest, WhatTheComponentSaysGoesToTheClient) {
  m_refusal = DL_INVALID_HANDLE;
  const Json json = error(ask("PUT", "/v1/signals/3", R"({"value":false})"), 503);
  EXPECT_EQ(json.at("code"), "unavailable");
  EXPECT_EQ(json.at("result"), "DL_INVALID_HANDLE");
  EXPECT_EQ(json.at("mainCode"), "0x090F2030");
  EXPECT_EQ(json.at("detailCode"), "0x0C5701B1");
  EXPECT_EQ(json.at("message"),
            "Signal 3 'glue valve' could not be reset: the component refused it (the component's own words)");
  EXPECT_EQ(error(ask("GET", "/v1/signals"), 503).at("result"), "DL_INVALID_HANDLE");
  m_refusal.reset();
  m_isStrange = true;
  EXPECT_EQ(error(ask("GET", "/v1/signals/3"), 503).at("result"), "DL_TYPE_MISMATCH");
}

TEST_F(ApiTest, NothingIsAvailableWhenTheDataLayerIsClosed) {
  m_dataLayer.closeClients();
  const Json json = error(ask("GET", "/v1/signals/3"), 503);
  EXPECT_EQ(json.at("result"), "DL_CLIENT_NOT_CONNECTED");
  EXPECT_THAT(json.at("message"), HasSubstr("the run has ended"));
}

TEST_F(ApiTest, OnlyTheDescriptionIsLeftWhenTheRunIsOver) {
  m_run.end();
  for (const char* const path : {"/v1", "/v1/signals", "/v1/signals/1", "/v1/events", "/v1/why"}) {
    EXPECT_EQ(error(ask("GET", path), 503).at("message"), "The run has ended.") << path;
  }
  error(ask("PUT", "/v1/signals/1", R"({"value":true})"), 503);
  EXPECT_EQ(ask("GET", "/v1/openapi.json").body, openApiDocument());
}

TEST_F(ApiTest, UnknownPathsAndMethodsAreRefused) {
  for (const char* const path : {"/", "", "/v2", "/v1/", "/v1/signals/", "/v1/signals/1/value", "/v1/../v1", "*"}) {
    error(ask("GET", path), 404);
  }
  const Response response = ask("DELETE", "/v1/signals/3");
  EXPECT_THAT(error(response, 405).at("message"), HasSubstr("DELETE is not possible here. Possible: GET, PUT."));
  EXPECT_EQ(response.headers, (std::vector<std::pair<std::string, std::string>>{{"Allow", "GET, PUT"}}));
  for (const char* const method : {"POST", "HEAD", "OPTIONS", "PUT", "PATCH", "get", ""}) {
    error(ask(method, "/v1/why"), 405);
  }
}

TEST_F(ApiTest, ThereIsALimitToTheRate) {
  for (int i = 0; i < static_cast<int>(REQUEST_BURST); ++i) {
    ASSERT_EQ(ask("GET", "/v1").status, 200) << i;
  }
  const Response response = ask("GET", "/nowhere");
  EXPECT_EQ(error(response, 429).at("code"), "too-many-requests");
  EXPECT_EQ(response.headers, (std::vector<std::pair<std::string, std::string>>{{"Retry-After", "1"}}));
  m_now += std::chrono::milliseconds(2);
  EXPECT_EQ(ask("GET", "/v1").status, 200);
  EXPECT_EQ(ask("GET", "/v1").status, 200);
  EXPECT_EQ(ask("GET", "/v1").status, 429);
}

TEST_F(ApiTest, ThereIsALimitToTheWatchers) {
  std::vector<Response> watchers;
  for (std::size_t i = 0; i < MAX_WATCHERS; ++i) {
    watchers.push_back(ask("GET", "/v1/events?signals=3"));
    ASSERT_EQ(watchers.back().status, 200);
    ASSERT_NE(watchers.back().events, nullptr);
    EXPECT_EQ(watchers.back().contentType, "text/event-stream");
  }
  EXPECT_THAT(error(ask("GET", "/v1/events"), 503).at("message"), StartsWith("There are 8 watchers already"));
  watchers.pop_back();
  EXPECT_EQ(ask("GET", "/v1/events").status, 200);
}

TEST_F(ApiTest, AWatcherMustBeAllowedToReadEachOfItsSignals) {
  EXPECT_EQ(ask("GET", "/v1/events?signals=3", "", "three").status, 200);
  EXPECT_EQ(error(ask("GET", "/v1/events?signals=3,4", "", "three"), 403).at("message"),
            "Signal 4 could not be watched: the scopes of this request do not allow it");
  error(ask("GET", "/v1/events", "", "three"), 403);
  error(ask("GET", "/v1/events?signals=x"), 400);
}

TEST_F(ApiTest, SaysWhoWaitsForWhom) {
  std::atomic<bool> isDone{false};
  std::thread player([&] {
    while (!isDone) {
      m_run.look(m_record, 44);
      std::this_thread::yield();
    }
  });
  const Response response = ask("GET", "/v1/why");
  isDone = true;
  player.join();
  EXPECT_EQ(Json::parse(response.body),
            Json::parse(R"({"cycle":44,"text":"nobody waits","waits":{"objects":[],"circle":[],"circleSince":null,
                            "circleClosedBy":null,"neededSignals":[]}})"));
}

TEST_F(ApiTest, KeepsManyListsOfScopesApart) {
  m_now += std::chrono::seconds(1);
  for (int i = 0; i < 60; ++i) {
    EXPECT_EQ(ask("GET", "/v1/signals/5", "", i % 2 == 0 ? "view" : "three").status, i % 2 == 0 ? 200 : 403) << i;
  }
}

}  // namespace
}  // namespace motion::host::door
