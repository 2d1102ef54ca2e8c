#include "host/run/sync_steps.h"

#include <algorithm>
#include <charconv>
#include <string_view>

#include "motion/kavo/cmd_groups.h"
#include "motion/kavo/signal_memory.h"

namespace motion::host::run {

using observe::SyncKind;
using observe::SyncStep;
using scenario::Value;

namespace {

const Value* fieldOf(const Value& map, std::string_view name) {
  const auto found = std::ranges::find(map.fields, name, &scenario::Field::key);
  return found != map.fields.end() ? &found->value : nullptr;
}

std::uint32_t signalOf(const Value& parameters) {
  const Value* const field = fieldOf(parameters, "signalId");
  std::uint32_t signal = 0;
  if (field != nullptr) {
    std::from_chars(field->text.data(), field->text.data() + field->text.size(), signal);
  }
  return signal;
}

bool isTrue(const Value& parameters, std::string_view name) {
  const Value* const field = fieldOf(parameters, name);
  return field != nullptr && field->text == "true";
}

SyncKind kindOf(const CmdEntry& entry) {
  const auto isIn = [&entry](std::string_view group) {
    return std::ranges::find(entry.groups, group) != entry.groups.end();
  };
  // Within a group only the name tells which way round a command works.
  const bool isReset = entry.id.name.find("Reset") != std::string::npos;
  if (isIn(kavo::GROUP_SEND_SIGNAL)) {
    return isReset ? SyncKind::RESETS : SyncKind::SETS;
  }
  if (isIn(kavo::GROUP_SYNC_ON_SIGNAL)) {
    return isReset ? SyncKind::WAITS_RESET : SyncKind::WAITS_SET;
  }
  return isIn(kavo::GROUP_JOIN_CMD) ? SyncKind::JOINS : SyncKind::NONE;
}

void takeGroup(const Value& parameters, const MotionObject& object, ObjMgr& objects, SyncStep& step) {
  if (const Value* const names = fieldOf(parameters, "group"); names != nullptr) {
    for (const Value& name : names->items) {
      if (const MotionObject* const member = objects.find(name.text.c_str()); member != nullptr) {
        step.group.push_back(member->index());
      }
    }
  }
  std::ranges::sort(step.group);
  const auto twice = std::ranges::unique(step.group);
  step.namesTwice = !twice.empty();
  step.group.erase(twice.begin(), twice.end());
  if (const auto place = std::ranges::lower_bound(step.group, object.index());
      place == step.group.end() || *place != object.index()) {
    step.group.insert(place, object.index());
  }
  step.awaitsNext = isTrue(parameters, "syncStartNextCmd");
}

}  // namespace

SyncStep syncStepOf(const CmdEntry& entry, const Value& parameters, const MotionObject& object, ObjMgr& objects) {
  SyncStep step;
  step.kind = kindOf(entry);
  if (step.kind == SyncKind::JOINS) {
    takeGroup(parameters, object, objects, step);
  } else if (step.kind != SyncKind::NONE) {
    step.signal = std::min(signalOf(parameters), kavo::SIGNAL_COUNT - 1);
    step.consumes = isTrue(parameters, "autoReset");
  }
  return step;
}

bool namesOnlyItself(const Value& parameters, const std::string& object) {
  const Value* const names = fieldOf(parameters, "group");
  return names != nullptr && !names->items.empty() &&
         std::ranges::all_of(names->items, [&object](const Value& name) { return name.text == object; });
}

}  // namespace motion::host::run
