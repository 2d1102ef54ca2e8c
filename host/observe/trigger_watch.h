// Follows the switching conditions of a run from cycle to cycle: how near the tool came, and when each fired.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "host/motion/preparation.h"
#include "host/observe/run_record.h"
#include "motion/kavo/switch_on_path_pars.h"

namespace motion::host::observe {

/// Gives every command whose options have switching conditions one more job, which runs behind those of the options and
/// looks at the conditions as they left them. It computes distances by itself, and takes from the option only whether it has
/// fired.
class TriggerWatch : public ICmdWatch {
 public:
  TriggerWatch();
  TriggerWatch(const TriggerWatch&) = delete;
  TriggerWatch& operator=(const TriggerWatch&) = delete;
  ~TriggerWatch() override;

  /// Without memory a condition is shown without the line where it stands.
  void onAccepted(const AcceptedOption& option, const MotionObject& object) noexcept override;
  [[nodiscard]] core::job::JobResult onBuilt(CmdFrame& frame) noexcept override;
  /// Writes down what became of all conditions. After the last cycle, when all commands of the run stand in the record.
  /// [player]
  void report(RunRecord& record) const;

 private:
  class Watched;
  class Probe;

  using Condition = std::shared_ptr<kavo::SwitchOnPathPars>;

  /// Made when it is met for the first time, with that line.
  Watched& watched(const Condition& condition, const MotionObject& object, std::size_t line);
  [[nodiscard]] std::unique_ptr<Probe> makeProbe(const CmdFrame& frame);

  mutable std::mutex m_mutex;  ///< guards both lists
  std::vector<std::unique_ptr<Watched>> m_watched;
  std::map<const kavo::SwitchOnPathPars*, Watched*> m_byCondition;
  std::vector<std::unique_ptr<Probe>> m_probes;
};

}  // namespace motion::host::observe
