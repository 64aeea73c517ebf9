// A value as a script sees it.
#pragma once

#include <cstdint>
#include <utility>
#include <variant>

#include "automation/object_ref.h"
#include "automation/text.h"

namespace vellum250 {

// Days since 30 December 1899, the fraction is the time of day (the automation date).
struct Date {
  double days = 0;
  bool operator==(const Date&) const = default;
};

// Ten-thousandths of a unit.
struct Currency {
  int64_t tenThousandths = 0;
  bool operator==(const Currency&) const = default;
};

// An exact decimal number as its digits: optional "-", digits, optionally "." and digits. Also
// carries 64-bit integers, which scripts have no type for.
struct Decimal {
  Text digits;
  bool operator==(const Decimal&) const = default;
};

struct Null {
  bool operator==(const Null&) const = default;
};
// An optional argument that the caller left out.
struct Missing {
  bool operator==(const Missing&) const = default;
};

// In the order of Variant's alternatives.
enum class VariantType : uint8_t {
  Empty,
  Null,
  Boolean,
  Byte,
  Int16,
  Int32,
  Double,
  Currency,
  Decimal,
  Date,
  Text,
  Object,
  Missing
};

class Variant {
 public:
  Variant() = default;
  Variant(Null value) : value_(value) {}
  Variant(Missing value) : value_(value) {}
  Variant(bool value) : value_(value) {}
  Variant(uint8_t value) : value_(value) {}
  Variant(int16_t value) : value_(value) {}
  Variant(int32_t value) : value_(value) {}
  Variant(double value) : value_(value) {}
  Variant(Currency value) : value_(value) {}
  Variant(Decimal value) : value_(std::move(value)) {}
  Variant(Date value) : value_(value) {}
  Variant(Text value) : value_(std::move(value)) {}
  Variant(TextView value) : value_(Text(value)) {}
  Variant(const char16_t* value) : value_(Text(value)) {}
  Variant(ObjectRef value) : value_(std::move(value)) {}
  template <typename T>
  Variant(const Ref<T>& object) : value_(ObjectRef(object)) {}
  // No silent conversion from pointers, wide integers or characters.
  template <typename T>
  Variant(T) = delete;

  VariantType Type() const { return static_cast<VariantType>(value_.index()); }
  bool Is(VariantType type) const { return Type() == type; }
  bool IsEmpty() const { return Is(VariantType::Empty); }
  bool IsNull() const { return Is(VariantType::Null); }
  bool IsText() const { return Is(VariantType::Text); }
  bool IsMissing() const { return Is(VariantType::Missing); }

  // The alternative itself, or nullptr when the variant holds another.
  template <typename T>
  const T* If() const {
    return std::get_if<T>(&value_);
  }
  template <typename T>
  T* If() {
    return std::get_if<T>(&value_);
  }
  // The alternative itself; the caller knows the type.
  template <typename T>
  const T& As() const {
    return std::get<T>(value_);
  }

  // Same type and same value; no conversion.
  bool operator==(const Variant&) const = default;

 private:
  using Value = std::variant<std::monostate, Null, bool, uint8_t, int16_t, int32_t, double,
                             Currency, Decimal, Date, Text, ObjectRef, Missing>;
  Value value_;
};

}  // namespace vellum250
