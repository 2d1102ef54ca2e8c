#include "host/motion/builtin/profile_run.h"

#include "host/motion/whole_cycles.h"

namespace motion::host::builtin {

void ProfileRun::plan(double start, double end, double velocity, double acceleration) noexcept {
  m_end = end;
  m_profile.SetMax(velocity, acceleration);
  m_profile.SetProfile(start, end);
  m_cycles = 0;
}

ProfileRun::Step ProfileRun::next(double cycleTime) noexcept {
  ++m_cycles;
  const double time = static_cast<double>(m_cycles) * cycleTime;
  if (time >= m_profile.Duration() - CYCLE_ROUNDING * cycleTime) {
    return {m_end, 0.0, true};
  }
  return {m_profile.Pos(time), m_profile.Vel(time), false};
}

}  // namespace motion::host::builtin
