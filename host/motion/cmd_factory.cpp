#include "host/motion/cmd_factory.h"

#include <fmt/format.h>

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

void Complaints::add(std::string text) {
  const std::scoped_lock lock(m_mutex);
  m_texts.push_back(std::move(text));
}

std::vector<std::string> Complaints::all() const {
  const std::scoped_lock lock(m_mutex);
  return m_texts;
}

namespace {

/// Completes an entry with its schema and adds it; the same for commands and options.
template <typename ENTRY>
CmdResult addWithSchema(Registry<ENTRY>& registry, Complaints& complaints, ENTRY entry, const std::string& schemaPath) {
  try {
    entry.schema = readBinarySchema(schemaPath);
    const std::string name = entry.id.name;
    if (!registry.add(std::move(entry))) {
      complaints.add(fmt::format("'{}' is registered already", name));
      return CmdResult::AlreadyRegistered;
    }
    return CmdResult::Okay;
  } catch (const std::bad_alloc&) {
    return CmdResult::OutOfMemory;
  } catch (const std::exception& error) {
    complaints.add(error.what());
    return CmdResult::SchemaNotReadable;
  }
}

}  // namespace

CmdResult GenericCmdFactory::add(CmdEntry entry, const std::string& schemaPath) {
  return addWithSchema(m_registry, m_complaints, std::move(entry), schemaPath);
}

CmdResult GenericCmdFactory::registerCmd(const CmdId& id, const core::cmd::CmdCreateFn<ObjectType::AXIS>& onCreate,
                                         const core::cmd::CmdMarshalFn& onMarshal, bool visible,
                                         const std::vector<std::string>& groups, const std::string& schemaPath,
                                         const std::string& description, const std::string& /*helpUrl*/) {
  return add({id, wrapCreate<ObjectType::AXIS>(onCreate), onMarshal, visible, groups, {}, description, false}, schemaPath);
}

CmdResult GenericCmdFactory::registerCmd(const CmdId& id, const core::cmd::CmdCreateFn<ObjectType::KINEMATICS>& onCreate,
                                         const core::cmd::CmdMarshalFn& onMarshal, bool visible,
                                         const std::vector<std::string>& groups, const std::string& schemaPath,
                                         const std::string& description, const std::string& /*helpUrl*/) {
  return add({id, wrapCreate<ObjectType::KINEMATICS>(onCreate), onMarshal, visible, groups, {}, description, false}, schemaPath);
}

CmdResult GenericCmdFactory::unregisterCmd(const CmdId& id) {
  return m_registry.remove(id) ? CmdResult::Okay : CmdResult::NotRegistered;
}

bool GenericCmdFactory::addBuiltIn(CmdEntry entry) {
  entry.builtIn = true;
  return m_registry.add(std::move(entry));
}

CmdResult GenericCmdOptionFactory::registerCmdOption(const CmdId& id, const core::cmd::CmdOptionCreateFn& onCreate,
                                                     const core::cmd::CmdOptionMarshalFn& onMarshal,
                                                     const std::vector<std::string>& groups, const std::string& schemaPath,
                                                     const std::string& description, const std::string& helpUrl) {
  return registerCmdOptionWithSlots(id, onCreate, onMarshal, groups, schemaPath, description, helpUrl, {});
}

CmdResult GenericCmdOptionFactory::registerCmdOptionWithSlots(
    const CmdId& id, const core::cmd::CmdOptionCreateFn& onCreate, const core::cmd::CmdOptionMarshalFn& onMarshal,
    const std::vector<std::string>& groups, const std::string& schemaPath, const std::string& description,
    const std::string& /*helpUrl*/, const std::vector<std::uint32_t>& slots) {
  return addWithSchema(m_registry, m_complaints, CmdOptionEntry{id, onCreate, onMarshal, groups, {}, description, slots},
                       schemaPath);
}

CmdResult GenericCmdOptionFactory::unregisterCmdOption(const CmdId& id) {
  return m_registry.remove(id) ? CmdResult::Okay : CmdResult::NotRegistered;
}

}  // namespace motion::host
