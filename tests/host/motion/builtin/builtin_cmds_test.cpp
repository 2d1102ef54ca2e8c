// What the host's own commands register.
#include "host/motion/builtin/builtin_cmds.h"

#include <flatbuffers/reflection.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "host/motion/builtin/dwell_job.h"
#include "host/motion/builtin/kin_path_job.h"
#include "host/motion/builtin/profile_job.h"
#include "host/motion/setpoint.h"
#include "motion/core/cmd/cmd_groups.h"
#include "motion/core/cmd/i_cmd.h"
#include "motion/core/obj/kin_pose.h"
#include "schemas/host/cmdDwell_generated.h"
#include "schemas/host/cmdMoveAbs_generated.h"
#include "schemas/host/cmdMoveCirc_generated.h"
#include "schemas/host/cmdMoveLin_generated.h"
#include "schemas/host/cmdMoveRel_generated.h"
#include "support/parameter_table.h"

namespace motion::host::builtin {
namespace {

using comm::datalayer::Variant;
using core::ObjectType;
using core::cmd::CmdResult;
using testing::ElementsAre;

struct BuiltinCmdsTest : testing::Test {
  BuiltinCmdsTest() { registerCmds(sut, objFactory, ids); }

  /// Decodes parameters as the runtime would.
  std::unique_ptr<core::IContainer> decode(const core::cmd::CmdId& id, const Variant& parameters) {
    core::IContainer* container = nullptr;
    bool owned = false;
    EXPECT_EQ(sut.find(id)->marshal(&parameters, container, owned), CmdResult::Okay);
    EXPECT_TRUE(owned);
    return std::unique_ptr<core::IContainer>(container);
  }
  template <typename OFFSET>
  Variant finish(flatbuffers::FlatBufferBuilder& builder, OFFSET root) {
    builder.Finish(root);
    return Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()});
  }

  ObjFactory objFactory;
  JobDataIDMgr ids;
  Complaints complaints;
  GenericCmdFactory sut{complaints};
};

TEST_F(BuiltinCmdsTest, registersSixCommands) {
  std::vector<std::string> names;
  for (const auto& entry : sut.all()) {
    names.push_back((entry->id.objectType == ObjectType::AXIS ? "axis " : "kinematics ") + entry->id.name);
    EXPECT_TRUE(entry->builtIn);
    EXPECT_TRUE(entry->visible);
    EXPECT_FALSE(entry->description.empty());
  }
  EXPECT_THAT(names, ElementsAre("axis Dwell", "axis MoveAbs", "axis MoveRel", "kinematics Dwell", "kinematics MoveCirc",
                                 "kinematics MoveLin"));
}

TEST_F(BuiltinCmdsTest, commandsBelongToGroups) {
  EXPECT_THAT(sut.find({ObjectType::AXIS, "MoveAbs"})->groups, ElementsAre(core::cmd::axs::GROUP_MOTION_COMMANDS));
  EXPECT_THAT(sut.find({ObjectType::AXIS, "MoveRel"})->groups, ElementsAre(core::cmd::axs::GROUP_MOTION_COMMANDS));
  for (const char* name : {"MoveLin", "MoveCirc"}) {
    EXPECT_THAT(sut.find({ObjectType::KINEMATICS, name})->groups, ElementsAre(core::cmd::kin::GROUP_MOTION_COMMANDS));
  }
  EXPECT_THAT(sut.find({ObjectType::AXIS, "Dwell"})->groups, ElementsAre(core::cmd::axs::GROUP_NON_MOTION_COMMANDS));
  EXPECT_THAT(sut.find({ObjectType::KINEMATICS, "Dwell"})->groups, ElementsAre(core::cmd::kin::GROUP_NON_MOTION_COMMANDS));
}

