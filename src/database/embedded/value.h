// Values as SQLite stores them; the type that says what they mean goes beside them.
//
//   bit, tinyint, smallint, int, bigint   integer
//   float, real                           double
//   decimal(p,s)                          integer, scaled by 10^s
//   money, smallmoney                     integer, scaled by 10^4
//   datetime, smalldatetime               text 'YYYY-MM-DD hh:mm:ss.mmm'
//   date                                  text 'YYYY-MM-DD'
//   uniqueidentifier                      text, upper case, 36 characters
//   text types                            text, UTF-8 as ToUtf8 makes it; char and nchar padded
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "automation/variant.h"
#include "database/embedded/types.h"

namespace vellum250::database::embedded {

// Of the other alternatives alone g++ 12's library makes a variant that it believes never to be
// without a value; a copy of a text for which there was no memory then destroys what was never
// made. No value is this one.
struct NoValue {
  ~NoValue() {}
  bool operator==(const NoValue&) const = default;
};
using Value = std::variant<std::monostate, int64_t, double, std::string, NoValue>;
inline bool IsNull(const Value& value) { return value.index() == 0; }

// A value that somebody else holds.
class ValueRef {
 public:
  ValueRef() = default;
  ValueRef(int64_t value) : value_(value) {}
  ValueRef(double value) : value_(value) {}
  ValueRef(std::string_view value) : value_(value) {}
  ValueRef(const Value& value) {
    if (const auto* integer = std::get_if<int64_t>(&value)) value_ = *integer;
    if (const auto* number = std::get_if<double>(&value)) value_ = *number;
    if (const auto* text = std::get_if<std::string>(&value)) value_ = std::string_view(*text);
  }

  bool IsNull() const { return value_.index() == 0; }
  // The caller knows the type; what does not fit it is 0 or "".
  int64_t Integer() const {
    const auto* integer = std::get_if<int64_t>(&value_);
    return integer ? *integer : 0;
  }
  double Double() const {
    const auto* number = std::get_if<double>(&value_);
    return number ? *number : static_cast<double>(Integer());
  }
  std::string_view Text() const {
    const auto* text = std::get_if<std::string_view>(&value_);
    return text ? *text : std::string_view();
  }
  Value Copy() const;

 private:
  std::variant<std::monostate, int64_t, double, std::string_view> value_;
};

struct TypedValue {
  Value value;
  TypeInfo type;
};

// As recordset.h says values arrive; a Null variant for NULL.
Variant ToVariant(ValueRef value, TypeInfo type);
// The value of a `?` marker and the type it has in the statement: Text is nvarchar of its length,
// Date datetime, Decimal decimal; Empty, Null and Missing are NULL of type int. Raises 13 for an
// object.
TypedValue FromVariant(const Variant& value);

}  // namespace vellum250::database::embedded
