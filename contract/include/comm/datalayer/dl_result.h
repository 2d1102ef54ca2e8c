// Results of the data layer and their names.
#pragma once

#include <cstdint>

/// The data layer: nodes with addresses that clients read, write and browse, and real-time memories.
namespace comm::datalayer {

/// A data-layer result. The high bit marks a failure.
class DlResult {
 public:
  constexpr DlResult() noexcept = default;
  /// Takes any number, also one that has no name here. [any & real-time]
  constexpr explicit DlResult(std::uint32_t code) noexcept : m_code(code) {}

  /// The number that travels, as the constants below give it. [any & real-time]
  [[nodiscard]] constexpr std::uint32_t code() const noexcept { return m_code; }
  /// True when the high bit is set; the successes other than DL_OK pass. [any & real-time]
  [[nodiscard]] constexpr bool isFailure() const noexcept { return (m_code & 0x80000000U) != 0; }
  /// The name of the code, "unknown" for a code without one. [any & real-time]
  [[nodiscard]] constexpr const char* toString() const noexcept;

  friend constexpr bool operator==(DlResult, DlResult) noexcept = default;

 private:
  std::uint32_t m_code = 0;
};

/// The same question in the form that the other result families have. [any & real-time]
[[nodiscard]] constexpr bool isFailure(DlResult result) noexcept {
  return result.isFailure();
}

inline constexpr DlResult DL_OK{0x00000000};               ///< done
inline constexpr DlResult DL_OK_NO_CONTENT{0x00000001};    ///< done, and there is nothing to hand out
inline constexpr DlResult DL_OK_WITH_ERRORS{0x00000002};   ///< done in part; the answer says what is missing
inline constexpr DlResult DL_FAILED{0x80000001};           ///< no better code fits; also an answer that will never come
inline constexpr DlResult DL_INVALID_ADDRESS{0x80010001};  ///< malformed, or nobody has registered anything there
inline constexpr DlResult DL_UNSUPPORTED{0x80010002};      ///< the node does not have this operation
inline constexpr DlResult DL_OUT_OF_MEMORY{0x80010003};    ///< an allocation failed; nothing was changed
inline constexpr DlResult DL_LIMIT_MIN{0x80010004};        ///< the value lies below the smallest one that is allowed
inline constexpr DlResult DL_LIMIT_MAX{0x80010005};        ///< the value lies above the largest one that is allowed
inline constexpr DlResult DL_TYPE_MISMATCH{0x80010006};  ///< a value of another type than the node holds; a malformed answer
inline constexpr DlResult DL_SIZE_MISMATCH{0x80010007};  ///< another size than was agreed; a memory of 0 bytes
inline constexpr DlResult DL_INVALID_FLOATINGPOINT{0x80010009};   ///< not a number, or infinite
inline constexpr DlResult DL_INVALID_HANDLE{0x8001000A};          ///< null, or an object that this data layer does not know
inline constexpr DlResult DL_INVALID_OPERATION_MODE{0x8001000B};  ///< not allowed in the mode in which the system is
inline constexpr DlResult DL_INVALID_CONFIGURATION{0x8001000C};   ///< settings contradict one another
inline constexpr DlResult DL_INVALID_VALUE{0x8001000D};  ///< of the right type, but not one of the values that are allowed
inline constexpr DlResult DL_SUBMODULE_FAILURE{0x8001000E};     ///< a part that the answer depends on has failed
inline constexpr DlResult DL_TIMEOUT{0x8001000F};               ///< no answer in time; the operation may still take effect
inline constexpr DlResult DL_ALREADY_EXISTS{0x80010010};        ///< the address is taken
inline constexpr DlResult DL_CREATION_FAILED{0x80010011};       ///< the node could not make what it was asked to make
inline constexpr DlResult DL_VERSION_MISMATCH{0x80010012};      ///< the two sides speak different versions
inline constexpr DlResult DL_DEPRECATED{0x80010013};            ///< the operation is gone; another one has taken its place
inline constexpr DlResult DL_PERMISSION_DENIED{0x80010014};     ///< the node refuses whoever asks, whatever scopes there are
inline constexpr DlResult DL_NOT_INITIALIZED{0x80010015};       ///< asked before the provider was ready
inline constexpr DlResult DL_MISSING_ARGUMENT{0x80010016};      ///< fewer arguments than the operation needs
inline constexpr DlResult DL_TOO_MANY_ARGUMENTS{0x80010017};    ///< more arguments than the operation takes
inline constexpr DlResult DL_RESOURCE_UNAVAILABLE{0x80010018};  ///< something needed is in use or gone; try later
inline constexpr DlResult DL_COMMUNICATION_ERROR{0x80010019};   ///< the way between client and provider is disturbed
inline constexpr DlResult DL_TOO_MANY_OPERATIONS{0x8001001A};   ///< more requests are open than can be kept
inline constexpr DlResult DL_WOULD_BLOCK{0x8001001B};           ///< could only be done by waiting, which the caller excluded
inline constexpr DlResult DL_COMM_PROTOCOL_ERROR{0x80020001};   ///< a message that breaks the protocol
inline constexpr DlResult DL_COMM_INVALID_HEADER{0x80020002};   ///< a message whose head cannot be read
inline constexpr DlResult DL_CLIENT_NOT_CONNECTED{0x80030001};  ///< the data layer of this client has ended
inline constexpr DlResult DL_PROVIDER_RESET_TIMEOUT{0x80040001};   ///< a provider did not come back from a reset in time
inline constexpr DlResult DL_PROVIDER_UPDATE_TIMEOUT{0x80040002};  ///< a provider did not renew its value in time
inline constexpr DlResult DL_PROVIDER_SUB_HANDLING{0x80040003};    ///< a provider could not keep up a subscription
inline constexpr DlResult DL_RT_NOTOPEN{0x80060001};               ///< endAccess without an open access
inline constexpr DlResult DL_RT_INVALIDOBJECT{0x80060002};         ///< the memory was deleted, or the handle given back
inline constexpr DlResult DL_RT_WRONGREVISON{0x80060003};          ///< not the memory map's revision; the spelling is fixed
inline constexpr DlResult DL_RT_NOVALIDDATA{0x80060004};           ///< nobody has described the memory yet
inline constexpr DlResult DL_RT_MEMORYLOCKED{0x80060005};          ///< somebody holds the memory for himself
inline constexpr DlResult DL_RT_INVALIDMEMORYMAP{0x80060006};      ///< no memory map, or it reaches beyond the memory
inline constexpr DlResult DL_RT_INVALID_RETAIN{0x80060007};        ///< what was kept over a restart does not fit the memory
inline constexpr DlResult DL_RT_INTERNAL_ERROR{0x80060008};        ///< the memory service has failed within itself
inline constexpr DlResult DL_RT_MALLOC_FAILED{0x80060009};         ///< no room for the bytes of a memory
inline constexpr DlResult DL_RT_WOULD_BLOCK{0x8006000A};           ///< an access could only begin by waiting
inline constexpr DlResult DL_SEC_NOTOKEN{0x80070001};              ///< the client said nothing about who it is
inline constexpr DlResult DL_SEC_INVALIDSESSION{0x80070002};       ///< the client's session has ended or never began
inline constexpr DlResult DL_SEC_INVALIDTOKENCONTENT{0x80070003};  ///< what the client said about who it is cannot be read
inline constexpr DlResult DL_SEC_UNAUTHORIZED{0x80070004};         ///< beyond the client's scopes; no provider was asked

constexpr const char* DlResult::toString() const noexcept {
  switch (m_code) {
#define COMM_DATALAYER_NAME(result) \
  case result.code():               \
    return #result;
    COMM_DATALAYER_NAME(DL_OK)
    COMM_DATALAYER_NAME(DL_OK_NO_CONTENT)
    COMM_DATALAYER_NAME(DL_OK_WITH_ERRORS)
    COMM_DATALAYER_NAME(DL_FAILED)
    COMM_DATALAYER_NAME(DL_INVALID_ADDRESS)
    COMM_DATALAYER_NAME(DL_UNSUPPORTED)
    COMM_DATALAYER_NAME(DL_OUT_OF_MEMORY)
    COMM_DATALAYER_NAME(DL_LIMIT_MIN)
    COMM_DATALAYER_NAME(DL_LIMIT_MAX)
    COMM_DATALAYER_NAME(DL_TYPE_MISMATCH)
    COMM_DATALAYER_NAME(DL_SIZE_MISMATCH)
    COMM_DATALAYER_NAME(DL_INVALID_FLOATINGPOINT)
    COMM_DATALAYER_NAME(DL_INVALID_HANDLE)
    COMM_DATALAYER_NAME(DL_INVALID_OPERATION_MODE)
    COMM_DATALAYER_NAME(DL_INVALID_CONFIGURATION)
    COMM_DATALAYER_NAME(DL_INVALID_VALUE)
    COMM_DATALAYER_NAME(DL_SUBMODULE_FAILURE)
    COMM_DATALAYER_NAME(DL_TIMEOUT)
    COMM_DATALAYER_NAME(DL_ALREADY_EXISTS)
    COMM_DATALAYER_NAME(DL_CREATION_FAILED)
    COMM_DATALAYER_NAME(DL_VERSION_MISMATCH)
    COMM_DATALAYER_NAME(DL_DEPRECATED)
    COMM_DATALAYER_NAME(DL_PERMISSION_DENIED)
    COMM_DATALAYER_NAME(DL_NOT_INITIALIZED)
    COMM_DATALAYER_NAME(DL_MISSING_ARGUMENT)
    COMM_DATALAYER_NAME(DL_TOO_MANY_ARGUMENTS)
    COMM_DATALAYER_NAME(DL_RESOURCE_UNAVAILABLE)
    COMM_DATALAYER_NAME(DL_COMMUNICATION_ERROR)
    COMM_DATALAYER_NAME(DL_TOO_MANY_OPERATIONS)
    COMM_DATALAYER_NAME(DL_WOULD_BLOCK)
    COMM_DATALAYER_NAME(DL_COMM_PROTOCOL_ERROR)
    COMM_DATALAYER_NAME(DL_COMM_INVALID_HEADER)
    COMM_DATALAYER_NAME(DL_CLIENT_NOT_CONNECTED)
    COMM_DATALAYER_NAME(DL_PROVIDER_RESET_TIMEOUT)
    COMM_DATALAYER_NAME(DL_PROVIDER_UPDATE_TIMEOUT)
    COMM_DATALAYER_NAME(DL_PROVIDER_SUB_HANDLING)
    COMM_DATALAYER_NAME(DL_RT_NOTOPEN)
    COMM_DATALAYER_NAME(DL_RT_INVALIDOBJECT)
    COMM_DATALAYER_NAME(DL_RT_WRONGREVISON)
    COMM_DATALAYER_NAME(DL_RT_NOVALIDDATA)
    COMM_DATALAYER_NAME(DL_RT_MEMORYLOCKED)
    COMM_DATALAYER_NAME(DL_RT_INVALIDMEMORYMAP)
    COMM_DATALAYER_NAME(DL_RT_INVALID_RETAIN)
    COMM_DATALAYER_NAME(DL_RT_INTERNAL_ERROR)
    COMM_DATALAYER_NAME(DL_RT_MALLOC_FAILED)
    COMM_DATALAYER_NAME(DL_RT_WOULD_BLOCK)
    COMM_DATALAYER_NAME(DL_SEC_NOTOKEN)
    COMM_DATALAYER_NAME(DL_SEC_INVALIDSESSION)
    COMM_DATALAYER_NAME(DL_SEC_INVALIDTOKENCONTENT)
    COMM_DATALAYER_NAME(DL_SEC_UNAUTHORIZED)
#undef COMM_DATALAYER_NAME
    default:
      return "unknown";
  }
}

}  // namespace comm::datalayer
