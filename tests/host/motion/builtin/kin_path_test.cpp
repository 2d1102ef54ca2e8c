// Lines and arcs: where they lead, how long they are, and which of them cannot be.
#include "host/motion/builtin/kin_path.h"

#include <gtest/gtest.h>
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace motion::host::builtin {
namespace {

constexpr double PI = std::numbers::pi;
const core::Unit MM{"mm", 1e-3};
const core::Unit INCH{"in", 0.0254};

Point operator+(const Point& a, const Point& b) {
  return {a[0] + b[0], a[1] + b[1], a[2] + b[2]};
}
Point operator-(const Point& a, const Point& b) {
  return {a[0] - b[0], a[1] - b[1], a[2] - b[2]};
}
Point operator*(double factor, const Point& a) {
  return {factor * a[0], factor * a[1], factor * a[2]};
}
double dot(const Point& a, const Point& b) {
  return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
}
double norm(const Point& a) {
  return std::sqrt(dot(a, a));
}

std::unique_ptr<KinPath> lines(const Point& start, const std::vector<Point>& via, const Point& end, double blending = 0.0) {
  std::string problem = "left over";
  auto path = KinPath::alongLines(start, via, end, blending, MM, problem);
  EXPECT_EQ(problem, "");
  EXPECT_NE(path, nullptr);
  return path;
}

std::unique_ptr<KinPath> arc(const Point& start, const Point& via, const Point& end) {
  std::string problem = "left over";
  auto path = KinPath::alongArc(start, via, end, MM, problem);
  EXPECT_EQ(problem, "");
  EXPECT_NE(path, nullptr);
  return path;
}

void expectNear(const Point& point, const Point& expected, double tolerance = 1e-12) {
  EXPECT_LE(norm(point - expected), tolerance) << point[0] << " " << point[1] << " " << point[2] << " instead of "
                                               << expected[0] << " " << expected[1] << " " << expected[2];
}

/// The path begins and ends where it shall, and a step on it is nowhere longer than it says, and only shorter where the path
/// bends.
void expectUnbroken(const KinPath& sut, double leastShare) {
  constexpr int STEPS = 2000;
  const double step = sut.length() / STEPS;
  expectNear(sut.at(0.0), sut.start());
  expectNear(sut.at(sut.length()), sut.end());
  for (int i = 1; i <= STEPS; ++i) {
    const double share = norm(sut.at(i * step) - sut.at((i - 1) * step)) / step;
    ASSERT_LE(share, 1.0 + 1e-9) << i;
    ASSERT_GE(share, leastShare) << i;
  }
}

// Lines

TEST(KinPathLines, leadStraightToTheEnd) {
  const auto sut = lines({1.0, 2.0, 3.0}, {}, {1.3, 2.4, 3.0});
  EXPECT_NEAR(sut->length(), 0.5, 1e-15);
  EXPECT_EQ(sut->start(), (Point{1.0, 2.0, 3.0}));
  EXPECT_EQ(sut->end(), (Point{1.3, 2.4, 3.0}));
  expectNear(sut->at(0.25), {1.15, 2.2, 3.0});
  expectUnbroken(*sut, 1.0 - 1e-9);
}

TEST(KinPathLines, passThroughEveryPointOnTheWay) {
  const auto sut = lines({0, 0, 0}, {{0.1, 0, 0}, {0.1, 0.2, 0}}, {0.1, 0.2, 0.4});
  EXPECT_NEAR(sut->length(), 0.7, 1e-15);
  expectNear(sut->at(0.05), {0.05, 0, 0});
  expectNear(sut->at(0.1), {0.1, 0, 0});
  expectNear(sut->at(0.2), {0.1, 0.1, 0});
  expectNear(sut->at(0.3), {0.1, 0.2, 0});
  expectNear(sut->at(0.5), {0.1, 0.2, 0.2});
  expectUnbroken(*sut, 0.7);
}

TEST(KinPathLines, endWhereTheyEndAndBeginWhereTheyBegin) {
  const auto sut = lines({0, 0, 0}, {{0.1, 0, 0}}, {0.1, 0.2, 0});
  expectNear(sut->at(-1.0), {0, 0, 0});
  expectNear(sut->at(1.0), {0.1, 0.2, 0});
}

TEST(KinPathLines, mayRepeatPoints) {
  const auto sut = lines({0, 0, 0}, {{0, 0, 0}, {0.1, 0, 0}, {0.1, 0, 0}, {0.1, 0, 0}, {0.1, 0.1, 0}}, {0.1, 0.1, 0});
  EXPECT_NEAR(sut->length(), 0.2, 1e-15);
  expectUnbroken(*sut, 0.7);
}

TEST(KinPathLines, mayReturn) {
  const auto sut = lines({0, 0, 0}, {{0.1, 0, 0}}, {0, 0, 0});
  EXPECT_NEAR(sut->length(), 0.2, 1e-15);
  expectNear(sut->at(0.1), {0.1, 0, 0});
  expectNear(sut->at(0.15), {0.05, 0, 0});
}

TEST(KinPathLines, mayLeadNowhere) {
  for (const std::vector<Point>& via : {std::vector<Point>{}, {{0.1, 0.2, 0.3}}, {{0.1, 0.2, 0.3}, {0.1, 0.2, 0.3}}}) {
    const auto sut = lines({0.1, 0.2, 0.3}, via, {0.1, 0.2, 0.3});
    EXPECT_EQ(sut->length(), 0.0);
    expectNear(sut->at(0.0), {0.1, 0.2, 0.3});
  }
}

TEST(KinPathLines, mayConsistOfTinySteps) {
  std::vector<Point> via;
  for (int i = 1; i <= 1000; ++i) {
    via.push_back({i * 0.3e-6, 0, 0});
  }
  const auto sut = lines({0, 0, 0}, via, {0.4e-3, 0, 0});
  EXPECT_NEAR(sut->length(), 0.4e-3, 1e-15);
  expectNear(sut->at(0.2e-3), {0.2e-3, 0, 0});
}

TEST(KinPathLines, cannotLeadBeyondWhatNumbersTellApart) {
  const std::string text = "a point is too far away; no coordinate may be beyond 1e+12 mm";
  std::string problem;
  for (const double far : {1.1e9, -1.1e9, 1e308, std::numeric_limits<double>::quiet_NaN()}) {
    EXPECT_EQ(KinPath::alongLines({0, 0, 0}, {}, {far, 0, 0}, 0.0, MM, problem), nullptr);
    EXPECT_EQ(problem, text);
    EXPECT_EQ(KinPath::alongLines({0, 0, 0}, {{{0, 0, far}}}, {1, 0, 0}, 0.1, MM, problem), nullptr);
    EXPECT_EQ(problem, text);
    EXPECT_EQ(KinPath::alongLines({0, far, 0}, {}, {1, 0, 0}, 0.0, MM, problem), nullptr);
    EXPECT_EQ(problem, text);
    EXPECT_EQ(KinPath::alongArc({0, 0, 0}, {1, 0, 0}, {0, far, 0}, MM, problem), nullptr);
    EXPECT_EQ(problem, text);
  }
  EXPECT_NEAR(lines({-1e9, 0, 0}, {}, {1e9, 0, 0})->length(), 2e9, 1e-6);
}

// Rounded corners

TEST(KinPathBlending, cutsACornerWithAnArc) {
  const Point corner{0.1, 0, 0};
  const auto sut = lines({0, 0, 0}, {corner}, {0.1, 0.1, 0}, 0.02);
  EXPECT_NEAR(sut->length(), 0.16 + 0.02 * PI / 2, 1e-12);
  EXPECT_LT(sut->length(), 0.2) << "the polygon";
  expectUnbroken(*sut, 1.0 - 1e-5);
  expectNear(sut->at(0.08), {0.08, 0, 0});
  const Point centre{0.08, 0.02, 0};
  for (int i = 0; i <= 100; ++i) {
    EXPECT_NEAR(norm(sut->at(0.08 + i * 0.0001 * PI) - centre), 0.02, 1e-12);
  }
  expectNear(sut->at(0.08 + 0.02 * PI / 4), centre + 0.02 * std::sqrt(0.5) * Point{1, -1, 0}, 1e-12);
}

/// The same corner in all sizes: lengths from a hundredth of a millimetre to a kilometre.
TEST(KinPathBlending, worksInEverySize) {
  for (double size = 1e-5; size < 2e3; size *= 10.0) {
    const double angle = 2.0;  // change of direction [rad]
    const double radius = 0.1 * size;
    const double cut = radius * std::tan(angle / 2.0);
    const Point direction{std::cos(angle), 0.0, std::sin(angle)};
    const auto sut = lines({0, 0, 0}, {{size, 0, 0}}, Point{size, 0, 0} + size * direction, radius);
    ASSERT_NE(sut, nullptr);
    EXPECT_NEAR(sut->length() / size, 2.0 - 2.0 * cut / size + 0.1 * angle, 1e-9) << size;
    const Point centre{size - cut, 0, radius};
    for (int i = 0; i <= 100; ++i) {
      const double onArc = size - cut + i * 0.01 * radius * angle;
      ASSERT_NEAR(norm(sut->at(onArc) - centre) / radius, 1.0, 1e-9) << size << " " << i;
    }
    expectNear((1.0 / size) * sut->at(sut->length()), (1.0 / size) * sut->end(), 1e-9);
  }
}

TEST(KinPathBlending, roundsEveryCorner) {
  const auto sut = lines({0, 0, 0}, {{0.1, 0, 0}, {0.1, 0.1, 0}, {0.1, 0.1, 0.1}}, {0, 0.1, 0.1}, 0.03);
  EXPECT_NEAR(sut->length(), 0.4 - 6 * 0.03 + 3 * 0.03 * PI / 2, 1e-12);
  expectUnbroken(*sut, 1.0 - 1e-5);
}

TEST(KinPathBlending, leavesStraightPointsAlone) {
  // Angles that come out as rounding errors, and one that is small but none.
  for (const double aside : {0.0, 1e-17, 1e-9, 1e-7, 3e-7}) {
    const auto sut = lines({0, 0, 0}, {{0.1, 0, 0}, {0.3, aside, 0}}, {0.3, 0.2, 0}, 0.05);
    ASSERT_NE(sut, nullptr);
    EXPECT_NEAR(sut->length(), 0.5 - 0.1 + 0.05 * PI / 2, 1e-6) << aside;
    expectUnbroken(*sut, 1.0 - 1e-5);
    expectNear(sut->at(0.1), {0.1, 0, 0}, 1e-9);
  }
  const auto inSpace = lines({0, 0, 0}, {{0.1, 0.2, 0.3}, {0.2, 0.4, 0.6}, {0.7, 1.4, 2.1}}, {1, 2, 3}, 0.05);
  EXPECT_NEAR(inSpace->length(), std::sqrt(14.0), 1e-12);
}

TEST(KinPathBlending, roundsSmallAngles) {
  for (const double angle : {2e-5, 1e-4, 1e-2}) {
    const auto sut = lines({0, 0, 0}, {{0.1, 0, 0}}, {0.1 + 0.1 * std::cos(angle), 0.1 * std::sin(angle), 0}, 0.05);
    ASSERT_NE(sut, nullptr);
    expectUnbroken(*sut, 1.0 - 1e-5);
  }
}

TEST(KinPathBlending, matchesALineWithoutCorners) {
  EXPECT_NEAR(lines({0, 0, 0}, {}, {0.1, 0, 0}, 0.5)->length(), 0.1, 1e-15);
  EXPECT_EQ(lines({0, 0, 0}, {}, {0, 0, 0}, 0.5)->length(), 0.0);
}

std::string problemOfLines(const std::vector<Point>& via, const Point& end, double blending, const core::Unit& unit = MM) {
  std::string problem;
  EXPECT_EQ(KinPath::alongLines({0, 0, 0}, via, end, blending, unit, problem), nullptr);
  return problem;
}

TEST(KinPathBlending, refusesARadiusThatDoesNotFit) {
  EXPECT_EQ(problemOfLines({{0.01, 0, 0}}, {0.01, 0.1, 0}, 0.02),
            "'blending' is too large at point 1 of 'via': between the start and point 1 of 'via' there are 10 mm, but the "
            "corners take 20 mm");
  EXPECT_EQ(
      problemOfLines({{0.1, 0, 0}}, {0.1, 0.01, 0}, 0.02),
      "'blending' is too large at point 1 of 'via': between point 1 of 'via' and 'to' there are 10 mm, but the corners "
      "take 20 mm");
  EXPECT_EQ(
      problemOfLines({{0.1, 0, 0}, {0.1, 0.03, 0}}, {0.2, 0.03, 0}, 0.02),
      "'blending' is too large at point 2 of 'via': between point 1 of 'via' and point 2 of 'via' there are 30 mm, but "
      "the corners take 40 mm");
  EXPECT_EQ(problemOfLines({{0.1, 0, 0}}, {0.1, 0.0254, 0}, 0.0508, INCH),
            "'blending' is too large at point 1 of 'via': between point 1 of 'via' and 'to' there are 1 in, but the corners "
            "take 2 in");
  EXPECT_NE(problemOfLines({{0.02, 0, 0}}, {0.02, 0.1, 0}, 0.02), "") << "nothing would be left of the first line";
  EXPECT_NE(problemOfLines({{0.1, 0, 0}, {0.1, 0.04, 0}}, {0.2, 0.04, 0}, 0.02), "") << "nor of the one in the middle";
  EXPECT_NE(problemOfLines({{0.1, 0, 0}}, {0.1, 0.1, 0}, 1e300), "");
}

TEST(KinPathBlending, refusesARadiusThatIsNone) {
  EXPECT_EQ(problemOfLines({{0.1, 0, 0}}, {0.1, 0.1, 0}, 0.9e-6),
            "'blending' is too small; it must be 0 or at least 0.001 mm");
  EXPECT_NE(lines({0, 0, 0}, {{0.1, 0, 0}}, {0.1, 0.1, 0}, 1e-6), nullptr);
}

TEST(KinPathBlending, refusesPointsThatAreTheSame) {
  const std::string reason = " are the same; with 'blending' there must be a way before and after each corner";
  EXPECT_EQ(problemOfLines({{0, 0, 0}}, {0.1, 0, 0}, 0.01), "the start and point 1 of 'via'" + reason);
  EXPECT_EQ(problemOfLines({{0.1, 0, 0}, {0.1, 0, 0.9e-6}}, {0.1, 0.1, 0}, 0.01),
            "point 1 of 'via' and point 2 of 'via'" + reason);
  EXPECT_EQ(problemOfLines({{0.1, 0, 0}}, {0.1, 0, 0}, 0.01), "point 1 of 'via' and 'to'" + reason);
}

TEST(KinPathBlending, refusesToReturnOnItself) {
  const std::string text = "at point 1 of 'via' the way returns on itself, where no 'blending' is possible; set it to 0";
  EXPECT_EQ(problemOfLines({{0.1, 0, 0}}, {0, 0, 0}, 0.01), text);
  EXPECT_EQ(problemOfLines({{0.1, 0, 0}}, {0.05, 1e-7, 0}, 0.01), text);
}

// Arcs

TEST(KinPathArc, isAQuarterOfACircle) {
  const auto sut = arc({0.1, 0, 0.5}, {0.1 * std::sqrt(0.5), 0.1 * std::sqrt(0.5), 0.5}, {0, 0.1, 0.5});
  EXPECT_NEAR(sut->length(), 0.1 * PI / 2, 1e-12);
  EXPECT_EQ(sut->start(), (Point{0.1, 0, 0.5}));
  EXPECT_EQ(sut->end(), (Point{0, 0.1, 0.5}));
  expectUnbroken(*sut, 1.0 - 1e-6);
}

TEST(KinPathArc, takesTheLongWayRoundThroughItsPoint) {
  const auto sut = arc({0.1, 0, 0}, {-0.1, 0, 0}, {0, 0.1, 0});
  EXPECT_NEAR(sut->length(), 0.1 * PI * 1.5, 1e-12);
  expectNear(sut->at(0.1 * PI / 2), {0, -0.1, 0});
  expectNear(sut->at(0.1 * PI), {-0.1, 0, 0});
  expectUnbroken(*sut, 1.0 - 1e-5);
}

TEST(KinPathArc, mayBeHalfACircle) {
  const auto sut = arc({0.1, 0, 0}, {0, 0, 0.1}, {-0.1, 0, 0});
  EXPECT_NEAR(sut->length(), 0.1 * PI, 1e-12);
  expectNear(sut->at(0.05 * PI), {0, 0, 0.1});
}

/// A random number in a range.
double between(double least, double most) {
  constexpr int STEPS = 1'000'000;
  return least + (most - least) * *rc::gen::inRange(0, STEPS + 1) / STEPS;
}

Point anyDirection() {
  const double height = between(-1.0, 1.0);
  const double turn = between(0.0, 2.0 * PI);
  const double around = std::sqrt(1.0 - height * height);
  return {around * std::cos(turn), around * std::sin(turn), height};
}

TEST(KinPathArc, staysOnAnyCircleAndGoesThroughItsPoint) {
  EXPECT_TRUE(rc::check([] {
    const double radius = std::pow(10.0, between(-3.0, 1.0));
    const Point centre{between(-1.0, 1.0), between(-1.0, 1.0), between(-1.0, 1.0)};
    const Point x = anyDirection();
    Point y = anyDirection();
    y = y - dot(x, y) * x;
    RC_PRE(norm(y) > 0.1);
    y = (1.0 / norm(y)) * y;
    const double sweep = between(0.05, 2.0 * PI - 0.05);
    const double toVia = sweep * between(0.1, 0.9);
    const auto onCircle = [&](double angle) { return centre + radius * std::cos(angle) * x + radius * std::sin(angle) * y; };
    std::string problem;
    const auto sut = KinPath::alongArc(onCircle(0.0), onCircle(toVia), onCircle(sweep), MM, problem);
    RC_ASSERT(problem == "");
    RC_ASSERT(std::abs(sut->length() - radius * sweep) <= 1e-9);
    RC_ASSERT(norm(sut->at(radius * toVia) - onCircle(toVia)) <= 1e-9);
    for (int i = 0; i <= 50; ++i) {
      const double angle = sweep * i / 50.0;
      RC_ASSERT(std::abs(norm(sut->at(radius * angle) - centre) - radius) <= 1e-9);
      RC_ASSERT(norm(sut->at(radius * angle) - onCircle(angle)) <= 1e-9);
    }
  }));
}

TEST(KinPathArc, mayBeNearlyStraight) {
  constexpr double HEIGHT = 1e-5;  // of the arc above a chord of 1 m
  const auto sut = arc({0, 0, 0}, {0.5, HEIGHT, 0}, {1, 0, 0});
  EXPECT_NEAR(sut->length(), 1.0, 1e-9);
  expectNear(sut->at(sut->length() / 2.0), {0.5, HEIGHT, 0}, 1e-9);
  expectNear(sut->at(sut->length()), {1, 0, 0}, 1e-9);
}

std::string problemOfArc(const Point& via, const Point& end) {
  std::string problem;
  EXPECT_EQ(KinPath::alongArc({0, 0, 0}, via, end, MM, problem), nullptr);
  return problem;
}

TEST(KinPathArc, refusesAnEndWhereItBegins) {
  const std::string text = "'to' must not be where the arc begins; a full circle takes two arcs";
  EXPECT_EQ(problemOfArc({0.1, 0, 0}, {0, 0, 0}), text);
  EXPECT_EQ(problemOfArc({0.1, 0, 0}, {0, 0.9e-6, 0}), text);
  EXPECT_EQ(problemOfArc({0, 0, 0}, {0, 0, 0}), text);
}

TEST(KinPathArc, refusesAPointOnTheWayThatIsNotBetween) {
  const std::string text = "'via' must lie between the start of the arc and 'to'";
  EXPECT_EQ(problemOfArc({0, 0, 0}, {0.1, 0, 0}), text);
  EXPECT_EQ(problemOfArc({0.1, 0, 0}, {0.1, 0, 0}), text);
  EXPECT_EQ(problemOfArc({0.1, 0, 0.9e-6}, {0.1, 0, 0}), text);
}

TEST(KinPathArc, refusesPointsOnALine) {
  const std::string text = "'via' and 'to' must not lie on one line with the start of the arc; MoveLin moves along a line";
  EXPECT_EQ(problemOfArc({0.1, 0.1, 0.1}, {0.3, 0.3, 0.3}), text);
  EXPECT_EQ(problemOfArc({0.3, 0, 0}, {0.1, 0, 0}), text);
  EXPECT_EQ(problemOfArc({-0.3, 0, 0}, {0.1, 0, 0}), text);
  EXPECT_EQ(problemOfArc({0.5, 1e-7, 0}, {1, 0, 0}), text);
}

TEST(KinPathArc, refusesCirclesThatAreTooSmall) {
  EXPECT_EQ(problemOfArc({1.2e-6, 0, 0}, {0.6e-6, 1.04e-6, 0}),
            "the arc is too small; its radius must be at least 0.001 mm");
}

}  // namespace
}  // namespace motion::host::builtin
