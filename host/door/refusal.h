// Answers of the door to what it does not do.
#pragma once

#include <optional>
#include <string>

#include "host/datalayer/node_walk.h"
#include "host/door/message.h"

namespace motion::host::door {

/// An answer with the error in JSON. The message says what is wrong, where, and what would be right. Throws std::bad_alloc.
[[nodiscard]] Response refuse(int status, const std::string& message);
/// The same when the scopes of a request do not allow it.
[[nodiscard]] Response refuseAsUnauthorized(const std::string& message);
/// The same for what the data layer has refused; `what` was to be done.
[[nodiscard]] Response refuse(const datalayer::NodeError& error, const std::string& what);
/// For errors that show up before a request is understood, or while it is answered.
[[nodiscard]] std::string messageFor(int status);

}  // namespace motion::host::door
