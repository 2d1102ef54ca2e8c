// Reports to the user of a motion object.
#include "impl/command/diagnosis.h"

#include "impl/diagnosis_codes.h"
#include "impl/guarded.h"

namespace motion::kavo::cmd {

void reportInvalidParameter(const CallSite& site, core::dia::IDia& dia, const core::dia::CmdSourceInfo& source,
                            const char* text) noexcept {
  guarded([&] {
    dia.report(diagnosis::MAIN_ERROR, diagnosis::DETAIL_INVALID_PARAMETER, source, {site.unit, site.function, site.line},
               "%s", text);
    dia.close();
  });
}

}  // namespace motion::kavo::cmd