TEST_F(BuiltinCmdsTest, schemasDescribeTheParameters) {
  const auto fieldsOf = [this](const core::cmd::CmdId& id) {
    const auto entry = sut.find(id);
    flatbuffers::Verifier verifier(entry->schema.data(), entry->schema.size());
    EXPECT_TRUE(reflection::VerifySchemaBuffer(verifier));
    std::vector<std::string> fields;
    for (const auto* field : *reflection::GetSchema(entry->schema.data())->root_table()->fields()) {
      fields.push_back(field->name()->str());
    }
    return fields;
  };
  EXPECT_THAT(fieldsOf({ObjectType::AXIS, "MoveAbs"}), ElementsAre("acceleration", "to", "velocity"));
  EXPECT_THAT(fieldsOf({ObjectType::AXIS, "MoveRel"}), ElementsAre("acceleration", "by", "velocity"));
  EXPECT_THAT(fieldsOf({ObjectType::KINEMATICS, "MoveLin"}),
              ElementsAre("acceleration", "blending", "to", "velocity", "via"));
  EXPECT_THAT(fieldsOf({ObjectType::KINEMATICS, "MoveCirc"}), ElementsAre("acceleration", "to", "velocity", "via"));
  EXPECT_THAT(fieldsOf({ObjectType::AXIS, "Dwell"}), ElementsAre("time"));
  EXPECT_THAT(fieldsOf({ObjectType::KINEMATICS, "Dwell"}), ElementsAre("time"));
}

TEST_F(BuiltinCmdsTest, decodesParameters) {
  flatbuffers::FlatBufferBuilder abs;
  const auto moveAbs = decode({ObjectType::AXIS, "MoveAbs"}, finish(abs, fbs::CreateCmdMoveAbs(abs, 5.0, 6.0, 7.0)));
  ASSERT_NE(AxisMovePars::safeCast(moveAbs.get()), nullptr);
  EXPECT_EQ(AxisMovePars::safeCast(moveAbs.get())->get().target, 5.0);
  EXPECT_EQ(AxisMovePars::safeCast(moveAbs.get())->get().velocity, 6.0);
  EXPECT_EQ(AxisMovePars::safeCast(moveAbs.get())->get().acceleration, 7.0);

  flatbuffers::FlatBufferBuilder rel;
  const auto moveRel = decode({ObjectType::AXIS, "MoveRel"}, finish(rel, fbs::CreateCmdMoveRel(rel, 8.0)));
  ASSERT_NE(AxisMovePars::safeCast(moveRel.get()), nullptr);
  EXPECT_EQ(AxisMovePars::safeCast(moveRel.get())->get().target, 8.0);
  EXPECT_EQ(AxisMovePars::safeCast(moveRel.get())->get().velocity, 100.0) << "the schema's default";
  EXPECT_EQ(AxisMovePars::safeCast(moveRel.get())->get().acceleration, 1000.0) << "the schema's default";

  flatbuffers::FlatBufferBuilder wait;
  const auto dwell = decode({ObjectType::KINEMATICS, "Dwell"}, finish(wait, fbs::CreateCmdDwell(wait, 0.5)));
  ASSERT_NE(DwellPars::safeCast(dwell.get()), nullptr);
  EXPECT_EQ(DwellPars::safeCast(dwell.get())->get().time, 0.5);
}

TEST_F(BuiltinCmdsTest, readsCoordinatesWhereverTheyLie) {
  const auto data = Variant::fromFlatBuffer(test::ParameterTable().with(4, {1.5, -2.25, 1e9}).finishMovedBytes());
  const auto moveLin = decode({ObjectType::KINEMATICS, "MoveLin"}, data);
  ASSERT_NE(KinMovePars::safeCast(moveLin.get()), nullptr);
  EXPECT_THAT(KinMovePars::safeCast(moveLin.get())->get().to, ElementsAre(1.5, -2.25, 1e9));
}

TEST_F(BuiltinCmdsTest, decodesMovesOfAKinematics) {
  const std::vector<double> to{1, 2, 3};
  const std::vector<double> via{4, 5, 6, 7, 8, 9};
  flatbuffers::FlatBufferBuilder lin;
  const auto moveLin = decode({ObjectType::KINEMATICS, "MoveLin"},
                              finish(lin, fbs::CreateCmdMoveLinDirect(lin, &to, &via, 10.0, 11.0, 12.0)));
  ASSERT_NE(KinMovePars::safeCast(moveLin.get()), nullptr);
  const KinMoveParsT line = KinMovePars::safeCast(moveLin.get())->get();
  EXPECT_EQ(line.to, to);
  EXPECT_EQ(line.via, via);
  EXPECT_EQ(line.blending, 10.0);
  EXPECT_EQ(line.velocity, 11.0);
  EXPECT_EQ(line.acceleration, 12.0);

  flatbuffers::FlatBufferBuilder circ;
  const auto moveCirc =
      decode({ObjectType::KINEMATICS, "MoveCirc"}, finish(circ, fbs::CreateCmdMoveCircDirect(circ, &via, &to, 11.0, 12.0)));
  ASSERT_NE(KinMovePars::safeCast(moveCirc.get()), nullptr);
  const KinMoveParsT arc = KinMovePars::safeCast(moveCirc.get())->get();
  EXPECT_EQ(arc.to, to);
  EXPECT_EQ(arc.via, via);
  EXPECT_EQ(arc.blending, 0.0);
  EXPECT_EQ(arc.velocity, 11.0);
  EXPECT_EQ(arc.acceleration, 12.0);
}

