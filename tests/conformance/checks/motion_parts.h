// Groups of checks that lie in several files.
#pragma once

#include "conformance/check.h"

namespace motion::conformance {

/// @name Parts of registrationChecks.
/// @{
[[nodiscard]] Checks refusedRegistrationChecks();
[[nodiscard]] Checks createdCommandChecks();
[[nodiscard]] Checks slotChecks();
/// @}
/// @name Parts of marshallingChecks.
/// @{
[[nodiscard]] Checks damagedBufferChecks();
[[nodiscard]] Checks hostileBufferChecks();
[[nodiscard]] Checks optionMarshallingChecks();
/// @}
/// @name Parts of signalJobChecks.
/// @{
[[nodiscard]] Checks jobObjectChecks();
/// @}
/// @name Parts of joinChecks.
/// @{
[[nodiscard]] Checks joinCommandChecks();
[[nodiscard]] Checks joinJobObjectChecks();
[[nodiscard]] Checks joinOccurrenceChecks();
/// @}
/// @name Parts of pathChecks.
/// @{
[[nodiscard]] Checks pathStackingChecks();
[[nodiscard]] Checks pathRefusalChecks();
[[nodiscard]] Checks pathArithmeticChecks();
/// @}

}  // namespace motion::conformance
