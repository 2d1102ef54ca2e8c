// Three motion objects whose Join commands meet.
#include "conformance/join_world.h"

#include "conformance/expect.h"

namespace motion::conformance {

JoinWorld::JoinWorld(const Bundle& bundle)
    : subject(bundle),
      a(subject.host.objMgr.addAxis("A")),
      b(subject.host.objMgr.addKinematics("B")),
      c(subject.host.objMgr.addAxis("C")) {
  subject.start();
}

JoinWorld::Cmd JoinWorld::buffered(test::FakeObj& obj, std::uint64_t cmdId, const std::vector<std::string>& group,
                                   bool syncStartNextCmd) {
  return std::make_unique<BufferedCmd>(subject, obj, cmdId, "Join", joinParameters(group, syncStartNextCmd));
}

JoinWorld::Cmd JoinWorld::prepared(test::FakeObj& obj, std::uint64_t cmdId, const std::vector<std::string>& group,
                                   bool syncStartNextCmd) {
  auto cmd = buffered(obj, cmdId, group, syncStartNextCmd);
  cmd->prepareWithJobs();
  return cmd;
}

std::uint32_t JoinWorld::prepare(Cmd& cmd, test::FakeObj& obj, std::uint64_t cmdId, const std::vector<std::string>& group) {
  cmd = prepared(obj, cmdId, group);
  const auto trace = subject.traces().back();
  const std::string key = "joinCmd seq=";
  expectHolds("last trace", trace, key);
  return static_cast<std::uint32_t>(std::stoul(trace.substr(trace.find(key) + key.size())));
}

JoinWorld::Results JoinWorld::cycle(std::initializer_list<const Cmd*> cmds) {
  for (auto* const obj : {&a, &b, &c}) {
    ++obj->m_cycleCount;
  }
  Results results;
  for (const auto* const cmd : cmds) {
    results.push_back((*cmd)->cycle());
  }
  return results;
}

void JoinWorld::expectMeeting(std::initializer_list<const Cmd*> cmds) {
  expectEqual("results in the cycle in which all join", cycle(cmds), Results(cmds.size(), WAIT));
  expectEqual("results in the cycle behind it", cycle(cmds), Results(cmds.size(), DONE));
}

void JoinWorld::expectNoMeeting(std::initializer_list<const Cmd*> cmds) {
  for (int i = 0; i < 10; ++i) {
    expectEqual("results", cycle(cmds), Results(cmds.size(), WAIT));
  }
}

std::string joinInfo(const std::string& function, const std::string& obj, std::uint32_t sequence, const std::string& text) {
  return infoOf("job_obj_join", function, fmt::format("{}: joinCmd seq={}: {}", obj, sequence, text));
}

}  // namespace motion::conformance
