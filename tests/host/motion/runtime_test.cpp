// A whole runtime: records, decoding of parameters, threads, and stopping.
#include "host/motion/runtime.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <stdexcept>
#include <string_view>
#include <thread>

#include "host/motion/builtin/builtin_cmds.h"
#include "schemas/host/cmdMoveAbs_generated.h"
#include "tests/host/motion/world.h"

namespace motion::host {
namespace {

using comm::datalayer::Variant;
using core::FctResult;
using core::cmd::CmdResult;
using core::cmd::CmdState;
using core::job::JobResult;
using testing::Each;
using testing::HasSubstr;

Variant moveAbs(double to, double velocity, double acceleration) {
  flatbuffers::FlatBufferBuilder builder;
  builder.Finish(fbs::CreateCmdMoveAbs(builder, to, velocity, acceleration));
  return Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()});
}

struct RuntimeTest : testing::Test {
  test::World world;
  test::Script& script = world.script;
  Runtime& sut = world.runtime;
  MotionObject& axis = world.addAxis("X", 0.5);
  MotionObject& robot = world.addKinematics("Robot");
  unsigned long id = 4711;
};

// Command context

TEST_F(RuntimeTest, addsACommandByNameOfObjectAndCommand) {
  EXPECT_EQ(sut.addCmd(world.source, "Robot", "Test", test::Label("A"), 1, &id), FctResult::Okay);
  EXPECT_EQ(id, 1U);
  world.step();
  EXPECT_EQ(robot.getCmdState(id), CmdState::DONE);
}

TEST_F(RuntimeTest, refusesCommandsThatItCannotAdd) {
  const test::Label values("A");
  EXPECT_EQ(sut.addCmd(world.source, "Y", "Test", values, 1, &id), FctResult::ObjectNotFound);
  EXPECT_EQ(sut.addCmd(world.source, nullptr, "Test", values, 1, &id), FctResult::ObjectNotFound);
  EXPECT_EQ(sut.addCmd(world.source, "X", "Fly", values, 1, &id), FctResult::NotSupportedByObject);
  EXPECT_EQ(sut.addCmd(world.source, "X", "Test", values, 2, &id), FctResult::InvalidParameter);
  EXPECT_EQ(sut.addCmd(world.source, "X", "Test", values, 0, &id), FctResult::InvalidParameter);
  EXPECT_EQ(sut.addCmd(world.source, "X", "Test", values, 1, nullptr), FctResult::InvalidParameter);
  EXPECT_EQ(id, 4711U);
  EXPECT_EQ(sut.preparation().alive(), 0U);
}

TEST_F(RuntimeTest, refusesOptionsThatItCannotAdd) {
  test::Label values("A");
  EXPECT_EQ(sut.addCmdOption(world.source, "X", "Option", core::cmd::CmdOptPermType::ONCE, values),
            FctResult::OptionNotSupported);
  EXPECT_EQ(sut.addCmdOption(world.source, "Y", "Option", core::cmd::CmdOptPermType::ONCE, values),
            FctResult::ObjectNotFound);
}

TEST_F(RuntimeTest, refusesASecondObjectOfAName) {
  EXPECT_EQ(sut.addObject("X", core::ObjectType::KINEMATICS, {}), nullptr);
  EXPECT_EQ(sut.objMgr().getObjCount(), 2U);
}

// Parameters as FlatBuffers

TEST_F(RuntimeTest, decodesAndIssues) {
  EXPECT_EQ(sut.issue(axis, {"MoveAbs", moveAbs(510.0, 100.0, 1000.0), world.source}, id, world.problem), FctResult::Okay);
  world.step(200);
  EXPECT_EQ(axis.getCmdState(id), CmdState::DONE);
  EXPECT_EQ(axis.position(), 0.51);
}

TEST_F(RuntimeTest, triesOutWithoutIssuing) {
  EXPECT_EQ(sut.tryOut(axis, {"MoveAbs", moveAbs(510.0, 100.0, 1000.0), world.source}, world.problem), FctResult::Okay);
  EXPECT_EQ(sut.preparation().alive(), 0U);
  EXPECT_EQ(sut.tryOut(axis, {"MoveAbs", moveAbs(510.0, 0.0, 1000.0), world.source}, world.problem),
            FctResult::InvalidParameter);
  EXPECT_THAT(world.problem, HasSubstr("'velocity' must be above 0"));
}

