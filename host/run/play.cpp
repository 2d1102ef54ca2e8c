#include "host/run/play.h"

#include <algorithm>
#include <memory>

#include "host/run/program.h"
#include "host/run/program_checks.h"
#include "host/run/session.h"
#include "host/scenario/scenario_reader.h"

namespace motion::host::run {

namespace {

bool hasErrors(const scenario::Problems& problems) {
  return std::ranges::any_of(problems, [](const scenario::Problem& problem) { return !problem.warning; });
}

/// Plays in an open session.
void playIn(Session& session, const scenario::Scenario& scenario, const PlayOptions& options, PlayResult& result) {
  for (const scenario::ObjectDef& object : scenario.objects) {
    session.runtime().addObject(object.name, object.type, object.start,
                                UnitHelper::settings(object.lengthUnit, object.timeUnit));
  }
  ProgramResult program = prepareProgram(scenario, session.runtime(), [&session] { return session.takeMessages(); });
  result.problems.insert(result.problems.end(), program.problems.begin(), program.problems.end());
  result.objects = scenario.objects.size();
  for (const ObjectCalls& calls : program.programs) {
    result.commands += calls.calls.size();
  }
  if (hasErrors(result.problems)) {
    result.outcome = Outcome::BAD_INPUT;
    return;
  }
  const scenario::Problems findings = checkPrograms(scenario, program.programs);
  result.problems.insert(result.problems.end(), findings.begin(), findings.end());
  if (options.checkOnly) {
    result.outcome = findings.empty() ? Outcome::FINE : Outcome::NOT_FINE;
    return;
  }
  Player player(session, scenario, std::move(program.programs));
  if (!player.connect(result.failure)) {
    result.outcome = Outcome::NO_BUNDLE;
    return;
  }
  if (options.realTime) {
    player.setStuckAfter(options.stuckAfter);
    player.playReal(options.watch);
  } else {
    player.playVirtual();
  }
  result.record = player.record();
  result.outcome = result.record->isFine() ? Outcome::FINE : Outcome::NOT_FINE;
}

}  // namespace

PlayResult play(const PlayOptions& options) {
  PlayResult result;
  scenario::ReadResult read = scenario::readScenarioFile(options.file);
  result.problems = std::move(read.problems);
  if (!read.scenario) {
    result.outcome = Outcome::BAD_INPUT;
    return result;
  }
  const RuntimeConfig runtime{read.scenario->cycleTime, read.scenario->bufferSize};
  Session session({options.bundleDir, runtime, options.startLimit, options.journal});
  if (!session.open(result.failure)) {
    result.outcome = Outcome::NO_BUNDLE;
    result.lost = session.isLost();
    return result;
  }
  playIn(session, *read.scenario, options, result);
  if (!session.close(result.failure)) {
    result.outcome = Outcome::NO_BUNDLE;
    result.lost = session.isLost();
  }
  return result;
}

}  // namespace motion::host::run
