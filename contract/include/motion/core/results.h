// Results of the host's functions, commands, jobs and object factory: one type per family, named values.
#pragma once

#include <concepts>
#include <cstdint>
#include <type_traits>

/// The motion runtime as components see it: motion objects, sections, records of functions, results.
namespace motion::core {

/// Results of the host's published functions and of its command context.
enum class FctResult : std::uint32_t {
  Okay = 0x00100000,                          ///< done
  NotOkay = 0xF0100001,                       ///< failed for a reason that has no code of its own
  ExecutionError = 0xF0100002,                ///< failed in the cycle
  PreparationError = 0xF0100003,              ///< could not be made or prepared
  ObjectNotFound = 0xF0100004,                ///< no motion object of that name
  OutOfMemory = 0xF0100006,                   ///< an allocation failed; nothing was changed
  DivisionByZero = 0xF0100007,                ///< a computation divided by zero
  InvalidNumber = 0xF0100008,                 ///< a computation gave no number
  Overflow = 0xF0100009,                      ///< a computation went beyond what its type holds
  UnknownFpuError = 0xF010000A,               ///< a computation failed in another way
  WrongMotionState = 0xF010000B,              ///< not possible in the state that the object is in
  InvalidParameter = 0xF010000C,              ///< an argument that can never be right, such as a signal beyond the last
  OptionNotSupported = 0xF010000D,            ///< a command option that the object's type does not have
  NotAvailable = 0xF010000E,                  ///< a part that the function needs is not there
  NotSupportedByObject = 0xF0100011,          ///< objects of this type do not have that
  TooManyCommands = 0xF0100013,               ///< the object's buffer is full; room appears when commands end
  ActiveCommand = 0xF0100014,                 ///< not possible while a command is current
  NoActiveTransformation = 0xF0100015,        ///< asks for coordinates, and no transformation is switched on
  TransformationNotImplemented = 0xF0100016,  ///< the transformation does not have that function
  PositionUnreachable = 0xF0100017,           ///< no way to get there
  WrongMemorySize = 0xF0100018,               ///< a block of memory is not of the size that was agreed
  WrongKinConfiguration = 0xF0100019,         ///< the settings of the kinematics contradict one another
};

/// Results of the object factory.
enum class ObjFactoryResult : std::uint32_t {
  Okay = 0x00150000,             ///< done
  UnknownObject = 0xF0150001,    ///< no prototype of that name
  InvalidArgument = 0xF0150002,  ///< no prototype was given
  AlreadyKnown = 0xF0150003,     ///< an object of that name is registered already
  CreationFailed = 0xF0150004,   ///< the prototype made nothing, or memory is short
};

/// Commands and command options: their bases, factories and states.
namespace cmd {
/// Results of commands, command options and their factories.
enum class CmdResult : std::uint32_t {
  Okay = 0x00110000,                   ///< done
  JobCreationFailed = 0xF0110004,      ///< a job object could not be made; nothing was buffered
  JobRegistrationFailed = 0xF0110007,  ///< a job object could not be registered, or add its jobs
  WrongContainer = 0xF011000E,         ///< a parameter container of another type
  InvalidParameterData = 0xF011000F,   ///< a variant of the wrong type or an invalid flat buffer
  OptionCreationFailed = 0xF0110010,   ///< an option could not be made
  NullPointer = 0xF0110011,            ///< an argument that must be there is null
  UnknownPermType = 0xF011001A,        ///< a permanence that does not exist; also: the option hands out no parameters
  Refused = 0xF011001D,                ///< command or parameter refused
  NoOptionData = 0xF011001F,           ///< no such option is active on the object
  AlreadyRegistered = 0xF0110020,      ///< the CmdId is taken; the earlier registration stays
  NotRegistered = 0xF0110021,          ///< nothing of that CmdId is known
  SchemaNotReadable = 0xF0110022,      ///< the binary schema is missing or damaged
  OutOfMemory = 0xF0110023,            ///< an allocation failed; nothing was changed
};
}  // namespace cmd

namespace job {
/// Results of jobs, job objects, job lists and job data.
enum class JobResult : std::uint32_t {
  NoEffect = 0,                       ///< nothing to say about the command; call again
  Busy = 0x0103,                      ///< the command is still at work
  CmdFinished = 0x0A06,               ///< the command's work is finished
  ExecutionFailed = 0xF0000004,       ///< the job failed, and so does its command
  InvalidObject = 0xF0000008,         ///< something the job needs is missing
  ListTypeNotServed = 0xF000000F,     ///< no jobs for that moment; not a problem for the host
  InvalidJobData = 0xF0000016,        ///< a record is missing, of another type or out of range
  DataNotPublished = 0xF0000020,      ///< nobody publishes that data in that section
  DataAlreadyPublished = 0xF0000021,  ///< somebody else offers that type in that section
  UnknownSection = 0xF0000022,        ///< a value that no section has
  OutOfMemory = 0xF0000023,           ///< an allocation failed; nothing was changed
};
}  // namespace job

/// Enumerations over 32 bits that do not convert to numbers by themselves: the families of results.
template <typename T>
concept ResultCode =
    std::is_enum_v<T> && !std::is_convertible_v<T, std::uint32_t> && std::same_as<std::underlying_type_t<T>, std::uint32_t>;

/// The number of a result, for messages. [any & real-time]
template <ResultCode T>
[[nodiscard]] constexpr std::uint32_t toCode(T result) noexcept {
  return static_cast<std::uint32_t>(result);
}

/// True when the high bit is set. [any & real-time]
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
