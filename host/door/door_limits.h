// What the door allows: sizes, rates and numbers, all in one place. docs/door.md tells users the same.
#pragma once

#include <chrono>
#include <cstddef>

namespace motion::host::door {

/// Bytes of a request's body.
inline constexpr std::size_t MAX_BODY = 4096;
/// Bytes of a request's first line and of all its headers together.
inline constexpr std::size_t MAX_HEAD = 8192;
/// Bytes of a request's target, the path with its query.
inline constexpr std::size_t MAX_TARGET = 1024;

/// Bytes of a path with which a body is read: all paths that take one are shorter.
inline constexpr std::size_t MAX_ROUTED_PATH = 64;

/// Requests a second over the whole door, and how many may come at once after a pause.
inline constexpr double REQUEST_RATE = 1000.0;
inline constexpr double REQUEST_BURST = 200.0;

/// Connections that are served at once, and those that wait for their turn in the queue of the system.
inline constexpr std::size_t MAX_CONNECTIONS = 16;
inline constexpr std::size_t MAX_QUEUED = 64;
/// Of these at most so many watch.
inline constexpr std::size_t MAX_WATCHERS = 8;
/// Requests on one connection.
inline constexpr std::size_t MAX_REQUESTS = 1000;

/// From the first byte of a request to its last one.
inline constexpr std::chrono::milliseconds REQUEST_LIMIT{5000};
/// How long a client may let the door wait with an answer.
inline constexpr std::chrono::milliseconds WRITE_LIMIT{5000};
/// How long a connection without a request is kept.
inline constexpr std::chrono::milliseconds IDLE_LIMIT{5000};
/// How long the run may take to say who waits for whom.
inline constexpr std::chrono::milliseconds EXPLAIN_LIMIT{2000};
/// The longest silence in a stream of events.
inline constexpr std::chrono::milliseconds HEARTBEAT{1000};
/// How long answers may take that are under way when the door closes.
inline constexpr std::chrono::milliseconds FAREWELL_LIMIT{500};

/// Changes of signals that are kept for slow watchers.
inline constexpr std::size_t KEPT_CHANGES = 1024;

}  // namespace motion::host::door
