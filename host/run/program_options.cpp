#include "host/run/program_options.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "host/motion/unit_helper.h"
#include "host/run/program.h"
#include "host/scenario/parameter_encoder.h"
#include "host/scenario/parameter_reader.h"
#include "host/scenario/words.h"
#include "motion/kavo/cmd_options.h"
#include "motion/kavo/signal_memory.h"
#include "motion/kavo/switch_on_path_types.h"

namespace motion::host::run {

using scenario::OptionCall;
using scenario::ParameterReader;
using scenario::Problem;
using scenario::Problems;

namespace {

constexpr std::string_view PERM_ON = "PermOn";
constexpr std::string_view PERM_OFF = "PermOff";

std::string permTypeOf(const ReadyOption& option, const CmdOptionEntry& entry) {
  return ParameterReader(entry.schema, option.encoded.parameters).text("permType");
}

bool isOnPath(const CmdOptionEntry& entry) {
  return entry.id.name == kavo::OPTION_SWITCH_ON_PATH;
}

void append(auto& target, const auto& source) {
  target.insert(target.end(), source.begin(), source.end());
}

}  // namespace

std::vector<std::string> ProgramOptions::namesFor(const CmdEntry& command) const {
  std::vector<std::string> names;
  for (const auto& entry : m_runtime.cmdOptionFactory().all()) {
    if (canAccompany(*entry, command)) {
      names.push_back(entry->id.name);
    }
  }
  return names;
}

std::vector<ReadyOption> ProgramOptions::encode(const scenario::CommandCall& call, const CmdEntry& command,
                                                Problems& problems) const {
  std::vector<ReadyOption> ready;
  const std::size_t problemsBefore = problems.size();
  for (const OptionCall& option : call.options) {
    const auto entry = m_runtime.cmdOptionFactory().find({m_object.type(), option.name});
    if (entry == nullptr || !canAccompany(*entry, command)) {
      const std::vector<std::string> names = namesFor(command);
      const std::vector<std::string_view> views(names.begin(), names.end());
      problems.push_back({m_file, option.mark,
                          entry == nullptr ? fmt::format("{} is not an option of {} '{}'", scenario::inQuotes(option.name),
                                                         m_object.isAxis() ? "axis" : "kinematics", m_object.name())
                                           : fmt::format("option {} cannot accompany {}", scenario::inQuotes(option.name),
                                                         scenario::inQuotes(call.name)),
                          scenario::knownWords(option.name, views), false});
      continue;
    }
    auto encoded = scenario::encodeParameters(entry->schema, option.parameters, option.name, option.mark, m_file);
    append(problems, encoded.problems);
    if (encoded.data) {
      ready.push_back(
          {{option.name, std::move(*encoded.data), {"scenario", m_file, static_cast<std::uint32_t>(option.mark.line)}},
           fmt::format("{} {}", option.name, valueText(option.parameters)),
           option.mark});
    }
  }
  return problems.size() == problemsBefore ? ready : std::vector<ReadyOption>();
}

void ProgramOptions::follow(const std::vector<ReadyOption>& options, const CmdEntry& command) {
  for (const ReadyOption& option : options) {
    take(option);
  }
  m_effects.clear();
  m_conditions.clear();
  for (auto& [name, inForce] : m_inForce) {
    if (const auto entry = m_runtime.cmdOptionFactory().find({m_object.type(), name}); entry != nullptr) {
      accompany(*entry, inForce, command);
    }
  }
}

void ProgramOptions::take(const ReadyOption& option) {
  const auto entry = m_runtime.cmdOptionFactory().find({m_object.type(), option.encoded.name});
  InForce& inForce = m_inForce[option.encoded.name];
  const std::string permType = permTypeOf(option, *entry);
  if (permType == PERM_OFF) {
    inForce.permanent.clear();
    inForce.latest = inForce.once;
    return;
  }
  Deeds deeds{deedOf(option, *entry)};
  if (isOnPath(*entry)) {
    append(deeds, inForce.latest);
    inForce.once.clear();
  }
  if (permType == PERM_ON) {
    inForce.permanent = deeds;
  } else {
    append(inForce.once, deeds);
  }
  inForce.latest = std::move(deeds);
}

void ProgramOptions::accompany(const CmdOptionEntry& option, InForce& inForce, const CmdEntry& command) {
  if (!canAccompany(option, command)) {
    return;
  }
  Deeds deeds = std::exchange(inForce.once, {});
  if (deeds.empty() || !isOnPath(option)) {
    append(deeds, inForce.permanent);
  }
  for (const Deed& deed : deeds) {
    m_effects.push_back(deed.effect);
    if (deed.effect.onPath) {
      m_conditions.push_back(deed.condition);
    }
  }
  inForce.latest = std::move(deeds);
}

ProgramOptions::Deed ProgramOptions::deedOf(const ReadyOption& option, const CmdOptionEntry& entry) const {
  const ParameterReader parameters(entry.schema, option.encoded.parameters);
  Deed deed;
  // What is out of range is refused when the option is tried out.
  const double signal = std::clamp(parameters.number("signalId").value_or(0.0), 0.0, kavo::SIGNAL_COUNT - 1.0);
  deed.effect.signal = static_cast<std::uint32_t>(signal);
  deed.effect.onPath = isOnPath(entry);
  deed.effect.sets = parameters.number("action").value_or(0.0) == static_cast<double>(kavo::SwitchOnPathAction::SET_SIGNAL);
  deed.condition.radius = UnitHelper().toInternal(m_object.getUnitSettings(), core::UnitEntry::LENGTH,
                                                  parameters.number("radius").value_or(0.0));
  deed.condition.mark = option.mark;
  return deed;
}

}  // namespace motion::host::run
