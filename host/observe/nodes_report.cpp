#include "host/observe/nodes_report.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <array>
#include <iterator>
#include <nlohmann/json.hpp>
#include <tuple>
#include <utility>

namespace motion::host::observe {

using comm::datalayer::Variant;
using comm::datalayer::VariantType;
using datalayer::NodeDescription;
using datalayer::NodeView;
using datalayer::Right;
using Json = nlohmann::ordered_json;

namespace {

/// Column in which a node's value begins, unless its name is longer.
constexpr std::size_t VALUE_COLUMN = 36;

struct Operation {
  const char* name;
  bool NodeDescription::*isOffered;
  Right right;
};
constexpr std::array OPERATIONS{Operation{"read", &NodeDescription::canRead, Right::READ},
                                Operation{"write", &NodeDescription::canWrite, Right::WRITE},
                                Operation{"create", &NodeDescription::canCreate, Right::CREATE_AND_REMOVE},
                                Operation{"remove", &NodeDescription::canRemove, Right::CREATE_AND_REMOVE},
                                Operation{"browse", &NodeDescription::canBrowse, Right::READ}};

Json jsonOf(const Variant& value) {
  switch (value.getType()) {
    case VariantType::BOOL8:
      return *value.getBool();
    case VariantType::STRING:
      return *value.getString();
    case VariantType::ARRAY_OF_STRING:
      return *value.getStrings();
    case VariantType::FLATBUFFERS:
      return fmt::format("table of {} bytes", value.getFlatBuffer().size());
    default:
      break;
  }
  if (const auto* number = value.getSigned(); number != nullptr) {
    return *number;
  }
  if (const auto* number = value.getUnsigned(); number != nullptr) {
    return *number;
  }
  if (const auto* number = value.getDouble(); number != nullptr) {
    return *number;
  }
  return nullptr;
}

std::string dump(const Json& json, int indent) {
  return json.dump(indent, ' ', false, Json::error_handler_t::replace);
}

std::string valueText(const Variant& value) {
  const auto* strings = value.getStrings();
  return strings != nullptr ? fmt::format("{} texts", strings->size()) : dump(jsonOf(value), -1);
}

std::string classText(std::uint32_t nodeClass) {
  switch (nodeClass) {
    case 3:
      return "variable";
    case 7:
      return "folder";
    default:
      return fmt::format("class {}", nodeClass);
  }
}

/// "read write browse", and what is offered, but not to this client, in brackets.
std::string operationsText(const NodesSeen& seen, const NodeView& node) {
  std::vector<std::string> words;
  for (const Operation& operation : OPERATIONS) {
    if ((*node.metadata).*operation.isOffered) {
      words.push_back(seen.may(operation.right, node) ? operation.name : fmt::format("({})", operation.name));
    }
  }
  return fmt::format("{}", fmt::join(words, " "));
}

class TextWriter {
 public:
  explicit TextWriter(const NodesSeen& seen) : m_seen(seen) {}

  [[nodiscard]] std::string write() {
    fmt::format_to(std::back_inserter(m_text), "{}\n", head());
    for (const NodeView& root : m_seen.roots) {
      writeNode(root, root.address, 0);
    }
    return std::move(m_text);
  }

 private:
  [[nodiscard]] std::string head() const {
    if (m_seen.isUnrestricted) {
      return "what the host itself sees:";
    }
    if (m_seen.scopes.empty()) {
      return fmt::format("a client without scopes sees nothing; scopes that can be granted: {}",
                         fmt::join(m_seen.knownScopes, ", "));
    }
    return fmt::format("what a client sees that holds {}:", fmt::join(m_seen.scopes, ", "));
  }

