#include "host/observe/json_report.h"

#include <nlohmann/json.hpp>

#include "host/motion/events.h"
#include "host/observe/triggers_json.h"
#include "host/observe/wait_json.h"

namespace motion::host::observe {

using core::cmd::CmdState;
using Json = nlohmann::ordered_json;

namespace {

const char* stateName(CmdState state) {
  switch (state) {
    case CmdState::CREATED:
      return "created";
    case CmdState::BUFFERED:
      return "buffered";
    case CmdState::PREPARED:
      return "prepared";
    case CmdState::ACTIVE:
      return "active";
    case CmdState::DONE:
      return "done";
    case CmdState::ABORTED:
      return "aborted";
    case CmdState::FAILED:
      return "failed";
  }
  return "";
}

Json author(const RunRecord& record, std::uint32_t object, std::size_t number) {
  return object == OUTSIDE ? Json("outside") : Json(commandText(record, object, number));
}

Json commandJson(const RunRecord& record, const CmdRecord& command) {
  Json json{{"number", command.number},
            {"name", command.name},
            {"parameters", command.parameters},
            {"options", command.options},
            {"line", command.line},
            {"state", stateName(command.state)},
            {"buffered", cycleOrNull(command.buffered)},
            {"prepared", cycleOrNull(command.prepared)},
            {"active", cycleOrNull(command.active)},
            {"moves", cycleOrNull(command.motionBegan)},
            {"ended", cycleOrNull(command.ended)}};
  if (command.waits && command.active != 0) {
    const std::uint64_t end = command.ended != 0 ? command.ended : record.cycles;
    const auto release = releasedBy(record, command);
    json["waited"] = static_cast<double>(end - command.active) * record.cycleTime;
    json["waitedFor"] = command.waitsFor;
    json["releasedBy"] = release ? author(record, release->object, release->number) : Json(nullptr);
  }
  if (!command.failure.empty()) {
    json["failure"] = command.failure;
  }
  return json;
}

Json objectJson(const RunRecord& record, const ObjectRecord& object) {
  const bool isAxis = object.type == core::ObjectType::AXIS;
  Json json{{"name", object.name}, {"type", isAxis ? "axis" : "kinematics"}};
  const auto position = [isAxis](const Point& point) {
    return isAxis ? Json(point[0] * 1e3) : Json::array({point[0] * 1e3, point[1] * 1e3, point[2] * 1e3});
  };
  json["start"] = position(object.startPosition);
  json["end"] = position(object.endPosition);
  json["commands"] = Json::array();
  for (const CmdRecord& command : object.commands) {
    json["commands"].push_back(commandJson(record, command));
  }
  return json;
}

}  // namespace

std::string jsonReport(const RunRecord& record) {
  Json json{{"file", record.file},
            {"ok", record.isFine()},
            {"time", record.realTime ? "real" : "virtual"},
            {"cycleTime", record.cycleTime},
            {"cycles", record.cycles},
            {"stuck", record.stuck.empty() ? Json(nullptr) : Json(record.stuck)},
            {"warning", record.warning.empty() ? Json(nullptr) : Json(record.warning)},
            {"failures", record.failures},
            {"lostEvents", record.lostEvents},
            {"objects", Json::array()},
            {"signals", Json::array()},
            {"joins", joinsJson(record)},
            {"triggers", triggersJson(record)},
            {"waits", waitsJson(record)},
            {"expectations", Json::array()},
            {"diagnoses", Json::array()},
            {"messages", record.messages}};
  for (const ObjectRecord& object : record.objects) {
    json["objects"].push_back(objectJson(record, object));
  }
  for (const SignalRecord& change : record.signals) {
    const bool named = change.signal < record.signalNames.size() && !record.signalNames[change.signal].empty();
    json["signals"].push_back({{"cycle", change.cycle},
                               {"signal", change.signal},
                               {"name", named ? Json(record.signalNames[change.signal]) : Json(nullptr)},
                               {"value", change.value},
                               {"by", author(record, change.object, change.number)}});
  }
  for (const DiagnosisRecord& diagnosis : record.diagnoses) {
    json["diagnoses"].push_back({{"object", record.objects.at(diagnosis.object).name},
                                 {"line", diagnosis.line},
                                 {"mainCode", diagnosis.mainCode},
                                 {"detailCode", diagnosis.detailCode},
                                 {"text", diagnosis.text}});
  }
  for (const ExpectationRecord& expectation : record.expectations) {
    json["expectations"].push_back({{"text", expectation.text},
                                    {"line", expectation.line},
                                    {"holds", expectation.holds},
                                    {"reason", expectation.holds ? Json(nullptr) : Json(expectation.reason)}});
  }
  if (record.punctuality) {
    json["punctuality"] = {{"cycles", record.punctuality->cycles},
                           {"overruns", record.punctuality->overruns},
                           {"latestWakeUp", record.punctuality->latestWakeUp}};
  }
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace motion::host::observe
