#include "host/observe/wait_json.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "host/observe/joins.h"
#include "host/observe/wait_graph.h"

namespace motion::host::observe {

using Json = nlohmann::ordered_json;

Json cycleOrNull(std::uint64_t cycle) {
  return cycle != 0 ? Json(cycle) : Json(nullptr);
}

namespace {

Json namesJson(const RunRecord& record, const std::vector<std::uint32_t>& objects) {
  Json names = Json::array();
  std::ranges::transform(objects, std::back_inserter(names),
                         [&record](std::uint32_t object) { return record.objects.at(object).name; });
  return names;
}

Json commandJson(const RunRecord& record, std::uint32_t object, std::size_t number) {
  return number != 0 ? Json(commandText(record, object, number)) : Json(nullptr);
}

Json memberJson(const RunRecord& record, const JoinMember& member) {
  const auto seconds = [&record](std::uint64_t cycles) { return static_cast<double>(cycles) * record.cycleTime; };
  return {{"object", record.objects.at(member.object).name},
          {"command", commandJson(record, member.object, member.number)},
          {"active", cycleOrNull(member.active)},
          {"arrived", cycleOrNull(member.arrived)},
          {"ended", cycleOrNull(member.ended)},
          {"aborted", member.aborted},
          {"waitedForPreparation", seconds(member.forPreparation(record.cycles))},
          {"waitedForMembers", seconds(member.forMembers(record.cycles))}};
}

const char* reasonText(MissingMember::Why why) {
  switch (why) {
    case MissingMember::Why::ON_ITS_WAY:
      return "on its way";
    case MissingMember::Why::NO_SUCH_JOIN:
      return "no such join";
    case MissingMember::Why::ENDED_OTHERWISE:
      return "aborted";
    case MissingMember::Why::HAS_NO_NEXT_COMMAND:
      return "no next command";
  }
  return "";
}

Json waitJson(const RunRecord& record, const ObjectWait& wait) {
  const CmdRecord& command = record.objects.at(wait.object).commands.at(wait.number - 1);
  Json json{{"object", record.objects.at(wait.object).name},
            {"command", commandText(record, wait.object, wait.number)},
            {"line", command.line},
            {"since", wait.since},
            {"waitsFor", command.waitsFor},
            {"stuck", wait.isStuck},
            {"certain", wait.isCertain},
            {"torn", wait.isTorn},
            {"releasers", Json::array()},
            {"arrived", Json::array()},
            {"missing", Json::array()}};
  for (const Releaser& releaser : wait.releasers) {
    json["releasers"].push_back(commandText(record, releaser.object, releaser.number));
  }
  for (const ArrivedMember& member : wait.arrived) {
    json["arrived"].push_back({{"object", record.objects.at(member.object).name}, {"cycle", member.cycle}});
  }
  for (const MissingMember& member : wait.missing) {
    json["missing"].push_back({{"object", record.objects.at(member.object).name},
                               {"command", commandJson(record, member.object, member.number)},
                               {"why", reasonText(member.why)}});
  }
  return json;
}

}  // namespace

Json joinsJson(const RunRecord& record) {
  Json json = Json::array();
  for (const JoinOccurrence& join : findJoins(record)) {
    Json members = Json::array();
    for (const JoinMember& member : join.members) {
      members.push_back(memberJson(record, member));
    }
    const JoinMember* const last = join.last();
    json.push_back({{"group", namesJson(record, join.group)},
                    {"occurrence", join.occurrence},
                    {"completed", cycleOrNull(join.completed)},
                    {"last", last != nullptr ? Json(record.objects.at(last->object).name) : Json(nullptr)},
                    {"members", std::move(members)}});
  }
  return json;
}

Json waitsJson(const RunRecord& record) {
  const WaitGraph graph = makeWaitGraph(record);
  Json waits = Json::array();
  for (const ObjectWait& wait : graph.waits) {
    waits.push_back(waitJson(record, wait));
  }
  return {{"objects", std::move(waits)},
          {"circle", namesJson(record, graph.circle)},
          {"circleSince", cycleOrNull(graph.circleSince)},
          {"circleClosedBy", graph.circle.empty() ? Json(nullptr) : Json(record.objects.at(graph.circleClosedBy).name)},
          {"neededSignals", graph.neededSignals}};
}

}  // namespace motion::host::observe