TEST_F(RuntimeTest, refusesParametersThatCannotBeDecoded) {
  const std::vector<std::uint8_t> garbage{0xFF, 0xFF, 0xFF, 0x7F, 1, 2, 3, 4};
  for (const Variant& parameters :
       {Variant(), Variant(1.5), Variant::fromFlatBuffer(garbage), Variant::fromFlatBuffer({})}) {
    EXPECT_EQ(sut.issue(axis, {"MoveAbs", parameters, world.source}, id, world.problem), FctResult::InvalidParameter);
    EXPECT_EQ(world.problem, "the parameters of 'MoveAbs' of 'X' could not be decoded (0xF011000F)");
    EXPECT_EQ(sut.tryOut(axis, {"MoveAbs", parameters, world.source}, world.problem), FctResult::InvalidParameter);
  }
  EXPECT_EQ(sut.issue(robot, {"MoveAbs", moveAbs(1.0, 1.0, 1.0), world.source}, id, world.problem),
            FctResult::NotSupportedByObject);
  EXPECT_EQ(world.problem, "'MoveAbs' is not a command of 'Robot'");
  EXPECT_EQ(id, 4711U);
}

TEST_F(RuntimeTest, anExceptionWhileDecodingDoesNotEscape) {
  script.at = [](std::string_view operation) {
    if (operation == "marshal") {
      throw std::runtime_error("no");
    }
  };
  EXPECT_EQ(sut.issue(axis, {"Test", Variant(std::string("A")), world.source}, id, world.problem),
            FctResult::InvalidParameter);
  EXPECT_EQ(sut.tryOut(axis, {"Test", Variant(std::string("A")), world.source}, world.problem), FctResult::InvalidParameter);
  EXPECT_EQ(sut.preparation().alive(), 0U);
}

/// A container that counts its instances.
class CountedLabel : public test::Label {
 public:
  CountedLabel() : test::Label("counted") { ++s_count; }
  ~CountedLabel() override { --s_count; }
  CountedLabel(const CountedLabel&) = delete;
  CountedLabel& operator=(const CountedLabel&) = delete;

  static inline int s_count = 0;
};

TEST_F(RuntimeTest, deletesDecodedParametersThatItOwnsAndNoOthers) {
  CountedLabel lent;
  bool given = true;
  CmdResult answer = CmdResult::Okay;
  CmdEntry entry = *sut.cmdFactory().find({core::ObjectType::AXIS, "Test"});
  entry.id.name = "Counted";
  entry.marshal = [&](const Variant*, core::IContainer*& container, bool& owned) {
    container = given ? new CountedLabel : &lent;
    owned = given;
    return answer;
  };
  ASSERT_TRUE(sut.cmdFactory().addBuiltIn(entry));
  for (const bool isGiven : {true, false}) {
    given = isGiven;
    answer = CmdResult::Okay;
    EXPECT_EQ(sut.issue(axis, {"Counted", Variant(), world.source}, id, world.problem), FctResult::Okay) << world.problem;
    EXPECT_EQ(CountedLabel::s_count, 1);
    answer = CmdResult::Refused;
    EXPECT_EQ(sut.issue(axis, {"Counted", Variant(), world.source}, id, world.problem), FctResult::InvalidParameter);
    EXPECT_EQ(CountedLabel::s_count, 1);
  }
}

// Records

TEST_F(RuntimeTest, publishesEveryFunctionOfItsRecords) {
  const Records& records = sut.records();
  EXPECT_EQ(records.sys2.general, &records.sysGeneral);
  EXPECT_EQ(records.sys2.sync, &records.sysSync);
  EXPECT_EQ(records.cmd2.general, &records.cmdGeneral);
  EXPECT_EQ(records.cmd2.kin, &records.cmdKin);
  EXPECT_EQ(records.cmd2.version, 2U);
  EXPECT_EQ(records.extension.getInterfaceVersion(records.extension.context), 1U);
  EXPECT_EQ(records.sys.getObjCount(records.sys.context), 2U);
  EXPECT_EQ(records.sys2.general->getObjCount(records.sys2.context), 2U);
  double cycleTime = 0.0;
  EXPECT_EQ(records.sys.getCycleTime(records.sys.context, cycleTime), FctResult::Okay);
  EXPECT_DOUBLE_EQ(cycleTime, 0.001);
  cycleTime = 0.0;
  EXPECT_EQ(records.sys2.general->getCycleTime(records.sys2.context, cycleTime), FctResult::Okay);
  EXPECT_DOUBLE_EQ(cycleTime, 0.001);
}

