// Turns YAML text into a tree of values. The events of the parser are followed rather than its nodes, because those forget
// the places of keys, keep no trace of keys that stand twice and let aliases multiply without bound.
#include "host/scenario/yaml_tree.h"

#include <fmt/format.h>
#include <yaml-cpp/eventhandler.h>
#include <yaml-cpp/exceptions.h>
#include <yaml-cpp/parser.h>

#include <algorithm>
#include <cstdint>
#include <exception>
#include <sstream>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "host/scenario/words.h"

namespace motion::host::scenario {
namespace {

// Ends the parse after a problem that makes the rest meaningless; the problem has been reported.
class Abandoned : public std::exception {};

// Translates places: the library counts bytes from 0, users count characters from 1.
class PlaceFinder {
 public:
  explicit PlaceFinder(std::string_view text) : m_text(text), m_lines{0} {
    m_characters.reserve(text.size() + 1);
    std::uint32_t characters = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
      m_characters.push_back(characters);
      const bool continues = (static_cast<unsigned char>(text[i]) & 0xC0U) == 0x80U;
      characters += continues ? 0 : 1;
      if (text[i] == '\n') {
        m_lines.push_back(i + 1);
      }
    }
    m_characters.push_back(characters);
  }

  [[nodiscard]] Mark find(const YAML::Mark& mark) const {
    if (mark.is_null() || mark.line < 0 || mark.column < 0) {
      return {};
    }
    const auto line = static_cast<std::size_t>(mark.line);
    const auto bytes = static_cast<std::size_t>(mark.column);
    if (line >= m_lines.size() || m_lines[line] + bytes >= m_characters.size()) {
      return {line + 1, bytes + 1};
    }
    return placeOf(line, m_lines[line] + bytes);
  }

  // The place of a null. One that is not spelled out has the place of whatever comes next, perhaps lines below; the end of
  // what comes before it, such as the '-' of its entry, says more.
  [[nodiscard]] Mark findNull(const YAML::Mark& mark) const {
    const Mark next = find(mark);
    if (next.line == 0 || next.line > m_lines.size()) {
      return next;
    }
    const std::size_t byte = std::min(m_lines[next.line - 1] + static_cast<std::size_t>(mark.column), m_text.size());
    const bool isSpelledOut = byte < m_text.size() && (m_text[byte] == '~' || m_text[byte] == 'n' || m_text[byte] == 'N');
    const std::size_t before = byte > 0 ? m_text.find_last_not_of(" \t\r\n", byte - 1) : std::string_view::npos;
    if (isSpelledOut || before == std::string_view::npos) {
      return next;
    }
    const auto line = std::upper_bound(m_lines.begin(), m_lines.end(), before) - m_lines.begin() - 1;
    return placeOf(static_cast<std::size_t>(line), before);
  }

 private:
  [[nodiscard]] Mark placeOf(std::size_t line, std::size_t byte) const {
    return {line + 1, m_characters[byte] - m_characters[m_lines[line]] + std::size_t{1}};
  }

  std::string_view m_text;
  std::vector<std::size_t> m_lines;         // where each line begins
  std::vector<std::uint32_t> m_characters;  // how many characters begin before each byte
};

class TreeBuilder : public YAML::EventHandler {
 public:
  TreeBuilder(const PlaceFinder& places, ProblemCollector& problems) : m_places(places), m_problems(problems) {}

  [[nodiscard]] std::optional<Value> takeRoot() { return std::exchange(m_root, std::nullopt); }

  void OnDocumentStart(const YAML::Mark& mark) override {
    if (m_documents++ > 0) {
      m_problems.error(m_places.find(mark), "a second document begins here",
                       "a file holds one scenario; remove '---' and the rest");
      throw Abandoned();
    }
  }
  void OnDocumentEnd() override {}

  void OnNull(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    Value value = start(mark, Value::Kind::EMPTY);
    value.mark = m_places.findNull(mark);
    finish(std::move(value), anchor, 1, 0);
  }

  void OnScalar(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor, const std::string& text) override {
    Value value = start(mark, Value::Kind::SCALAR);
    checkTag(value.mark, tag);
    value.text = text;
    value.quoted = tag == "!";
    finish(std::move(value), anchor, 1, 0);
  }

  void OnSequenceStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                       YAML::EmitterStyle::value /*style*/) override {
    open(mark, tag, anchor, Value::Kind::LIST);
  }
  void OnSequenceEnd() override { close(); }
  void OnMapStart(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor,
                  YAML::EmitterStyle::value /*style*/) override {
    open(mark, tag, anchor, Value::Kind::MAP);
  }
  void OnMapEnd() override { close(); }

  void OnAlias(const YAML::Mark& mark, YAML::anchor_t anchor) override {
    const Mark place = m_places.find(mark);
    const auto found = m_anchors.find(anchor);
    if (found == m_anchors.end()) {
      m_problems.error(place, "an alias stands inside the value that it names");
      throw Abandoned();
    }
    const Anchored& named = found->second;
    checkDepth(place, named.depth);
    count(place, named.values);
    Value copy = named.value;
    copy.mark = place;
    finish(std::move(copy), 0, named.values, named.depth);
  }

