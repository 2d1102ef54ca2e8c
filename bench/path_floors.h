// Floors of switching on the path: the least that the hardware needs for as many conditions.
#pragma once

#include <cstddef>
#include <kdl/frames.hpp>
#include <memory>

#include "motion/kavo/switch_on_path_pars.h"

namespace motion::bench {

/// Shared conditions, reached by one virtual call for all of them.
class IPathFloor {
 public:
  virtual ~IPathFloor() = default;
  /// For each condition three subtractions, the sum of the squares and one square root, compared with the radius.
  [[nodiscard]] virtual std::size_t countInside(double x, double y, double z) const = 0;
  /// For each condition one load and a branch.
  [[nodiscard]] virtual std::size_t countArmed() const = 0;
  virtual void markAll() = 0;
};

/// Made where the compiler of a benchmark does not see which class it is.
[[nodiscard]] std::unique_ptr<IPathFloor> makePathFloor(kavo::SwitchOnPathParsListT conditions);

/// A point on a path of KDL after a time along a profile of KDL, both reached by virtual calls.
class IKinFloor {
 public:
  virtual ~IKinFloor() = default;
  [[nodiscard]] virtual KDL::Vector at(double time) const = 0;
};
[[nodiscard]] std::unique_ptr<IKinFloor> makeKinFloor(bool onArc);

}  // namespace motion::bench
