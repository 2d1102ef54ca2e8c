// A bundle whose factory throws.
#include <stdexcept>

#include "motion/core/framework/i_motion_component.h"

extern "C" motion::core::framework::IMotionComponent* createMotionKavoCmp() {
  throw std::runtime_error("no licence for this component");
}
