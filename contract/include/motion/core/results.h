// Results of the host's functions, commands, jobs and object factory: one type per family, named values.
#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

namespace motion::core {

/// Results of the host's published functions and of its command context.
enum class FctResult : std::uint32_t {
  Okay = 0x00100000,
  NotOkay = 0xF0100001,
  ExecutionError = 0xF0100002,
  PreparationError = 0xF0100003,
  ObjectNotFound = 0xF0100004,
  OutOfMemory = 0xF0100006,
  DivisionByZero = 0xF0100007,
  InvalidNumber = 0xF0100008,
  Overflow = 0xF0100009,
  UnknownFpuError = 0xF010000A,
  WrongMotionState = 0xF010000B,
  InvalidParameter = 0xF010000C,
  OptionNotSupported = 0xF010000D,  ///< a command option that the object's type does not have
  NotAvailable = 0xF010000E,        ///< a part that the function needs is not there
  NotSupportedByObject = 0xF0100011,
  TooManyCommands = 0xF0100013,
  ActiveCommand = 0xF0100014,
  NoActiveTransformation = 0xF0100015,
  TransformationNotImplemented = 0xF0100016,
  PositionUnreachable = 0xF0100017,
  WrongMemorySize = 0xF0100018,
  WrongKinConfiguration = 0xF0100019,
};

/// Results of the object factory.
enum class ObjFactoryResult : std::uint32_t {
  Okay = 0x00150000,
  UnknownObject = 0xF0150001,
  InvalidArgument = 0xF0150002,
  AlreadyKnown = 0xF0150003,  ///< an object of that name is registered already
  CreationFailed = 0xF0150004,
};

namespace cmd {
/// Results of commands, command options and their factories.
enum class CmdResult : std::uint32_t {
  Okay = 0x00110000,
  JobCreationFailed = 0xF0110004,
  JobRegistrationFailed = 0xF0110007,
  WrongContainer = 0xF011000E,        ///< a parameter container of another type
  InvalidParameterData = 0xF011000F,  ///< a variant of the wrong type or an invalid flat buffer
  OptionCreationFailed = 0xF0110010,
  NullPointer = 0xF0110011,
  UnknownPermType = 0xF011001A,
  Refused = 0xF011001D,       ///< command or parameter refused
  NoOptionData = 0xF011001F,  ///< no such option is active on the object
  AlreadyRegistered = 0xF0110020,
  NotRegistered = 0xF0110021,
  SchemaNotReadable = 0xF0110022,  ///< the binary schema is missing or damaged
  OutOfMemory = 0xF0110023,
};
}  // namespace cmd

namespace job {
/// Results of jobs, job objects, job lists and job data.
enum class JobResult : std::uint32_t {
  NoEffect = 0,          ///< nothing to say about the command; call again
  Busy = 0x0103,         ///< the command is still at work
  CmdFinished = 0x0A06,  ///< the command's work is finished
  ExecutionFailed = 0xF0000004,
  InvalidObject = 0xF0000008,  ///< something the job needs is missing
  ListTypeNotServed = 0xF000000F,
  InvalidJobData = 0xF0000016,
  DataNotPublished = 0xF0000020,  ///< nobody publishes that data in that section
  DataAlreadyPublished = 0xF0000021,
  UnknownSection = 0xF0000022,
  OutOfMemory = 0xF0000023,
};
}  // namespace job

template <typename T>
concept ResultCode =
    std::is_enum_v<T> && !std::is_convertible_v<T, std::uint32_t> && std::same_as<std::underlying_type_t<T>, std::uint32_t>;

/// The number of a result, for messages.
template <ResultCode T>
[[nodiscard]] constexpr std::uint32_t toCode(T result) noexcept {
  return static_cast<std::uint32_t>(result);
}

/// True when the high bit is set.
template <ResultCode T>
[[nodiscard]] constexpr bool isFailure(T result) noexcept {
  return (toCode(result) & 0x80000000U) != 0;
}

namespace cmd {
using core::isFailure;
using core::toCode;
}  // namespace cmd
namespace job {
using core::isFailure;
using core::toCode;
}  // namespace job

}  // namespace motion::core
