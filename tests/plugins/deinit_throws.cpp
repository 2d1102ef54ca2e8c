// A bundle whose deinit throws.
#include <stdexcept>

#include "plugins/recording_component.h"

namespace {

class DeinitThrows : public motion::test::RecordingComponent {
 public:
  std::int32_t deinit() override {
    motion::test::RecordingComponent::deinit();
    throw std::runtime_error("deinit went wrong");
  }
};

}  // namespace

KAVO_TEST_FACTORY(DeinitThrows)