TEST_F(RuntimeTest, leavesTheComponentsFieldsOfItsRecordsEmpty) {
  const Records& records = sut.records();
  EXPECT_EQ(records.sys.setSignal, nullptr);
  EXPECT_EQ(records.sysSync.getSignal, nullptr);
  EXPECT_EQ(records.cmd.joinCmd, nullptr);
  EXPECT_EQ(records.cmdGeneral.waitForSignalResetCmd, nullptr);
  EXPECT_EQ(records.cmdKin.kinSwitchOnPathCmdOpt, nullptr);
}

TEST_F(RuntimeTest, makesExtensionInterfaces) {
  const auto& record = sut.records().extension;
  const core::ComponentVersionAdd version;
  core::IMotionExt* ext = nullptr;
  EXPECT_EQ(record.createExtIfObj(record.context, nullptr, &ext), FctResult::InvalidParameter);
  EXPECT_EQ(record.createExtIfObj(record.context, &version, nullptr), FctResult::InvalidParameter);
  EXPECT_EQ(ext, nullptr);
  ASSERT_EQ(record.createExtIfObj(record.context, &version, &ext), FctResult::Okay);
  const std::unique_ptr<core::IMotionExt> owned(ext);
  EXPECT_EQ(owned->getObjMgr(), &sut.objMgr());
}

TEST_F(RuntimeTest, abortsThroughEveryRecord) {
  const Records& records = sut.records();
  script.cyclic = [](const std::string&, unsigned) { return JobResult::Busy; };
  const std::vector<std::function<FctResult(const char*)>> aborts{
      [&](const char* name) { return records.sys.abortCmds(records.sys.context, name); },
      [&](const char* name) { return records.sys2.general->abortCmds(records.sys2.context, name); },
      [&](const char* name) { return records.cmd.abortCmd(&sut, world.source, name); },
      [&](const char* name) { return records.cmd2.general->abortCmd(&sut, world.source, name); },
      [&](const char* name) { return records.cmd2.kin->abortCmd(&sut, world.source, name); }};
  for (const auto& abort : aborts) {
    const auto current = world.issue(robot, "A");
    const auto waiting = world.issue(robot, "B");
    world.step();
    EXPECT_EQ(abort("nobody"), FctResult::ObjectNotFound);
    EXPECT_EQ(abort(nullptr), FctResult::ObjectNotFound);
    world.step();
    EXPECT_EQ(robot.getCmdState(current), CmdState::ACTIVE);
    EXPECT_EQ(abort("Robot"), FctResult::Okay);
    world.step();
    EXPECT_EQ(robot.getCmdState(current), CmdState::ABORTED);
    EXPECT_EQ(robot.getCmdState(waiting), CmdState::ABORTED);
  }
  EXPECT_EQ(records.cmd.abortCmd(nullptr, world.source, "Robot"), FctResult::NotAvailable);
}

TEST_F(RuntimeTest, dwellsThroughEveryRecord) {
  const Records& records = sut.records();
  for (const core::DwellCmdFn dwell : {records.cmd.dwellCmd, records.cmd2.general->dwellCmd}) {
    for (MotionObject* object : {&axis, &robot}) {
      ASSERT_EQ(dwell(&sut, world.source, object->name().c_str(), 0.005, id), FctResult::Okay);
      world.step(4);
      EXPECT_EQ(object->getCmdState(id), CmdState::ACTIVE);
      world.step();
      EXPECT_EQ(object->getCmdState(id), CmdState::DONE);
    }
    id = 4711;
    EXPECT_EQ(dwell(&sut, world.source, "X", -1.0, id), FctResult::InvalidParameter);
    EXPECT_EQ(dwell(&sut, world.source, "nobody", 1.0, id), FctResult::ObjectNotFound);
    EXPECT_EQ(dwell(nullptr, world.source, "X", 1.0, id), FctResult::NotAvailable);
    EXPECT_EQ(id, 4711U);
  }
}

TEST_F(RuntimeTest, givesPositionAndVelocityOfAxes) {
  const auto& record = sut.records().data;
  double value = -1.0;
  EXPECT_EQ(record.getAxisPosition(record.context, "X", value), FctResult::Okay);
  EXPECT_EQ(value, 0.5);
  world.issue(axis, "MoveRel", builtin::AxisMovePars({100.0, 100.0, 1000.0}));
  world.step(200);
  EXPECT_EQ(record.getAxisVelocity(record.context, "X", value), FctResult::Okay);
  EXPECT_DOUBLE_EQ(value, 0.1);
  EXPECT_EQ(record.getAxisPosition(record.context, "X", value), FctResult::Okay);
  EXPECT_NEAR(value, 0.5 + 0.005 + 0.1 * 0.1, 1e-12);
  for (const auto function : {record.getAxisPosition, record.getAxisVelocity}) {
    value = 7.0;
    EXPECT_EQ(function(record.context, "Robot", value), FctResult::NotSupportedByObject);
    EXPECT_EQ(function(record.context, "nobody", value), FctResult::ObjectNotFound);
    EXPECT_EQ(function(record.context, nullptr, value), FctResult::ObjectNotFound);
    EXPECT_EQ(value, 7.0);
  }
}

