// A typed value that travels through the data layer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <type_traits>
#include <utility>
#include <variant>
#include <vector>

namespace comm::datalayer {

/// Type codes of a Variant. The numbers are fixed.
enum class VariantType : std::uint32_t {
  UNKNOWN = 0,           ///< holds nothing, as a new Variant
  BOOL8 = 1,             ///< read with getBool
  INT8 = 2,              ///< 8 bits, signed; no constructor makes one yet
  UINT8 = 3,             ///< 8 bits, unsigned; no constructor makes one yet
  INT16 = 4,             ///< 16 bits, signed; no constructor makes one yet
  UINT16 = 5,            ///< 16 bits, unsigned; no constructor makes one yet
  INT32 = 6,             ///< read with getSigned
  UINT32 = 7,            ///< read with getUnsigned
  INT64 = 8,             ///< 64 bits, signed; no constructor makes one yet
  UINT64 = 9,            ///< 64 bits, unsigned; no constructor makes one yet
  FLOAT32 = 10,          ///< single precision; no constructor makes one yet
  FLOAT64 = 11,          ///< read with getDouble
  STRING = 12,           ///< UTF-8, read with getString
  ARRAY_OF_STRING = 24,  ///< read with getStrings
  RAW = 25,              ///< bytes without a schema; no constructor makes one yet
  FLATBUFFERS = 26,      ///< a finished buffer, read with getFlatBuffer
};

/// A value with its type code. Owns what it holds; copies are deep. Setters may throw std::bad_alloc.
/// A getter of another type than the one held returns null.
class Variant {
 public:
  using Bytes = std::vector<std::uint8_t>;   ///< how a FlatBuffers value is kept
  using Strings = std::vector<std::string>;  ///< content of an ARRAY_OF_STRING; the order is kept

  Variant() = default;
  /// A deep copy. Builds it by assignment: this library's std::variant destroys an alternative that was never made when its
  /// own copy constructor runs out of memory. [any]
  Variant(const Variant& other) {
    m_value = other.m_value;
    m_type = other.m_type;
  }
  Variant(Variant&& other) noexcept = default;
  /// A deep copy, too. On failure the value is as it was. [any]
  Variant& operator=(const Variant& other) {
    Variant copy(other);
    return *this = std::move(copy);
  }
  Variant& operator=(Variant&& other) noexcept = default;
  ~Variant() = default;
  /// Makes a BOOL8. [any]
  explicit Variant(bool value) : m_type(VariantType::BOOL8), m_value(value) {}
  /// Makes an INT32. [any]
  explicit Variant(std::int32_t value) : m_type(VariantType::INT32), m_value(std::int64_t{value}) {}
  /// Makes a UINT32. [any]
  explicit Variant(std::uint32_t value) : m_type(VariantType::UINT32), m_value(std::uint64_t{value}) {}
  /// Makes a FLOAT64; not-a-number and infinity are kept as they are. [any]
  explicit Variant(double value) : m_type(VariantType::FLOAT64), m_value(value) {}
  /// Makes a STRING from a zero-terminated text, which is copied. Null counts as the empty text. [any]
  explicit Variant(const char* value) : Variant(std::string(value != nullptr ? value : "")) {}
  /// No other pointer is a value, and none becomes a BOOL8 by mistake.
  template <typename T>
  requires(!std::is_same_v<std::remove_cv_t<T>, char>) explicit Variant(T* pointer) = delete;
  /// Makes a STRING. [any]
  explicit Variant(std::string value) : m_type(VariantType::STRING), m_value(std::move(value)) {}
  /// Makes an ARRAY_OF_STRING. [any]
  explicit Variant(Strings value) : m_type(VariantType::ARRAY_OF_STRING), m_value(std::move(value)) {}

  /// A finished FlatBuffers buffer, copied and not checked: whoever reads it verifies it first. [any]
  [[nodiscard]] static Variant fromFlatBuffer(std::span<const std::uint8_t> buffer) {
    Variant result;
    result.m_type = VariantType::FLATBUFFERS;
    result.m_value = Bytes(buffer.begin(), buffer.end());
    return result;
  }

  /// Says which getter answers; UNKNOWN when nothing is held. [any]
  [[nodiscard]] VariantType getType() const noexcept { return m_type; }
  /// The value of a BOOL8, null for every other type. [any]
  [[nodiscard]] const bool* getBool() const noexcept { return std::get_if<bool>(&m_value); }
  /// The value of an INT32, widened to 64 bits; null for every other type. [any]
  [[nodiscard]] const std::int64_t* getSigned() const noexcept { return std::get_if<std::int64_t>(&m_value); }
  /// The value of a UINT32, widened to 64 bits; null for every other type. [any]
  [[nodiscard]] const std::uint64_t* getUnsigned() const noexcept { return std::get_if<std::uint64_t>(&m_value); }
  /// The value of a FLOAT64, null for every other type. [any]
  [[nodiscard]] const double* getDouble() const noexcept { return std::get_if<double>(&m_value); }
  /// The text of a STRING, null for every other type; valid until the Variant changes. [any]
  [[nodiscard]] const std::string* getString() const noexcept { return std::get_if<std::string>(&m_value); }
  /// The texts of an ARRAY_OF_STRING, null for every other type; valid until the Variant changes. [any]
  [[nodiscard]] const Strings* getStrings() const noexcept { return std::get_if<Strings>(&m_value); }
  /// The bytes of a FLATBUFFERS value, empty for every other type. The start is aligned for any scalar. [any]
  [[nodiscard]] std::span<const std::uint8_t> getFlatBuffer() const noexcept {
    const auto* bytes = std::get_if<Bytes>(&m_value);
    return bytes != nullptr ? std::span<const std::uint8_t>(*bytes) : std::span<const std::uint8_t>();
  }

 private:
  VariantType m_type = VariantType::UNKNOWN;
  std::variant<std::monostate, bool, std::int64_t, std::uint64_t, double, std::string, Strings, Bytes> m_value;
};

}  // namespace comm::datalayer
