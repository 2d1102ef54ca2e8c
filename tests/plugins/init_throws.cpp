// A bundle whose init throws.
#include <stdexcept>

#include "plugins/recording_component.h"

namespace {

class InitThrows : public motion::test::RecordingComponent {
 public:
  std::int32_t init() override {
    motion::test::RecordingComponent::init();
    throw std::runtime_error("init went wrong");
  }
};

}  // namespace

KAVO_TEST_FACTORY(InitThrows)
