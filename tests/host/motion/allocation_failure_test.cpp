// Whatever the motion runtime offers to components survives a failed allocation: a result, no leak, nothing half done.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <new>
#include <optional>
#include <string>

#include "host/motion/builtin/builtin_cmds.h"
#include "host/motion/builtin/dwell_job.h"
#include "host/motion/builtin/profile_job.h"
#include "host/motion/motion_ext.h"
#include "host/motion/unit_helper.h"
#include "tests/host/motion/allocation_sweep.h"
#include "tests/host/motion/world.h"

namespace motion::host {
namespace {

using core::FctResult;
using core::ObjectType;
using core::ObjFactoryResult;
using core::cmd::CmdId;
using core::cmd::CmdResult;
using core::job::JobResult;
using test::AllocationCount;
using test::AllocationFailure;
using test::failEachAllocation;
using test::Sweep;

/// Longer than any string keeps within itself.
constexpr const char* LONG_NAME = "a name that is too long to be kept without an allocation";

const auto NOTHING_TO_UNDO = [] {};

// Registration

struct RegistrationTest : testing::Test {
  const std::string schema = KAVO_TEST_SCHEMA_DIR "/cmdSetSignal.bfbs";
  const std::string missing = KAVO_TEST_SCHEMA_DIR "/missing.bfbs";
  const std::string description = "A description that is too long to be kept without an allocation";
  const std::vector<std::string> groups{"AGroupWhoseNameNeedsAnAllocation", "Another"};
  const std::vector<std::uint32_t> slots{1, 2, 3};
  const CmdId id{ObjectType::AXIS, LONG_NAME};
  // Too large for a function object to keep within itself.
  std::array<int, 16> ballast{};
  Complaints complaints;
};

TEST_F(RegistrationTest, ofACommand) {
  GenericCmdFactory sut(complaints);
  const core::cmd::CmdCreateFn<ObjectType::AXIS> create = [kept = ballast](core::IObjFactory&, bool, auto*&, std::string&) {
    return kept[0] == 0 ? CmdResult::Refused : CmdResult::Okay;
  };
  const core::cmd::CmdMarshalFn marshal = [kept = ballast](const comm::datalayer::Variant*, core::IContainer*&, bool&) {
    return kept[0] == 0 ? CmdResult::Refused : CmdResult::Okay;
  };
  const auto call = [&](const std::string& path) {
    const CmdResult result = sut.registerCmd(id, create, marshal, true, groups, path, description, "");
    EXPECT_EQ(sut.find(id) != nullptr, result == CmdResult::Okay);
    return result;
  };
  const Sweep registered{[&] { return call(schema); }, CmdResult::Okay, std::vector{CmdResult::OutOfMemory},
                         [&] { EXPECT_EQ(sut.unregisterCmd(id), CmdResult::Okay); }};
  EXPECT_GT(failEachAllocation(registered), 9) << "name, functions, groups, description, schema, entry, place in the map";
  EXPECT_TRUE(complaints.all().empty());
}

TEST_F(RegistrationTest, ofACommandForKinematics) {
  GenericCmdFactory sut(complaints);
  const core::cmd::CmdCreateFn<ObjectType::KINEMATICS> create = [](core::IObjFactory&, bool, auto*&, std::string&) {
    return CmdResult::Refused;
  };
  const Sweep registered{[&] { return sut.registerCmd(id, create, {}, true, groups, schema, description, ""); },
                         CmdResult::Okay, std::vector{CmdResult::OutOfMemory}, [&] { sut.unregisterCmd(id); }};
  EXPECT_GT(failEachAllocation(registered), 9);
}

TEST_F(RegistrationTest, ofAnOption) {
  GenericCmdOptionFactory sut(complaints);
  const core::cmd::CmdOptionCreateFn create = [kept = ballast](core::cmd::GenericCmdOption*&, std::string&) {
    return kept[0] == 0 ? CmdResult::Refused : CmdResult::Okay;
  };
  const auto call = [&] { return sut.registerCmdOptionWithSlots(id, create, {}, groups, schema, description, "", slots); };
  const Sweep registered{call, CmdResult::Okay, std::vector{CmdResult::OutOfMemory},
                         [&] { EXPECT_EQ(sut.unregisterCmdOption(id), CmdResult::Okay); }};
  EXPECT_GT(failEachAllocation(registered), 9);
  const Sweep withoutSlots{[&] { return sut.registerCmdOption(id, create, {}, groups, schema, description, ""); },
                           CmdResult::Okay, std::vector{CmdResult::OutOfMemory}, [&] { sut.unregisterCmdOption(id); }};
  EXPECT_GT(failEachAllocation(withoutSlots), 9);
}

TEST_F(RegistrationTest, staysRefusedWhenTheComplaintCannotBeKept) {
  GenericCmdFactory sut(complaints);
  const core::cmd::CmdCreateFn<ObjectType::AXIS> create = [](core::IObjFactory&, bool, auto*&, std::string&) {
    return CmdResult::Refused;
  };
  ASSERT_EQ(sut.registerCmd(id, create, {}, true, groups, schema, description, ""), CmdResult::Okay);
  for (const auto& [path, reason] :
       {std::pair{&missing, CmdResult::SchemaNotReadable}, {&schema, CmdResult::AlreadyRegistered}}) {
    int refusedForItsReason = 0;
    for (int nth = 1;; ++nth) {
      const AllocationFailure failure(nth);
      const CmdResult result = sut.registerCmd(id, create, {}, true, groups, *path, description, "");
      if (!failure.happened()) {
        EXPECT_EQ(result, reason);
        break;
      }
      ASSERT_THAT(result, testing::AnyOf(reason, CmdResult::OutOfMemory)) << nth;
      refusedForItsReason += result == reason ? 1 : 0;
    }
    EXPECT_GT(refusedForItsReason, 0) << "the complaint itself needs memory";
    EXPECT_EQ(sut.all().size(), 1U);
  }
}

TEST_F(RegistrationTest, canBeLookedUpAndTakenBackWithoutMemory) {
  GenericCmdFactory sut(complaints);
  CmdEntry entry;
  entry.id = id;
  ASSERT_TRUE(sut.addBuiltIn(entry));
  const AllocationCount allocations;
  const bool isFound = sut.find({ObjectType::AXIS, LONG_NAME}) != nullptr;
  const CmdResult unregistered = sut.unregisterCmd(id);
  EXPECT_EQ(allocations.get(), 0);
  EXPECT_TRUE(isFound);
  EXPECT_EQ(unregistered, CmdResult::Okay);
}

/// A prototype with a long name.
class LongNamedJob : public core::job::JobObjectBase {
 public:
  [[nodiscard]] core::IAmCreatable* createNew() const override { return new LongNamedJob; }
  [[nodiscard]] const char* getID() const override { return LONG_NAME; }
  JobResult addJobsToJoblist(core::job::IJobList* /*list*/, core::job::JobListTypes /*type*/) override {
    return JobResult::ListTypeNotServed;
  }
  [[nodiscard]] std::string getJobString() const override { return {}; }
};

TEST_F(RegistrationTest, ofAPrototypeAndItsCloning) {
  ObjFactory sut;
  std::unique_ptr<core::IAmCreatable> prototype = std::make_unique<LongNamedJob>();
  const auto registering = [&] {
    const ObjFactoryResult result = sut.registerObj(prototype, 0);
    EXPECT_EQ(prototype == nullptr, result == ObjFactoryResult::Okay);
    return result;
  };
  const Sweep registered{registering, ObjFactoryResult::Okay, std::vector{ObjFactoryResult::CreationFailed}, [&] {
                           EXPECT_EQ(sut.unregisterObj(LONG_NAME, 0), ObjFactoryResult::Okay);
                           prototype = std::make_unique<LongNamedJob>();
                         }};
  EXPECT_EQ(failEachAllocation(registered), 2) << "place in the map, name";

  ASSERT_EQ(sut.registerObj(prototype, 0), ObjFactoryResult::Okay);
  core::job::IJobObject* out = nullptr;
  const Sweep cloned{[&] { return sut.createObj(LONG_NAME, 0, out); }, ObjFactoryResult::Okay,
                     std::vector{ObjFactoryResult::CreationFailed}, [&] { delete out; }};
  EXPECT_EQ(failEachAllocation(cloned), 1);
  const AllocationFailure failure(1);
  sut.createObj(LONG_NAME, 0, out);
  EXPECT_EQ(out, nullptr);
}

TEST_F(RegistrationTest, ofADataType) {
  std::optional<JobDataIDMgr> sut(std::in_place);
  const auto call = [&] {
    const bool isAdded = sut->addID(7, LONG_NAME);
    EXPECT_EQ(sut->getName(7) != nullptr, isAdded);
    EXPECT_EQ(sut->getID(LONG_NAME), isAdded ? 7U : 0U);
    return isAdded;
  };
  const Sweep added{call, true, std::vector{false}, [&] { sut.emplace(); }};
  EXPECT_EQ(failEachAllocation(added), 4) << "place and name, in both directions";
}

// Issuing

struct IssuingTest : testing::Test {
  IssuingTest() { world.script.journaling = false; }