// Stopping

TEST_F(RuntimeTest, stopCommandsTakesEverythingBack) {
  script.cyclic = [](const std::string&, unsigned) { return JobResult::Busy; };
  std::vector<unsigned long> ids{world.issue(axis, "current"), world.issue(axis, "prepared")};
  world.step();
  ids.push_back(world.issue(axis, "waiting"));
  sut.stopCommands();
  EXPECT_THAT(ids, Each(testing::ResultOf([this](auto cmdID) { return axis.getCmdState(cmdID); }, CmdState::ABORTED)));
  EXPECT_EQ(sut.preparation().alive(), 0U);
  EXPECT_EQ(script.commandsAlive, 0);
  EXPECT_EQ(axis.bufferedCount(), 0U);

  script.cyclic = [](const std::string&, unsigned) { return JobResult::CmdFinished; };
  const auto later = world.issue(axis, "later");
  world.step();
  EXPECT_EQ(axis.getCmdState(later), CmdState::DONE);
}

TEST(RuntimeLifeTest, destroysWhatIsLeft) {
  test::Script script;
  {
    Runtime sut({0.001, 8});
    test::registerScripted(script, sut.cmdFactory(), sut.objFactory());
    script.cyclic = [](const std::string&, unsigned) { return JobResult::Busy; };
    MotionObject* axis = sut.addObject("X", core::ObjectType::AXIS, {});
    unsigned long id = 0;
    for (int i = 0; i < 3; ++i) {
      ASSERT_EQ(sut.addCmd({}, axis->name().c_str(), "Test", test::Label("A"), 1, &id), FctResult::Okay);
      sut.step();
    }
    ASSERT_EQ(sut.addCmd({}, axis->name().c_str(), "Test", test::Label("A"), 1, &id), FctResult::Okay);
    EXPECT_EQ(script.commandsAlive, 4);
  }
  EXPECT_EQ(script.commandsAlive, 0);
  EXPECT_EQ(script.jobsAlive, 0);
}

TEST(RuntimeLifeTest, runsTheSameProgramTheSameWayTwice) {
  const auto run = [] {
    test::World world;
    MotionObject& axis = world.addAxis("X");
    world.issue(axis, "MoveAbs", builtin::AxisMovePars({7.3, 31.0, 417.0}));
    world.issue(axis, "Dwell", builtin::DwellPars({0.0137}));
    world.issue(axis, "MoveRel", builtin::AxisMovePars({-2.9, 11.0, 99.0}));
    std::vector<double> positions;
    for (int i = 0; i < 1000; ++i) {
      world.step();
      positions.push_back(axis.position());
      positions.push_back(axis.velocity());
    }
    return std::pair(positions, world.takeEvents());
  };
  EXPECT_EQ(run(), run());
}

// Threads

struct RuntimeThreadTest : RuntimeTest {
  RuntimeThreadTest() { script.journaling = false; }
  void start() {
    sut.startThreads(pacer, [this](const std::string& text) {
      warning = text;
      started = true;
    });
  }

  RealTimePacer pacer{0.0005};
  std::string warning = "never started";
  std::atomic<bool> started{false};
};

