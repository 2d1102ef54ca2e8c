#include "host/motion/builtin/cmd_kin_move.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <span>
#include <utility>

#include "host/motion/builtin/diagnosis.h"
#include "host/motion/motion_object.h"
#include "host/motion/section_mgr.h"
#include "host/motion/unit_helper.h"
#include "host/support/guarded.h"
#include "motion/core/job/i_job_data_handler.h"

namespace motion::host::builtin {

using core::UnitEntry;
using core::cmd::CmdResult;

namespace {

constexpr std::size_t COORDINATES = std::tuple_size_v<Point>;

bool areFinite(const std::vector<double>& numbers) {
  return std::ranges::all_of(numbers, [](double number) { return std::isfinite(number); });
}

Point pointOf(std::span<const double> numbers) {
  Point point{};
  std::ranges::copy(numbers.first<COORDINATES>(), point.begin());
  return point;
}

std::string problemOfPoint(const char* name, const std::vector<double>& numbers) {
  if (numbers.size() != COORDINATES) {
    return fmt::format("'{}' must have {} numbers, but has {}", name, COORDINATES, numbers.size());
  }
  return areFinite(numbers) ? "" : fmt::format("'{}' must hold finite numbers", name);
}

}  // namespace

CmdKinMove::CmdKinMove(PathKind kind, core::IObjFactory& factory)
    : CmdGeneric(staticName(kind), true, factory), m_kind(kind) {}

CmdResult CmdKinMove::onSetCmdValues(const core::IContainer* cmdValues, const core::dia::CmdSourceInfo& /*source*/,
                                     core::IObj* obj, bool /*flag*/) {
  const auto* container = KinMovePars::safeCast(cmdValues);
  if (container == nullptr) {
    return CmdResult::WrongContainer;
  }
  m_object = dynamic_cast<const MotionObject*>(obj);
  if (m_object == nullptr) {
    return CmdResult::NullPointer;
  }
  return guarded(CmdResult::OutOfMemory, [&] {
    KinMoveParsT values = container->get();
    const auto convert = [&units = m_object->getUnitSettings()](UnitEntry entry, double& value) {
      value = UnitHelper().toInternal(units, entry, value);
    };
    for (std::vector<double>* coordinates : {&values.to, &values.via}) {
      std::ranges::for_each(*coordinates, [&](double& coordinate) { convert(UnitEntry::LENGTH, coordinate); });
    }
    convert(UnitEntry::LENGTH, values.blending);
    convert(UnitEntry::VELOCITY, values.velocity);
    convert(UnitEntry::ACCELERATION, values.acceleration);
    m_values = std::move(values);
    return CmdResult::Okay;
  });
}

std::uint32_t CmdKinMove::onGetCmdType() const {
  return m_kind == PathKind::LINEAR ? 4 : 5;
}

CmdResult CmdKinMove::onRegisterJobListsInputs(core::job::IJobDataHandler& handler) {
  const auto result = handler.registerPublish(KinPathPars::getMyID(), SectionMgr::CMD_DATA, "CmdKinMove", &m_pars);
  return core::isFailure(result) ? CmdResult::JobRegistrationFailed : CmdResult::Okay;
}

CmdResult CmdKinMove::onValidate(const core::dia::CmdSourceInfo& source, core::dia::IDia* dia) {
  return guarded(CmdResult::OutOfMemory, [&] {
    std::string problem = problemOfNumbers();
    if (problem.empty()) {
      problem = plan();
    }
    if (!problem.empty()) {
      return refuse(dia, source, problem.c_str());
    }
    m_pars.set({m_path.get(), m_values.velocity, m_values.acceleration});
    return CmdResult::Okay;
  });
}

std::string CmdKinMove::problemOfNumbers() const {
  if (std::string problem = problemOfPoint("to", m_values.to); !problem.empty()) {
    return problem;
  }
  if (m_kind == PathKind::CIRCULAR) {
    if (std::string problem = problemOfPoint("via", m_values.via); !problem.empty()) {
      return problem;
    }
  } else if (m_values.via.size() % COORDINATES != 0) {
    return fmt::format("'via' must have {} numbers for each point, but has {}", COORDINATES, m_values.via.size());
  } else if (!areFinite(m_values.via)) {
    return "'via' must hold finite numbers";
  }
  if (!std::isfinite(m_values.blending) || m_values.blending < 0.0) {
    return "'blending' must be 0 or above";
  }
  if (!std::isfinite(m_values.velocity) || m_values.velocity <= 0.0) {
    return "'velocity' must be above 0";
  }
  if (!std::isfinite(m_values.acceleration) || m_values.acceleration <= 0.0) {
    return "'acceleration' must be above 0";
  }
  return "";
}

std::string CmdKinMove::plan() {
  const core::Unit& unit = m_object->getUnitSettings().entries[static_cast<std::size_t>(UnitEntry::LENGTH)];
  const Point& start = m_object->plannedStart();
  const Point end = pointOf(m_values.to);
  std::string problem;
  if (m_kind == PathKind::CIRCULAR) {
    m_path = KinPath::alongArc(start, pointOf(m_values.via), end, unit, problem);
    return problem;
  }
  std::vector<Point> via;
  for (std::size_t i = 0; i < m_values.via.size(); i += COORDINATES) {
    via.push_back(pointOf(std::span(m_values.via).subspan(i)));
  }
  m_path = KinPath::alongLines(start, via, end, m_values.blending, unit, problem);
  return problem;
}

}  // namespace motion::host::builtin
