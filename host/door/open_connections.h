// The connections that are open at a moment, so that the door can end them.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <set>

namespace motion::host::door {

/// Thread-safe.
class OpenConnections {
 public:
  /// Listed while it lives; then the descriptor is closed.
  class Entry {
   public:
    Entry(OpenConnections& list, int descriptor);
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    ~Entry();

   private:
    OpenConnections& m_list;
    int m_descriptor;
  };

  /// Ends all, also those that are still to come: they may finish their answers within the limit, and get no requests any
  /// more. Returns without waiting for those that were cut off after that.
  void endAll(std::chrono::milliseconds limit) noexcept;

 private:
  std::mutex m_mutex;
  std::condition_variable m_isEmpty;
  std::set<int> m_descriptors;
  bool m_isEnding = false;
};

}  // namespace motion::host::door
