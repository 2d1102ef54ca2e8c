// What answers for the nodes of one provider: its nodes, its threads, and the requests that wait for them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "comm/datalayer/i_provider_node.h"

namespace motion::host::datalayer {

/// The provider, its threads and everybody who has a request for it share it; made by std::make_shared.
///
/// - `remove` and `stop` come back when no callback of theirs runs any more, unless a callback itself calls them.
/// - `post` never waits; at most MAX_WAITING requests wait.
/// - A callback that throws or never answers costs its own request only; one that never comes back also a thread of its
///   provider.
class ProviderCore : public std::enable_shared_from_this<ProviderCore> {
 public:
  using Call = std::function<void(comm::datalayer::IProviderNode& node)>;
  using Clock = std::chrono::steady_clock;

  static constexpr std::size_t THREADS = 2;
  static constexpr std::size_t MAX_WAITING = 256;

  ProviderCore() = default;
  ProviderCore(const ProviderCore&) = delete;
  ProviderCore& operator=(const ProviderCore&) = delete;
  ~ProviderCore() = default;

  /// False when the address is taken. Throws std::bad_alloc. [framework]
  [[nodiscard]] bool add(const std::string& address, comm::datalayer::IProviderNode* node);
  /// Withdraws a node; requests that wait for it are dropped. False when there is none. [framework]
  [[nodiscard]] bool remove(const std::string& address) noexcept;

  /// False when it runs already. Throws what starting a thread throws. [framework]
  [[nodiscard]] bool start();
  /// Drops what waits. False when it does not run. [framework]
  [[nodiscard]] bool stop() noexcept;
  [[nodiscard]] bool isRunning() const;  ///< [any]

  /// No request waits and no callback runs. [any]
  [[nodiscard]] bool isIdle() const;
  /// Comes back when that is so, or with false at the deadline. Not from a callback. [framework]
  bool waitUntilIdle(Clock::time_point deadline = Clock::time_point::max()) noexcept;
  /// Comes back when no callback runs, but for the one that calls it, if one does. [framework]
  void waitForCallbacks() noexcept;

  /// Calls the node of that address on a thread of this provider; whatever the call throws is swallowed. When the node is
  /// gone by then, or the provider stops, `call` is destroyed without having been called. False when the provider does not
  /// run or too many wait. Throws std::bad_alloc. [any]
  [[nodiscard]] bool post(const std::string& address, Call call);

 private:
  struct Node {
    comm::datalayer::IProviderNode* node = nullptr;
    std::size_t running = 0;  ///< callbacks
  };
  struct Request {
    std::string address;
    Call call;
  };

  void work(std::uint64_t run);
  void runOne(std::unique_lock<std::mutex>& lock);
  void call(const Request& request, Node& node, std::unique_lock<std::mutex>& lock);

  mutable std::mutex m_mutex;
  std::condition_variable m_posted;
  std::condition_variable m_finished;
  /// Whoever waits for the callbacks of a node that was withdrawn shares it; its address may have another one by then.
  std::map<std::string, std::shared_ptr<Node>> m_nodes;
  std::list<Request> m_requests;
  std::vector<std::thread> m_threads;
  std::size_t m_busy = 0;   ///< threads that have a request
  std::uint64_t m_run = 0;  ///< starts so far: a thread ends with its own run, even if the next one has begun
  bool m_isRunning = false;
};

}  // namespace motion::host::datalayer