  void writeNode(const NodeView& node, const std::string& name, std::size_t depth) {
    std::string line = std::string(2 * depth, ' ') + name;
    if (node.value || node.metadata) {
      line = fmt::format("{:<{}}  {:<8}{}", line, VALUE_COLUMN, node.value ? valueText(*node.value) : "", description(node));
    }
    add(line);
    if (const auto* texts = node.value ? node.value->getStrings() : nullptr; texts != nullptr) {
      for (const std::string& text : *texts) {
        add(fmt::format("{:{}}- {}", "", 2 * depth + 2, text));
      }
    }
    if (node.error) {
      add(fmt::format("{:{}}! {}", "", 2 * depth + 2, node.error->toString()));
    }
    for (const NodeView& child : node.children) {
      writeNode(child, child.address.substr(child.address.rfind('/') + 1), depth + 1);
    }
  }

  [[nodiscard]] std::string description(const NodeView& node) const {
    if (!node.metadata) {
      return "";
    }
    std::vector<std::string> parts;
    if (const auto name = m_seen.names.find(node.address); name != m_seen.names.end()) {
      parts.push_back(fmt::format("'{}'", name->second));
    }
    if (!node.metadata->description.empty()) {
      parts.push_back(node.metadata->description);
    }
    parts.push_back(classText(node.metadata->nodeClass));
    if (std::string operations = operationsText(m_seen, node); !operations.empty()) {
      parts.push_back(std::move(operations));
    }
    const auto& [read, write] = std::tie(node.metadata->readType, node.metadata->writeType);
    if (!read.empty()) {
      parts.push_back(read);
    }
    if (!write.empty() && write != read) {
      parts.push_back(fmt::format("to write {}", write));
    }
    return fmt::format("{}", fmt::join(parts, "; "));
  }

  void add(std::string line) {
    line.erase(line.find_last_not_of(' ') + 1);
    m_text += line + "\n";
  }

  const NodesSeen& m_seen;
  std::string m_text;
};

Json jsonOf(const NodesSeen& seen, const NodeView& node) {
  Json json{{"address", node.address}};
  if (const auto name = seen.names.find(node.address); name != seen.names.end()) {
    json["name"] = name->second;
  }
  if (node.metadata) {
    Json offered = Json::object();
    Json allowed = Json::object();
    for (const Operation& operation : OPERATIONS) {
      offered[operation.name] = (*node.metadata).*operation.isOffered;
      allowed[operation.name] = seen.may(operation.right, node) && (*node.metadata).*operation.isOffered;
    }
    const auto typeOf = [](const std::string& type) { return type.empty() ? Json(nullptr) : Json(type); };
    json["metadata"] = {{"nodeClass", node.metadata->nodeClass},
                        {"description", node.metadata->description},
                        {"descriptionUrl", node.metadata->descriptionUrl},
                        {"offered", std::move(offered)},
                        {"allowed", std::move(allowed)},
                        {"readType", typeOf(node.metadata->readType)},
                        {"writeType", typeOf(node.metadata->writeType)}};
  }
  if (node.value) {
    json["value"] = jsonOf(*node.value);
  }
  if (node.error) {
    json["error"] = {{"result", node.error->result.toString()}, {"text", node.error->text}};
    if (!node.error->text.empty()) {
      json["error"]["mainCode"] = fmt::format("0x{:08X}", node.error->mainCode);
      json["error"]["detailCode"] = fmt::format("0x{:08X}", node.error->detailCode);
    }
  }
  json["children"] = Json::array();
  for (const NodeView& child : node.children) {
    json["children"].push_back(jsonOf(seen, child));
  }
  return json;
}

}  // namespace

bool NodesSeen::may(Right right, const NodeView& node) const {
  return isUnrestricted || rights.allows(right, node.address);
}

std::string nodesText(const NodesSeen& seen) {
  return TextWriter(seen).write();
}

std::string nodesJson(const NodesSeen& seen) {
  Json json{{"file", seen.file},
            {"unrestricted", seen.isUnrestricted},
            {"scopes", seen.scopes},
            {"knownScopes", seen.knownScopes},
            {"nodes", Json::array()}};
  for (const NodeView& root : seen.roots) {
    json["nodes"].push_back(jsonOf(seen, root));
  }
  return dump(json, 2) + "\n";
}

}  // namespace motion::host::observe
