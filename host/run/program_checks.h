// What can be known of a program before any cycle: who will wait for ever, and who may miss what it waits for.
#pragma once

#include <span>

#include "host/run/program.h"
#include "host/scenario/problem.h"
#include "host/scenario/scenario.h"

namespace motion::host::run {

/// Findings in the order of the file, each with a remedy. All are warnings: the program can be run all the same.
[[nodiscard]] scenario::Problems checkPrograms(const scenario::Scenario& scenario, std::span<const ObjectCalls> programs);

}  // namespace motion::host::run
