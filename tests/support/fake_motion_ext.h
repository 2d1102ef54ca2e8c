// The extension interface of a pretended motion runtime, with its sections and motion objects.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "motion/core/i_motion_ext.h"
#include "motion/core/i_obj.h"
#include "support/fake_calls.h"
#include "support/fake_dia.h"

namespace motion::test {

/// The seven sections. Operation: "sectionMgr.getSection".
class FakeSectionMgr : public core::ISectionMgr {
 public:
  explicit FakeSectionMgr(FakeCalls& calls);

  void* getSection(const char* name) override;

  /// The value of a section, all of them different.
  [[nodiscard]] core::SectionValue valueOf(const std::string& name) const { return *m_sections.at(name); }
  [[nodiscard]] void* addressOf(const std::string& name) const { return m_sections.at(name).get(); }
  /// From now on the section does not exist.
  void remove(const std::string& name) { m_sections.erase(name); }

 private:
  FakeCalls& m_calls;
  std::map<std::string, std::unique_ptr<core::SectionValue>> m_sections;
};

/// A motion object that is what its fields say.
class FakeObj : public core::IObj {
 public:
  explicit FakeObj(FakeCalls& calls) : m_dia(calls) {}

  bool isAxis() const override { return m_isAxis; }
  bool isEncoder() const override { return m_isEncoder; }
  bool isKinematics() const override { return m_isKinematics; }
  std::uint64_t getLatestPreparedCmdID() const override { return answer(m_latestPreparedCmdID); }
  std::uint64_t getCurrentCmdID() const override { return answer(m_currentCmdID); }
  std::uint64_t getCycleCount() const override { return answer(m_cycleCount); }
  core::cmd::CmdState getCmdState(std::uint64_t cmdID) const override;
  double getCycleTime() const override { return m_cycleTime; }
  const core::UnitSettings& getUnitSettings() const override { return m_unitSettings; }
  core::dia::IDia& getDia() override { return m_dia; }

  bool m_isAxis = false;
  bool m_isEncoder = false;
  bool m_isKinematics = false;
  std::uint64_t m_latestPreparedCmdID = 0;
  std::uint64_t m_currentCmdID = 0;
  std::uint64_t m_cycleCount = 0;
  std::map<std::uint64_t, core::cmd::CmdState> m_cmdStates;
  double m_cycleTime = 0.001;  ///< [s]
  core::UnitSettings m_unitSettings;
  FakeDia m_dia;
  bool m_throws = false;  ///< what it is asked about its commands and cycles

 private:
  template <typename VALUE>
  [[nodiscard]] VALUE answer(VALUE value) const {
    return m_throws ? throw std::runtime_error("no answer now") : value;
  }
};

/// Objects by name. Operation: "objMgr.findObj".
class FakeObjMgr : public core::IObjMgr {
 public:
  explicit FakeObjMgr(FakeCalls& calls) : m_calls(calls) {}

  core::IObj* findObj(const char* name, std::uint32_t flags) override;
  const char* getObjName(const core::IObj* obj) const override;
  std::uint32_t getObjCount() const override { return static_cast<std::uint32_t>(m_objects.size()); }

  FakeObj& addAxis(const std::string& name);
  FakeObj& addKinematics(const std::string& name);
  /// An object that is neither.
  FakeObj& addEncoder(const std::string& name);

 private:
  FakeObj& add(const std::string& name);

  FakeCalls& m_calls;
  std::map<std::string, std::unique_ptr<FakeObj>> m_objects;
};

/// What the extension interface leads to; null for what the runtime does not have.
struct FakeMotionParts {
  core::IObjMgr* objMgr = nullptr;
  core::ISectionMgr* sectionMgr = nullptr;
  core::job::IJobDataIDMgr* jobDataIDMgr = nullptr;
  core::IObjFactory* objFactory = nullptr;
  core::cmd::IGenericCmdFactory* genericCmdFactory = nullptr;
  core::cmd::IGenericCmdOptionFactory* genericCmdOptionFactory = nullptr;
};

/// Operations: "ext.getObjMgr", "ext.getSectionMgr", "ext.getJobDataIDMgr", "ext.getObjFactory", "ext.getGenericCmdFactory",
/// "ext.getGenericCmdOptionFactory", and "ext.destroyed".
class FakeMotionExt : public core::IMotionExt {
 public:
  FakeMotionExt(FakeCalls& calls, const FakeMotionParts& parts) : m_calls(calls), m_parts(parts) {}
  ~FakeMotionExt() override;

  core::IObjMgr* getObjMgr() const override;
  core::ISectionMgr* getSectionMgr() const override;
  core::job::IJobDataIDMgr* getJobDataIDMgr() const override;
  core::IObjFactory* getObjFactory() const override;
  core::cmd::IGenericCmdFactory* getGenericCmdFactory() const override;
  core::cmd::IGenericCmdOptionFactory* getGenericCmdOptionFactory() const override;

 private:
  template <typename PART>
  PART* answer(std::string_view operation, PART* part) const;

  FakeCalls& m_calls;
  const FakeMotionParts& m_parts;
};

}  // namespace motion::test
