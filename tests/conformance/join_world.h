// Three motion objects whose Join commands meet.
#pragma once

#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "conformance/buffered_cmd.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {

/// The axis "A", the kinematics "B" and the axis "C", and a host that counts their cycles.
class JoinWorld {
 public:
  using Cmd = std::unique_ptr<BufferedCmd>;
  using Results = std::vector<core::job::JobResult>;

  static constexpr core::job::JobResult WAIT{0};
  static constexpr core::job::JobResult DONE{0x0A06};

  explicit JoinWorld(const Bundle& bundle);

  /// A Join in the buffer of an object; its jobs are not made yet.
  [[nodiscard]] Cmd buffered(test::FakeObj& obj, std::uint64_t cmdId, const std::vector<std::string>& group,
                             bool syncStartNextCmd = false);
  /// The same, prepared.
  [[nodiscard]] Cmd prepared(test::FakeObj& obj, std::uint64_t cmdId, const std::vector<std::string>& group,
                             bool syncStartNextCmd = false);
  /// The same; the number of the occurrence in which it takes part, as its trace tells.
  [[nodiscard]] std::uint32_t prepare(Cmd& cmd, test::FakeObj& obj, std::uint64_t cmdId,
                                      const std::vector<std::string>& group);
  /// All objects count a cycle, and the cyclic jobs of these commands run one after the other.
  [[nodiscard]] Results cycle(std::initializer_list<const Cmd*> cmds);
  /// Throws a Mismatch unless these commands end together in the cycle after the next one.
  void expectMeeting(std::initializer_list<const Cmd*> cmds);
  /// Throws a Mismatch unless none of these commands ends within many cycles.
  void expectNoMeeting(std::initializer_list<const Cmd*> cmds);

  Subject subject;
  test::FakeObj& a;
  test::FakeObj& b;
  test::FakeObj& c;
};

/// A trace of the job, such as "Info job_obj_join joinAndWait: A: joinCmd seq=1: join complete".
[[nodiscard]] std::string joinInfo(const std::string& function, const std::string& obj, std::uint32_t sequence,
                                   const std::string& text);

}  // namespace motion::conformance
