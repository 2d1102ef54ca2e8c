// Reads what clients write: numbers of signals, lists, bodies.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "host/door/event_stream.h"
#include "host/door/message.h"

namespace motion::host::door {

/// What was written, or the refusal of it. All throw std::bad_alloc.
template <typename T>
using Parsed = std::variant<T, Response>;

/// What a client wrote, in quotes, for an answer that names it: without unprintable characters, and not more than the
/// beginning.
[[nodiscard]] std::string quote(std::string_view text);
/// The parts between commas without the blanks around them; empty parts are left out.
[[nodiscard]] std::vector<std::string> listOf(std::string_view text);
/// The number of a signal in a path.
[[nodiscard]] Parsed<std::uint32_t> parseSignal(std::string_view text);
/// The query of a watcher: "signals" with a list of numbers, or nothing, which means all.
[[nodiscard]] Parsed<SignalSet> parseWatched(const Request& request);
/// The body that sets or resets a signal.
[[nodiscard]] Parsed<bool> parseValue(const Request& request);
/// A refusal when there is a query.
[[nodiscard]] Parsed<std::monostate> expectNoQuery(const Request& request);

}  // namespace motion::host::door
