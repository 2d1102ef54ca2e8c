// A bundle whose stop never returns.
#include <unistd.h>

#include "plugins/recording_component.h"

namespace {

class StopNeverEnds : public motion::test::RecordingComponent {
 public:
  std::int32_t stop() override {
    motion::test::RecordingComponent::stop();
    for (;;) {
      ::pause();
    }
  }
};

}  // namespace

KAVO_TEST_FACTORY(StopNeverEnds)
