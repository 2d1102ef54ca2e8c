// Collects the medians of a run and prints them beside their floors.
#include "bench/results.h"

#include <fmt/format.h>

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>

namespace motion::bench {

namespace {

struct Row {
  const char* title;
  const char* benchmark;
  const char* floor;  ///< empty: without one
  double objects;     ///< what one iteration is divided by
};

constexpr Row ROWS[] = {
    {"signal get, system function", "sys_get", "floor_locked_get", 1},
    {"signal set, system function", "sys_set", "floor_locked_set", 1},
    {"signal reset, system function", "sys_reset", "floor_locked_reset", 1},
    {"signal get, RtSignals", "rt_get", "floor_get", 1},
    {"signal set, RtSignals", "rt_set", "floor_set", 1},
    {"signal reset, RtSignals", "rt_reset", "floor_reset", 1},
    {"WaitForSignal job, idle", "wait_idle", "floor_get", 1},
    {"WaitForSignal job, releasing", "wait_releasing", "floor_get", 1},
    {"WaitForSignal job, releasing, autoReset", "wait_releasing_auto_reset", "floor_set", 1},
    {"WaitForSignalReset job, idle", "wait_reset_idle", "floor_get", 1},
    {"WaitForSignalReset job, releasing", "wait_reset_releasing", "floor_get", 1},
    {"cycle of 1 waiting axis", "cycle/1", "floor_cycle/1", 1},
    {"cycle of 100, per axis", "cycle/100", "floor_cycle/100", 100},
    {"cycle of 1,000, per axis", "cycle/1000", "floor_cycle/1000", 1'000},
    {"cycle of 10,000, per axis", "cycle/10000", "floor_cycle/10000", 10'000},
    {"simulation step of 10,000, per axis", "step", "floor_cycle/10000", 10'000},
    {"join, last of 2 members, alone", "join_open/2/0", "floor_join_open/2/0", 1},
    {"join, last of 2 members, 10 open", "join_open/2/10", "floor_join_open/2/10", 1},
    {"join, last of 2 members, 1,000 open", "join_open/2/1000", "floor_join_open/2/1000", 1},
    {"join, last of 10 members, alone", "join_open/10/0", "floor_join_open/10/0", 1},
    {"join, last of 10 members, 10 open", "join_open/10/10", "floor_join_open/10/10", 1},
    {"join, last of 10 members, 1,000 open", "join_open/10/1000", "floor_join_open/10/1000", 1},
    {"join, last of 100 members, alone", "join_open/100/0", "floor_join_open/100/0", 1},
    {"join, last of 100 members, 10 open", "join_open/100/10", "floor_join_open/100/10", 1},
    {"join, last of 100 members, 1,000 open", "join_open/100/1000", "floor_join_open/100/1000", 1},
    {"join, last of 1,000 members, alone", "join_open/1000/0", "floor_join_open/1000/0", 1},
    {"join, last of 1,000 members, 10 open", "join_open/1000/10", "floor_join_open/1000/10", 1},
    {"join, last of 1,000 members, 1,000 open", "join_open/1000/1000", "floor_join_open/1000/1000", 1},
    {"join, its mutex locked and unlocked once", "floor_join_mutex", "", 1},
    {"join, waiting member of 2, per member", "join_waiting/2", "floor_join_waiting/2", 1},
    {"join, waiting member of 10, per member", "join_waiting/10", "floor_join_waiting/10", 9},
    {"join, waiting member of 100, per member", "join_waiting/100", "floor_join_waiting/100", 99},
    {"join, waiting member of 1,000, per member", "join_waiting/1000", "floor_join_waiting/1000", 999},
    {"join, end of 1,000 members, per member", "join_ending/1000", "floor_join_ending/1000", 1'000},
    {"path, 1 armed condition", "path_armed/1", "floor_path/1", 1},
    {"path, 10 armed, per condition", "path_armed/10", "floor_path/10", 10},
    {"path, 1,000 armed, per condition", "path_armed/1000", "floor_path/1000", 1'000},
    {"path, 10,000 armed, per condition", "path_armed/10000", "floor_path/10000", 10'000},
    {"path, 1 condition looking ahead", "path_ahead/1", "floor_path/1", 1},
    {"path, 10 looking ahead, per condition", "path_ahead/10", "floor_path/10", 10},
    {"path, 1,000 looking ahead, per condition", "path_ahead/1000", "floor_path/1000", 1'000},
    {"path, 10,000 looking ahead, per condition", "path_ahead/10000", "floor_path/10000", 10'000},
    {"path, 1 fired condition", "path_fired/1", "floor_path_fired/1", 1},
    {"path, 10 fired, per condition", "path_fired/10", "floor_path_fired/10", 10},
    {"path, 1,000 fired, per condition", "path_fired/1000", "floor_path_fired/1000", 1'000},
    {"path, 10,000 fired, per condition", "path_fired/10000", "floor_path_fired/10000", 10'000},
    {"cycle of a kinematics on a line", "kin_cycle_line", "floor_kin_cycle_line", 1},
    {"cycle of a kinematics on an arc", "kin_cycle_arc", "floor_kin_cycle_arc", 1},
    {"trace, switched off", "trace_disabled", "floor_trace_disabled", 1},
    {"trace, buffered sink", "trace_buffered", "floor_trace_buffered", 1},
    {"node read, client to signal and back", "node_read", "floor_node_read", 1},
    {"node write, client to signal and back", "node_write", "floor_node_write", 1},
    {"node read, the component's node alone", "node_on_read", "sys_get", 1},
    {"node write, the component's node alone", "node_on_write", "sys_write", 1},
    {"browse 100 signals", "node_browse", "floor_node_browse", 1},
    {"metadata of a signal", "node_metadata", "floor_node_metadata", 1},
    {"scopes, 3 patterns, 1 level", "scope_exact/3/1", "floor_scope/3/1", 1},
    {"scopes, 3 patterns, 4 levels", "scope_exact/3/4", "floor_scope/3/4", 1},
    {"scopes, 3 patterns, 8 levels", "scope_exact/3/8", "floor_scope/3/8", 1},
    {"scopes, 3 patterns, 16 levels", "scope_exact/3/16", "floor_scope/3/16", 1},
    {"scopes, 300 patterns, 1 level", "scope_exact/300/1", "floor_scope/300/1", 1},
    {"scopes, 300 patterns, 4 levels", "scope_exact/300/4", "floor_scope/300/4", 1},
    {"scopes, 300 patterns, 8 levels", "scope_exact/300/8", "floor_scope/300/8", 1},
    {"scopes, 300 patterns, 16 levels", "scope_exact/300/16", "floor_scope/300/16", 1},
    {"scopes, 3 wildcards, 8 levels", "scope_wildcards/3/8", "floor_scope/3/8", 1},
    {"scopes, 300 wildcards, 8 levels", "scope_wildcards/300/8", "floor_scope/300/8", 1},
    {"door, read a signal, connection kept", "door_read", "floor_door_read", 1},
    {"door, write a signal, connection kept", "door_write", "floor_door_write", 1},
    {"door, connect and write a signal", "door_command", "floor_door_command", 1},
};

/// The figures of opening joins stand beside a second floor, too.
constexpr std::string_view OPENING = "join_open/";

std::string requiredBy(std::string_view benchmark) {
  return fmt::format("floor_join_required/{}", benchmark.substr(OPENING.size()));
}

constexpr const char* WAIT_JOBS[] = {"wait_idle", "wait_releasing", "wait_releasing_auto_reset", "wait_reset_idle",
                                     "wait_reset_releasing"};

void printTarget(const std::string& what, double ratio, double limit) {
  fmt::print("  {:<76} {:6.2f}  at most {:.0f}  {}\n", what, ratio, limit, ratio <= limit ? "reached" : "NOT REACHED");
}

}  // namespace

bool Results::ReportContext(const Context& /*context*/) {
  return true;
}

void Results::ReportRuns(const std::vector<Run>& runs) {
  for (const Run& run : runs) {
    if (run.error_occurred) {
      fmt::print(stderr, "{}: {}\n", run.benchmark_name(), run.error_message);
      m_hasFailed = true;
    }
    std::string name = run.run_name.function_name;
    if (!run.run_name.args.empty()) {
      name += "/" + run.run_name.args;
    }
    // Time of the processor, which leaves out what others do on the machine; a benchmark that takes its time itself knows
    // better.
    const bool takesTime = !run.run_name.time_type.empty();
    if (run.aggregate_name == "median") {
      m_medians[name].time = takesTime ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
    } else if (run.aggregate_name == "cv") {
      m_medians[name].deviation = takesTime ? run.real_accumulated_time : run.cpu_accumulated_time;
    }
  }
}

std::optional<double> Results::time(const std::string& benchmark) const {
  const auto found = m_medians.find(benchmark);
  return found != m_medians.end() ? std::optional(found->second.time) : std::nullopt;
}

bool Results::isComplete() const {
  return !m_hasFailed && std::ranges::all_of(ROWS, [this](const Row& row) {
    const std::string_view name = row.benchmark;
    return time(row.benchmark) && (*row.floor == '\0' || time(row.floor)) &&
           (!name.starts_with(OPENING) || time(requiredBy(name)));
  });
}

void Results::printRow(const std::string& title, const std::string& benchmark, const std::string& floor,
                       double objects) const {
  const auto figure = time(benchmark);
  const auto least = time(floor);
  if (figure && floor.empty()) {
    fmt::print("  {:<42} {:>10.2f} {:>10} {:>8}  +-{:.0f} %\n", title, *figure / objects, "-", "-",
               100 * m_medians.at(benchmark).deviation);
  } else if (figure && least) {
    fmt::print("  {:<42} {:>10.2f} {:>10.2f} {:>8.2f}  +-{:.0f} %\n", title, *figure / objects, *least / objects,
               *figure / *least, 100 * m_medians.at(benchmark).deviation);
  }
}

void Results::print() const {
  fmt::print("\n  {:<42} {:>10} {:>10} {:>8}  spread\n", "what", "time [ns]", "floor [ns]", "ratio");
  for (const Row& row : ROWS) {
    printRow(row.title, row.benchmark, row.floor, row.objects);
  }
  printJoinRequired();
  if (const auto step = time("step")) {
    fmt::print("\n  simulated object-cycles per second: {:.1f} million\n", 1e9 / (*step / 10'000) / 1e6);
  }
  if (isComplete()) {
    printTargets();
  }
  printDataLayerTargets();
}

void Results::printJoinRequired() const {
  fmt::print("\n  {:<42} {:>10} {:>10} {:>8}  spread\n", "opening a join, to what its meeting requires", "time [ns]",
             "req. [ns]", "ratio");
  for (const Row& row : ROWS) {
    const std::string_view name = row.benchmark;
    if (name.starts_with(OPENING)) {
      printRow(row.title, row.benchmark, requiredBy(name), row.objects);
    }
  }
}

void Results::printTargets() const {
  fmt::print("\n  {:<76} {:>6}\n", "target", "ratio");
  const double job = *time("wait_idle");
  for (const double objects : {1.0, 100.0, 1'000.0, 10'000.0}) {
    const double perObject = *time(fmt::format("cycle/{:.0f}", objects)) / objects;
    printTarget(fmt::format("a waiting axis' cycle, of {:.0f}, to the component's own idle wait job", objects),
                perObject / job, 3);
  }
  printTarget("cost per axis of 10,000 to that of 100", *time("cycle/10000") / 10'000 / (*time("cycle/100") / 100), 2);
  for (const char* name : WAIT_JOBS) {
    const Row& row =
        *std::ranges::find_if(ROWS, [name](const Row& candidate) { return std::string(candidate.benchmark) == name; });
    printTarget(fmt::format("{} to its floor", row.title), *time(name) / *time(row.floor), 8);
  }
  printJoinTargets();
  printPathTargets();
}

void Results::printJoinTargets() const {
  for (const Row& row : ROWS) {
    const std::string_view name = row.benchmark;
    if (name.starts_with(OPENING) || name.starts_with("join_waiting/")) {
      printTarget(fmt::format("{} to its floor", row.title), *time(row.benchmark) / *time(row.floor),
                  name.starts_with(OPENING) ? 5 : 4);
    }
  }
  printTarget("waiting member of a join of 1,000 to that of one of 2",
              *time("join_waiting/1000") / 999 / *time("join_waiting/2"), 2);
}

void Results::printPathTargets() const {
  for (const Row& row : ROWS) {
    const std::string_view name = row.benchmark;
    if (name.starts_with("path_")) {
      printTarget(fmt::format("{} to its floor", row.title), *time(row.benchmark) / *time(row.floor), 3);
    }
  }
  for (const char* kind : {"armed", "ahead", "fired"}) {
    printTarget(fmt::format("path, {}: cost per condition of 10,000 to that of 10", kind),
                *time(fmt::format("path_{}/10000", kind)) / 10'000 / (*time(fmt::format("path_{}/10", kind)) / 10), 2);
  }
}

void Results::printDataLayerTargets() const {
  // Beside the others only by their time: these can be measured alone.
  const auto print = [this](const std::string& what, const char* figure, double share, const char* least, const char* other,
                            double limit) {
    if (time(figure) && time(least) && (*other == '\0' || time(other))) {
      const double floor = *time(least) + (*other == '\0' ? 0.0 : *time(other));
      printTarget(what, share * *time(figure) / floor, limit);
    }
  };
  fmt::print("\n  {:<76} {:>6}\n", "target, data layer", "ratio");
  print("node read, the component's node, to direct call and hand-over", "node_on_read", 1, "sys_get", "floor_node_read", 2);
  print("node write, the component's node, to direct call and hand-over", "node_on_write", 1, "sys_write",
        "floor_node_write", 2);
  print("node read, end to end, to direct call and hand-over", "node_read", 1, "sys_get", "floor_node_read", 2);
  print("node write, end to end, to direct call and hand-over", "node_write", 1, "sys_write", "floor_node_write", 2);
  for (const std::string patterns : {"3", "300"}) {
    for (const std::string levels : {"4", "8", "16"}) {
      print(fmt::format("scopes, {} patterns: cost per level of {} to that of 1", patterns, levels),
            fmt::format("scope_exact/{}/{}", patterns, levels).c_str(), 1.0 / std::stod(levels),
            fmt::format("scope_exact/{}/1", patterns).c_str(), "", 1);
    }
  }
}

}  // namespace motion::bench
