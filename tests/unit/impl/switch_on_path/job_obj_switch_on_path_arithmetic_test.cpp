// The numbers behind a condition, to the last bit: distance, surface of the sphere and point ahead of the path.
#include <cmath>
#include <limits>
#include <tuple>

#include "impl/switch_on_path/job_obj_switch_on_path.h"
#include "switch_on_path/switch_on_path_fixture.h"

namespace motion::kavo::job {
namespace {

constexpr double INFINITE = std::numeric_limits<double>::infinity();

double above(double value) {
  return std::nextafter(value, INFINITE);
}

double below(double value) {
  return std::nextafter(value, -INFINITE);
}

class JobObjSwitchOnPathArithmeticTest : public SwitchOnPathBothWaysTest {
 protected:
  /// Does a condition fire in its first cycle, with the tool at a point?
  [[nodiscard]] bool isInside(const Point& point, const Point& target, double radius) {
    arm({sphere(0, target, radius)});
    return firesAt(point);
  }
  /// The sphere of exactly that radius contains the point, the next smaller one does not.
  void expectDistance(const Point& point, const Point& target, double distance) {
    EXPECT_TRUE(isInside(point, target, distance));
    EXPECT_TRUE(isInside(point, target, above(distance)));
    EXPECT_FALSE(isInside(point, target, below(distance)));
  }
  /// A point is tested for containing exactly that coordinate along one axis, in the second cycle.
  [[nodiscard]] bool looksAt(std::size_t axis, double last, double pos, double preTriggerTime, double ahead) {
    Point from{};
    Point to{};
    Point target{};
    from[axis] = last;
    to[axis] = pos;
    target[axis] = ahead;
    arm({sphere(0, target, 0, preTriggerTime)});
    EXPECT_FALSE(firesAt(from));
    return firesAt(to);
  }
};

TEST_P(JobObjSwitchOnPathArithmeticTest, CountsTheSurfaceAsInsideAlongEachAxis) {
  for (const double distance : {5.0, 0.1, 1e-9, 12345.678, 0.7}) {
    for (std::size_t axis = 0; axis < 3; ++axis) {
      for (const double sign : {-1.0, 1.0}) {
        Point target{};
        target[axis] = sign * distance;
        expectDistance({0, 0, 0}, target, distance);  // the square root of a square is the number itself
        expectDistance(target, {0, 0, 0}, distance);
      }
    }
  }
}

TEST_P(JobObjSwitchOnPathArithmeticTest, CountsTheSurfaceAsInsideInGeneralDirections) {
  expectDistance({10, -20, 30}, {12, -17, 36}, 7);
  expectDistance({0, 0, 0}, {-1, 2, -2}, 3);
  expectDistance({1, 1, 1}, {4, 5, 1}, 5);
  expectDistance({0.5, 0.25, -2}, {0.5, 3.25, 2}, 5);
  expectDistance({0, 0, 0}, {0.375, 0, 0.5}, 0.625);
}

TEST_P(JobObjSwitchOnPathArithmeticTest, SeesAPointThatIsOneBitTooFar) {
  EXPECT_TRUE(isInside({5, 0, 0}, {0, 0, 0}, 5));
  EXPECT_FALSE(isInside({above(5), 0, 0}, {0, 0, 0}, 5));
  EXPECT_TRUE(isInside({below(5), 0, 0}, {0, 0, 0}, 5));
  EXPECT_FALSE(isInside({0, 0, 0}, {0, above(0.1), 0}, 0.1));
  EXPECT_TRUE(isInside({0, 0, 0}, {0, 0, below(0.1)}, 0.1));
}

TEST_P(JobObjSwitchOnPathArithmeticTest, NeedsTheVeryPointForARadiusOfZero) {
  const Point target = {0.1, -0.7, 12.3};
  EXPECT_TRUE(isInside(target, target, 0));
  for (std::size_t axis = 0; axis < 3; ++axis) {
    for (const double neighbour : {above(target[axis]), below(target[axis])}) {
      Point point = target;
      point[axis] = neighbour;
      EXPECT_FALSE(isInside(point, target, 0));
    }
  }
  EXPECT_TRUE(isInside({0, 0, 0}, {-0.0, 0, -0.0}, 0));
}

TEST_P(JobObjSwitchOnPathArithmeticTest, AddsTheSquaresInTheirOrder) {
  // Every other order, every contraction of a product with a sum, and the exact sum lead to the next larger distance.
  expectDistance({0, 0, 0}, {0.535, 0.257, 1.334}, 0x1.75c7b8d140d80p+0);
  // Here all of them lead to the next smaller one.
  expectDistance({0, 0, 0}, {1.049, 1.165, 0.616}, 0x1.af327a3ad4d55p+0);
}

TEST_P(JobObjSwitchOnPathArithmeticTest, NeverFiresForNumbersThatAreNone) {
  constexpr double NONE = std::numeric_limits<double>::quiet_NaN();
  EXPECT_FALSE(isInside({0, 0, 0}, {0, 0, 0}, NONE));
  EXPECT_FALSE(isInside({NONE, 0, 0}, {0, 0, 0}, INFINITE));
  EXPECT_TRUE(isInside({1e300, 0, 0}, {-1e300, 0, 0}, INFINITE)) << "an infinite sphere contains an overflow";
  EXPECT_FALSE(isInside({1e300, 0, 0}, {-1e300, 0, 0}, std::numeric_limits<double>::max()));
}

struct AheadCase {
  double last;
  double pos;
  double ahead;
};

/// With 5.5 ms and a cycle of 1.5 ms. In each case one rounding more or another order of operations misses the point by a
/// bit.
const std::vector<AheadCase> AHEAD_CASES = {
    {1.634, 1.945, 0x1.8aec33e1f6717p+1},
    {1.295, 1.638, 0x1.72a53490b9af7p+1},
    {0.806, 1.294, 0x1.8aaaaaaaaaaabp+1},
    {2.035, 2.427, 0x1.eea27983c131dp+1},
};

TEST_P(JobObjSwitchOnPathArithmeticTest, LooksAheadWithOneRoundingPerCoordinate) {
  m_obj.m_cycleTime = 0.0015;
  for (const auto& [last, pos, ahead] : AHEAD_CASES) {
    const double cycles = 0.0055 / 0.0015;
    EXPECT_EQ(ahead, std::fma(cycles, pos - last, pos));
    EXPECT_NE(ahead, cycles * (pos - last) + pos) << "with two roundings";
    EXPECT_NE(ahead, std::fma(0.0055 * (1 / 0.0015), pos - last, pos)) << "with the reciprocal";
    EXPECT_NE(ahead, pos + 0.0055 * (pos - last) / 0.0015);
    for (std::size_t axis = 0; axis < 3; ++axis) {
      EXPECT_TRUE(looksAt(axis, last, pos, 0.0055, ahead));
      EXPECT_FALSE(looksAt(axis, last, pos, 0.0055, above(ahead)));
      EXPECT_FALSE(looksAt(axis, last, pos, 0.0055, below(ahead)));
      EXPECT_TRUE(looksAt(axis, -last, -pos, 0.0055, -ahead));
    }
  }
}

TEST_P(JobObjSwitchOnPathArithmeticTest, LooksAheadAlongAllAxesAtOnce) {
  m_obj.m_cycleTime = 0.0015;
  const auto& [x, y, z] = std::tie(AHEAD_CASES[0], AHEAD_CASES[1], AHEAD_CASES[2]);
  arm({sphere(0, {x.ahead, y.ahead, z.ahead}, 0, 0.0055)});
  EXPECT_FALSE(firesAt({x.last, y.last, z.last}));
  EXPECT_TRUE(firesAt({x.pos, y.pos, z.pos}));
}

TEST_P(JobObjSwitchOnPathArithmeticTest, TakesTheDisplacementFromTheCycleBeforeOnly) {
  arm({sphere(0, {7, 0, 0}, 0, 0.001)});
  for (const double x : {0.0, 1.0, 3.0}) {
    EXPECT_FALSE(firesAt({x, 0, 0}));
  }
  EXPECT_FALSE(firesAt({4, 0, 0})) << "one per cycle now: it looks at 5";
  EXPECT_FALSE(firesAt({5, 0, 0}));
  EXPECT_TRUE(firesAt({6, 0, 0}));
}

TEST_P(JobObjSwitchOnPathArithmeticTest, LooksAheadByPartsOfACycle) {
  EXPECT_TRUE(looksAt(0, 0, 1, 0.00025, 1.25));
  EXPECT_TRUE(looksAt(1, 0, 1, 0.0005, 1.5));
  EXPECT_TRUE(looksAt(2, 1, 0, 0.0005, -0.5)) << "backwards too";
}

INSTANTIATE_TEST_SUITE_P(All, JobObjSwitchOnPathArithmeticTest, testing::ValuesIn(bothWays()), nameOfWay);

}  // namespace
}  // namespace motion::kavo::job
