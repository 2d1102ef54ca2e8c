// Results of the data layer and their names.
#pragma once

#include <cstdint>

namespace comm::datalayer {

/// A data-layer result. The high bit marks a failure.
class DlResult {
 public:
  constexpr DlResult() noexcept = default;
  constexpr explicit DlResult(std::uint32_t code) noexcept : m_code(code) {}

  [[nodiscard]] constexpr std::uint32_t code() const noexcept { return m_code; }
  [[nodiscard]] constexpr bool isFailure() const noexcept { return (m_code & 0x80000000U) != 0; }
  /// The name of the code, "unknown" for a code without one. [any & real-time]
  [[nodiscard]] constexpr const char* toString() const noexcept;

  friend constexpr bool operator==(DlResult, DlResult) noexcept = default;

 private:
  std::uint32_t m_code = 0;
};

[[nodiscard]] constexpr bool isFailure(DlResult result) noexcept { return result.isFailure(); }

inline constexpr DlResult DL_OK{0x00000000};
inline constexpr DlResult DL_OK_NO_CONTENT{0x00000001};
inline constexpr DlResult DL_OK_WITH_ERRORS{0x00000002};
inline constexpr DlResult DL_FAILED{0x80000001};
inline constexpr DlResult DL_INVALID_ADDRESS{0x80010001};
inline constexpr DlResult DL_UNSUPPORTED{0x80010002};
inline constexpr DlResult DL_OUT_OF_MEMORY{0x80010003};
inline constexpr DlResult DL_LIMIT_MIN{0x80010004};
inline constexpr DlResult DL_LIMIT_MAX{0x80010005};
inline constexpr DlResult DL_TYPE_MISMATCH{0x80010006};
inline constexpr DlResult DL_SIZE_MISMATCH{0x80010007};
inline constexpr DlResult DL_INVALID_FLOATINGPOINT{0x80010009};
inline constexpr DlResult DL_INVALID_HANDLE{0x8001000A};
inline constexpr DlResult DL_INVALID_OPERATION_MODE{0x8001000B};
inline constexpr DlResult DL_INVALID_CONFIGURATION{0x8001000C};
inline constexpr DlResult DL_INVALID_VALUE{0x8001000D};
inline constexpr DlResult DL_SUBMODULE_FAILURE{0x8001000E};
inline constexpr DlResult DL_TIMEOUT{0x8001000F};
inline constexpr DlResult DL_ALREADY_EXISTS{0x80010010};
inline constexpr DlResult DL_CREATION_FAILED{0x80010011};
inline constexpr DlResult DL_VERSION_MISMATCH{0x80010012};
inline constexpr DlResult DL_DEPRECATED{0x80010013};
inline constexpr DlResult DL_PERMISSION_DENIED{0x80010014};
inline constexpr DlResult DL_NOT_INITIALIZED{0x80010015};
inline constexpr DlResult DL_MISSING_ARGUMENT{0x80010016};
inline constexpr DlResult DL_TOO_MANY_ARGUMENTS{0x80010017};
inline constexpr DlResult DL_RESOURCE_UNAVAILABLE{0x80010018};
inline constexpr DlResult DL_COMMUNICATION_ERROR{0x80010019};
inline constexpr DlResult DL_TOO_MANY_OPERATIONS{0x8001001A};
inline constexpr DlResult DL_WOULD_BLOCK{0x8001001B};
inline constexpr DlResult DL_COMM_PROTOCOL_ERROR{0x80020001};
inline constexpr DlResult DL_COMM_INVALID_HEADER{0x80020002};
inline constexpr DlResult DL_CLIENT_NOT_CONNECTED{0x80030001};
inline constexpr DlResult DL_PROVIDER_RESET_TIMEOUT{0x80040001};
inline constexpr DlResult DL_PROVIDER_UPDATE_TIMEOUT{0x80040002};
inline constexpr DlResult DL_PROVIDER_SUB_HANDLING{0x80040003};
inline constexpr DlResult DL_RT_NOTOPEN{0x80060001};
inline constexpr DlResult DL_RT_INVALIDOBJECT{0x80060002};
inline constexpr DlResult DL_RT_WRONGREVISON{0x80060003};
inline constexpr DlResult DL_RT_NOVALIDDATA{0x80060004};
inline constexpr DlResult DL_RT_MEMORYLOCKED{0x80060005};
inline constexpr DlResult DL_RT_INVALIDMEMORYMAP{0x80060006};
inline constexpr DlResult DL_RT_INVALID_RETAIN{0x80060007};
inline constexpr DlResult DL_RT_INTERNAL_ERROR{0x80060008};
inline constexpr DlResult DL_RT_MALLOC_FAILED{0x80060009};
inline constexpr DlResult DL_RT_WOULD_BLOCK{0x8006000A};
inline constexpr DlResult DL_SEC_NOTOKEN{0x80070001};
inline constexpr DlResult DL_SEC_INVALIDSESSION{0x80070002};
inline constexpr DlResult DL_SEC_INVALIDTOKENCONTENT{0x80070003};
inline constexpr DlResult DL_SEC_UNAUTHORIZED{0x80070004};

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
