// The numbers behind a condition, to the last bit: distance, surface of the sphere and point ahead of the path.
#include <fmt/format.h>

#include <cmath>
#include <limits>
#include <random>

#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/path_world.h"

namespace motion::conformance {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();
constexpr double NONE = std::numeric_limits<double>::quiet_NaN();

double above(double value) {
  return std::nextafter(value, INFINITE);
}
double below(double value) {
  return std::nextafter(value, -INFINITE);
}

/// Rounded to what a double holds: whatever the compiler knows of fused operations.
double rounded(double value) {
  const volatile double stored = value;
  return stored;
}

/// Of the two products the sum first, then the third one.
double distanceOf(const Point& d) {
  const double sum = rounded(rounded(d[0] * d[0]) + rounded(d[1] * d[1]));
  return std::sqrt(rounded(sum + rounded(d[2] * d[2])));
}
double distanceFromTheEnd(const Point& d) {
  return distanceOf({d[2], d[1], d[0]});
}
double fusedDistance(const Point& d) {
  return std::sqrt(std::fma(d[2], d[2], std::fma(d[1], d[1], rounded(d[0] * d[0]))));
}

/// Does a condition fire in its first cycle, with the tool at a point?
bool isInside(PathWorld& world, const Point& point, const Point& target, double radius) {
  world.arm({sphere(0, target, radius)});
  return world.firesAt(point);
}

/// The sphere of exactly that radius contains the point, the next smaller one does not.
void expectDistance(PathWorld& world, const Point& point, const Point& target, double distance) {
  const auto what = fmt::format("from ({}, {}, {}) to ({}, {}, {}), radius {}: ", point[0], point[1], point[2], target[0],
                                target[1], target[2], distance);
  expectTrue(what + "the surface is inside", isInside(world, point, target, distance));
  expectTrue(what + "one bit more contains it", isInside(world, point, target, above(distance)));
  expectFalse(what + "one bit less contains it", isInside(world, point, target, below(distance)));
}

void surfaceAlongAxes(const Bundle& bundle) {
  PathWorld world(bundle);
  for (const double distance : {5.0, 0.1, 1e-9, 12345.678, 0.7}) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      for (const double sign : {-1.0, 1.0}) {
        Point target{};
        target.at(axis) = sign * distance;
        expectDistance(world, {0, 0, 0}, target, distance);
        expectDistance(world, target, {0, 0, 0}, distance);
      }
    }
  }
}

void surfaceInSpace(const Bundle& bundle) {
  PathWorld world(bundle);
  expectDistance(world, {10, -20, 30}, {12, -17, 36}, 7);
  expectDistance(world, {0, 0, 0}, {-1, 2, -2}, 3);
  expectDistance(world, {1, 1, 1}, {4, 5, 1}, 5);
  expectDistance(world, {0, 0, 0}, {0.375, 0, 0.5}, 0.625);
}

void oneBitOutside(const Bundle& bundle) {
  PathWorld world(bundle);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    Point point{};
    point.at(axis) = above(5);
    expectFalse("one bit behind the surface fires", isInside(world, point, {0, 0, 0}, 5));
    point.at(axis) = below(5);
    expectTrue("one bit before the surface fires", isInside(world, point, {0, 0, 0}, 5));
  }
}

void radiusZero(const Bundle& bundle) {
  PathWorld world(bundle);
  const Point target = {0.1, -0.7, 12.3};
  expectTrue("the very point fires", isInside(world, target, target, 0));
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (const double neighbour : {above(target.at(axis)), below(target.at(axis))}) {
      Point point = target;
      point.at(axis) = neighbour;
      expectFalse("a neighbour fires", isInside(world, point, target, 0));
    }
  }
}

/// Points whose distance depends on the order of the operations, or on whether they are fused.
void orderOfSquares(const Bundle& bundle, double (*other)(const Point& d)) {
  PathWorld world(bundle);
  std::mt19937_64 random(4711);
  std::uniform_real_distribution<double> coordinate(-2, 2);
  int larger = 0;
  int smaller = 0;
  while (larger < 20 || smaller < 20) {
    const Point target = {coordinate(random), coordinate(random), coordinate(random)};
    const double distance = distanceOf(target);
    if (distance == other(target)) {
      continue;
    }
    ++(distance < other(target) ? larger : smaller);
    expectDistance(world, {0, 0, 0}, target, distance);
  }
}

/// A point on the way along one axis, and what is looked at ahead of it.
struct Step {
  double last;
  double pos;
};

constexpr double PRE_TRIGGER_TIME = 0.0055;
constexpr double CYCLE_TIME = 0.0015;

double fusedAhead(const Step& step) {
  return std::fma(PRE_TRIGGER_TIME / CYCLE_TIME, step.pos - step.last, step.pos);
}
double roundedTwice(const Step& step) {
  return rounded(rounded(rounded(PRE_TRIGGER_TIME / CYCLE_TIME) * (step.pos - step.last)) + step.pos);
}
double byReciprocal(const Step& step) {
  return std::fma(rounded(PRE_TRIGGER_TIME * rounded(1 / CYCLE_TIME)), step.pos - step.last, step.pos);
}
double productFirst(const Step& step) {
  return rounded(step.pos + rounded(rounded(PRE_TRIGGER_TIME * (step.pos - step.last)) / CYCLE_TIME));
}

