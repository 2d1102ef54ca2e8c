// The clock that stamps trace entries, and the text form of its time.
#include "log_trace/clock.h"

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>

#include "log_trace/outputs_lib.h"

namespace common::log {
namespace {

constexpr long MICROSECONDS_PER_SECOND = 1'000'000;
constexpr long NANOSECONDS_PER_MICROSECOND = 1'000;
constexpr long NANOSECONDS_PER_SECOND = 1'000'000'000;
constexpr std::size_t DATE_TIME_LENGTH = 19;
constexpr std::size_t TEXT_LENGTH = 27;

// [s] since the epoch: the times whose year has four digits.
constexpr std::time_t FIRST_TEXT_SECOND = -62'135'596'800;
constexpr std::time_t LAST_TEXT_SECOND = 253'402'300'799;

ClockId knownClock(ClockId id) noexcept {
  switch (id) {
    case ClockId::Realtime:
    case ClockId::ProcessCpuTime:
    case ClockId::ThreadCpuTime:
      return id;
    default:
      return ClockId::Monotonic;
  }
}

long toMicroseconds(const timespec& timestamp) noexcept {
  long result = 0;
  if (__builtin_mul_overflow(timestamp.tv_sec, MICROSECONDS_PER_SECOND, &result) ||
      __builtin_add_overflow(result, timestamp.tv_nsec / NANOSECONDS_PER_MICROSECOND, &result)) {
    return 0;
  }
  return result;
}

bool hasText(const timespec& timestamp) noexcept {
  const bool isZero = timestamp.tv_sec == 0 && timestamp.tv_nsec == 0;
  return !isZero && timestamp.tv_sec >= FIRST_TEXT_SECOND && timestamp.tv_sec <= LAST_TEXT_SECOND &&
         timestamp.tv_nsec >= 0 && timestamp.tv_nsec < NANOSECONDS_PER_SECOND;
}

using Text = std::array<char, TEXT_LENGTH + 1>;

/// Writes "%FT%T.%06dZ" by calendar arithmetic: gmtime_r takes the time-zone lock and may allocate.
bool formatText(const timespec& timestamp, Text& text) noexcept {
  const std::chrono::sys_seconds time{std::chrono::seconds{timestamp.tv_sec}};
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date{day};
  const std::chrono::hh_mm_ss timeOfDay{time - day};

  std::array<char, DATE_TIME_LENGTH + 1> dateTime{};
  const int dateTimeLength =
      std::snprintf(dateTime.data(), dateTime.size(), "%04d-%02u-%02uT%02d:%02d:%02d", static_cast<int>(date.year()),
                    static_cast<unsigned int>(date.month()), static_cast<unsigned int>(date.day()),
                    static_cast<int>(timeOfDay.hours().count()), static_cast<int>(timeOfDay.minutes().count()),
                    static_cast<int>(timeOfDay.seconds().count()));
  if (dateTimeLength != static_cast<int>(DATE_TIME_LENGTH)) {
    return false;
  }
  const int length = std::snprintf(text.data(), text.size(), "%s.%06dZ", dateTime.data(),
                                   static_cast<int>(timestamp.tv_nsec / NANOSECONDS_PER_MICROSECOND));
  return length == static_cast<int>(TEXT_LENGTH);
}

}  // namespace

Clock::Clock(ClockId id) noexcept : m_id(knownClock(id)) {}

timespec Clock::getTimestamp() const noexcept {
  timespec now{};
  if (::clock_gettime(static_cast<clockid_t>(m_id), &now) != 0) {
    const char* const description = ::strerrordesc_np(errno);
    outputFunction("ERR", __LINE__, __func__, "Calling 'clock_gettime()' failed with error code '%s'",
                   description != nullptr ? description : "unknown error");
    return timespec{};
  }
  return now;
}

void Clock::convertTimestamp(const timespec& timestamp, long* microseconds, char* text, unsigned short size) noexcept {
  if (microseconds != nullptr) {
    *microseconds = toMicroseconds(timestamp);
  }
  if (text == nullptr || size == 0) {
    return;
  }
  text[0] = '\0';
  Text formatted{};
  if (size >= formatted.size() && hasText(timestamp) && formatText(timestamp, formatted)) {
    std::memcpy(text, formatted.data(), formatted.size());
  }
}

}  // namespace common::log
