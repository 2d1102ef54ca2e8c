// The component itself, linked in, started in a recording host: what fuzzers and their replay feed.
#pragma once

#include "conformance/subject.h"

namespace motion::fuzz {

/// One for the whole process, with an axis "A" and a kinematics "K". Never deleted: a fuzzer's end has no order.
[[nodiscard]] conformance::Subject& startedComponent();
[[nodiscard]] test::FakeObj& axis();
[[nodiscard]] test::FakeObj& kinematics();

}  // namespace motion::fuzz
