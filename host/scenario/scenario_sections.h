// The parts of a scenario file, one function each; every one may rely on the parts before it in this list.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>

#include "host/scenario/problem_collector.h"
#include "host/scenario/scenario.h"
#include "host/scenario/value_reader.h"

namespace motion::host::scenario {

/// A scenario on its way from the file, with what later parts look up in earlier ones.
struct Reading {
  Scenario scenario;
  ProblemCollector problems;
  std::unordered_map<std::string, core::ObjectType> objects;    ///< every name that was given, even if its object is faulty
  std::unordered_map<std::string, std::size_t> programLengths;  ///< number of commands by object
  std::multimap<std::string, std::uint32_t> signalsByName;
};

void readTiming(const MapReader& file, Reading& reading);
void readSignalNames(const MapReader& file, Reading& reading);
void readObjects(const MapReader& file, Reading& reading);
void readPrograms(const MapReader& file, Reading& reading);
void readOutside(const MapReader& file, Reading& reading);
void readExpectations(const MapReader& file, Reading& reading);

/// A signal by number or by name.
[[nodiscard]] std::optional<std::uint32_t> readSignal(const Value& value, std::string_view what, Reading& reading);
/// The name of an object of this scenario; null after a report.
[[nodiscard]] const std::string* readObjectName(const Value& value, std::string_view what, Reading& reading);
/// Reports an object that the scenario does not have.
void reportUnknownObject(const Mark& mark, std::string_view what, const std::string& name, Reading& reading);
/// Warns of a moment that lies after the end of every run.
void checkWithinLimit(const Value& value, double time, Reading& reading);

}  // namespace motion::host::scenario
