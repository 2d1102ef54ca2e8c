// The factories of commands and command options: what components registered, with the schemas of the parameters.
#pragma once

#include <fmt/format.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "host/support/guarded.h"
#include "motion/core/cmd/i_generic_cmd_factory.h"
#include "motion/core/cmd/i_generic_cmd_option_factory.h"

namespace motion::host {

/// One registered command.
struct CmdEntry {
  core::cmd::CmdId id;
  std::function<core::cmd::CmdResult(core::IObjFactory&, bool, std::unique_ptr<core::cmd::ICmdGeneric>&, std::string&)>
      create;
  core::cmd::CmdMarshalFn marshal;
  bool visible = true;
  std::vector<std::string> groups;
  std::vector<std::uint8_t> schema;  ///< binary FlatBuffers schema of the parameters
  std::string description;
  bool builtIn = false;  ///< one of the host's own
};

/// One registered option.
struct CmdOptionEntry {
  core::cmd::CmdId id;
  core::cmd::CmdOptionCreateFn create;
  core::cmd::CmdOptionMarshalFn marshal;
  std::vector<std::string> groups;
  std::vector<std::uint8_t> schema;
  std::string description;
  std::vector<std::uint32_t> slots;
};

/// Reads and verifies a binary schema; throws std::runtime_error with a text for people that names the file and the remedy.
[[nodiscard]] std::vector<std::uint8_t> readBinarySchema(const std::string& path);

/// A CmdId to look up, whose name is borrowed for the duration of the call.
struct CmdKey {
  CmdKey(core::ObjectType type, std::string_view cmdName) noexcept : objectType(type), name(cmdName) {}
  CmdKey(const core::cmd::CmdId& id) noexcept : objectType(id.objectType), name(id.name) {}  // an identity is its own key

  core::ObjectType objectType;
  std::string_view name;
};

/// Entries by identity. Thread-safe; an entry lives on while somebody holds it. Looking up and removing need no memory.
template <typename ENTRY>
class Registry {
 public:
  using Shared = std::shared_ptr<const ENTRY>;

  /// False when the identity is taken. Throws std::bad_alloc. Neither changes anything.
  bool add(ENTRY entry) {
    auto shared = std::make_shared<const ENTRY>(std::move(entry));
    const std::scoped_lock lock(m_mutex);
    return m_entries.try_emplace(shared->id, shared).second;
  }
  bool remove(const CmdKey& key) noexcept {
    const std::scoped_lock lock(m_mutex);
    const auto found = m_entries.find(key);
    if (found == m_entries.end()) {
      return false;
    }
    m_entries.erase(found);
    return true;
  }
  [[nodiscard]] Shared find(const CmdKey& key) const noexcept {
    const std::scoped_lock lock(m_mutex);
    const auto found = m_entries.find(key);
    return found != m_entries.end() ? found->second : nullptr;
  }
  /// All entries, ordered by type of object and name.
  [[nodiscard]] std::vector<Shared> all() const {
    const std::scoped_lock lock(m_mutex);
    std::vector<Shared> result;
    for (const auto& [id, entry] : m_entries) {
      result.push_back(entry);
    }
    return result;
  }

 private:
  struct Less {
    using is_transparent = void;
    template <typename LEFT, typename RIGHT>
    [[nodiscard]] bool operator()(const LEFT& left, const RIGHT& right) const noexcept {
      return std::tie(left.objectType, left.name) < std::tie(right.objectType, right.name);
    }
  };

  mutable std::mutex m_mutex;
  std::map<core::cmd::CmdId, Shared, Less> m_entries;
};

/// Why registrations were refused, in words for people.
class Complaints {
 public:
  /// Without memory the complaint is lost; what it is about was refused all the same.
  template <typename... ARGS>
  void add(fmt::format_string<ARGS...> format, ARGS&&... args) noexcept {
    static_cast<void>(guarded(false, [&] {
      std::string text = fmt::format(format, std::forward<ARGS>(args)...);
      const std::scoped_lock lock(m_mutex);
      m_texts.push_back(std::move(text));
      return true;
    }));
  }
  [[nodiscard]] std::vector<std::string> all() const;

