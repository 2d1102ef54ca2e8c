// Reports to the user of a motion object.
#pragma once

#include "impl/call_site.h"
#include "motion/core/dia/i_dia.h"

namespace motion::kavo::cmd {

/// Reports a refused parameter, with a finished text. [prepare]
void reportInvalidParameter(const CallSite& site, core::dia::IDia& dia, const core::dia::CmdSourceInfo& source,
                            const char* text) noexcept;

}  // namespace motion::kavo::cmd
