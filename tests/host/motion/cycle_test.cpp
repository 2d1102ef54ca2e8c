// A cycle gives every object its turn in order of creation.
#include "host/motion/cycle.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fmt/format.h>

#include "tests/host/motion/world.h"

namespace motion::host {
namespace {

using core::job::JobResult;
using testing::ElementsAre;

struct CycleTest : testing::Test {
  test::World world;
  Cycle& sut = world.runtime.cycle();
};

TEST_F(CycleTest, countsCycles) {
  EXPECT_EQ(sut.begun(), 0U);
  EXPECT_EQ(sut.ended(), 0U);
  sut.run();
  sut.run();
  EXPECT_EQ(sut.begun(), 2U);
  EXPECT_EQ(sut.ended(), 2U);
  EXPECT_EQ(sut.begunCounter().load(), 2U);
}

TEST_F(CycleTest, isBegunButNotEndedWhileAJobRuns) {
  std::uint64_t begun = 0;
  std::uint64_t ended = 4711;
  std::uint64_t count = 0;
  MotionObject& axis = world.addAxis("X");
  world.script.cyclic = [&](const std::string&, unsigned) {
    begun = sut.begun();
    ended = sut.ended();
    count = axis.getCycleCount();
    return JobResult::CmdFinished;
  };
  world.step(3);
  world.issue(axis, "A");
  world.step();
  EXPECT_EQ(begun, 4U);
  EXPECT_EQ(ended, 3U);
  EXPECT_EQ(count, 4U);
}

TEST_F(CycleTest, givesObjectsTheirTurnsInOrderOfCreation) {
  std::vector<MotionObject*> objects;
  for (int i = 0; i < 8; ++i) {
    objects.push_back(&world.addAxis(std::string(1, static_cast<char>('H' - i))));
  }
  world.script.cyclic = [](const std::string&, unsigned) { return JobResult::Busy; };
  for (auto object = objects.rbegin(); object != objects.rend(); ++object) {
    world.issue(**object, (*object)->name());
  }
  world.step();
  static_cast<void>(world.script.takeJournal());
  world.step();
  EXPECT_THAT(world.script.takeJournal(),
              ElementsAre("H cyclic", "G cyclic", "F cyclic", "E cyclic", "D cyclic", "C cyclic", "B cyclic", "A cyclic"));
}

TEST_F(CycleTest, whatAnEarlierObjectSetsALaterOneSeesInTheSameCycle) {
  MotionObject& setter = world.addAxis("setter");
  MotionObject& waiter = world.addAxis("waiter");
  MotionObject& lateSetter = world.addAxis("lateSetter");
  bool early = false;
  bool late = false;
  world.script.cyclic = [&](const std::string& label, unsigned call) {
    if (label == "set early") {
      early = call == 3;
      return early ? JobResult::CmdFinished : JobResult::Busy;
    }
    if (label == "set late") {
      late = call == 3;
      return late ? JobResult::CmdFinished : JobResult::Busy;
    }
    return (label == "wait early" ? early : late) ? JobResult::CmdFinished : JobResult::Busy;
  };
  world.issue(lateSetter, "set late");
  world.issue(waiter, "wait early");
  world.issue(setter, "set early");
  world.step(3);
  EXPECT_THAT(world.takeEvents(),
              ElementsAre("1: object 0 command 3 ACTIVE", "1: object 1 command 2 ACTIVE", "1: object 2 command 1 ACTIVE",
                          "3: object 0 command 3 DONE", "3: object 1 command 2 DONE", "3: object 2 command 1 DONE"));

  early = late = false;
  world.issue(lateSetter, "set late");
  world.issue(waiter, "wait late");
  world.step(4);
  EXPECT_THAT(world.takeEvents(), ElementsAre("4: object 1 command 5 ACTIVE", "4: object 2 command 4 ACTIVE",
                                              "6: object 2 command 4 DONE", "7: object 1 command 5 DONE"));
}

/// Notes when it is called.
class NotingObserver : public ICycleObserver {
 public:
  void beforeObjects(std::uint64_t cycle) noexcept override { notes.push_back(fmt::format("before {}", cycle)); }
  void afterObject(std::uint64_t cycle, const MotionObject& object) noexcept override {
    notes.push_back(fmt::format("{} in {}", object.name(), cycle));
  }
  void afterObjects(std::uint64_t cycle) noexcept override { notes.push_back(fmt::format("after {}", cycle)); }

  std::vector<std::string> notes;
};

TEST_F(CycleTest, callsItsObserverAroundTheObjects) {
  world.addAxis("X");
  world.addAxis("Y");
  NotingObserver observer;
  sut.setObserver(&observer);
  sut.run();
  EXPECT_THAT(observer.notes, ElementsAre("before 1", "X in 1", "Y in 1", "after 1"));
  sut.setObserver(nullptr);
  sut.run();
  EXPECT_EQ(observer.notes.size(), 4U);
}

TEST_F(CycleTest, doesNotDestroyWhatHasEnded) {
  MotionObject& axis = world.addAxis("X");
  world.issue(axis, "A");
  world.runtime.preparation().prepareAll();
  sut.run();
  sut.run();
  EXPECT_EQ(world.script.commandsAlive, 1);
  EXPECT_EQ(world.runtime.preparation().alive(), 1U);
  world.runtime.preparation().prepareAll();
  EXPECT_EQ(world.script.commandsAlive, 0);
  EXPECT_EQ(world.runtime.preparation().alive(), 0U);
}

}  // namespace
}  // namespace motion::host
