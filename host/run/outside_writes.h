// Writes of signals from outside: each goes through a client of the data layer that holds the scopes that the scenario
// names.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/datalayer/data_layer.h"
#include "host/observe/run_record.h"
#include "host/scenario/problem.h"
#include "host/scenario/scenario.h"

namespace motion::host::run {

class OutsideWrites {
 public:
  explicit OutsideWrites(datalayer::DataLayer& dataLayer) : m_dataLayer(dataLayer) {}

  /// Writes the signal of the event. What went otherwise than the scenario says, in words; empty when nothing did. [player]
  [[nodiscard]] std::string carryOut(const scenario::OutsideEvent& event, const observe::RunRecord& record);

 private:
  [[nodiscard]] datalayer::Client& clientOf(const scenario::OutsideEvent& event);

  datalayer::DataLayer& m_dataLayer;
  std::map<std::vector<std::string>, std::unique_ptr<datalayer::Client>> m_clients;  ///< by their scopes
};

/// What is known of the writes before any cycle: scopes that nobody has registered are errors, writes whose refusal is not
/// expected, or expected in vain, are warnings. After the component's start. [framework]
[[nodiscard]] scenario::Problems checkOutsideWrites(const scenario::Scenario& scenario,
                                                    const datalayer::ScopeRegister& scopes);

}  // namespace motion::host::run
