#include "host/observe/triggers_json.h"

namespace motion::host::observe {

using Json = nlohmann::ordered_json;
using Look = TriggerRecord::Look;

namespace {

Json pointJson(const Point& point) {
  return Json::array({point[0] * 1e3, point[1] * 1e3, point[2] * 1e3});
}

Json lookJson(const RunRecord& record, const TriggerRecord& trigger, const std::optional<Look>& look) {
  if (!look) {
    return nullptr;
  }
  return {{"cycle", look->cycle},
          {"command", commandText(record, trigger.object, look->number)},
          {"position", pointJson(look->position)},
          {"distance", look->distance * 1e3},
          {"toolDistance", look->toolDistance * 1e3}};
}

const char* outcome(const TriggerRecord& trigger) {
  if (trigger.fired) {
    return "fired";
  }
  if (trigger.isSpent) {
    return "failed";
  }
  return trigger.carriers.empty() ? "never armed" : "never reached";
}

Json triggerJson(const RunRecord& record, const TriggerRecord& trigger) {
  Json json{{"object", record.objects.at(trigger.object).name},
            {"line", trigger.line},
            {"signal", trigger.signal},
            {"action", trigger.sets ? "set" : "reset"},
            {"target", pointJson(trigger.target)},
            {"radius", trigger.radius * 1e3},
            {"preTriggerTime", trigger.preTriggerTime},
            {"outcome", outcome(trigger)},
            {"carriers", Json::array()},
            {"fired", lookJson(record, trigger, trigger.fired)},
            {"entered", lookJson(record, trigger, trigger.entered)},
            {"nearest", lookJson(record, trigger, trigger.nearest)},
            {"nearestBetweenCycles", nullptr}};
  for (const TriggerRecord::Carrier& carrier : trigger.carriers) {
    json["carriers"].push_back({{"command", commandText(record, trigger.object, carrier.number)},
                                {"cycle", carrier.cycle != 0 ? Json(carrier.cycle) : Json(nullptr)}});
  }
  if (trigger.nearestPass) {
    json["nearestBetweenCycles"] = {{"cycle", trigger.nearestPass->cycle},
                                    {"distance", trigger.nearestPass->distance * 1e3},
                                    {"speed", trigger.nearestPass->speed * 1e3},
                                    {"leapsAhead", trigger.nearestPass->isLeap}};
  }
  return json;
}

}  // namespace

Json triggersJson(const RunRecord& record) {
  Json json = Json::array();
  for (const TriggerRecord& trigger : record.triggers) {
    json.push_back(triggerJson(record, trigger));
  }
  return json;
}

}  // namespace motion::host::observe
