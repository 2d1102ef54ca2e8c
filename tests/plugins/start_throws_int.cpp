// A bundle whose start throws something that is no std::exception.
#include "plugins/recording_component.h"

namespace {

class StartThrowsInt : public motion::test::RecordingComponent {
 public:
  std::int32_t start() override {
    motion::test::RecordingComponent::start();
    throw 42;
  }
};

}  // namespace

KAVO_TEST_FACTORY(StartThrowsInt)
