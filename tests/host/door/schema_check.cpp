#include "schema_check.h"

#include <algorithm>
#include <regex>

namespace motion::host::door {

using Json = nlohmann::json;

namespace {

bool hasType(const Json& value, const std::string& type) {
  return (type == "object" && value.is_object()) || (type == "array" && value.is_array()) ||
         (type == "string" && value.is_string()) || (type == "boolean" && value.is_boolean()) ||
         (type == "integer" && value.is_number_integer()) || (type == "number" && value.is_number());
}

/// One schema against one value.
class Check {
 public:
  Check(const Json& document, const Json& schema, const Json& value, const std::string& place)
      : m_document(document), m_schema(schema), m_value(value), m_place(place) {}

  std::vector<std::string> run() {
    for (const auto& [keyword, argument] : m_schema.items()) {
      check(keyword, argument);
    }
    return m_problems;
  }

 private:
  void expect(bool holds, const std::string& what) {
    if (!holds) {
      m_problems.push_back(m_place + ": " + what + ", but is " + m_value.dump());
    }
  }

  void descend(const Json& schema, const Json& value, const std::string& place) {
    const auto found = mismatches(m_document, schema, value, place);
    m_problems.insert(m_problems.end(), found.begin(), found.end());
  }

  void check(const std::string& keyword, const Json& argument) {
    if (keyword == "type") {
      expect(hasType(m_value, argument), "must be " + argument.dump());
    } else if (keyword == "required") {
      for (const std::string name : argument) {
        expect(m_value.contains(name), "must have '" + name + "'");
      }
    } else if (keyword == "properties") {
      for (const auto& [name, schema] : argument.items()) {
        if (m_value.contains(name)) {
          descend(schema, m_value.at(name), m_place + "." + name);
        }
      }
    } else if (keyword == "additionalProperties") {
      checkAdditional(argument);
    } else if (keyword == "items") {
      for (std::size_t i = 0; m_value.is_array() && i < m_value.size(); ++i) {
        descend(argument, m_value[i], m_place + "[" + std::to_string(i) + "]");
      }
    } else if (keyword == "enum") {
      expect(std::ranges::find(argument, m_value) != argument.end(), "must be one of " + argument.dump());
    } else if (keyword == "pattern") {
      expect(m_value.is_string() && std::regex_search(m_value.get<std::string>(), std::regex(argument.get<std::string>())),
             "must match " + argument.dump());
    } else {
      checkBounds(keyword, argument);
    }
  }

  void checkAdditional(const Json& argument) {
    if (argument == true || !m_value.is_object()) {
      return;
    }
    for (const auto& [name, value] : m_value.items()) {
      expect(m_schema.at("properties").contains(name), "must not have '" + name + "'");
    }
  }

  void checkBounds(const std::string& keyword, const Json& argument) {
    if (keyword == "minimum") {
      expect(m_value.is_number() && m_value >= argument, "must be at least " + argument.dump());
    } else if (keyword == "maximum") {
      expect(m_value.is_number() && m_value <= argument, "must be at most " + argument.dump());
    } else if (keyword == "minItems") {
      expect(m_value.size() >= argument, "must have at least so many items: " + argument.dump());
    } else if (keyword == "maxItems") {
      expect(m_value.size() <= argument, "must have at most so many items: " + argument.dump());
    } else {
      expect(keyword == "description" || keyword == "nullable", "schema has the unknown keyword '" + keyword + "'");
    }
  }

  const Json& m_document;
  const Json& m_schema;
  const Json& m_value;
  const std::string& m_place;
  std::vector<std::string> m_problems;
};

}  // namespace

std::vector<std::string> mismatches(const Json& document, const Json& schema, const Json& value, const std::string& place) {
  const Json& actual = resolve(document, schema);
  if (value.is_null() && actual.value("nullable", false)) {
    return {};
  }
  return Check(document, actual, value, place).run();
}

const Json& resolve(const Json& document, const Json& element) {
  return element.contains("$ref") ? document.at(Json::json_pointer(element.at("$ref").get<std::string>().substr(1)))
                                  : element;
}

}  // namespace motion::host::door
