#include "host/door/open_connections.h"

#include <sys/socket.h>
#include <unistd.h>

namespace motion::host::door {

OpenConnections::Entry::Entry(OpenConnections& list, int descriptor) : m_list(list), m_descriptor(descriptor) {
  const std::lock_guard lock(m_list.m_mutex);
  m_list.m_descriptors.insert(descriptor);
  if (m_list.m_isEnding) {
    shutdown(descriptor, SHUT_RDWR);
  }
}

OpenConnections::Entry::~Entry() {
  const std::lock_guard lock(m_list.m_mutex);
  m_list.m_descriptors.erase(m_descriptor);
  close(m_descriptor);  // under the lock: the number may be given to another connection from now on
  if (m_list.m_descriptors.empty()) {
    m_list.m_isEmpty.notify_all();
  }
}

void OpenConnections::endAll(std::chrono::milliseconds limit) noexcept {
  std::unique_lock lock(m_mutex);
  m_isEnding = true;
  for (const int descriptor : m_descriptors) {
    shutdown(descriptor, SHUT_RD);
  }
  m_isEmpty.wait_for(lock, limit, [this] { return m_descriptors.empty(); });
  for (const int descriptor : m_descriptors) {
    shutdown(descriptor, SHUT_RDWR);
  }
}

}  // namespace motion::host::door
