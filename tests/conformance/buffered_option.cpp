// A command option of the bundle, driven as a host drives it.
#include "conformance/buffered_option.h"

#include <fmt/format.h>

#include <utility>

#include "conformance/buffered_cmd.h"
#include "conformance/crossing.h"
#include "conformance/expect.h"
#include "support/parameter_table.h"

namespace motion::conformance {

using core::ObjectType;
using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;

namespace {

const test::FakeCmdOptionRegistration& registration(Subject& subject, ObjectType type, const std::string& name) {
  const auto found = subject.host.cmdOptionFactory.m_options.find({type, name});
  expectNotNull(fmt::format("registration of option {} for type {}", name, static_cast<std::uint32_t>(type)),
                found != subject.host.cmdOptionFactory.m_options.end());
  return found->second;
}

}  // namespace

MarshalledOption marshalOption(Subject& subject, ObjectType type, const std::string& name,
                               const comm::datalayer::Variant* data, CmdOptPermType before) {
  MarshalledOption marshalled;
  marshalled.permType = before;
  test::FakeDiagCollector collector(subject.host.calls);
  core::IContainer* container = nullptr;
  const auto& onMarshal = registration(subject, type, name).onMarshal;
  marshalled.result = crossing("onMarshall", [&] { return onMarshal(data, container, marshalled.permType, collector); });
  marshalled.container.reset(container);
  return marshalled;
}

std::unique_ptr<core::cmd::GenericCmdOption> makeOption(Subject& subject, ObjectType type, const std::string& name) {
  core::cmd::GenericCmdOption* option = nullptr;
  std::string errText;
  const auto& onCreate = registration(subject, type, name).onCreate;
  const auto result = crossing("onCreate", [&] { return onCreate(option, errText); });
  std::unique_ptr<core::cmd::GenericCmdOption> made(option);
  expectEqual("creation of option " + name, result, CmdResult::Okay);
  expectNotNull("option " + name, made != nullptr);
  return made;
}

CmdResult ActiveOptions::getDataOfOption(const core::cmd::CmdId& option, const core::IContainer*& data) const {
  const auto found = m_data.find(option);
  if (found == m_data.end()) {
    return CmdResult::NoOptionData;
  }
  data = found->second;
  return CmdResult::Okay;
}

BufferedOption::BufferedOption(Subject& subject, test::FakeObj& obj, const std::string& name,
                               const comm::datalayer::Variant& parameters, const ActiveOptions& active)
    : m_subject(subject) {
  const auto type = typeOf(obj);
  auto marshalled = marshalOption(subject, type, name, &parameters);
  expectEqual("marshalling of option " + name, marshalled.result, CmdResult::Okay);
  m_parameters = std::move(marshalled.container);
  m_permType = marshalled.permType;
  m_option = makeOption(subject, type, name);
  const auto prepared = crossing("prepareStackableCmdOption", [&] {
    return m_option->prepareStackableCmdOption(obj, active, m_parameters.get(), m_permType, source());
  });
  expectEqual("prepareStackableCmdOption", prepared, CmdResult::Okay);
  const auto taken = crossing(
      "setParameter", [&] { return m_option->setParameter(m_parameters.get(), subject.host.objFactory, obj, obj.m_dia); });
  expectEqual("setParameter", taken, CmdResult::Okay);
}

std::vector<std::unique_ptr<core::job::IJobObject>> BufferedOption::makeJobs() const {
  std::vector<std::unique_ptr<core::job::IJobObject>> jobs;
  for (auto* job : crossing("createJobs", [&] { return m_option->createJobs(m_subject.host.objFactory); })) {
    jobs.emplace_back(job);
  }
  return jobs;
}

comm::datalayer::Variant pathParameters(const PathParameters& parameters) {
  return test::ParameterTable()
      .withText(4, parameters.permType)
      .with<std::uint8_t>(6, 0)
      .with<std::uint32_t>(8, parameters.signalId)
      .with<std::uint8_t>(10, parameters.resets ? 1 : 0)
      .with(12, parameters.targetPosition)
      .with<double>(14, parameters.radius)
      .with<double>(16, parameters.preTriggerTime)
      .finish();
}

comm::datalayer::Variant signalOptionParameters(const std::string& permType, std::uint32_t signalId) {
  return test::ParameterTable().withText(4, permType).with<std::uint32_t>(6, signalId).finish();
}

}  // namespace motion::conformance
