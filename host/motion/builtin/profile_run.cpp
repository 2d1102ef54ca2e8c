#include "host/motion/builtin/profile_run.h"

namespace motion::host::builtin {

namespace {

/// Share of a cycle that counts as rounding: a profile whose duration is a whole number of cycles takes that number.
constexpr double ROUNDING = 1e-6;

}  // namespace

void ProfileRun::plan(double start, double end, double velocity, double acceleration) noexcept {
  m_end = end;
  m_profile.SetMax(velocity, acceleration);
  m_profile.SetProfile(start, end);
  m_cycles = 0;
}

ProfileRun::Step ProfileRun::next(double cycleTime) noexcept {
  ++m_cycles;
  const double time = static_cast<double>(m_cycles) * cycleTime;
  if (time >= m_profile.Duration() - ROUNDING * cycleTime) {
    return {m_end, 0.0, true};
  }
  return {m_profile.Pos(time), m_profile.Vel(time), false};
}

}  // namespace motion::host::builtin