TEST_F(RuntimeThreadTest, runsCommandsToTheirEnd) {
  start();
  EXPECT_TRUE(test::eventually([this] { return started.load(); }));
  const auto move = world.issue(axis, "MoveRel", builtin::AxisMovePars({10.0, 1000.0, 100'000.0}));
  const auto dwell = world.issue(robot, "Dwell", builtin::DwellPars({0.01}));
  EXPECT_TRUE(test::eventually(
      [&] { return axis.getCmdState(move) == CmdState::DONE && robot.getCmdState(dwell) == CmdState::DONE; }));
  EXPECT_TRUE(test::eventually([this] { return sut.preparation().alive() == 0; }));
  sut.stopThreads();
  EXPECT_DOUBLE_EQ(axis.position(), 0.51);
  EXPECT_GE(pacer.punctuality().cycles, 10U);
  EXPECT_NE(warning, "never started");
}

TEST_F(RuntimeThreadTest, standsStillAfterStoppingAndGoesOnAfterStartingAgain) {
  start();
  EXPECT_TRUE(test::eventually([this] { return sut.cycle().ended() > 3; }));
  sut.stopThreads();
  const auto stoppedAt = sut.cycle().ended();
  EXPECT_EQ(sut.cycle().begun(), stoppedAt);
  const auto waiting = world.issue(axis, "A");
  EXPECT_EQ(axis.getCmdState(waiting), CmdState::BUFFERED);
  EXPECT_EQ(sut.cycle().begun(), stoppedAt);
  start();
  EXPECT_TRUE(test::eventually([&] { return axis.getCmdState(waiting) == CmdState::DONE; }));
  sut.stopThreads();
  sut.stopThreads();
}

TEST_F(RuntimeThreadTest, stopsInTheMiddleOfCommands) {
  script.cyclic = [](const std::string&, unsigned) { return JobResult::Busy; };
  start();
  for (int i = 0; i < 5; ++i) {
    world.issue(axis, "A");
  }
  EXPECT_TRUE(test::eventually([this] { return axis.getCurrentCmdID() != 0; }));
  sut.stopThreads();
  sut.stopCommands();
  EXPECT_EQ(sut.preparation().alive(), 0U);
  EXPECT_EQ(script.commandsAlive, 0);
  EXPECT_EQ(script.stateChanges[static_cast<std::size_t>(CmdState::ABORTED)], 5);
}

/// Issues commands on an object until `accepted` were taken, retrying while the buffer is full; aborts now and then.
void issueAndAbort(Runtime& runtime, const char* objName, int accepted, int abortEvery) {
  unsigned long id = 0;
  for (int i = 1; i <= accepted; ++i) {
    FctResult result = FctResult::NotOkay;
    while ((result = runtime.addCmd({}, objName, "Test", test::Label("A"), 1, &id)) == FctResult::TooManyCommands) {
      std::this_thread::yield();
    }
    EXPECT_EQ(result, FctResult::Okay);
    if (i % abortEvery == 0) {
      EXPECT_EQ(runtime.records().sys.abortCmds(&runtime, objName), FctResult::Okay);
    }
  }
}

TEST(RuntimeStressTest, losesNoCommandWhileTwoThreadsIssueAndAbort) {
  constexpr int EACH = 300;
  test::World world({0.001, 4});
  world.script.journaling = false;
  world.script.prepared = [](const std::string&, unsigned) { return JobResult::NoEffect; };
  world.script.cyclic = [](const std::string&, unsigned call) {
    return call == 2 ? JobResult::CmdFinished : JobResult::Busy;
  };
  Runtime& sut = world.runtime;
  MotionObject& axis = world.addAxis("X");
  MotionObject& robot = world.addKinematics("Robot");
  axis.setEvents(nullptr);
  robot.setEvents(nullptr);
  RealTimePacer pacer(0.0001);
  sut.startThreads(pacer, [](const std::string&) {});

  std::atomic<bool> stop{false};
  std::thread curious([&] {
    while (!stop) {
      const auto current = axis.getCurrentCmdID();
      EXPECT_LE(static_cast<std::uint32_t>(axis.getCmdState(current)), static_cast<std::uint32_t>(CmdState::FAILED));
      EXPECT_LE(current, 3ULL * EACH);
      EXPECT_EQ(axis.velocity(), 0.0);
      const auto ended = sut.cycle().ended();  // before the other counter, which may go on meanwhile
      EXPECT_LE(ended, sut.cycle().begun());
      std::this_thread::yield();
    }
  });
  std::thread one([&sut] { issueAndAbort(sut, "X", EACH, 7); });
  std::thread two([&sut] { issueAndAbort(sut, "X", EACH, 11); });
  issueAndAbort(sut, "Robot", EACH, 1000);
  one.join();
  two.join();
  EXPECT_TRUE(test::eventually([&] { return sut.preparation().alive() == 0; }));
  stop = true;
  curious.join();
  sut.stopThreads();

  const auto changes = [&world](CmdState state) {
    return world.script.stateChanges[static_cast<std::size_t>(state)].load();
  };
  EXPECT_EQ(changes(CmdState::BUFFERED), 3 * EACH);
  EXPECT_EQ(changes(CmdState::DONE) + changes(CmdState::ABORTED), 3 * EACH);
  EXPECT_GE(changes(CmdState::DONE), EACH) << "nobody aborted the kinematics";
  EXPECT_GT(changes(CmdState::ABORTED), 0);
  EXPECT_EQ(world.script.commandsAlive, 0);
  EXPECT_EQ(axis.bufferedCount(), 0U);
  EXPECT_EQ(robot.bufferedCount(), 0U);
}

}  // namespace
}  // namespace motion::host
