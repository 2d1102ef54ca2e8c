// All checks, group by group.
#include <iterator>

#include "conformance/check.h"

namespace motion::conformance {

Checks allChecks() {
  Checks all;
  for (auto* group :
       {&lifecycleChecks, &serviceChecks,     &sectionChecks,      &systemFunctionChecks, &commandFunctionChecks,
        &traceChecks,     &signalStoreChecks, &memoryChecks,       &providerChecks,       &nodeChecks,
        &metadataChecks,  &scopeChecks,       &registrationChecks, &marshallingChecks,    &commandChecks,
        &signalJobChecks, &joinChecks,        &optionChecks,       &pathChecks,           &journalChecks,
        &faultChecks}) {
    auto checks = group();
    std::move(checks.begin(), checks.end(), std::back_inserter(all));
  }
  return all;
}

}  // namespace motion::conformance