TEST_F(BuiltinCmdsTest, decodesMovesWithNothingGiven) {
  for (const char* name : {"MoveLin", "MoveCirc"}) {
    flatbuffers::FlatBufferBuilder builder;
    const auto move = decode({ObjectType::KINEMATICS, name}, finish(builder, fbs::CreateCmdMoveLin(builder)));
    ASSERT_NE(KinMovePars::safeCast(move.get()), nullptr);
    const KinMoveParsT values = KinMovePars::safeCast(move.get())->get();
    EXPECT_TRUE(values.to.empty() && values.via.empty());
    EXPECT_EQ(values.blending, 0.0);
    EXPECT_EQ(values.velocity, 100.0);
    EXPECT_EQ(values.acceleration, 1000.0);
  }
}

TEST_F(BuiltinCmdsTest, refusesParametersThatAreNoValidBuffer) {
  const std::vector<std::uint8_t> garbage{0xFF, 0xFF, 0xFF, 0x7F, 1, 2, 3, 4};
  const Variant invalid = Variant::fromFlatBuffer(garbage);
  const Variant number(2.0);
  for (const auto& entry : sut.all()) {
    for (const Variant* parameters : {&invalid, &number, static_cast<const Variant*>(nullptr)}) {
      core::IContainer* container = nullptr;
      bool owned = false;
      EXPECT_EQ(entry->marshal(parameters, container, owned), CmdResult::InvalidParameterData) << entry->id.name;
      EXPECT_EQ(container, nullptr);
      EXPECT_FALSE(owned);
    }
  }
}

TEST_F(BuiltinCmdsTest, makesBufferedCommandsOnly) {
  for (const auto& entry : sut.all()) {
    std::unique_ptr<core::cmd::ICmdGeneric> cmd;
    std::string errText = "left over";
    EXPECT_EQ(entry->create(objFactory, true, cmd, errText), CmdResult::Okay) << entry->id.name;
    EXPECT_NE(cmd, nullptr);
    EXPECT_EQ(errText, "");
    cmd.reset();
    EXPECT_EQ(entry->create(objFactory, false, cmd, errText), CmdResult::Refused);
    EXPECT_EQ(cmd, nullptr);
    EXPECT_EQ(errText, "this command can not be used as a non - buffered command");
  }
}

TEST_F(BuiltinCmdsTest, namesItsJobData) {
  EXPECT_EQ(ids.getID("AxisProfilePars"), ProfilePars::getMyID());
  EXPECT_EQ(ids.getID("AxisSetpoint"), AxisSetpoint::getMyID());
  EXPECT_EQ(ids.getID("IObjPtr"), core::IObjPtr::getMyID());
  EXPECT_EQ(ids.getID("ICmdPtr"), core::cmd::ICmdPtr::getMyID());
  EXPECT_EQ(ids.getID("KinPose"), core::KinPose::getMyID());
  EXPECT_EQ(ids.getID("DwellJobPars"), DwellJobPars::getMyID());
  EXPECT_EQ(ids.getID("KinPathPars"), KinPathPars::getMyID());
  EXPECT_EQ(ids.getID("KinSetpoint"), KinSetpoint::getMyID());
}

TEST_F(BuiltinCmdsTest, registersTheJobObjects) {
  for (const char* name : {"host_axis_profile", "host_dwell", "host_kin_path"}) {
    core::job::IJobObject* job = nullptr;
    ASSERT_EQ(objFactory.createObj(name, 0, job), core::ObjFactoryResult::Okay);
    const std::unique_ptr<core::job::IJobObject> owned(job);
    EXPECT_STREQ(owned->getID(), name);
    EXPECT_EQ(owned->getJobString(), "No inputs registered");
  }
}

}  // namespace
}  // namespace motion::host::builtin
