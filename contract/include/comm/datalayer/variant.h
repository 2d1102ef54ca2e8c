// A typed value that travels through the data layer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace comm::datalayer {

/// Type codes of a Variant. The numbers are fixed.
enum class VariantType : std::uint32_t {
  UNKNOWN = 0,
  BOOL8 = 1,
  INT8 = 2,
  UINT8 = 3,
  INT16 = 4,
  UINT16 = 5,
  INT32 = 6,
  UINT32 = 7,
  INT64 = 8,
  UINT64 = 9,
  FLOAT32 = 10,
  FLOAT64 = 11,
  STRING = 12,
  ARRAY_OF_STRING = 24,
  RAW = 25,
  FLATBUFFERS = 26,
};

/// A value with its type code. Owns what it holds; copies are deep. Setters may throw std::bad_alloc.
/// A getter of another type than the one held returns null.
class Variant {
 public:
  using Bytes = std::vector<std::uint8_t>;
  using Strings = std::vector<std::string>;

  Variant() = default;
  /// Builds the copy by assignment: this library's std::variant destroys an alternative that was never made when its own
  /// copy constructor runs out of memory.
  Variant(const Variant& other) {
    m_value = other.m_value;
    m_type = other.m_type;
  }
  Variant(Variant&& other) noexcept = default;
  /// On failure the value is as it was.
  Variant& operator=(const Variant& other) {
    Variant copy(other);
    return *this = std::move(copy);
  }
  Variant& operator=(Variant&& other) noexcept = default;
  ~Variant() = default;
  explicit Variant(bool value) : m_type(VariantType::BOOL8), m_value(value) {}
  explicit Variant(std::int32_t value) : m_type(VariantType::INT32), m_value(std::int64_t{value}) {}
  explicit Variant(std::uint32_t value) : m_type(VariantType::UINT32), m_value(std::uint64_t{value}) {}
  explicit Variant(double value) : m_type(VariantType::FLOAT64), m_value(value) {}
  explicit Variant(std::string value) : m_type(VariantType::STRING), m_value(std::move(value)) {}
  explicit Variant(Strings value) : m_type(VariantType::ARRAY_OF_STRING), m_value(std::move(value)) {}

  /// A finished FlatBuffers buffer, copied.
  [[nodiscard]] static Variant fromFlatBuffer(std::span<const std::uint8_t> buffer) {
    Variant result;
    result.m_type = VariantType::FLATBUFFERS;
    result.m_value = Bytes(buffer.begin(), buffer.end());
    return result;
  }

  [[nodiscard]] VariantType getType() const noexcept { return m_type; }
  [[nodiscard]] const bool* getBool() const noexcept { return std::get_if<bool>(&m_value); }
  [[nodiscard]] const std::int64_t* getSigned() const noexcept { return std::get_if<std::int64_t>(&m_value); }
  [[nodiscard]] const std::uint64_t* getUnsigned() const noexcept { return std::get_if<std::uint64_t>(&m_value); }
  [[nodiscard]] const double* getDouble() const noexcept { return std::get_if<double>(&m_value); }
  [[nodiscard]] const std::string* getString() const noexcept { return std::get_if<std::string>(&m_value); }
  [[nodiscard]] const Strings* getStrings() const noexcept { return std::get_if<Strings>(&m_value); }
  /// The bytes of a FLATBUFFERS value, empty for every other type. The start is aligned for any scalar.
  [[nodiscard]] std::span<const std::uint8_t> getFlatBuffer() const noexcept {
    const auto* bytes = std::get_if<Bytes>(&m_value);
    return bytes != nullptr ? std::span<const std::uint8_t>(*bytes) : std::span<const std::uint8_t>();
  }

 private:
  VariantType m_type = VariantType::UNKNOWN;
  std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, Strings, Bytes> m_value;
};

}  // namespace comm::datalayer
