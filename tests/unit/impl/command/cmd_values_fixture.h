// A command that is given parameters, asked what it offers its jobs, and asked whether its signal exists.
#pragma once

#include "impl_fixture.h"

namespace motion::kavo::cmd {

/// PARAMETERS is the container of what the issuer says, OFFERED that of what the command's jobs read.
template <typename COMMAND, typename PARAMETERS, typename OFFERED>
class CmdValuesTest : public CommandTest {
 protected:
  using OfferedT = decltype(OFFERED().get());

  [[nodiscard]] core::cmd::CmdResult set(const core::IContainer* values) {
    return m_sut.onSetCmdValues(values, m_source, nullptr, false);
  }
  [[nodiscard]] core::cmd::CmdResult set(std::uint32_t signalId) {
    const PARAMETERS values({signalId});
    return set(&values);
  }
  [[nodiscard]] OfferedT offered() {
    m_handler.m_published.clear();
    EXPECT_EQ(m_sut.onRegisterJobListsInputs(m_handler), core::cmd::CmdResult::Okay);
    const core::IContainer* const container = m_handler.m_published.at({OFFERED::getMyID(), cmdDataSection()});
    const auto* const record = OFFERED::safeCast(container);
    return record != nullptr ? record->get() : OfferedT{0xFFFFFFFF};
  }

  /// Parameters of another type are refused, with that trace each time, and what was set before stays.
  void expectRefused(const std::vector<const core::IContainer*>& others, const std::string& trace) {
    ASSERT_EQ(set(42), core::cmd::CmdResult::Okay);
    for (const core::IContainer* other : others) {
      EXPECT_EQ(core::toCode(set(other)), 0xF011000EU);
    }
    EXPECT_EQ(traces(), std::vector<std::string>(others.size(), trace));
    EXPECT_EQ(m_host.traceSink.entries()[0].format, "%s");
    EXPECT_EQ(offered().signalId, 42U);
  }

  void expectSignalsThatExistAccepted() {
    for (const std::uint32_t id : {0U, 99U}) {
      ASSERT_EQ(set(id), core::cmd::CmdResult::Okay);
      EXPECT_EQ(m_sut.onValidate(m_source, &m_dia), core::cmd::CmdResult::Okay);
    }
    EXPECT_THAT(m_dia.m_reports, testing::IsEmpty());
    EXPECT_THAT(traces(), testing::IsEmpty());
  }

  COMMAND m_sut{m_host.objFactory};
};

}  // namespace motion::kavo::cmd
