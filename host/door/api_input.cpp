#include "host/door/api_input.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <nlohmann/json.hpp>

#include "host/door/refusal.h"

namespace motion::host::door {

using Json = nlohmann::ordered_json;

namespace {

constexpr const char* VALUE_BODY = "Expected is {\"value\": true} or {\"value\": false}.";
/// Texts of clients are repeated up to here.
constexpr std::size_t MAX_QUOTE = 60;

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view BLANKS = " \t";
  const std::size_t begin = text.find_first_not_of(BLANKS);
  return begin == std::string_view::npos ? "" : text.substr(begin, text.find_last_not_of(BLANKS) - begin + 1);
}

bool isNumber(std::string_view text) {
  return !text.empty() && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; });
}

/// SIGNAL_COUNT for everything that is larger than any signal.
std::uint32_t toNumber(std::string_view digits) {
  std::uint32_t number = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return result.ec == std::errc() && number < kavo::SIGNAL_COUNT ? number : kavo::SIGNAL_COUNT;
}

}  // namespace

std::string quote(std::string_view text) {
  std::string result;
  for (const char c : text.substr(0, MAX_QUOTE)) {
    result += std::isprint(static_cast<unsigned char>(c)) != 0 ? c : '?';
  }
  return "'" + result + (text.size() > MAX_QUOTE ? "...'" : "'");
}

std::vector<std::string> listOf(std::string_view text) {
  std::vector<std::string> list;
  for (std::size_t begin = 0; begin <= text.size();) {
    const std::size_t end = std::min(text.find(',', begin), text.size());
    if (const std::string_view part = trimmed(text.substr(begin, end - begin)); !part.empty()) {
      list.emplace_back(part);
    }
    begin = end + 1;
  }
  return list;
}

Parsed<std::uint32_t> parseSignal(std::string_view text) {
  if (!isNumber(text)) {
    return refuse(400, fmt::format("{} in the path is no signal. Expected is a number from 0 to {}.", quote(text),
                                   kavo::SIGNAL_COUNT - 1));
  }
  const std::uint32_t signal = toNumber(text);
  if (signal >= kavo::SIGNAL_COUNT) {
    return refuse(404, fmt::format("There is no signal {}. The signals are 0 to {}.", quote(text), kavo::SIGNAL_COUNT - 1));
  }
  return signal;
}

Parsed<SignalSet> parseWatched(const Request& request) {
  SignalSet watched;
  if (request.query.empty()) {
    return watched.set();
  }
  if (request.query.size() > 1 || request.query.front().first != "signals") {
    return refuse(400, fmt::format("{} in the query is not understood. Expected is nothing but one list of signals, as in "
                                   "'?signals=1,2'.",
                                   quote(request.query.back().first)));
  }
  for (const std::string& part : listOf(request.query.front().second)) {
    const std::uint32_t signal = isNumber(part) ? toNumber(part) : kavo::SIGNAL_COUNT;
    if (signal >= kavo::SIGNAL_COUNT) {
      return refuse(400,
                    fmt::format("{} in the query is no signal. Expected are numbers from 0 to {}, as in '?signals=1,2'.",
                                quote(part), kavo::SIGNAL_COUNT - 1));
    }
    watched.set(signal);
  }
  if (watched.none()) {
    return refuse(400, "The list of signals in the query is empty. Leave it out to watch all, or write '?signals=1,2'.");
  }
  return watched;
}

Parsed<bool> parseValue(const Request& request) {
  if (request.contentType) {
    const std::string type(trimmed(std::string_view(*request.contentType).substr(0, request.contentType->find(';'))));
    if (!std::ranges::equal(type, std::string_view("application/json"),
                            [](char a, char b) { return std::tolower(static_cast<unsigned char>(a)) == b; })) {
      return refuse(415, fmt::format("The body is {}. Expected is application/json.", quote(type)));
    }
  }
  std::size_t members = 0;
  const auto countMembers = [&members](int depth, Json::parse_event_t event, const Json&) {
    members += event == Json::parse_event_t::key && depth == 1 ? 1 : 0;
    return true;
  };
  const Json body = Json::parse(request.body, countMembers, false);
  if (body.is_discarded()) {
    return refuse(400, fmt::format("The body is no JSON. {}", VALUE_BODY));
  }
  if (!body.is_object()) {
    return refuse(400, fmt::format("The body is no object, it is {}. {}", body.type_name(), VALUE_BODY));
  }
  for (const auto& [key, value] : body.items()) {
    if (key != "value") {
      return refuse(400, fmt::format("The body has a member {}, which is unknown. {}", quote(key), VALUE_BODY));
    }
  }
  const auto value = body.find("value");
  if (value == body.end()) {
    return refuse(400, fmt::format("The body has no member 'value'. {}", VALUE_BODY));
  }
  if (members != 1) {
    return refuse(400, fmt::format("The body has its member 'value' {} times. {}", members, VALUE_BODY));
  }
  if (!value->is_boolean()) {
    return refuse(400, fmt::format("'value' in the body is no boolean, it is {}. {}", value->type_name(), VALUE_BODY));
  }
  return value->get<bool>();
}

Parsed<std::monostate> expectNoQuery(const Request& request) {
  if (request.query.empty()) {
    return std::monostate();
  }
  return refuse(400, fmt::format("{} in the query is not understood. {} takes no query.", quote(request.query.front().first),
                                 quote(request.path)));
}

}  // namespace motion::host::door
