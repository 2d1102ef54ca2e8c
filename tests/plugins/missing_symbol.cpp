// A bundle that calls a function which no library has.
#include "motion/core/framework/i_motion_component.h"

extern "C" motion::core::framework::IMotionComponent* functionThatNobodyHas();

extern "C" motion::core::framework::IMotionComponent* createMotionKavoCmp() {
  return functionThatNobodyHas();
}
