// The rights to motion nodes that can be granted to clients of the data layer.
#pragma once

#include "comm/datalayer/variant.h"

namespace motion::kavo {

/// The scopes "motion.view", "motion.operate" and "motion.manage" as a value that a provider registers. Throws
/// std::bad_alloc. [framework]
[[nodiscard]] comm::datalayer::Variant makeAccessScopes();

}  // namespace motion::kavo
