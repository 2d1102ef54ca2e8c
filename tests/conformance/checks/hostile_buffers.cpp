// Buffers of parameters that were made to lead a careless reader astray.
#include <fmt/format.h>

#include <cstring>
#include <optional>

#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/marshal_cases.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::uint32_t TABLE = 32;  ///< where the table begins
constexpr std::uint32_t VTABLE = 8;  ///< where the vtable begins
constexpr std::uint32_t DATA = 96;   ///< where what the table refers to begins
constexpr std::size_t SIZE = 160;

/// A buffer written place by place: root offset, vtable, table, and what it refers to.
class RawBuffer {
 public:
  /// A table with those fields, each a word of four bytes; an empty one is absent.
  explicit RawBuffer(const std::vector<std::optional<std::uint32_t>>& fields) {
    put<std::uint32_t>(0, TABLE);
    put<std::uint16_t>(VTABLE, static_cast<std::uint16_t>(4 + 2 * fields.size()));
    put<std::uint16_t>(VTABLE + 2, static_cast<std::uint16_t>(4 + 4 * fields.size()));
    put<std::int32_t>(TABLE, TABLE - VTABLE);
    for (std::uint32_t i = 0; i < fields.size(); ++i) {
      if (fields[i]) {
        put<std::uint16_t>(VTABLE + 4 + 2 * i, static_cast<std::uint16_t>(4 + 4 * i));
        put<std::uint32_t>(placeOf(i), *fields[i]);
      }
    }
  }

  template <typename NUMBER>
  RawBuffer& put(std::size_t place, NUMBER value) {
    std::memcpy(m_bytes.data() + place, &value, sizeof value);
    return *this;
  }
  /// A text at DATA.
  RawBuffer& putText(const std::string& text) {
    put<std::uint32_t>(DATA, static_cast<std::uint32_t>(text.size()));
    std::memcpy(m_bytes.data() + DATA + 4, text.c_str(), text.size() + 1);
    return *this;
  }
  RawBuffer& cutAt(std::size_t size) {
    m_bytes.resize(size);
    return *this;
  }

  [[nodiscard]] static std::uint32_t placeOf(std::uint32_t field) { return TABLE + 4 + 4 * field; }
  /// The offset by which a field refers to DATA.
  [[nodiscard]] static std::uint32_t toData(std::uint32_t field) { return DATA - placeOf(field); }
  [[nodiscard]] const Bytes& bytes() const { return m_bytes; }

 private:
  Bytes m_bytes = Bytes(SIZE, 0);
};

struct Hostile {
  std::string what;
  Bytes bytes;
};

/// Good but for one thing: a table of one scalar, which each table of parameters of a command with a signal may be.
std::vector<Hostile> structures() {
  const auto scalar = [] { return RawBuffer({7U}); };
  return {
      {"root-offset-zero", scalar().put<std::uint32_t>(0, 0).bytes()},
      {"root-offset-behind-the-end", scalar().put<std::uint32_t>(0, SIZE).bytes()},
      {"root-offset-huge", scalar().put<std::uint32_t>(0, 0xFFFFFFFC).bytes()},
      {"root-offset-negative", scalar().put<std::uint32_t>(0, 0x80000000).bytes()},
      {"table-not-aligned",
       scalar().put<std::uint32_t>(0, TABLE + 1).put<std::int32_t>(TABLE + 1, TABLE - VTABLE + 1).bytes()},
      {"vtable-before-the-buffer", scalar().put<std::int32_t>(TABLE, TABLE + 4).bytes()},
      {"vtable-behind-the-end", scalar().put<std::int32_t>(TABLE, -static_cast<std::int32_t>(SIZE)).bytes()},
      {"vtable-far-away", scalar().put<std::uint32_t>(TABLE, 0x80000000).bytes()},
      {"vtable-not-aligned", scalar().put<std::int32_t>(TABLE, TABLE - VTABLE - 1).bytes()},
      {"vtable-of-odd-size", scalar().put<std::uint16_t>(VTABLE, 7).bytes()},
      {"vtable-beyond-the-end", scalar().put<std::uint16_t>(VTABLE, 0xFFFE).bytes()},
      {"field-beyond-the-end", scalar().put<std::uint16_t>(VTABLE + 4, 0xFFFC).bytes()},
      {"field-not-aligned", scalar().put<std::uint16_t>(VTABLE + 4, 5).bytes()},
      {"no-vtable", scalar().cutAt(TABLE + 2).bytes()},
      {"garbage", Bytes(64, 0xFF)},
      {"zeros", Bytes(64, 0)},
      {"one-byte", Bytes(1, 4)},
  };
}