/// Is exactly that coordinate of one axis looked at in the second cycle?
bool looksAt(PathWorld& world, std::size_t axis, const Step& step, double preTriggerTime, double ahead) {
  Point from{};
  Point to{};
  Point target{};
  from.at(axis) = step.last;
  to.at(axis) = step.pos;
  target.at(axis) = ahead;
  world.arm({sphere(0, target, 0, preTriggerTime)});
  expectFalse("fires in the first cycle", world.firesAt(from));
  return world.firesAt(to);
}

/// Steps for which another way to compute the point ahead misses it by a bit.
void fused(const Bundle& bundle, double (*other)(const Step& step)) {
  PathWorld world(bundle);
  world.kin.m_cycleTime = CYCLE_TIME;
  std::mt19937_64 random(4711);
  std::uniform_real_distribution<double> coordinate(0.5, 2.5);
  for (std::size_t count = 0; count < 30;) {
    const Step step{coordinate(random), coordinate(random)};
    const double point = fusedAhead(step);
    if (point == other(step)) {
      continue;
    }
    const std::size_t axis = count++ % 3;
    const auto what = fmt::format("axis {}, from {} to {}: ", axis, step.last, step.pos);
    expectTrue(what + "the point of one rounding is looked at", looksAt(world, axis, step, PRE_TRIGGER_TIME, point));
    expectFalse(what + "the point of the other way is looked at", looksAt(world, axis, step, PRE_TRIGGER_TIME, other(step)));
  }
}

void allAxesAhead(const Bundle& bundle) {
  PathWorld world(bundle);
  world.kin.m_cycleTime = CYCLE_TIME;
  const Step x{1.634, 1.945};
  const Step y{1.295, 1.638};
  const Step z{2.427, -2.035};
  world.arm({sphere(0, {fusedAhead(x), fusedAhead(y), fusedAhead(z)}, 0, PRE_TRIGGER_TIME)});
  expectFalse("fires in the first cycle", world.firesAt({x.last, y.last, z.last}));
  expectTrue("fires in the second cycle", world.firesAt({x.pos, y.pos, z.pos}));
}

void partsOfACycle(const Bundle& bundle) {
  PathWorld world(bundle);
  expectTrue("a quarter of a cycle ahead", looksAt(world, 0, {0, 1}, 0.00025, 1.25));
  expectTrue("half a cycle ahead", looksAt(world, 1, {0, 1}, 0.0005, 1.5));
  expectTrue("half a cycle ahead, backwards", looksAt(world, 2, {1, 0}, 0.0005, -0.5));
}

void noNumbers(const Bundle& bundle) {
  PathWorld world(bundle);
  expectFalse("a radius that is no number fires", isInside(world, {0, 0, 0}, {0, 0, 0}, NONE));
  expectFalse("a point that is no number fires", isInside(world, {NONE, 0, 0}, {0, 0, 0}, INFINITE));
  expectTrue("an infinite sphere contains a distance that overflows",
             isInside(world, {1e300, 0, 0}, {-1e300, 0, 0}, INFINITE));
  expectFalse("the largest sphere contains it",
              isInside(world, {1e300, 0, 0}, {-1e300, 0, 0}, std::numeric_limits<double>::max()));
}

}  // namespace

Checks pathArithmeticChecks() {
  return {
      {"path.surface-along-axes", "the surface belongs to the sphere, along each axis", surfaceAlongAxes},
      {"path.surface-in-space", "the surface belongs to the sphere, in general directions", surfaceInSpace},
      {"path.one-bit-outside", "a point one bit behind the surface is outside", oneBitOutside},
      {"path.radius-zero", "a radius of zero needs the very point", radiusZero},
      {"path.order-of-squares", "the squares of x and y are added first, then that of z",
       [](const Bundle& bundle) { orderOfSquares(bundle, &distanceFromTheEnd); }},
      {"path.squares-not-fused", "each square of the distance is rounded",
       [](const Bundle& bundle) { orderOfSquares(bundle, &fusedDistance); }},
      {"path.ahead-is-fused", "the point ahead is rounded once per coordinate",
       [](const Bundle& bundle) { fused(bundle, &roundedTwice); }},
      {"path.ahead-divides-first", "the look-ahead time is divided by the cycle time, not multiplied by a reciprocal",
       [](const Bundle& bundle) { fused(bundle, &byReciprocal); }},
      {"path.ahead-multiplies-last", "the displacement is multiplied by the number of cycles",
       [](const Bundle& bundle) { fused(bundle, &productFirst); }},
      {"path.ahead-of-all-axes", "all coordinates are looked ahead at once", allAxesAhead},
      {"path.ahead-by-parts", "parts of a cycle count, in either direction", partsOfACycle},
      {"path.no-numbers", "what is no number never fires", noNumbers},
  };
}

}  // namespace motion::conformance
