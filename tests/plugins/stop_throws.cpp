// A bundle whose stop throws.
#include <stdexcept>

#include "plugins/recording_component.h"

namespace {

class StopThrows : public motion::test::RecordingComponent {
 public:
  std::int32_t stop() override {
    motion::test::RecordingComponent::stop();
    throw std::runtime_error("stop went wrong");
  }
};

}  // namespace

KAVO_TEST_FACTORY(StopThrows)
