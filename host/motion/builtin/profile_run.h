// A velocity profile, followed cycle by cycle.
#pragma once

#include <cstdint>
#include <kdl/velocityprofile_trap.hpp>

namespace motion::host::builtin {

/// A trapezoidal profile over a distance: in the n-th cycle the set-point is the profile at n cycle times, so the first
/// cycle already has a velocity.
class ProfileRun {
 public:
  struct Step {
    double position = 0.0;  ///< [m]; exactly the end in the last step
    double velocity = 0.0;  ///< [m/s]
    bool isLast = false;
  };

  /// SI units; velocity and acceleration above 0. [cyclic & real-time]
  void plan(double start, double end, double velocity, double acceleration) noexcept;
  /// The set-point of the next cycle. [cyclic & real-time]
  [[nodiscard]] Step next(double cycleTime) noexcept;

 private:
  KDL::VelocityProfile_Trap m_profile;
  double m_end = 0.0;  ///< [m]
  std::uint64_t m_cycles = 0;
};

}  // namespace motion::host::builtin
