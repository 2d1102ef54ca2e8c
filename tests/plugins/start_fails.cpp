// A bundle whose start reports the failure that this component reports when a service is missing.
#include "plugins/recording_component.h"

namespace {

class StartFails : public motion::test::RecordingComponent {
 public:
  std::int32_t start() override {
    motion::test::RecordingComponent::start();
    return 70001;
  }
};

}  // namespace

KAVO_TEST_FACTORY(StartFails)
