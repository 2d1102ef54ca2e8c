// A bundle whose init reports a failure.
#include "plugins/recording_component.h"

namespace {

class InitFails : public motion::test::RecordingComponent {
 public:
  std::int32_t init() override {
    motion::test::RecordingComponent::init();
    return 4711;
  }
};

}  // namespace

KAVO_TEST_FACTORY(InitFails)
