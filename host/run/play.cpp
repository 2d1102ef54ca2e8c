#include "host/run/play.h"

#include <algorithm>
#include <memory>

#include "host/run/outside_writes.h"
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
  addObjects(session.runtime(), scenario);
  ProgramResult program = prepareProgram(scenario, session.runtime(), [&session] { return session.takeMessages(); });
  const scenario::Problems writes = checkOutsideWrites(scenario, session.dataLayer().scopes());
  for (const scenario::Problems& problems : {program.problems, writes}) {
    result.problems.insert(result.problems.end(), problems.begin(), problems.end());
  }
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
    result.outcome = findings.empty() && writes.empty() ? Outcome::FINE : Outcome::NOT_FINE;
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

void addObjects(Runtime& runtime, const scenario::Scenario& scenario) {
  for (const scenario::ObjectDef& object : scenario.objects) {
    runtime.addObject(object.name, object.type, object.start, UnitHelper::settings(object.lengthUnit, object.timeUnit));
  }
}

PlayResult play(const PlayOptions& options) {
  return playInSession(options, [&options](Session& session, const scenario::Scenario& scenario, PlayResult& result) {
    playIn(session, scenario, options, result);
  });
}

PlayResult playInSession(const PlayOptions& options, const SessionWork& work) {
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
  work(session, *read.scenario, result);
  if (!session.close(result.failure)) {
    result.outcome = Outcome::NO_BUNDLE;
    result.lost = session.isLost();
  }
  return result;
}

}  // namespace motion::host::run
