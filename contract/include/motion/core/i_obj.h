// A motion object: an axis or a kinematics.
#pragma once

#include <cstdint>

#include "motion/core/cmd/cmd_state.h"
#include "motion/core/named_type.h"
#include "motion/core/unit_settings.h"

namespace motion::core {

namespace dia {
class IDia;
}

/// What components may know of a motion object. It belongs to the host and lives as long as the runtime. In every cycle each
/// object has one turn, in order of creation.
class IObj {
 public:
  virtual ~IObj() = default;

  /// True for something that moves in one direction. [any & real-time]
  [[nodiscard]] virtual bool isAxis() const = 0;
  /// True for something that only measures; components have no commands for it. [any & real-time]
  [[nodiscard]] virtual bool isEncoder() const = 0;
  /// True for something whose tool moves in space. Its slot is the second after isAxis. [any & real-time]
  [[nodiscard]] virtual bool isKinematics() const = 0;

  /// Host ID of the command that was prepared last, 0 before the first. [any & real-time]
  [[nodiscard]] virtual std::uint64_t getLatestPreparedCmdID() const = 0;
  /// Host ID of the command that is being executed, 0 when there is none. [any & real-time]
  [[nodiscard]] virtual std::uint64_t getCurrentCmdID() const = 0;
  /// Advances by one each cycle. [any & real-time]
  [[nodiscard]] virtual std::uint64_t getCycleCount() const = 0;
  /// State of one of this object's commands; DONE for one that has been forgotten. [any & real-time]
  [[nodiscard]] virtual cmd::CmdState getCmdState(std::uint64_t cmdID) const = 0;
  /// Length of one cycle [s]. [any & real-time]
  [[nodiscard]] virtual double getCycleTime() const = 0;
  /// The units in which users of this object speak. [any]
  [[nodiscard]] virtual const UnitSettings& getUnitSettings() const = 0;
  /// Where diagnoses of this object go. [prepare]
  [[nodiscard]] virtual dia::IDia& getDia() = 0;

 protected:
  IObj() = default;
  IObj(const IObj&) = default;
  IObj& operator=(const IObj&) = default;
};

struct IObjPtr___t;
/// The object that a command or job belongs to, published by the host in section "OBJ_DATA".
using IObjPtr = NamedType<IObj*, IObjPtr___t>;

}  // namespace motion::core
