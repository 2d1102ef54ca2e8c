#include "host/motion/pacer.h"

#include <fmt/format.h>
#include <pthread.h>
#include <sched.h>
#include <sys/mman.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

namespace motion::host {

namespace {

constexpr std::int64_t NANOSECONDS = 1'000'000'000;
/// Above ordinary real-time tasks, below the kernel's own threads.
constexpr int CYCLIC_PRIORITY = 80;

std::int64_t now() noexcept {
  timespec time{};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * NANOSECONDS + time.tv_nsec;
}

}  // namespace

RealTimePacer::RealTimePacer(double cycleTime) : m_period(std::max(1LL, std::llround(cycleTime * 1e9))) {}

void RealTimePacer::waitForCycle() noexcept {
  if (m_due == 0) {
    m_due = now();
  }
  m_due += m_period;
  m_cycles.fetch_add(1, std::memory_order_relaxed);
  if (const std::int64_t late = now() - m_due; late > 0) {
    // The lost cycles are not made up for in a burst: the schedule goes on from here.
    m_overruns.fetch_add(1, std::memory_order_relaxed);
    m_due += late / m_period * m_period;
  }
  const timespec due{m_due / NANOSECONDS, m_due % NANOSECONDS};
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &due, nullptr) == EINTR) {
  }
  const std::int64_t latency = now() - m_due;
  if (latency > m_latestWakeUp.load(std::memory_order_relaxed)) {
    m_latestWakeUp.store(latency, std::memory_order_relaxed);
  }
}

Punctuality RealTimePacer::punctuality() const noexcept {
  return {m_cycles.load(std::memory_order_relaxed), m_overruns.load(std::memory_order_relaxed),
          m_latestWakeUp.load(std::memory_order_relaxed)};
}

std::string requestRealTime() {
  std::string warning;
  sched_param parameter{};
  parameter.sched_priority = CYCLIC_PRIORITY;
  if (const int error = pthread_setschedparam(pthread_self(), SCHED_FIFO, &parameter); error != 0) {
    warning =
        fmt::format("real-time scheduling is not permitted ({}); cycles may be late. Run as root or grant CAP_SYS_NICE",
                    std::strerror(error));
  }
  if (mlockall(MCL_CURRENT | MCL_FUTURE) != 0) {
    warning += fmt::format("{}memory cannot be locked ({}); a page fault may delay a cycle. Raise the memlock limit",
                           warning.empty() ? "" : ". ", std::strerror(errno));
  }
  return warning;
}

}  // namespace motion::host
