// A bundle whose factory makes nothing.
#include "motion/core/framework/i_motion_component.h"

extern "C" motion::core::framework::IMotionComponent* createMotionKavoCmp() {
  return nullptr;
}
