// Who waits for whom, explained from what the host knows of the programs: objects, signals and joins.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "host/observe/run_record.h"

namespace motion::host::observe {

/// A command that would release somebody who waits, if its object came to it.
struct Releaser {
  std::uint32_t object = 0;
  std::size_t number = 0;
};

/// A member of a join that has not arrived.
struct MissingMember {
  enum class Why { ON_ITS_WAY, NO_SUCH_JOIN, ENDED_OTHERWISE, HAS_NO_NEXT_COMMAND };
  std::uint32_t object = 0;
  std::size_t number = 0;  ///< its join, 0 when it has none
  Why why = Why::ON_ITS_WAY;
};

struct ArrivedMember {
  std::uint32_t object = 0;
  std::uint64_t cycle = 0;
};

/// One object that waits, and for what.
struct ObjectWait {
  std::uint32_t object = 0;
  std::size_t number = 0;
  std::uint64_t since = 0;
  SyncStep step;
  std::vector<Releaser> releasers;     ///< of a wait for a signal: commands of others that have yet to be executed
  std::vector<ArrivedMember> arrived;  ///< of a join, in order of arrival
  std::vector<MissingMember> missing;  ///< of a join, in group order
  bool isTorn = false;                 ///< of a join: all have arrived, and still it was not completed
  bool isStuck = false;                ///< without a write from outside it waits for ever
  bool isCertain = false;              ///< and no write from outside can help
};

struct WaitGraph {
  std::vector<ObjectWait> waits;      ///< in order of the objects
  std::vector<std::uint32_t> circle;  ///< the shortest of objects that are stuck: each waits for the next, the last for
                                      ///< the first; may be empty
  std::uint64_t circleSince = 0;      ///< cycle in which the last of them began to wait
  std::uint32_t circleClosedBy = 0;   ///< the object that began to wait then
  std::vector<std::uint32_t> neededSignals;  ///< whose write from outside would let an object go on that is stuck

  [[nodiscard]] const ObjectWait* find(std::uint32_t object) const;
};

/// The waits of this moment. An object that is busy is not in the graph, but may yet release those that are. [player]
[[nodiscard]] WaitGraph makeWaitGraph(const RunRecord& record);

/// The same in words, one line and its indented reasons per object; empty when nobody waits.
[[nodiscard]] std::string explain(const RunRecord& record, const WaitGraph& graph);

}  // namespace motion::host::observe
