// Floors of switching on the path.
#include "bench/path_floors.h"

#include <benchmark/benchmark.h>

#include <cmath>
#include <kdl/path_circle.hpp>
#include <kdl/path_line.hpp>
#include <kdl/rotational_interpolation_sa.hpp>
#include <kdl/velocityprofile_trap.hpp>
#include <utility>

namespace motion::bench {

namespace {

class PathFloor final : public IPathFloor {
 public:
  explicit PathFloor(kavo::SwitchOnPathParsListT conditions) : m_conditions(std::move(conditions)) {}

  std::size_t countInside(double x, double y, double z) const override {
    std::size_t inside = 0;
    for (const auto& condition : m_conditions) {
      const double dx = condition->targetPos[0] - x;
      const double dy = condition->targetPos[1] - y;
      const double dz = condition->targetPos[2] - z;
      if (std::sqrt(dx * dx + dy * dy + dz * dz) <= condition->radius) {
        ++inside;
      }
    }
    return inside;
  }

  std::size_t countArmed() const override {
    std::size_t armed = 0;
    for (const auto& condition : m_conditions) {
      if (!condition->isReached()) {
        benchmark::DoNotOptimize(++armed);
      }
    }
    return armed;
  }

  void markAll() override {
    for (const auto& condition : m_conditions) {
      condition->setReached();
    }
  }

 private:
  kavo::SwitchOnPathParsListT m_conditions;
};

class KinFloor final : public IKinFloor {
 public:
  explicit KinFloor(bool onArc) {
    auto* const constant = new KDL::RotationalInterpolation_SingleAxis;  // the path owns it
    if (onArc) {
      m_path = std::make_unique<KDL::Path_Circle>(KDL::Frame(KDL::Vector(0, 0, 0)), KDL::Vector(0, 1, 0),
                                                  KDL::Vector(1, 1, 0), KDL::Rotation::Identity(), 3.0, constant, 1.0);
    } else {
      m_path = std::make_unique<KDL::Path_Line>(KDL::Frame(KDL::Vector(0, 0, 0)), KDL::Frame(KDL::Vector(1, 0, 0)), constant,
                                                1.0);
    }
    auto profile = std::make_unique<KDL::VelocityProfile_Trap>(1e-6, 1.0);
    profile->SetProfile(0.0, m_path->PathLength());
    m_profile = std::move(profile);
  }

  KDL::Vector at(double time) const override { return m_path->Pos(m_profile->Pos(time)).p * m_profile->Vel(time); }

 private:
  std::unique_ptr<KDL::Path> m_path;
  std::unique_ptr<KDL::VelocityProfile> m_profile;
};

}  // namespace

std::unique_ptr<IKinFloor> makeKinFloor(bool onArc) {
  return std::make_unique<KinFloor>(onArc);
}

std::unique_ptr<IPathFloor> makePathFloor(kavo::SwitchOnPathParsListT conditions) {
  return std::make_unique<PathFloor>(std::move(conditions));
}

}  // namespace motion::bench
