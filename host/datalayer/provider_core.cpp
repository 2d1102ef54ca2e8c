#include "host/datalayer/provider_core.h"

#include <iterator>
#include <utility>

namespace motion::host::datalayer {

namespace {

/// Whose thread this is.
thread_local const ProviderCore* t_current = nullptr;

}  // namespace

bool ProviderCore::add(const std::string& address, comm::datalayer::IProviderNode* node) {
  const std::lock_guard lock(m_mutex);
  if (m_nodes.contains(address)) {
    return false;
  }
  return m_nodes.emplace(address, std::make_shared<Node>(Node{node, 0})).second;
}

bool ProviderCore::remove(const std::string& address) noexcept {
  std::list<Request> dropped;
  std::unique_lock lock(m_mutex);
  const auto found = m_nodes.find(address);
  if (found == m_nodes.end()) {
    return false;
  }
  const std::shared_ptr<Node> node = std::move(found->second);
  m_nodes.erase(found);  // nobody begins with it any more
  for (auto request = m_requests.begin(); request != m_requests.end();) {
    const auto next = std::next(request);
    if (request->address == address) {
      dropped.splice(dropped.end(), m_requests, request);
    }
    request = next;
  }
  if (m_requests.empty()) {
    m_finished.notify_all();
  }
  // Who waits for what is dropped does not wait for what runs as well; and what it holds is let go without the lock.
  lock.unlock();
  dropped.clear();
  lock.lock();
  if (t_current != this) {
    m_finished.wait(lock, [&node] { return node->running == 0; });
  }
  return true;
}

bool ProviderCore::start() {
  std::unique_lock lock(m_mutex);
  if (m_isRunning) {
    return false;
  }
  m_threads.reserve(THREADS);
  m_isRunning = true;
  ++m_run;
  try {
    while (m_threads.size() < THREADS) {
      m_threads.emplace_back([self = shared_from_this(), run = m_run] { self->work(run); });
    }
  } catch (...) {
    lock.unlock();
    static_cast<void>(stop());
    throw;
  }
  return true;
}

bool ProviderCore::stop() noexcept {
  std::vector<std::thread> threads;
  std::list<Request> dropped;
  {
    const std::lock_guard lock(m_mutex);
    if (!std::exchange(m_isRunning, false)) {
      return false;
    }
    threads.swap(m_threads);
    dropped.swap(m_requests);
  }
  m_posted.notify_all();
  m_finished.notify_all();  // nothing waits any more
  dropped.clear();          // nor does anybody for these, whatever still runs
  for (std::thread& thread : threads) {
    // A callback that stops its own provider cannot wait for itself.
    if (thread.get_id() == std::this_thread::get_id()) {
      thread.detach();
    } else {
      thread.join();
    }
  }
  return true;
}

bool ProviderCore::isRunning() const {
  const std::lock_guard lock(m_mutex);
  return m_isRunning;
}

bool ProviderCore::post(const std::string& address, Call call) {
  {
    const std::lock_guard lock(m_mutex);
    if (!m_isRunning || m_requests.size() >= MAX_WAITING) {
      return false;
    }
    m_requests.push_back({address, std::move(call)});
  }
  m_posted.notify_one();
  return true;
}

void ProviderCore::work(std::uint64_t run) {
  t_current = this;
  std::unique_lock lock(m_mutex);
  for (;;) {
    const auto isOver = [this, run] { return !m_isRunning || m_run != run; };
    m_posted.wait(lock, [&] { return isOver() || !m_requests.empty(); });
    if (isOver()) {
      return;
    }
    ++m_busy;
    runOne(lock);
    --m_busy;
    m_finished.notify_all();
  }
}

bool ProviderCore::waitUntilIdle(Clock::time_point deadline) noexcept {
  std::unique_lock lock(m_mutex);
  return m_finished.wait_until(lock, deadline, [this] { return m_busy == 0 && m_requests.empty(); });
}

bool ProviderCore::isIdle() const {
  const std::lock_guard lock(m_mutex);
  return m_busy == 0 && m_requests.empty();
}

void ProviderCore::waitForCallbacks() noexcept {
  std::unique_lock lock(m_mutex);
  const std::size_t own = t_current == this ? 1 : 0;
  m_finished.wait(lock, [&] { return m_busy <= own; });
}

void ProviderCore::runOne(std::unique_lock<std::mutex>& lock) {
  Request request = std::move(m_requests.front());
  m_requests.pop_front();
  if (const auto found = m_nodes.find(request.address); found != m_nodes.end()) {
    const std::shared_ptr<Node> node = found->second;
    call(request, *node, lock);
  }
  // What the request holds is let go without the lock.
  lock.unlock();
  request.call = nullptr;
  lock.lock();
}

void ProviderCore::call(const Request& request, Node& node, std::unique_lock<std::mutex>& lock) {
  ++node.running;
  lock.unlock();
  try {
    request.call(*node.node);
  } catch (...) {
    // A node has no right to throw; its request ends without an answer of its own.
  }
  lock.lock();
  if (--node.running == 0) {
    m_finished.notify_all();  // whoever withdraws it waits for this
  }
}

}  // namespace motion::host::datalayer
