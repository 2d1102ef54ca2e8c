// A bundle that does everything right.
#include "plugins/recording_component.h"

KAVO_TEST_FACTORY(motion::test::RecordingComponent)
