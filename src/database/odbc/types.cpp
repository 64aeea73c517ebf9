#include "database/odbc/types.h"

#include <algorithm>
#include <limits>

#include "automation/conversion.h"
#include "automation/failure.h"
#include "automation/locale.h"
#include "database/odbc/diagnostics.h"

namespace vellum250::database::odbc {

namespace {

constexpr SQLULEN kLong = 0x7FFFFFFF;
constexpr SQLULEN kLongWide = 0x3FFFFFFF;

// In the order of SqlType. A date parameter goes as a timestamp, whose time the server leaves out
// where ODBC would refuse it.
constexpr TypeTraits kTraits[] = {
    {SQL_BIT, Transfer::Bit, 1, 0},
    {SQL_TINYINT, Transfer::Integer, 3, 0},
    {SQL_SMALLINT, Transfer::Integer, 5, 0},
    {SQL_INTEGER, Transfer::Integer, 10, 0},
    {SQL_BIGINT, Transfer::Text, 19, 0},
    {SQL_DECIMAL, Transfer::Text, 38, 0},
    {SQL_DECIMAL, Transfer::Text, 19, 4},
    {SQL_DECIMAL, Transfer::Text, 10, 4},
    {SQL_DOUBLE, Transfer::Real, 15, 0},
    {SQL_REAL, Transfer::Real, 7, 0},
    {SQL_TYPE_TIMESTAMP, Transfer::Timestamp, 23, 3},
    {SQL_TYPE_TIMESTAMP, Transfer::Timestamp, 16, 0},
    {SQL_TYPE_TIMESTAMP, Transfer::Timestamp, 23, 3},
    {SQL_CHAR, Transfer::Text, 8000, 0},
    {SQL_VARCHAR, Transfer::Text, 8000, 0},
    {SQL_LONGVARCHAR, Transfer::Text, kLong, 0},
    {SQL_WCHAR, Transfer::Text, 4000, 0},
    {SQL_WVARCHAR, Transfer::Text, 4000, 0},
    {SQL_WLONGVARCHAR, Transfer::Text, kLongWide, 0},
    {SQL_GUID, Transfer::Text, 36, 0},
    {SQL_BINARY, Transfer::Text, 8000, 0},
    {SQL_VARBINARY, Transfer::Text, 8000, 0},
    {SQL_LONGVARBINARY, Transfer::Text, kLong, 0},
    {SQL_WVARCHAR, Transfer::Text, 128, 0},
};
static_assert(std::size(kTraits) == static_cast<size_t>(SqlType::Sysname) + 1);

// The number's digits as Decimal has them: ".50" is "0.50". Raises when it is no plain number.
Text PlainDigits(TextView text) {
  const TextView number = TrimBlanks(text);
  const bool negative = number.starts_with(u'-');
  TextView digits = number.substr(negative || number.starts_with(u'+') ? 1 : 0);
  const size_t point = digits.find(u'.');
  const TextView whole = digits.substr(0, point);
  const TextView fraction = point == TextView::npos ? TextView() : digits.substr(point + 1);
  constexpr TextView kDigits = u"0123456789";
  if (whole.size() + fraction.size() == 0 || whole.find_first_not_of(kDigits) != TextView::npos ||
      fraction.find_first_not_of(kDigits) != TextView::npos) {
    throw TypeMismatch(u"not a decimal number");
  }
  Text plain(negative ? u"-" : u"");
  plain.append(whole.empty() ? TextView(u"0") : whole);
  if (!fraction.empty()) plain.append(u".").append(fraction);
  return plain;
}

// From plain digits with up to four after the point.
Currency ToCurrency(TextView digits) {
  const bool negative = digits.starts_with(u'-');
  const size_t point = std::min(digits.find(u'.'), digits.size());
  Text scaled(digits.substr(negative ? 1 : 0, point - (negative ? 1 : 0)));
  Text fraction(point == digits.size() ? TextView() : digits.substr(point + 1));
  if (fraction.size() > 4) throw TypeMismatch(u"more than four decimals of an amount of money");
  fraction.resize(4, u'0');
  scaled += fraction;
  uint64_t magnitude = 0;
  const uint64_t largest = uint64_t{1} << 63;
  for (char16_t c : scaled) {
    const uint64_t digit = c - u'0';
    if (magnitude > (largest - digit) / 10) throw OverflowFailure();
    magnitude = magnitude * 10 + digit;
  }
  if (!negative && magnitude == largest) throw OverflowFailure();
  return {static_cast<int64_t>(negative ? 0 - magnitude : magnitude)};
}

Variant FromTimestamp(const SQL_TIMESTAMP_STRUCT& t) {
  const bool valid = t.year >= 100 && t.year <= 9999 && t.month >= 1 && t.month <= 12 &&
                     t.day >= 1 && t.day <= DaysInMonth(t.year, t.month) && t.hour <= 23 &&
                     t.minute <= 59 && t.second <= 59 && t.fraction < 1'000'000'000;
  if (!valid) Fail(u"The ODBC driver gave a date that is none");
  return FromCivil({t.year, t.month, t.day, t.hour, t.minute, t.second,
                    static_cast<int>(t.fraction / 1'000'000)});
}

SQL_TIMESTAMP_STRUCT ToTimestamp(Date date) {
  const CivilTime civil = ToCivil(date);
  SQL_TIMESTAMP_STRUCT t{};
  t.year = static_cast<SQLSMALLINT>(civil.year);
  t.month = static_cast<SQLUSMALLINT>(civil.month);
  t.day = static_cast<SQLUSMALLINT>(civil.day);
  t.hour = static_cast<SQLUSMALLINT>(civil.hour);
  t.minute = static_cast<SQLUSMALLINT>(civil.minute);
  t.second = static_cast<SQLUSMALLINT>(civil.second);
  t.fraction = static_cast<SQLUINTEGER>(civil.millisecond) * 1'000'000;
  return t;
}

template <typename Integer>
Integer Narrow(SQLINTEGER value) {
  if (value < std::numeric_limits<Integer>::min() || value > std::numeric_limits<Integer>::max()) {
    Fail(u"The ODBC driver gave a number that is out of its column's range");
  }
  return static_cast<Integer>(value);
}

}  // namespace

SQLSMALLINT CTypeOf(Transfer transfer) {
  static constexpr SQLSMALLINT kCTypes[] = {SQL_C_BIT, SQL_C_SLONG, SQL_C_DOUBLE,
                                            SQL_C_TYPE_TIMESTAMP, SQL_C_WCHAR};
  return kCTypes[static_cast<size_t>(transfer)];
}

const TypeTraits& TraitsOf(SqlType type) { return kTraits[static_cast<size_t>(type)]; }

SqlType TypeOfColumn(SQLSMALLINT odbcType, SQLULEN size, TextView typeName) {
  switch (odbcType) {
    case SQL_DECIMAL:
    case SQL_NUMERIC:
      if (EqualsIgnoreAsciiCase(typeName, u"money")) return SqlType::Money;
      if (EqualsIgnoreAsciiCase(typeName, u"smallmoney")) return SqlType::SmallMoney;
      return SqlType::Decimal;
    case SQL_FLOAT:
      return SqlType::Float;
    case SQL_TYPE_DATE:
      return SqlType::Date;
    case SQL_TYPE_TIMESTAMP:
      // yyyy-mm-dd hh:mm: as long as smalldatetime is exact.
      return size == 16 ? SqlType::SmallDateTime : SqlType::DateTime;
    default: {
      const auto found = std::ranges::find(kTraits, odbcType, &TypeTraits::odbcType);
      return found == std::end(kTraits) ? SqlType::VarChar
                                        : static_cast<SqlType>(found - std::begin(kTraits));
    }
  }
}

Variant FromFixed(SqlType type, const FixedValue& value) {
  switch (type) {
    case SqlType::Bit:
      return value.bit != 0;
    case SqlType::TinyInt:
      return Narrow<uint8_t>(value.integer);
    case SqlType::SmallInt:
      return Narrow<int16_t>(value.integer);
    case SqlType::Int:
      return int32_t{value.integer};
    case SqlType::Float:
    case SqlType::Real:
      return value.real;
    default:
      return FromTimestamp(value.timestamp);
  }
}

Variant FromText(SqlType type, Text text) {
  switch (type) {
    case SqlType::BigInt:
    case SqlType::Decimal:
      return Decimal{PlainDigits(text)};
    case SqlType::Money:
    case SqlType::SmallMoney:
      return ToCurrency(PlainDigits(text));
    default:
      return text;
  }
}

FixedValue ToFixed(SqlType type, const Variant& value) {
  FixedValue fixed{};
  switch (type) {
    case SqlType::Bit:
      fixed.bit = ToBoolean(value) ? 1 : 0;
      break;
    case SqlType::TinyInt:
      fixed.integer = ToByte(value);
      break;
    case SqlType::SmallInt:
      fixed.integer = ToInt16(value);
      break;
    case SqlType::Int:
      fixed.integer = ToInt32(value);
      break;
    case SqlType::Float:
    case SqlType::Real:
      fixed.real = ToDouble(value);
      break;
    default:
      fixed.timestamp = ToTimestamp(ToDate(value));
      break;
  }
  return fixed;
}

Text ToWireText(SqlType type, const Variant& value) {
  switch (type) {
    case SqlType::BigInt:
    case SqlType::Decimal:
    case SqlType::Money:
    case SqlType::SmallMoney:
      return PlainDigits(ToText(value));
    default:
      return ToText(value);
  }
}

}  // namespace vellum250::database::odbc
