#include "host/door/api_input.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

namespace motion::host::door {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// Status and message of a refusal; 0 when nothing was refused.
template <typename T>
std::pair<int, std::string> refusalOf(const Parsed<T>& parsed) {
  const auto* const refusal = std::get_if<Response>(&parsed);
  if (refusal == nullptr) {
    return {0, ""};
  }
  return {refusal->status, nlohmann::json::parse(refusal->body).at("error").at("message")};
}

Request put(std::string body, std::optional<std::string> type = {}) {
  Request request;
  request.contentType = std::move(type);
  request.body = std::move(body);
  return request;
}

TEST(ApiInputTest, ListsAreSeparatedByCommas) {
  EXPECT_THAT(listOf(""), IsEmpty());
  EXPECT_THAT(listOf(" , ,"), IsEmpty());
  EXPECT_THAT(listOf("a"), ElementsAre("a"));
  EXPECT_THAT(listOf(" motion.view,\tmotion.operate ,"), ElementsAre("motion.view", "motion.operate"));
}

TEST(ApiInputTest, SignalsAreNumbers) {
  EXPECT_EQ(std::get<std::uint32_t>(parseSignal("0")), 0U);
  EXPECT_EQ(std::get<std::uint32_t>(parseSignal("99")), 99U);
  EXPECT_EQ(std::get<std::uint32_t>(parseSignal("05")), 5U);
  for (const char* const text : {"-1", "+1", "1.0", "0x1", "one", "1 ", " 1", "\n"}) {
    EXPECT_EQ(refusalOf(parseSignal(text)).first, 400) << text;
  }
  for (const char* const text : {"100", "4294967296", "99999999999999999999999"}) {
    EXPECT_EQ(refusalOf(parseSignal(text)).first, 404) << text;
  }
  EXPECT_EQ(refusalOf(parseSignal("one")).second, "'one' in the path is no signal. Expected is a number from 0 to 99.");
  EXPECT_EQ(refusalOf(parseSignal("100")).second, "There is no signal '100'. The signals are 0 to 99.");
}

TEST(ApiInputTest, WhatClientsWroteIsRepeatedInPart) {
  const std::string message = refusalOf(parseSignal("\x01" + std::string(500, 'x'))).second;
  EXPECT_THAT(message, HasSubstr("'?xxx"));
  EXPECT_THAT(message, HasSubstr("x...'"));
  EXPECT_LT(message.size(), 150U);
}

TEST(ApiInputTest, WatchersNameSignalsOrGetAll) {
  Request request;
  EXPECT_EQ(std::get<SignalSet>(parseWatched(request)).count(), 100U);
  request.query = {{"signals", "7, 1,7"}};
  const SignalSet watched = std::get<SignalSet>(parseWatched(request));
  EXPECT_EQ(watched.count(), 2U);
  EXPECT_TRUE(watched.test(1) && watched.test(7));
  for (const char* const list : {"", ",", "100", "1,x", "1-3", "-1"}) {
    request.query = {{"signals", list}};
    EXPECT_EQ(refusalOf(parseWatched(request)).first, 400) << list;
  }
  request.query = {{"signal", "1"}};
  EXPECT_THAT(refusalOf(parseWatched(request)).second, HasSubstr("'signal' in the query is not understood"));
  request.query = {{"signals", "1"}, {"signals", "2"}};
  EXPECT_EQ(refusalOf(parseWatched(request)).first, 400);
}

TEST(ApiInputTest, ABodyHasAValueAndNothingElse) {
  EXPECT_TRUE(std::get<bool>(parseValue(put(R"({"value": true})"))));
  EXPECT_FALSE(std::get<bool>(parseValue(put(R"( {"value":false} )"))));
  EXPECT_EQ(refusalOf(parseValue(put(""))).second,
            "The body is no JSON. Expected is {\"value\": true} or {\"value\": false}.");
  for (const char* const text : {"{", "{\"value\": True}", "{\"value\":true}}", "\xff", "{\"value\":true,}"}) {
    EXPECT_THAT(refusalOf(parseValue(put(text))).second, HasSubstr("no JSON")) << text;
  }
  EXPECT_THAT(refusalOf(parseValue(put("[true]"))).second, HasSubstr("no object, it is array"));
  EXPECT_THAT(refusalOf(parseValue(put("true"))).second, HasSubstr("no object, it is boolean"));
  EXPECT_THAT(refusalOf(parseValue(put("{}"))).second, HasSubstr("no member 'value'"));
  EXPECT_THAT(refusalOf(parseValue(put(R"({"value":false,"value":true})"))).second, HasSubstr("its member 'value' 2 times"));
  EXPECT_THAT(refusalOf(parseValue(put(R"({"value":true,"cycle":1})"))).second,
              HasSubstr("a member 'cycle', which is unknown"));
  for (const char* const value : {"1", "null", "\"true\"", "[]"}) {
    const auto [status, message] = refusalOf(parseValue(put(std::string(R"({"value":)") + value + "}")));
    EXPECT_EQ(status, 400) << value;
    EXPECT_THAT(message, HasSubstr("'value' in the body is no boolean"));
  }
}

TEST(ApiInputTest, ADeepBodyIsRefusedLikeAnyOther) {
  EXPECT_EQ(refusalOf(parseValue(put(std::string(4096, '[')))).first, 400);
  EXPECT_EQ(refusalOf(parseValue(put(std::string(2048, '[') + std::string(2048, ']')))).first, 400);
}

TEST(ApiInputTest, ABodyThatSaysThatItIsNoJsonIsRefused) {
  for (const char* const type : {"application/json", "application/json; charset=utf-8", "Application/JSON ;x"}) {
    EXPECT_EQ(refusalOf(parseValue(put(R"({"value":true})", type))).first, 0) << type;
  }
  for (const char* const type : {"", "text/plain", "application/jsonx", "application/x-www-form-urlencoded"}) {
    EXPECT_EQ(refusalOf(parseValue(put(R"({"value":true})", type))).first, 415) << type;
  }
}

}  // namespace
}  // namespace motion::host::door
