// A bundle whose start never returns.
#include <unistd.h>

#include "plugins/recording_component.h"

namespace {

class StartNeverEnds : public motion::test::RecordingComponent {
 public:
  std::int32_t start() override {
    motion::test::RecordingComponent::start();
    for (;;) {
      ::pause();
    }
  }
};

}  // namespace

KAVO_TEST_FACTORY(StartNeverEnds)
