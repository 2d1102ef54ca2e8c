// What an issuer asks of a motion object: a command, and options that go with it. All of it is borrowed for the duration of
// a call.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "motion/core/cmd/cmd_opt_types.h"
#include "motion/core/dia/cmd_source_info.h"
#include "motion/core/named_type.h"

namespace motion::host {

/// An option for following commands; it may change `values`.
struct OptionRequest {
  const std::string& name;
  core::cmd::CmdOptPermType permType;
  core::IContainer& values;
  const core::dia::CmdSourceInfo& source;
};

/// A command, with the options that are given together with it.
struct CmdRequest {
  const std::string& name;
  const core::IContainer& values;
  const core::dia::CmdSourceInfo& source;
  std::span<const OptionRequest> options = {};
};

/// An option whose parameters are a FlatBuffers value, its permanence among them.
struct EncodedOption {
  std::string name;
  comm::datalayer::Variant parameters;
  core::dia::CmdSourceInfo source;
};

/// A command whose parameters are FlatBuffers values.
struct EncodedCmd {
  const std::string& name;
  const comm::datalayer::Variant& parameters;
  const core::dia::CmdSourceInfo& source;
  std::span<const EncodedOption> options = {};
};

}  // namespace motion::host
