#include "host/motion/cmd_factory.h"

#include <flatbuffers/reflection.h>

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace motion::host {

using core::ObjectType;
using core::cmd::CmdId;
using core::cmd::CmdResult;

std::vector<std::uint8_t> readBinarySchema(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    throw std::runtime_error(
        fmt::format("schema file '{}' cannot be read; the bundle is incomplete, build or install it again", path));
  }
  std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
  flatbuffers::Verifier verifier(bytes.data(), bytes.size());
  if (!reflection::VerifySchemaBuffer(verifier) || reflection::GetSchema(bytes.data())->root_table() == nullptr) {
    throw std::runtime_error(
        fmt::format("schema file '{}' is not a binary FlatBuffers schema; build or install the bundle again", path));
  }
  return bytes;
}

std::vector<std::string> Complaints::all() const {
  const std::scoped_lock lock(m_mutex);
  return m_texts;
}

namespace {

/// Makes an entry, completes it with its schema and adds it; the same for commands and options.
template <typename ENTRY, typename MAKE>
CmdResult addWithSchema(Registry<ENTRY>& registry, Complaints& complaints, const CmdId& id, const std::string& schemaPath,
                        const MAKE& makeEntry) noexcept {
  return guarded(CmdResult::OutOfMemory, CmdResult::NullPointer, [&] {
    ENTRY entry = makeEntry();
    try {
      entry.schema = readBinarySchema(schemaPath);
    } catch (const std::runtime_error& error) {
      complaints.add("{}", error.what());
      return CmdResult::SchemaNotReadable;
    }
    if (!registry.add(std::move(entry))) {
      complaints.add("'{}' is registered already", id.name);
      return CmdResult::AlreadyRegistered;
    }
    return CmdResult::Okay;
  });
}

}  // namespace

template <ObjectType TYPE>
CmdResult GenericCmdFactory::add(const CmdId& id, const core::cmd::CmdCreateFn<TYPE>& onCreate,
                                 const core::cmd::CmdMarshalFn& onMarshal, bool visible,
                                 const std::vector<std::string>& groups, const std::string& schemaPath,
                                 const std::string& description) noexcept {
  return addWithSchema(m_registry, m_complaints, id, schemaPath, [&] {
    return CmdEntry{id, wrapCreate<TYPE>(onCreate), onMarshal, visible, groups, {}, description, false};
  });
}

CmdResult GenericCmdFactory::registerCmd(const CmdId& id, const core::cmd::CmdCreateFn<ObjectType::AXIS>& onCreate,
                                         const core::cmd::CmdMarshalFn& onMarshal, bool visible,
                                         const std::vector<std::string>& groups, const std::string& schemaPath,
                                         const std::string& description, const std::string& /*helpUrl*/) noexcept {
  return add(id, onCreate, onMarshal, visible, groups, schemaPath, description);
}

CmdResult GenericCmdFactory::registerCmd(const CmdId& id, const core::cmd::CmdCreateFn<ObjectType::KINEMATICS>& onCreate,
                                         const core::cmd::CmdMarshalFn& onMarshal, bool visible,
                                         const std::vector<std::string>& groups, const std::string& schemaPath,
                                         const std::string& description, const std::string& /*helpUrl*/) noexcept {
  return add(id, onCreate, onMarshal, visible, groups, schemaPath, description);
}

CmdResult GenericCmdFactory::unregisterCmd(const CmdId& id) noexcept {
  return m_registry.remove(id) ? CmdResult::Okay : CmdResult::NotRegistered;
}

bool GenericCmdFactory::addBuiltIn(CmdEntry entry) {
  entry.builtIn = true;
  return m_registry.add(std::move(entry));
}

CmdResult GenericCmdOptionFactory::registerCmdOption(const CmdId& id, const core::cmd::CmdOptionCreateFn& onCreate,
                                                     const core::cmd::CmdOptionMarshalFn& onMarshal,
                                                     const std::vector<std::string>& groups, const std::string& schemaPath,
                                                     const std::string& description, const std::string& helpUrl) noexcept {
  return registerCmdOptionWithSlots(id, onCreate, onMarshal, groups, schemaPath, description, helpUrl, {});
}

CmdResult GenericCmdOptionFactory::registerCmdOptionWithSlots(const CmdId& id, const core::cmd::CmdOptionCreateFn& onCreate,
                                                              const core::cmd::CmdOptionMarshalFn& onMarshal,
                                                              const std::vector<std::string>& groups,
                                                              const std::string& schemaPath, const std::string& description,
                                                              const std::string& /*helpUrl*/,
                                                              const std::vector<std::uint32_t>& slots) noexcept {
  return addWithSchema(m_registry, m_complaints, id, schemaPath,
                       [&] { return CmdOptionEntry{id, onCreate, onMarshal, groups, {}, description, slots}; });
}

CmdResult GenericCmdOptionFactory::unregisterCmdOption(const CmdId& id) noexcept {
  return m_registry.remove(id) ? CmdResult::Okay : CmdResult::NotRegistered;
}

}  // namespace motion::host
