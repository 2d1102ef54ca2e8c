// Diagnosis codes of the component. Bits 16 to 19 of a main code give its class: 10 message, 14 warning, 15 error.
#pragma once

#include <cstdint>

namespace motion::kavo::diagnosis {

/// Main codes of traces.
inline constexpr std::uint32_t TRACE_INFO = 0x090A0FFC;
inline constexpr std::uint32_t TRACE_WARNING = 0x090E0FFC;
inline constexpr std::uint32_t TRACE_ERROR = 0x090F0FFC;

/// Main and detail code of a refused parameter, reported to the user of a motion object.
inline constexpr std::uint32_t MAIN_ERROR = 0x090F0FFF;
inline constexpr std::uint32_t DETAIL_INVALID_PARAMETER = 0x0C570101;

}  // namespace motion::kavo::diagnosis
