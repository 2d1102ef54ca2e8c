// Level switches of one trace unit.
#pragma once

namespace common::log::trace {

/// Which levels a unit writes. The trace service hands it to the unit's callback when a switch changes.
struct EnablingState {
  bool info = true;     ///< what goes on; off, its texts are not even formatted
  bool warning = true;  ///< what is odd but was coped with
  bool error = true;    ///< what failed or was refused
};

}  // namespace common::log::trace
