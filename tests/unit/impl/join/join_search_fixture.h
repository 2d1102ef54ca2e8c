// Members that are prepared while joins are open, and an object that lets something happen meanwhile.
#pragma once

#include <algorithm>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "impl/join/join_cmd_global_context.h"
#include "join_fixture.h"

namespace motion::kavo::job {

using core::cmd::CmdState;
using Context = JoinCmdGlobalContext;

/// Notes for which commands it was asked, and does something meanwhile: what other threads do while a search goes on.
class ActingObj : public test::FakeObj {
 public:
  ActingObj(test::FakeCalls& calls, std::vector<std::uint64_t>& asked) : FakeObj(calls), m_asked(asked) {}

  CmdState getCmdState(std::uint64_t cmdID) const override {
    m_asked.push_back(cmdID);
    if (m_meanwhile) {
      std::exchange(m_meanwhile, nullptr)();
    }
    return FakeObj::getCmdState(cmdID);
  }

  mutable std::function<void()> m_meanwhile;  ///< once

 private:
  std::vector<std::uint64_t>& m_asked;
};

class JoinSearchTest : public JoinTest {
 protected:
  /// A member on an object that the object manager does not know.
  [[nodiscard]] std::unique_ptr<JoinMember> unnamed(test::FakeObj& obj, std::uint64_t cmdId, const JoinGroup& group) {
    auto made = std::make_unique<JoinMember>(m_host, obj, cmdId, group);
    EXPECT_EQ(made->m_job.registerInputs(&made->m_handler), core::job::JobResult::InvalidJobData);
    return made;
  }
  [[nodiscard]] std::unique_ptr<JoinMember> preparedUnnamed(test::FakeObj& obj, std::uint64_t cmdId,
                                                            const JoinGroup& group) {
    auto made = unnamed(obj, cmdId, group);
    EXPECT_EQ(made->m_job.registerForJoin(), core::job::JobResult::NoEffect);
    return made;
  }
  [[nodiscard]] static std::uint32_t seqOf(const std::unique_ptr<JoinMember>& member) {
    return member->m_job.getContext()->seq();
  }
  [[nodiscard]] static const Context* contextOf(const std::unique_ptr<JoinMember>& member) {
    return member->m_job.getContext();
  }
  /// What is open, newest first, as far as one of these groups.
  [[nodiscard]] static std::vector<const Context*> openOf(const std::vector<JoinGroup>& groups) {
    std::vector<const Context*> found;
    for (const JoinGroup& group : groups) {
      for (auto context = Context::findMostRecent(group); context != nullptr;
           context = context->findPreviousWithSameGroup()) {
        found.push_back(context.get());
      }
    }
    std::ranges::sort(found, std::ranges::greater(), &Context::seq);
    return found;
  }

  std::vector<std::uint64_t> m_asked;
  ActingObj m_acting{m_host.calls, m_asked};
  const JoinGroup m_ac{&m_a, &m_c};
  const JoinGroup m_bc{&m_b, &m_c};
  const JoinGroup m_withActing{&m_acting, &m_c};  ///< nobody joins with it
  const std::vector<JoinGroup> m_all{m_ab, m_ac, m_bc, m_withActing};
};

}  // namespace motion::kavo::job
