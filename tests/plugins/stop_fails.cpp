// A bundle whose stop reports a failure.
#include "plugins/recording_component.h"

namespace {

class StopFails : public motion::test::RecordingComponent {
 public:
  std::int32_t stop() override {
    motion::test::RecordingComponent::stop();
    return -3;
  }
};

}  // namespace

KAVO_TEST_FACTORY(StopFails)
