// Level switches of one trace unit.
#pragma once

namespace common::log::trace {

/// Which levels a unit writes. The trace service hands it to the unit's callback when a switch changes.
struct EnablingState {
  bool info = true;
  bool warning = true;
  bool error = true;
};

}  // namespace common::log::trace
