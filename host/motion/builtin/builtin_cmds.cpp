#include "host/motion/builtin/builtin_cmds.h"

#include <cstring>
#include <new>
#include <vector>

#include "host/motion/builtin/cmd_axis_move.h"
#include "host/motion/builtin/cmd_dwell.h"
#include "host/motion/builtin/cmd_kin_move.h"
#include "motion/core/cmd/cmd_groups.h"
#include "motion/core/cmd/i_cmd.h"
#include "motion/core/i_obj.h"
#include "motion/core/obj/kin_pose.h"
#include "schemas/host/cmdDwell_bfbs_generated.h"
#include "schemas/host/cmdDwell_generated.h"
#include "schemas/host/cmdMoveAbs_bfbs_generated.h"
#include "schemas/host/cmdMoveAbs_generated.h"
#include "schemas/host/cmdMoveCirc_bfbs_generated.h"
#include "schemas/host/cmdMoveCirc_generated.h"
#include "schemas/host/cmdMoveLin_bfbs_generated.h"
#include "schemas/host/cmdMoveLin_generated.h"
#include "schemas/host/cmdMoveRel_bfbs_generated.h"
#include "schemas/host/cmdMoveRel_generated.h"

namespace motion::host::builtin {

using core::ObjectType;
using core::cmd::CmdResult;

namespace {

/// Decodes a FlatBuffers value with root table TABLE into a container; `read` turns the table into the payload.
template <typename TABLE, typename CONTAINER, typename READ>
core::cmd::CmdMarshalFn marshalWith(READ read) {
  return [read](const comm::datalayer::Variant* data, core::IContainer*& container, bool& owned) {
    if (data == nullptr || data->getType() != comm::datalayer::VariantType::FLATBUFFERS) {
      return CmdResult::InvalidParameterData;
    }
    const auto bytes = data->getFlatBuffer();
    flatbuffers::Verifier verifier(bytes.data(), bytes.size());
    if (!verifier.VerifyBuffer<TABLE>(nullptr)) {
      return CmdResult::InvalidParameterData;
    }
    return guarded(CmdResult::OutOfMemory, [&] {
      container = new CONTAINER(read(*flatbuffers::GetRoot<TABLE>(bytes.data())));
      owned = true;
      return CmdResult::Okay;
    });
  };
}

/// The numbers of a list, which may be absent. The verifier does not tell whether they lie where a double may be read.
std::vector<double> numbersOf(const flatbuffers::Vector<double>* list) {
  std::vector<double> numbers(list != nullptr ? list->size() : 0);
  if (!numbers.empty()) {
    std::memcpy(numbers.data(), list->Data(), numbers.size() * sizeof(double));
  }
  return numbers;
}

template <typename SCHEMA>
std::vector<std::uint8_t> schemaBytes() {
  return {SCHEMA::data(), SCHEMA::data() + SCHEMA::size()};
}

template <typename CMD, ObjectType TYPE, typename... ARGS>
auto createWith(ARGS... args) {
  return wrapCreate<TYPE>(
      [args...](core::IObjFactory& factory, bool buffered, core::cmd::CmdGeneric<TYPE>*& cmd, std::string& errText) {
        if (!buffered) {
          errText = "this command can not be used as a non - buffered command";
          return CmdResult::Refused;
        }
        errText.clear();
        return guarded(CmdResult::OutOfMemory, [&] {
          cmd = new CMD(args..., factory);
          return CmdResult::Okay;
        });
      });
}

template <ObjectType TYPE>
void registerDwell(GenericCmdFactory& cmdFactory, const char* group) {
  cmdFactory.addBuiltIn(
      {{TYPE, CmdDwell<TYPE>::staticName()},
       createWith<CmdDwell<TYPE>, TYPE>(),
       marshalWith<fbs::CmdDwell, DwellPars>([](const fbs::CmdDwell& table) { return DwellParsT{table.time()}; }),
       true,
       {group},
       schemaBytes<fbs::CmdDwellBinarySchema>(),
       "Wait for a time",
       true});
}

void registerAxisMoves(GenericCmdFactory& cmdFactory) {
  const std::vector<std::string> groups{core::cmd::axs::GROUP_MOTION_COMMANDS};
  cmdFactory.addBuiltIn({{ObjectType::AXIS, CmdAxisMove::staticName(MoveKind::ABSOLUTE)},
                         createWith<CmdAxisMove, ObjectType::AXIS>(MoveKind::ABSOLUTE),
                         marshalWith<fbs::CmdMoveAbs, AxisMovePars>([](const fbs::CmdMoveAbs& table) {
                           return AxisMoveParsT{table.to(), table.velocity(), table.acceleration()};
                         }),
                         true,
                         groups,
                         schemaBytes<fbs::CmdMoveAbsBinarySchema>(),
                         "Move to a position",
                         true});
  cmdFactory.addBuiltIn({{ObjectType::AXIS, CmdAxisMove::staticName(MoveKind::RELATIVE)},
                         createWith<CmdAxisMove, ObjectType::AXIS>(MoveKind::RELATIVE),
                         marshalWith<fbs::CmdMoveRel, AxisMovePars>([](const fbs::CmdMoveRel& table) {
                           return AxisMoveParsT{table.by(), table.velocity(), table.acceleration()};
                         }),
                         true,
                         groups,
                         schemaBytes<fbs::CmdMoveRelBinarySchema>(),
                         "Move by a distance",
                         true});
}

void registerKinMoves(GenericCmdFactory& cmdFactory) {
  const std::vector<std::string> groups{core::cmd::kin::GROUP_MOTION_COMMANDS};
  cmdFactory.addBuiltIn({{ObjectType::KINEMATICS, CmdKinMove::staticName(PathKind::LINEAR)},
                         createWith<CmdKinMove, ObjectType::KINEMATICS>(PathKind::LINEAR),
                         marshalWith<fbs::CmdMoveLin, KinMovePars>([](const fbs::CmdMoveLin& table) {
                           return KinMoveParsT{numbersOf(table.to()), numbersOf(table.via()), table.blending(),
                                               table.velocity(), table.acceleration()};
                         }),
                         true,
                         groups,
                         schemaBytes<fbs::CmdMoveLinBinarySchema>(),
                         "Move along straight lines",
                         true});
  cmdFactory.addBuiltIn(
      {{ObjectType::KINEMATICS, CmdKinMove::staticName(PathKind::CIRCULAR)},
       createWith<CmdKinMove, ObjectType::KINEMATICS>(PathKind::CIRCULAR),
       marshalWith<fbs::CmdMoveCirc, KinMovePars>([](const fbs::CmdMoveCirc& table) {
         return KinMoveParsT{numbersOf(table.to()), numbersOf(table.via()), 0.0, table.velocity(), table.acceleration()};
       }),
       true,
       groups,
       schemaBytes<fbs::CmdMoveCircBinarySchema>(),
       "Move along an arc",
       true});
}

}  // namespace

void registerCmds(GenericCmdFactory& cmdFactory, ObjFactory& objFactory, JobDataIDMgr& ids) {
  std::unique_ptr<core::IAmCreatable> profile = std::make_unique<ProfileJob>();
  std::unique_ptr<core::IAmCreatable> kinPath = std::make_unique<KinPathJob>();
  std::unique_ptr<core::IAmCreatable> dwell = std::make_unique<DwellJob>();
  const bool isKnown =
      !core::isFailure(objFactory.registerObj(profile, 0)) && !core::isFailure(objFactory.registerObj(kinPath, 0)) &&
      !core::isFailure(objFactory.registerObj(dwell, 0)) && ids.addID(ProfilePars::getMyID(), "AxisProfilePars") &&
      ids.addID(KinPathPars::getMyID(), "KinPathPars") && ids.addID(KinSetpoint::getMyID(), "KinSetpoint") &&
      ids.addID(DwellJobPars::getMyID(), "DwellJobPars") && ids.addID(AxisSetpoint::getMyID(), "AxisSetpoint") &&
      ids.addID(core::IObjPtr::getMyID(), "IObjPtr") && ids.addID(core::cmd::ICmdPtr::getMyID(), "ICmdPtr") &&
      ids.addID(core::KinPose::getMyID(), "KinPose");
  if (!isKnown) {
    throw std::bad_alloc();  // new factories refuse for no other reason
  }
  registerAxisMoves(cmdFactory);
  registerKinMoves(cmdFactory);
  registerDwell<ObjectType::AXIS>(cmdFactory, core::cmd::axs::GROUP_NON_MOTION_COMMANDS);
  registerDwell<ObjectType::KINEMATICS>(cmdFactory, core::cmd::kin::GROUP_NON_MOTION_COMMANDS);
}

}  // namespace motion::host::builtin
