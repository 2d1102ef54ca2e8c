// The way of a kinematics through space: lines and arcs.
#pragma once

#include <kdl/path.hpp>
#include <kdl/rotational_interpolation_sa.hpp>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "host/motion/setpoint.h"
#include "motion/core/unit_settings.h"

namespace motion::host::builtin {

/// A path along which the orientation stays as it is. Where a direction is needed, at rounded corners and for arcs, points
/// nearer to one another than a micrometre count as the same.
class KinPath {
 public:
  KinPath(const KinPath&) = delete;
  KinPath& operator=(const KinPath&) = delete;

  /// From `start` through `via` to `end` along straight lines; `blending` [m] is the radius of the corners, 0 for corners as
  /// they are. Null when there is no such path: `problem` says why, with lengths in the user's unit. Throws std::bad_alloc.
  /// [prepare]
  [[nodiscard]] static std::unique_ptr<KinPath> alongLines(const Point& start, std::span<const Point> via, const Point& end,
                                                           double blending, const core::Unit& unit, std::string& problem);
  /// Along the arc that leads from `start` through `via` to `end`; otherwise as alongLines. [prepare]
  [[nodiscard]] static std::unique_ptr<KinPath> alongArc(const Point& start, const Point& via, const Point& end,
                                                         const core::Unit& unit, std::string& problem);

  [[nodiscard]] double length() const noexcept { return m_length; }      ///< [m] [any]
  [[nodiscard]] const Point& start() const noexcept { return m_start; }  ///< [any]
  [[nodiscard]] const Point& end() const noexcept { return m_end; }      ///< [any]
  /// The point after `distance` [m]; before the start and behind the end it is those. In one thread at a time, for KDL
  /// remembers where it last looked. [cyclic & real-time]
  [[nodiscard]] Point at(double distance) const noexcept;

 private:
  KinPath(const Point& start, const Point& end) : m_start(start), m_end(end) {}

  void layLines(std::span<const Point> points);
  [[nodiscard]] std::string layBlendedLines(std::span<const Point> points, double blending, const core::Unit& unit);
  [[nodiscard]] std::string layArc(const Point& via, const core::Unit& unit);
  void append(std::unique_ptr<KDL::Path> path);

  struct Part {
    double start;   ///< [m] from the beginning of the whole
    double length;  ///< [m]
    std::unique_ptr<KDL::Path> path;
  };

  Point m_start;
  Point m_end;
  double m_length = 0.0;                               ///< [m]
  KDL::RotationalInterpolation_SingleAxis m_constant;  ///< of the orientation; the parts refer to it
  std::vector<Part> m_parts;                           ///< one after the other, never empty
};

}  // namespace motion::host::builtin
