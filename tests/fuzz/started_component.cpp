// The component itself, linked in, started in a recording host: what fuzzers and their replay feed.
#include "fuzz/started_component.h"

#include <memory>

#include "fuzz/targets.h"

extern "C" motion::core::framework::IMotionComponent* createMotionKavoCmp();

namespace motion::fuzz {
namespace {

struct World {
  World()
      : subject(std::unique_ptr<core::framework::IMotionComponent>(createMotionKavoCmp()), "/bundle"),
        axis(subject.host.objMgr.addAxis("A")),
        kinematics(subject.host.objMgr.addKinematics("K")) {
    subject.giveEverything();
    require(subject.component().start() == 0, "the component starts");
  }

  conformance::Subject subject;
  test::FakeObj& axis;
  test::FakeObj& kinematics;
};

World& world() {
  static auto* const made = new World();
  return *made;
}

}  // namespace

conformance::Subject& startedComponent() {
  return world().subject;
}

test::FakeObj& axis() {
  return world().axis;
}

test::FakeObj& kinematics() {
  return world().kinematics;
}

}  // namespace motion::fuzz
