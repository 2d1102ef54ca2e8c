// How far programs can come at best: an execution without times, in which whatever may happen has happened.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <vector>

#include "host/observe/sync_step.h"
#include "motion/kavo/signal_memory.h"

namespace motion::host::observe {

/// The steps that an object has yet to take, the current one first.
using RemainingSteps = std::vector<SyncStep>;

/// Values that a signal may still have for somebody who waits.
struct MayBe {
  bool set = false;
  bool reset = false;
};
using SignalOutlook = std::array<MayBe, kavo::SIGNAL_COUNT>;

/// For each object the number of steps that it takes before it stays for ever; all of them when it comes through. Every
/// signal that may once be set or reset counts as both from then on, so who stays here stays in every real run.
[[nodiscard]] std::vector<std::size_t> lookAhead(std::span<const RemainingSteps> objects, SignalOutlook signals);

/// Which one of the joins with that group a join is, from 1, when `before` are the steps that its object takes ahead of it.
/// The n-th joins of all members belong together.
[[nodiscard]] std::size_t occurrenceOf(const SyncStep& join, std::span<const SyncStep> joinsBefore);

}  // namespace motion::host::observe
