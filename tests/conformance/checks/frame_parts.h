// Groups of checks of the component's frame that lie in several files.
#pragma once

#include "conformance/check.h"

namespace motion::conformance {

/// @name Parts of serviceChecks.
/// @{
[[nodiscard]] Checks serviceSlotChecks();
/// @}
/// @name Parts of commandFunctionChecks.
/// @{
[[nodiscard]] Checks publishedCommandChecks();
[[nodiscard]] Checks publishedOptionChecks();
/// @}
/// @name Parts of memoryChecks.
/// @{
[[nodiscard]] Checks memoryFailureChecks();
/// @}
/// @name Parts of nodeChecks.
/// @{
[[nodiscard]] Checks signalNodeChecks();
/// @}
/// @name Parts of journalChecks.
/// @{
[[nodiscard]] Checks bufferedSinkChecks();
/// @}

}  // namespace motion::conformance
