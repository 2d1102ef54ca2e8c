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

/// Main code of a parameter of an option that cannot be decoded; its detail code is that of a refused parameter.
inline constexpr std::uint32_t MAIN_OPTION_PARAMETER = 0x090F2001;

/// Main and detail codes of an option that cannot be used.
inline constexpr std::uint32_t MAIN_OPTION_ERROR = 0x090F2030;
inline constexpr std::uint32_t DETAIL_INVALID_OPTION_DATA = 0x0C5701B0;  ///< what the active option keeps is not of its kind
inline constexpr std::uint32_t DETAIL_INVALID_CONDITION = 0x0C5701B1;
inline constexpr std::uint32_t DETAIL_NO_OPTION_DATA = 0x0C5701B2;  ///< the host does not give what the active option keeps

/// Main and detail codes of a node's error; a bad request has the detail code of a refused parameter.
inline constexpr std::uint32_t MAIN_NODE_ERROR = 0x090F2040;
inline constexpr std::uint32_t DETAIL_INTERNAL_ERROR = 0x0C560270;  ///< the host lacks a function, or one has failed
inline constexpr std::uint32_t DETAIL_NOT_IMPLEMENTED = 0x0C57010B;

}  // namespace motion::kavo::diagnosis