 private:
  mutable std::mutex m_mutex;
  std::vector<std::string> m_texts;
};

/// Registering answers OutOfMemory without memory, and NullPointer for functions that cannot be copied; nothing is kept
/// then.
class GenericCmdFactory : public core::cmd::IGenericCmdFactory {
 public:
  explicit GenericCmdFactory(Complaints& complaints) : m_complaints(complaints) {}

  core::cmd::CmdResult registerCmd(const core::cmd::CmdId& id,
                                   const core::cmd::CmdCreateFn<core::ObjectType::AXIS>& onCreate,
                                   const core::cmd::CmdMarshalFn& onMarshal, bool visible,
                                   const std::vector<std::string>& groups, const std::string& schemaPath,
                                   const std::string& description, const std::string& helpUrl) noexcept override;
  core::cmd::CmdResult registerCmd(const core::cmd::CmdId& id,
                                   const core::cmd::CmdCreateFn<core::ObjectType::KINEMATICS>& onCreate,
                                   const core::cmd::CmdMarshalFn& onMarshal, bool visible,
                                   const std::vector<std::string>& groups, const std::string& schemaPath,
                                   const std::string& description, const std::string& helpUrl) noexcept override;
  core::cmd::CmdResult unregisterCmd(const core::cmd::CmdId& id) noexcept override;

  /// The host's own commands, whose schemas are part of the program.
  bool addBuiltIn(CmdEntry entry);
  [[nodiscard]] Registry<CmdEntry>::Shared find(const CmdKey& key) const noexcept { return m_registry.find(key); }
  [[nodiscard]] std::vector<Registry<CmdEntry>::Shared> all() const { return m_registry.all(); }

 private:
  template <core::ObjectType TYPE>
  core::cmd::CmdResult add(const core::cmd::CmdId& id, const core::cmd::CmdCreateFn<TYPE>& onCreate,
                           const core::cmd::CmdMarshalFn& onMarshal, bool visible, const std::vector<std::string>& groups,
                           const std::string& schemaPath, const std::string& description) noexcept;

  Complaints& m_complaints;
  Registry<CmdEntry> m_registry;
};

/// As GenericCmdFactory.
class GenericCmdOptionFactory : public core::cmd::IGenericCmdOptionFactory {
 public:
  explicit GenericCmdOptionFactory(Complaints& complaints) : m_complaints(complaints) {}

  core::cmd::CmdResult registerCmdOption(const core::cmd::CmdId& id, const core::cmd::CmdOptionCreateFn& onCreate,
                                         const core::cmd::CmdOptionMarshalFn& onMarshal,
                                         const std::vector<std::string>& groups, const std::string& schemaPath,
                                         const std::string& description, const std::string& helpUrl) noexcept override;
  core::cmd::CmdResult registerCmdOptionWithSlots(const core::cmd::CmdId& id, const core::cmd::CmdOptionCreateFn& onCreate,
                                                  const core::cmd::CmdOptionMarshalFn& onMarshal,
                                                  const std::vector<std::string>& groups, const std::string& schemaPath,
                                                  const std::string& description, const std::string& helpUrl,
                                                  const std::vector<std::uint32_t>& slots) noexcept override;
  core::cmd::CmdResult unregisterCmdOption(const core::cmd::CmdId& id) noexcept override;

  [[nodiscard]] Registry<CmdOptionEntry>::Shared find(const CmdKey& key) const noexcept { return m_registry.find(key); }
  [[nodiscard]] std::vector<Registry<CmdOptionEntry>::Shared> all() const { return m_registry.all(); }

 private:
  Complaints& m_complaints;
  Registry<CmdOptionEntry> m_registry;
};

/// A creation function of one object type in the form that the host keeps.
template <core::ObjectType TYPE>
[[nodiscard]] auto wrapCreate(core::cmd::CmdCreateFn<TYPE> onCreate) {
  return [onCreate = std::move(onCreate)](core::IObjFactory& factory, bool buffered,
                                          std::unique_ptr<core::cmd::ICmdGeneric>& cmd, std::string& errText) {
    core::cmd::CmdGeneric<TYPE>* made = nullptr;
    const auto result = onCreate(factory, buffered, made, errText);
    if (!core::isFailure(result)) {
      cmd.reset(made);
    }
    return result;
  };
}

}  // namespace motion::host
