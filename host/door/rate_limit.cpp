#include "host/door/rate_limit.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace motion::host::door {

RateLimit::RateLimit(double rate, double burst, Clock clock)
    : m_price(std::llround(1e9 / rate)),
      m_most(std::llround(1e9 / rate * burst)),
      m_clock(std::move(clock)),
      m_saved(m_most),
      m_last(m_clock()) {}

bool RateLimit::take() {
  const std::lock_guard lock(m_mutex);
  const auto now = m_clock();
  m_saved = std::min<std::chrono::nanoseconds>(m_most, m_saved + (now - m_last));
  m_last = now;
  if (m_saved < m_price) {
    return false;
  }
  m_saved -= m_price;
  return true;
}

}  // namespace motion::host::door
