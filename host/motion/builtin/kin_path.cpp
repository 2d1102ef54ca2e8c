#include "host/motion/builtin/kin_path.h"

#include <fmt/format.h>

#include <kdl/utilities/error.h>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <iterator>
#include <kdl/path_circle.hpp>
#include <kdl/path_line.hpp>
#include <kdl/path_roundedcomposite.hpp>
#include <numbers>
#include <utility>

namespace motion::host::builtin {

namespace {

constexpr double SAME_POINT = 1e-6;       ///< [m]
constexpr double SMALLEST_RADIUS = 1e-6;  ///< [m]
constexpr double FARTHEST = 1e9;          ///< [m]; beyond, numbers do not tell points apart that are not the same
/// KDL takes no direction from a vector shorter than 1e-6, not even from a product of the lengths of three segments; so it
/// is given everything enlarged, by a power of two that changes no digit.
constexpr double ENLARGED = 0x1p20;
/// [rad]; where the way goes on nearly straight there is nothing to round, and where it nearly returns no arc fits in.
constexpr double STRAIGHT = 1e-5;
/// Sine of the angle between two chords of an arc, below which the points count as lying on one line.
constexpr double COLLINEAR = 1e-6;
/// Lets KDL compare turns with distances. The orientation does not turn, so that a path's length is that of the way of the
/// tool, whatever this is.
constexpr double TURNING_RADIUS = 1.0;

KDL::Vector toVector(const Point& point) {
  return {point[0], point[1], point[2]};
}

KDL::Frame toFrame(const Point& point) {
  return KDL::Frame(toVector(point) * ENLARGED);
}

double norm(const KDL::Vector& vector) {
  return std::sqrt(KDL::dot(vector, vector));
}

/// Change of direction at `corner` [rad]: 0 straight on, pi back again.
double turnAt(const Point& before, const Point& corner, const Point& after) {
  const KDL::Vector arriving = toVector(corner) - toVector(before);
  const KDL::Vector leaving = toVector(after) - toVector(corner);
  return std::atan2(norm(arriving * leaving), KDL::dot(arriving, leaving));
}

std::string inUnit(double metres, const core::Unit& unit) {
  return fmt::format("{:.6g} {}", metres / unit.factor, unit.name);
}

std::string nameOf(std::size_t place, std::size_t count) {
  return place == 0 ? "the start" : place == count - 1 ? "'to'" : fmt::format("point {} of 'via'", place);
}

/// What is wrong with points wherever they stand in a path; empty when nothing is.
std::string problemOfDistance(std::span<const Point> points, const core::Unit& unit) {
  const auto isFar = [](const Point& point) {
    return std::ranges::any_of(point, [](double coordinate) { return !(std::abs(coordinate) <= FARTHEST); });
  };
  return std::ranges::any_of(points, isFar)
             ? fmt::format("a point is too far away; no coordinate may be beyond {}", inUnit(FARTHEST, unit))
             : "";
}

/// What keeps the corners between the points from being rounded, whatever the radius; empty when nothing does.
std::string problemOfCorners(std::span<const Point> points) {
  for (std::size_t i = 1; i < points.size(); ++i) {
    if (distance(points[i - 1], points[i]) < SAME_POINT) {
      return fmt::format("{} and {} are the same; with 'blending' there must be a way before and after each corner",
                         nameOf(i - 1, points.size()), nameOf(i, points.size()));
    }
  }
  for (std::size_t i = 1; i + 1 < points.size(); ++i) {
    if (std::numbers::pi - turnAt(points[i - 1], points[i], points[i + 1]) < STRAIGHT) {
      return fmt::format("at {} the way returns on itself, where no 'blending' is possible; set it to 0",
                         nameOf(i, points.size()));
    }
  }
  return "";
}

/// Why KDL could not round the corner at `place`, whose neighbours are points too: all else has been checked.
std::string problemOfRounding(std::span<const Point> points, std::size_t place, double radius, const core::Unit& unit) {
  // A corner takes so much of the way on either side.
  const auto needAt = [&](std::size_t i) {
    const bool isCorner = i > 0 && i + 1 < points.size();
    const double turn = isCorner ? turnAt(points[i - 1], points[i], points[i + 1]) : 0.0;
    return turn < STRAIGHT ? 0.0 : radius * std::tan(turn / 2.0);
  };
  const double after = distance(points[place], points[place + 1]);
  const std::size_t first = needAt(place) >= after ? place : place - 1;
  return fmt::format("'blending' is too large at {}: between {} and {} there are {}, but the corners take {}",
                     nameOf(place, points.size()), nameOf(first, points.size()), nameOf(first + 1, points.size()),
                     inUnit(distance(points[first], points[first + 1]), unit),
                     inUnit(needAt(first) + needAt(first + 1), unit));
}

}  // namespace

std::unique_ptr<KinPath> KinPath::alongLines(const Point& start, std::span<const Point> via, const Point& end,
                                             double blending, const core::Unit& unit, std::string& problem) {
  std::vector<Point> points{start};
  points.insert(points.end(), via.begin(), via.end());
  points.push_back(end);
  problem = problemOfDistance(points, unit);
  std::unique_ptr<KinPath> path(new KinPath(start, end));
  if (problem.empty() && blending > 0.0 && points.size() > 2) {
    problem = path->layBlendedLines(points, blending, unit);
  } else if (problem.empty()) {
    path->layLines(points);
  }
  return problem.empty() ? std::move(path) : nullptr;
}

std::unique_ptr<KinPath> KinPath::alongArc(const Point& start, const Point& via, const Point& end, const core::Unit& unit,
                                           std::string& problem) {
  std::unique_ptr<KinPath> path(new KinPath(start, end));
  problem = problemOfDistance(std::array{start, via, end}, unit);
  if (problem.empty()) {
    problem = path->layArc(via, unit);
  }
  return problem.empty() ? std::move(path) : nullptr;
}

void KinPath::append(std::unique_ptr<KDL::Path> path) {
  const double length = path->PathLength() / ENLARGED;
  m_parts.push_back({m_length, length, std::move(path)});
  m_length += length;
}

void KinPath::layLines(std::span<const Point> points) {
  // Lines of no length do no harm.
  for (std::size_t i = 1; i < points.size(); ++i) {
    append(std::make_unique<KDL::Path_Line>(toFrame(points[i - 1]), toFrame(points[i]), &m_constant, TURNING_RADIUS, false));
  }
}

std::string KinPath::layBlendedLines(std::span<const Point> points, double blending, const core::Unit& unit) {
  if (blending < SMALLEST_RADIUS) {
    return fmt::format("'blending' is too small; it must be 0 or at least {}", inUnit(SMALLEST_RADIUS, unit));
  }
  if (std::string problem = problemOfCorners(points); !problem.empty()) {
    return problem;
  }
  // A corner that is none ends one part and begins the next, because KDL cannot round it.
  std::unique_ptr<KDL::Path_RoundedComposite> part;
  const auto begin = [&](const Point& point) {
    part = std::make_unique<KDL::Path_RoundedComposite>(blending * ENLARGED, TURNING_RADIUS, &m_constant, false);
    part->Add(toFrame(point));
  };
  const auto finish = [&] {
    part->Finish();
    append(std::move(part));
  };
  begin(points.front());
  for (std::size_t i = 1; i < points.size(); ++i) {
    try {
      part->Add(toFrame(points[i]));  // rounds the corner before this point, if there is one
    } catch (const KDL::Error&) {
      return problemOfRounding(points, i - 1, blending, unit);
    }
    if (i + 1 < points.size() && turnAt(points[i - 1], points[i], points[i + 1]) < STRAIGHT) {
      finish();
      begin(points[i]);
    }
  }
  finish();
  return "";
}

std::string KinPath::layArc(const Point& via, const core::Unit& unit) {
  const KDL::Vector start = toVector(m_start);
  const KDL::Vector a = toVector(via) - start;
  const KDL::Vector b = toVector(m_end) - start;
  if (norm(b) < SAME_POINT) {
    return "'to' must not be where the arc begins; a full circle takes two arcs";
  }
  if (norm(a) < SAME_POINT || distance(via, m_end) < SAME_POINT) {
    return "'via' must lie between the start of the arc and 'to'";
  }
  const double product = norm(a) * norm(b);
  KDL::Vector normal = a * b;
  const double area = norm(normal);
  if (area < COLLINEAR * product) {
    return "'via' and 'to' must not lie on one line with the start of the arc; MoveLin moves along a line";
  }
  normal = normal / area;
  // The centre of the circle around a triangle with one corner at the origin. Seen against the normal, the corners follow
  // one another counter-clockwise.
  const KDL::Vector fromStart = ((KDL::dot(a, a) / area) * b - (KDL::dot(b, b) / area) * a) * normal / 2.0;
  const KDL::Vector x = -fromStart;
  const KDL::Vector y = normal * x;
  const KDL::Vector toEnd = b - fromStart;
  double sweep = std::atan2(KDL::dot(toEnd, y), KDL::dot(toEnd, x));
  if (sweep < 0.0) {
    sweep += 2.0 * std::numbers::pi;
  }
  if (norm(fromStart) < SMALLEST_RADIUS) {
    return fmt::format("the arc is too small; its radius must be at least {}", inUnit(SMALLEST_RADIUS, unit));
  }
  try {
    const KDL::Vector centre = (start + fromStart) * ENLARGED;
    append(std::make_unique<KDL::Path_Circle>(toFrame(m_start), centre, centre + y * ENLARGED, KDL::Rotation::Identity(),
                                              sweep, &m_constant, TURNING_RADIUS, false));
  } catch (const KDL::Error& error) {
    return fmt::format("there is no such arc: {}", error.Description());
  }
  return "";
}

Point KinPath::at(double distance) const noexcept {
  const auto next = std::ranges::upper_bound(m_parts, distance, {}, &Part::start);
  const Part& part = next == m_parts.begin() ? m_parts.front() : *std::prev(next);
  const KDL::Vector position = part.path->Pos(std::clamp(distance - part.start, 0.0, part.length) * ENLARGED).p / ENLARGED;
  return {position.x(), position.y(), position.z()};
}

}  // namespace motion::host::builtin
