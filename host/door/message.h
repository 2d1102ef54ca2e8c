// Requests and answers of the door, apart from how they travel.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace motion::host::door {

class EventStream;

struct Request {
  std::string method;
  std::string path;                                        ///< decoded, without the query
  std::vector<std::pair<std::string, std::string>> query;  ///< likewise
  std::optional<std::string> scopes;                       ///< the header Kavo-Scopes, if it is there
  std::optional<std::string> contentType;                  ///< of the body, if the client says so
  std::string body;
};

struct Response {
  int status = 200;
  std::string contentType = "application/json";
  std::string body;
  std::vector<std::pair<std::string, std::string>> headers;
  std::shared_ptr<EventStream> events;  ///< if not null, its events follow instead of a body
};

}  // namespace motion::host::door
