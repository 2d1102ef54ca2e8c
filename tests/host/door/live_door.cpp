#include "live_door.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <stdexcept>
#include <vector>

#include "host/observe/signal_nodes.h"
#include "host/run/player.h"
#include "host/run/program.h"
#include "host/scenario/scenario_reader.h"

namespace motion::host::door {

LiveDoor::LiveDoor(DoorConfig config, const char* text) : m_door(std::move(config)) {
  std::string problem;
  if (!m_door.open(socket(), problem)) {
    throw std::runtime_error(problem);
  }
  auto read = scenario::readScenarioText(text, "test.yaml");
  if (!read.scenario) {
    throw std::runtime_error(read.problems.at(0).text());
  }
  m_session = std::make_unique<run::Session>(run::SessionConfig{
      KAVO_BUNDLE, {read.scenario->cycleTime, read.scenario->bufferSize}, std::chrono::seconds(30), false});
  if (!m_session->open(problem)) {
    throw std::runtime_error(problem);
  }
  m_player = std::thread([this, scenario = *read.scenario] { play(scenario); });
  m_started.get_future().wait();
}

LiveDoor::~LiveDoor() {
  finish();
}

void LiveDoor::play(const scenario::Scenario& scenario) {
  for (const auto& object : scenario.objects) {
    m_session->runtime().addObject(object.name, object.type, object.start);
  }
  auto program = run::prepareProgram(scenario, m_session->runtime(), [this] { return m_session->takeMessages(); });
  run::Player player(*m_session, scenario, std::move(program.programs));
  std::string problem;
  EXPECT_TRUE(player.connect(problem)) << problem;
  player.setStuckAfter(std::uint64_t{1} << 62U);
  run::Watch watch;
  m_door.follow(watch);
  watch.onStart = [this, begin = watch.onStart](run::Session& session, const scenario::Scenario& played) {
    std::string warning = begin(session, played);
    m_started.set_value();
    return warning;
  };
  player.playReal(watch);
  m_record = player.record();
}

const observe::RunRecord& LiveDoor::finish() {
  if (m_player.joinable()) {
    const std::unique_ptr<comm::datalayer::IClient> client(
        m_session->dataLayer().createClient(std::string(datalayer::DataLayer::CLIENT_ENDPOINT)));
    comm::datalayer::Variant hasGoneOn;
    EXPECT_EQ(client->readSync(observe::signalAddress(6), &hasGoneOn), comm::datalayer::DL_OK);
    for (const std::uint32_t signal : *hasGoneOn.getBool() ? std::vector{99U} : std::vector{5U, 99U}) {
      comm::datalayer::Variant set(true);
      EXPECT_EQ(client->writeSync(observe::signalAddress(signal), &set), comm::datalayer::DL_OK);
    }
    m_player.join();
    std::string problem;
    EXPECT_TRUE(m_session->close(problem)) << problem;
  }
  return m_record;
}

std::uint64_t LiveDoor::cycle() {
  return m_session->runtime().cycle().begun();
}

}  // namespace motion::host::door
