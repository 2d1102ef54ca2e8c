// A run as people read it.
#pragma once

#include <string>

#include "host/observe/run_record.h"

namespace motion::host::observe {

/// What each object did and when, how long it waited and for what, which signals changed, and whether the expectations hold.
[[nodiscard]] std::string textReport(const RunRecord& record);

/// One line for each step in the order in which it happened: "     1  Feeder#1 MoveAbs active". Repeatable in virtual time.
[[nodiscard]] std::string eventList(const RunRecord& record);

/// "[400.000, 0.000, 100.000] mm"
[[nodiscard]] std::string pointText(const Point& point);

/// A duration with three digits after the point [ms], "12.000 ms".
[[nodiscard]] std::string milliseconds(double seconds);

}  // namespace motion::host::observe