 private:
  // A list or map whose end has not been seen yet.
  struct Frame {
    Value value;
    YAML::anchor_t anchor = 0;
    std::size_t values = 1;  // it and all below it
    std::size_t depth = 1;   // levels of lists and maps, itself included
    bool hasKey = false;     // the key of the next field was read
    bool dropField = false;  // the next field has no usable key
    std::string key;
    Mark keyMark;
    std::unordered_map<std::string, Mark> keys;
  };
  struct Anchored {
    Value value;
    std::size_t values = 0;
    std::size_t depth = 0;
  };

  [[nodiscard]] Value start(const YAML::Mark& mark, Value::Kind kind) {
    Value value;
    value.kind = kind;
    value.mark = m_places.find(mark);
    count(value.mark, 1);
    return value;
  }

  void open(const YAML::Mark& mark, const std::string& tag, YAML::anchor_t anchor, Value::Kind kind) {
    Frame frame;
    frame.value = start(mark, kind);
    frame.anchor = anchor;
    checkTag(frame.value.mark, tag);
    checkDepth(frame.value.mark, 1);
    m_open.push_back(std::move(frame));
  }

  void close() {
    Frame frame = std::move(m_open.back());
    m_open.pop_back();
    finish(std::move(frame.value), frame.anchor, frame.values, frame.depth);
  }

  // A value is complete: remembers it if it has an anchor, and hands it to the list, map or document that it stands in.
  void finish(Value value, YAML::anchor_t anchor, std::size_t values, std::size_t depth) {
    if (anchor != 0) {
      count(value.mark, values);
      m_anchors[anchor] = {value, values, depth};
    }
    if (m_open.empty()) {
      m_root = std::move(value);
      return;
    }
    Frame& parent = m_open.back();
    parent.values += values;
    parent.depth = std::max(parent.depth, depth + 1);
    if (parent.value.kind == Value::Kind::LIST) {
      parent.value.items.push_back(std::move(value));
    } else if (!parent.hasKey) {
      takeKey(parent, value);
    } else {
      takeField(parent, std::move(value));
    }
  }

  void takeKey(Frame& map, const Value& key) {
    map.hasKey = true;
    map.dropField = true;
    map.key = key.text;
    map.keyMark = key.mark;
    if (key.kind != Value::Kind::SCALAR || key.text.empty()) {
      m_problems.error(key.mark, "a key must be a word");
      return;
    }
    const auto [first, isNew] = map.keys.try_emplace(key.text, key.mark);
    if (!isNew) {
      m_problems.error(
          key.mark, fmt::format("{} stands twice in one map", inQuotes(key.text)),
          fmt::format("keep one; the first is in line {}, column {}", first->second.line, first->second.column));
      return;
    }
    map.dropField = false;
  }

  void takeField(Frame& map, Value value) {
    map.hasKey = false;
    if (map.dropField) {
      return;
    }
    value.key = map.keyMark;
    if (value.kind == Value::Kind::EMPTY) {
      value.mark = map.keyMark;  // nothing has no place of its own
    }
    map.value.fields.push_back({std::move(map.key), std::move(value)});
  }

  void checkTag(const Mark& mark, const std::string& tag) {
    const bool plain = tag.empty() || tag == "?" || tag == "!";
    if (!plain) {
      m_problems.error(mark, fmt::format("the tag {} has no meaning here", inQuotes(tag)), "write the value without it");
    }
  }

  void checkDepth(const Mark& mark, std::size_t more) {
    if (m_open.size() + more > MAX_YAML_DEPTH) {
      m_problems.error(mark, fmt::format("lists and maps are nested more than {} levels deep", MAX_YAML_DEPTH));
      throw Abandoned();
    }
  }

  void count(const Mark& mark, std::size_t values) {
    m_values += values;
    if (m_values > MAX_YAML_VALUES) {
      m_problems.error(mark, fmt::format("aliases make more than {} values of this file", MAX_YAML_VALUES),
                       "write the values out or use fewer aliases");
      throw Abandoned();
    }
  }

  const PlaceFinder& m_places;
  ProblemCollector& m_problems;
  std::size_t m_documents = 0;
  std::size_t m_values = 0;
  std::vector<Frame> m_open;
  std::unordered_map<YAML::anchor_t, Anchored> m_anchors;
  std::optional<Value> m_root;
};

}  // namespace

std::optional<Value> parseYaml(const std::string& text, ProblemCollector& problems) {
  const PlaceFinder places(text);
  TreeBuilder builder(places, problems);
  try {
    std::istringstream stream(text);
    YAML::Parser parser(stream);
    while (parser.HandleNextDocument(builder)) {
    }
  } catch (const YAML::Exception& problem) {
    problems.error(places.find(problem.mark), "this is not YAML: " + problem.msg);
    return std::nullopt;
  } catch (const Abandoned&) {
    return std::nullopt;
  }
  return builder.takeRoot();
}

}  // namespace motion::host::scenario