/// A table whose first field is a vector of texts, or a text.
std::vector<Hostile> references() {
  const auto first = [](std::uint32_t offset) { return RawBuffer({offset}); };
  const auto data = [] { return RawBuffer({RawBuffer::toData(0)}); };
  return {
      {"offset-zero", first(0).bytes()},
      {"offset-to-itself", first(0xFFFFFFFC).bytes()},
      {"offset-behind-the-end", first(SIZE).bytes()},
      {"offset-huge", first(0x7FFFFFF0).bytes()},
      {"offset-negative", first(0x80000000).bytes()},
      {"not-aligned", first(RawBuffer::toData(0) + 1).bytes()},
      {"length-behind-the-end", first(SIZE - RawBuffer::placeOf(0) - 2).bytes()},
      {"huge-length", data().put<std::uint32_t>(DATA, 0xFFFFFFFF).bytes()},
      {"length-that-overflows", data().put<std::uint32_t>(DATA, 0x40000001).bytes()},
      {"length-with-high-bit", data().put<std::uint32_t>(DATA, 0x80000000).bytes()},
      {"length-one-too-much", data().put<std::uint32_t>(DATA, SIZE - DATA).bytes()},
  };
}

/// A vector of one text in the first field.
std::vector<Hostile> texts() {
  const auto vector = [](std::uint32_t offset) {
    return RawBuffer({RawBuffer::toData(0)}).put<std::uint32_t>(DATA, 1).put<std::uint32_t>(DATA + 4, offset);
  };
  return {
      {"text-behind-the-end", vector(SIZE).bytes()},
      {"text-before-the-buffer", vector(0xFFFFFF00).bytes()},
      {"text-not-aligned", vector(5).bytes()},
      {"text-of-huge-length", vector(4).put<std::uint32_t>(DATA + 8, 0xFFFFFFFF).bytes()},
      {"text-without-end", vector(4).put<std::uint32_t>(DATA + 8, 3).put<std::uint32_t>(DATA + 12, 0x41414141).bytes()},
      {"text-at-the-very-end", vector(4).put<std::uint32_t>(DATA + 8, SIZE - DATA - 12).bytes()},
  };
}

/// A path whose permanence is good and whose target is not; the target is the fifth field.
std::vector<Hostile> targets() {
  constexpr std::uint32_t PERM_TYPE = 0;
  constexpr std::uint32_t TARGET = 4;
  constexpr std::uint32_t VECTOR = DATA + 28;  // its elements lie at a multiple of 8
  const auto path = [](std::uint32_t offset) {
    return RawBuffer({RawBuffer::toData(PERM_TYPE), std::nullopt, std::nullopt, std::nullopt, offset}).putText("Once");
  };
  const auto vector = [&path](std::uint32_t length) {
    return path(VECTOR - RawBuffer::placeOf(TARGET)).put<std::uint32_t>(VECTOR, length);
  };
  return {
      {"target-offset-zero", path(0).bytes()},
      {"target-behind-the-end", path(SIZE).bytes()},
      {"target-huge-offset", path(0x7FFFFFF0).bytes()},
      {"target-of-huge-length", vector(0xFFFFFFFF).bytes()},
      {"target-length-that-overflows", vector(0x20000003).bytes()},
      {"target-cut", vector(3).cutAt(VECTOR + 4 + 3 * 8 - 1).bytes()},
  };
}

void add(Checks& checks, const MarshalCase& table, const std::vector<Hostile>& buffers) {
  for (const auto& hostile : buffers) {
    checks.push_back({fmt::format("marshalling.hostile-{}-{}", hostile.what, table.label),
                      "a buffer that leads outside of itself is refused with its text",
                      [&table, bytes = hostile.bytes](const Bundle& bundle) {
                        Subject subject(bundle);
                        subject.start();
                        expectInvalidBuffer(subject, table, bytes);
                      }});
  }
}

}  // namespace

Checks hostileBufferChecks() {
  Checks checks;
  for (const auto& table : marshalCases()) {
    if (table.label.ends_with("-axis")) {
      continue;  // the tables are the same for both types of object
    }
    add(checks, table, structures());
    if (table.isOption || table.record == "CmdJoinPars") {
      add(checks, table, references());
    }
    if (table.record == "CmdJoinPars") {
      add(checks, table, texts());
    }
    if (table.label == "option-switch-on-path") {
      add(checks, table, targets());
    }
  }
  return checks;
}

}  // namespace motion::conformance
