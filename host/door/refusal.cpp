#include "host/door/refusal.h"

#include <fmt/format.h>

#include <array>
#include <utility>

#include "host/door/door_limits.h"
#include "host/door/signal_json.h"

namespace motion::host::door {

using namespace comm::datalayer;
using Json = nlohmann::ordered_json;

namespace {

struct StatusName {
  int status;
  const char* code;
  const char* message;
};

constexpr std::array STATUS_NAMES{
    StatusName{400, "bad-request",
               "This is no proper HTTP request, or it broke off. Expected is HTTP/1.1, as in 'GET /v1 HTTP/1.1'."},
    StatusName{403, "unauthorized", "The scopes of this request do not allow that."},
    StatusName{404, "not-found", "There is nothing at this path. What there is stands in /v1/openapi.json."},
    StatusName{405, "method-not-allowed", "This path does not take that method. The header Allow says which it takes."},
    StatusName{413, "too-large", "The body is too large."},
    StatusName{414, "uri-too-long", "The target of the request is too long."},
    StatusName{415, "unsupported-media-type", "The body must be application/json."},
    StatusName{429, "too-many-requests", "There are too many requests."},
    StatusName{431, "head-too-large", "The first line and the headers of the request are too large."},
    StatusName{500, "internal", "The door failed to answer. That is its fault, not the request's."},
    StatusName{503, "unavailable", "That is not available at the moment."},
};

const StatusName& nameOf(int status) {
  for (const StatusName& name : STATUS_NAMES) {
    if (name.status == status) {
      return name;
    }
  }
  return STATUS_NAMES.front();
}

Json errorJson(int status, const std::string& message) {
  return {{"status", status}, {"code", nameOf(status).code}, {"message", message}};
}

Response respond(int status, Json error) {
  Response response;
  response.status = status;
  response.body = toText({{"error", std::move(error)}}) + "\n";
  return response;
}

const char* reasonOf(DlResult result) {
  if (result == DL_SEC_UNAUTHORIZED) {
    return "the scopes of this request do not allow it";
  }
  if (result == DL_CLIENT_NOT_CONNECTED) {
    return "the run has ended";
  }
  if (result == DL_TIMEOUT) {
    return "the component did not answer in time";
  }
  if (result == DL_RESOURCE_UNAVAILABLE) {
    return "the component is too busy, or does not run any more";
  }
  if (result == DL_INVALID_ADDRESS) {
    return "the component offers no such node";
  }
  if (result == DL_OUT_OF_MEMORY) {
    return "there is not enough memory";
  }
  return "the component refused it";
}

}  // namespace

Response refuse(int status, const std::string& message) {
  return respond(status, errorJson(status, message));
}

Response refuseAsUnauthorized(const std::string& message) {
  Json json = errorJson(403, message);
  json["result"] = DlResult(DL_SEC_UNAUTHORIZED).toString();
  return respond(403, std::move(json));
}

Response refuse(const datalayer::NodeError& error, const std::string& what) {
  const int status = error.result == DL_SEC_UNAUTHORIZED ? 403 : 503;
  std::string message = fmt::format("{}: {}", what, reasonOf(error.result));
  if (!error.text.empty()) {
    message += fmt::format(" ({})", error.text);
  }
  Json json = errorJson(status, message);
  json["result"] = error.result.toString();
  if (error.mainCode != 0) {
    json["mainCode"] = fmt::format("0x{:08X}", error.mainCode);
    json["detailCode"] = fmt::format("0x{:08X}", error.detailCode);
  }
  return respond(status, std::move(json));
}

std::string messageFor(int status) {
  switch (status) {
    case 413:
      return fmt::format("The body is larger than {} bytes.", MAX_BODY);
    case 414:
      return fmt::format("The target of the request is longer than {} bytes.", MAX_TARGET);
    case 431:
      return fmt::format("The first line and the headers of the request are larger than {} bytes.", MAX_HEAD);
    default:
      return nameOf(status).message;
  }
}

}  // namespace motion::host::door