  FctResult add(const std::string& cmdType, const core::IContainer& values) {
    id = 4711;
    const FctResult result = world.runtime.addCmd(world.source, LONG_NAME, cmdType, values, 1, &id);
    EXPECT_EQ(core::isFailure(result), id == 4711U);
    EXPECT_EQ(world.runtime.preparation().alive(), core::isFailure(result) ? 0U : 1U);
    EXPECT_EQ(axis.bufferedCount(), core::isFailure(result) ? 0U : 1U);
    return result;
  }
  int sweepAdding(const std::string& cmdType, const core::IContainer& values) {
    const Sweep added{[&] { return add(cmdType, values); }, FctResult::Okay,
                      std::vector{FctResult::OutOfMemory, FctResult::PreparationError},
                      [this] { world.runtime.stopCommands(); }};
    return failEachAllocation(added);
  }

  unsigned long id = 4711;
  test::World world;
  MotionObject& axis = world.addAxis(LONG_NAME);
};

TEST_F(IssuingTest, ofABuiltInCommand) {
  EXPECT_GT(sweepAdding("MoveAbs", builtin::AxisMovePars(builtin::AxisMoveParsT{100, 100, 1000})), 5);
  EXPECT_GT(sweepAdding("Dwell", builtin::DwellPars(builtin::DwellParsT{1.0})), 5);
}

TEST_F(IssuingTest, ofACommandOfAComponent) {
  world.script.prepared = [](const std::string&, unsigned) { return JobResult::NoEffect; };
  world.script.before = world.script.prepared;
  EXPECT_GT(sweepAdding("Test", test::Label("A")), 9);
  EXPECT_EQ(world.script.commandsAlive, 0);
  EXPECT_EQ(world.script.jobsAlive, 1) << "the prototype";
}

TEST_F(IssuingTest, ofWhatIsRefusedAnyway) {
  const builtin::AxisMovePars invalid(builtin::AxisMoveParsT{100, 0, 1000});
  // A full log replaces its oldest diagnosis by one that needs as much memory.
  for (std::size_t i = 0; i <= DiaLog::CAPACITY; ++i) {
    ASSERT_EQ(add("MoveAbs", invalid), FctResult::InvalidParameter);
  }
  const Sweep refused{[&] { return add("MoveAbs", invalid); }, FctResult::InvalidParameter,
                      std::vector{FctResult::OutOfMemory, FctResult::InvalidParameter}, NOTHING_TO_UNDO};
  EXPECT_GT(failEachAllocation(refused), 5);
  const Sweep unknown{[&] { return add("Fly", invalid); }, FctResult::NotSupportedByObject,
                      std::vector{FctResult::OutOfMemory}, NOTHING_TO_UNDO};
  EXPECT_GT(failEachAllocation(unknown), 0);
}

TEST_F(IssuingTest, intoAFullBufferIsRefusedForThatReason) {
  test::World full(RuntimeConfig{0.001, 1});
  MotionObject& object = full.addAxis(LONG_NAME);
  full.issue(object, "A");
  const test::Label values("B");
  const auto call = [&] { return full.runtime.addCmd(full.source, LONG_NAME, "Test", values, 1, &id); };
  const Sweep refused{call, FctResult::TooManyCommands, std::vector{FctResult::OutOfMemory}, NOTHING_TO_UNDO};
  EXPECT_GT(failEachAllocation(refused), 0);
  EXPECT_EQ(object.bufferedCount(), 1U);
}

TEST_F(IssuingTest, ofWhatIsOnlyTriedOut) {
  const test::Label values("A");
  std::string problem;
  problem.reserve(1000);
  const auto call = [&] { return world.runtime.preparation().tryOut(axis, {"Test", values, world.source}, problem); };
  const Sweep tried{call, FctResult::Okay, std::vector{FctResult::OutOfMemory, FctResult::PreparationError},
                    NOTHING_TO_UNDO};
  EXPECT_GT(failEachAllocation(tried), 7);
  EXPECT_EQ(world.script.commandsAlive, 0);
}

TEST_F(IssuingTest, throughTheRecords) {
  const Records& records = world.runtime.records();
  for (const core::DwellCmdFn dwell : {records.cmd.dwellCmd, records.cmdGeneral.dwellCmd}) {
    const Sweep dwelt{[&] { return dwell(&world.runtime, world.source, LONG_NAME, 1.0, id); }, FctResult::Okay,
                      std::vector{FctResult::OutOfMemory, FctResult::PreparationError},
                      [this] { world.runtime.stopCommands(); }};
    EXPECT_GT(failEachAllocation(dwelt), 5);
  }
  const core::ComponentVersionAdd version;
  core::IMotionExt* ext = nullptr;
  const Sweep extended{[&] { return records.extension.createExtIfObj(records.extension.context, &version, &ext); },
                       FctResult::Okay, std::vector{FctResult::OutOfMemory}, [&] { delete std::exchange(ext, nullptr); }};
  EXPECT_EQ(failEachAllocation(extended), 1);
}

TEST_F(IssuingTest, looksUpAndAbortsWithoutMemory) {
  Records& records = world.runtime.records();
  const std::unique_ptr<core::IMotionExt> ext = std::make_unique<MotionExt>(world.runtime);
  const std::string option(LONG_NAME);
  test::Label values("A");
  double value = 0.0;
  const AllocationCount allocations;
  const bool isFound =
      ext->getObjMgr()->findObj(LONG_NAME, 0) == &axis && ext->getObjMgr()->findObj("stranger", 0) == nullptr &&
      ext->getObjMgr()->getObjName(&axis) == axis.name() && records.sys.getObjCount(records.sys.context) == 1;
  const bool isAnswered = records.data.getAxisPosition(records.data.context, LONG_NAME, value) == FctResult::Okay &&
                          records.sys.getCycleTime(records.sys.context, value) == FctResult::Okay &&
                          records.sys.abortCmds(records.sys.context, LONG_NAME) == FctResult::Okay &&
                          records.cmd.abortCmd(&world.runtime, world.source, LONG_NAME) == FctResult::Okay &&
                          world.runtime.addCmdOption(world.source, "stranger", option, core::cmd::CmdOptPermType::ONCE,
                                                     values) == FctResult::ObjectNotFound;
  EXPECT_EQ(allocations.get(), 0);
  EXPECT_TRUE(isFound);
  EXPECT_TRUE(isAnswered);
}

// Preparing

TEST(PreparingWithoutMemoryTest, publishesAndReadsJobData) {
  std::optional<JobDataHandler> sut(std::in_place);
  AxisSetpoint data;
  core::IContainer* out = nullptr;
  const auto call = [&] {
    const JobResult result = sut->registerPublish(AxisSetpoint::getMyID(), SectionMgr::OBJ_DATA, LONG_NAME, &data);
    const JobResult read = sut->registerRead(AxisSetpoint::getMyID(), SectionMgr::OBJ_DATA, 1, LONG_NAME, out);
    EXPECT_EQ(read, core::isFailure(result) ? JobResult::DataNotPublished : JobResult::NoEffect);
    return result;
  };
  const Sweep published{call, JobResult::NoEffect, std::vector{JobResult::OutOfMemory}, [&] { sut.emplace(); }};
  EXPECT_EQ(failEachAllocation(published), 1);
}

TEST(PreparingWithoutMemoryTest, addsJobs) {
  std::optional<JobList> sut(std::in_place);
  const core::job::Job job = [ballast = std::array<int, 16>{}] {
    return ballast[0] == 0 ? JobResult::NoEffect : JobResult::Busy;
  };
  const auto call = [&] {
    const JobResult result = sut->addJob(job, "job", SectionMgr::EXEC_FINAL);
    EXPECT_EQ(sut->size(), core::isFailure(result) ? 0U : 1U);
    return result;
  };
  const Sweep added{call, JobResult::NoEffect, std::vector{JobResult::OutOfMemory}, [&] { sut.emplace(); }};
  EXPECT_EQ(failEachAllocation(added), 2) << "the job, its place";
}

TEST(PreparingWithoutMemoryTest, reportsOrLosesAWholeDiagnosis) {
  std::optional<DiaLog> sut(std::in_place);
  const core::dia::CmdSourceInfo source{LONG_NAME, LONG_NAME, 1};
  const auto call = [&] {
    sut->report(1, 2, source, {LONG_NAME, LONG_NAME, 3}, "%s", LONG_NAME);
    sut->close();
    return sut->count();
  };
  const Sweep reported{call, std::uint64_t{1}, std::vector{std::uint64_t{0}}, [&] { sut.emplace(); }};
  EXPECT_EQ(failEachAllocation(reported), 6) << "five texts and their place";
}

TEST(PreparingWithoutMemoryTest, aFullLogKeepsItsDiagnosesWhenANewOneIsLost) {
  DiaLog sut;
  for (std::size_t i = 0; i < DiaLog::CAPACITY; ++i) {
    sut.report(1, 2, {}, {}, "%zu", i);
  }
  {
    const AllocationFailure failure(1);
    sut.report(1, 2, {}, {}, "%s", LONG_NAME);
  }
  EXPECT_EQ(sut.all().size(), DiaLog::CAPACITY);
  EXPECT_EQ(sut.all().front().text, "0");
}

TEST(PreparingWithoutMemoryTest, clonesNothing) {
  const UnitHelper helper;
  const builtin::DwellJob dwell;
  const builtin::ProfileJob profile;
  for (const core::IAmCreatable* sut : std::initializer_list<const core::IAmCreatable*>{&helper, &dwell, &profile}) {
    core::IAmCreatable* clone = nullptr;
    {
      const AllocationFailure failure(1);
      clone = sut->createNew();
    }
    EXPECT_EQ(clone, nullptr);
  }
  std::string text = "none";
  {
    const AllocationFailure failure(1);
    text = dwell.getJobString();
  }
  EXPECT_EQ(text, "");
}

// Building the host itself: it may throw, but keeps nothing.

/// Whether the work threw std::bad_alloc.
template <typename WORK>
bool runsOutOfMemory(const WORK& work) {
  try {
    work();
    return false;
  } catch (const std::bad_alloc&) {
    return true;
  }
}

TEST(BuildingWithoutMemoryTest, aRuntimeIsWholeOrNotThere) {
  const auto call = [] { return runsOutOfMemory([] { const Runtime sut{RuntimeConfig{}}; }); };
  const Sweep built{call, false, std::vector{true}, NOTHING_TO_UNDO};
  EXPECT_GT(failEachAllocation(built), 30);
}

TEST(BuildingWithoutMemoryTest, anObjectIsWholeOrNotThere) {
  RetiredCmds retired;
  for (const ObjectType type : {ObjectType::AXIS, ObjectType::KINEMATICS}) {
    const auto call = [&] {
      ObjMgr sut;
      const bool isWithout = runsOutOfMemory([&] { sut.add({LONG_NAME, type, {}, 0.001, 4, 0}, retired); });
      EXPECT_EQ(sut.getObjCount(), isWithout ? 0U : 1U);
      EXPECT_EQ(sut.find(LONG_NAME) == nullptr, isWithout);
      return isWithout;
    };
    const Sweep added{call, false, std::vector{true}, NOTHING_TO_UNDO};
    EXPECT_GT(failEachAllocation(added), 6);
  }
}

}  // namespace
}  // namespace motion::host
