// A bundle that throws when it gets the data functions and when it loses the data layer or the extension.
#include <stdexcept>

#include "plugins/recording_component.h"

namespace {

class ServicesThrow : public motion::test::RecordingComponent {
 public:
  void setMotionDataIF(const motion::core::MotionDataIfT* motionDataIF) override {
    motion::test::RecordingComponent::setMotionDataIF(motionDataIF);
    throw std::runtime_error("data functions unwanted");
  }
  void removeDataLayerFactory(comm::datalayer::IDataLayerFactory* dataLayerFactory) override {
    motion::test::RecordingComponent::removeDataLayerFactory(dataLayerFactory);
    throw std::runtime_error("data layer still needed");
  }
  void removeMotionExtIF(const motion::core::MotionExtensionIfT* motionExtIF) override {
    motion::test::RecordingComponent::removeMotionExtIF(motionExtIF);
    throw std::runtime_error("extension still needed");
  }
};

}  // namespace

KAVO_TEST_FACTORY(ServicesThrow)
