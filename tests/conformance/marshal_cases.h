// The seven tables of parameters, and what becomes of a buffer that is handed to their marshalling functions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "conformance/subject.h"
#include "motion/core/cmd/cmd_opt_types.h"
#include "motion/core/object_type.h"
#include "motion/core/results.h"

namespace motion::conformance {

/// A table for one type of object.
struct MarshalCase {
  std::string label;  ///< in the names of checks
  core::ObjectType type;
  std::string name;
  bool isOption = false;
  std::string unit;       ///< where it traces
  std::string function;   ///< its name in traces
  std::string wrongType;  ///< text for a variant of another type, with {} for its number
  std::string invalidBuffer;
  std::vector<std::uint8_t> good;  ///< every field is there
  std::string goodRecord;          ///< the record of `good` in words
  std::string record;              ///< name of the record
};

/// The tables for axes and kinematics; they are the same for both where both exist.
[[nodiscard]] const std::vector<MarshalCase>& marshalCases();
[[nodiscard]] const MarshalCase& marshalCase(const std::string& label);

/// What a marshalling function answered.
struct MarshalAnswer {
  core::cmd::CmdResult result{};
  std::string record;    ///< in words, "null" when there is none
  bool isOwned = false;  ///< what it said of a command's record
  core::cmd::CmdOptPermType permType{};

  [[nodiscard]] bool isOkay() const { return result == core::cmd::CmdResult::Okay; }
};

inline constexpr auto UNTOUCHED = static_cast<core::cmd::CmdOptPermType>(77);

[[nodiscard]] MarshalAnswer answerTo(Subject& subject, const MarshalCase& table, const comm::datalayer::Variant* data);
[[nodiscard]] MarshalAnswer answerTo(Subject& subject, const MarshalCase& table, const std::vector<std::uint8_t>& bytes);

/// Throws a Mismatch unless the data is refused with that code and traced with that text, once, and nothing was made.
void expectRefused(Subject& subject, const MarshalCase& table, const comm::datalayer::Variant* data, std::uint32_t code,
                   const std::string& text);
/// The same for a buffer that is not one of the table.
void expectInvalidBuffer(Subject& subject, const MarshalCase& table, const std::vector<std::uint8_t>& bytes);

}  // namespace motion::conformance
