// A bundle whose start throws.
#include <stdexcept>

#include "plugins/recording_component.h"

namespace {

class StartThrows : public motion::test::RecordingComponent {
 public:
  std::int32_t start() override {
    motion::test::RecordingComponent::start();
    throw std::runtime_error("start went wrong");
  }
};

}  // namespace

KAVO_TEST_FACTORY(StartThrows)
