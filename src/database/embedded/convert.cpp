#include "database/embedded/convert.h"

#include <charconv>
#include <cmath>
#include <cstdio>
#include <limits>

#include "database/embedded/ascii.h"
#include "database/embedded/dates.h"
#include "database/embedded/decimals.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"
#include "database/embedded/texts.h"

namespace vellum250::database::embedded {
namespace {

std::string_view Trimmed(std::string_view text) {
  return TrimLeadingBlanks(TrimTrailingBlanks(text));
}

bool IsCharacterType(TypeInfo type) {
  return type.type == SqlType::Char || type.type == SqlType::VarChar;
}

// ---- To whole numbers ---------------------------------------------------------------------------

int64_t FitWhole(Int128 value, TypeInfo from, TypeInfo to) {
  if (to.type == SqlType::Bit) return value != 0;
  const IntegerRange range = RangeOf(to.type);
  if (value >= range.least && value <= range.most) return static_cast<int64_t>(value);
  const bool small = to.type == SqlType::TinyInt || to.type == SqlType::SmallInt;
  if (small && ClassOf(from.type) == TypeClass::Whole) {
    throw WholeNumberOverflow(MessageName(to), static_cast<int64_t>(value));
  }
  if (from.type == SqlType::Decimal) throw ConversionOverflow(u"numeric", MessageName(to));
  throw ExpressionOverflow(MessageName(to));
}

int64_t WholeFromFloat(double value, TypeInfo to) {
  if (to.type == SqlType::Bit) return value != 0;
  const IntegerRange range = RangeOf(to.type);
  const double whole = std::trunc(value);
  // 2^63 itself is the first double beyond a bigint.
  const double limit =
      to.type == SqlType::BigInt ? 9223372036854775808.0 : static_cast<double>(range.most) + 1;
  if (!(whole >= static_cast<double>(range.least) && whole < limit)) {
    throw FloatOverflow(MessageName(to), value);
  }
  return static_cast<int64_t>(whole);
}

int64_t WholeFromText(std::string_view text, TypeInfo from, TypeInfo to) {
  const auto fail = [&]() -> DatabaseFailure {
    if (to.type == SqlType::BigInt) return InvalidNumberText(MessageName(from), u"bigint");
    return InvalidText(MessageName(from), FromUtf8(text), MessageName(to));
  };
  std::string_view digits = Trimmed(text);
  if (to.type == SqlType::Bit) {
    if (EqualsAscii(digits, "true")) return 1;
    if (EqualsAscii(digits, "false")) return 0;
  }
  const bool negative = !digits.empty() && digits[0] == '-';
  if (!digits.empty() && (digits[0] == '-' || digits[0] == '+')) digits.remove_prefix(1);
  Int128 number = 0;
  constexpr Int128 kBeyondAll = Int128{1} << 70;
  for (const char c : digits) {
    if (!IsAsciiDigit(c)) throw fail();
    if (number < kBeyondAll) number = number * 10 + (c - '0');
  }
  if (negative) number = -number;
  if (to.type == SqlType::Bit) return number != 0;
  const IntegerRange range = RangeOf(to.type);
  if (number >= range.least && number <= range.most) return static_cast<int64_t>(number);
  if (to.type == SqlType::BigInt) throw ExpressionOverflow(u"bigint");
  if (to.type == SqlType::Int) throw TextOverflow(MessageName(from), FromUtf8(text));
  throw SmallTextOverflow(MessageName(from), FromUtf8(text), MessageName(to));
}

// Days since 1900, the fraction of the day beside them.
double DaysOf(std::string_view stored) {
  const Moment moment = StoredMoment(stored);
  return moment.day + static_cast<double>(moment.tick) / kTicksOfDay;
}

Value ToWhole(ValueRef value, TypeInfo from, TypeInfo to) {
  switch (ClassOf(from.type)) {
    case TypeClass::Whole:
      return FitWhole(value.Integer(), from, to);
    case TypeClass::Decimal:
    case TypeClass::Money: {
      // Any part of a number makes a bit 1; else a decimal drops the fraction, money rounds it.
      if (to.type == SqlType::Bit) return int64_t{value.Integer() != 0};
      const bool drops = from.type == SqlType::Decimal;
      return FitWhole(*Rescale(value.Integer(), AsDecimal(from).scale, 0,
                               drops ? Rounding::TowardsZero : Rounding::HalfAwayFromZero),
                      from, to);
    }
    case TypeClass::Float:
      return WholeFromFloat(value.Double(), to);
    case TypeClass::DateTime:
      return FitWhole(static_cast<int64_t>(std::floor(DaysOf(value.Text()) + 0.5)), from, to);
    default:
      return WholeFromText(value.Text(), from, to);
  }
}

// ---- To decimal, money, float -------------------------------------------------------------------

// A double scaled by 10^scale and rounded; nullopt when it is beyond 128 bits.
std::optional<Int128> ScaledFromFloat(double value, int32_t scale) {
  const long double scaled = std::round(static_cast<long double>(value) *
                                        std::pow(10.0L, static_cast<long double>(scale)));
  if (!(std::fabs(scaled) < 1e38L)) return std::nullopt;
  return static_cast<Int128>(scaled);
}

// A number or a date scaled by 10^scale; nullopt when it is beyond 128 bits.
std::optional<Int128> Scaled(ValueRef value, TypeInfo from, int32_t scale) {
  switch (ClassOf(from.type)) {
    case TypeClass::Float:
      return ScaledFromFloat(value.Double(), scale);
    case TypeClass::DateTime:
      return ScaledFromFloat(DaysOf(value.Text()), scale);
    default:
      return Rescale(value.Integer(), AsDecimal(from).scale, scale);
  }
}

Value ToDecimal(ValueRef value, TypeInfo from, TypeInfo to) {
  const TextView source = MessageName(from);
  std::optional<Int128> number;
  if (IsNumber(from) || IsDate(from)) {
    number = Scaled(value, from, to.scale);
  } else {
    bool overflow = false;
    number = ParseScaled(value.Text(), to.scale, overflow);
    if (!number) throw InvalidNumberText(source, u"numeric");
    if (overflow) number.reset();
  }
  if (!number) throw ConversionOverflow(source, u"numeric");
  return FitDecimal(*number, to, source);
}

// Removes currency sign, sign and commas, in the order a user may write them; nullopt when
// something else stands between. "-", "." and "$" alone are 0, as SQL Server has it.
std::optional<Int128> ParseMoney(std::string_view text, bool& overflow) {
  static constexpr std::string_view kSigns[] = {"$", "\u00A3", "\u20AC", "\u00A5"};
  std::string_view rest = Trimmed(text);
  bool negative = false;
  bool anySign = false;
  bool anyCurrency = false;
  for (bool more = true; more && !rest.empty();) {
    more = false;
    if (!anySign && (rest[0] == '-' || rest[0] == '+')) {
      negative = rest[0] == '-';
      anySign = more = true;
      rest.remove_prefix(1);
    }
    for (const std::string_view sign : kSigns) {
      if (anyCurrency || !rest.starts_with(sign)) continue;
      anyCurrency = more = true;
      rest.remove_prefix(sign.size());
    }
    if (more) rest = TrimLeadingBlanks(rest);
  }
  std::string digits;
  for (const char c : rest) {
    if (c != ',') digits.push_back(c);
  }
  overflow = false;
  if (digits.empty() || digits == ".") return 0;
  if (!IsAsciiDigit(digits[0]) && digits[0] != '.') return std::nullopt;
  const auto number = ParseScaled(digits, 4, overflow);
  if (!number) return std::nullopt;
  return negative ? -*number : *number;
}

Value ToMoney(ValueRef value, TypeInfo from, TypeInfo to) {
  std::optional<Int128> number;
  bool overflow = false;
  if (IsText(from)) {
    number = ParseMoney(value.Text(), overflow);
    if (!number) throw InvalidMoneyText();
  } else {
    number = Scaled(value, from, 4);
  }
  const IntegerRange range = RangeOf(to.type);
  if (!number || overflow || *number < range.least || *number > range.most) {
    if (IsText(from)) throw MoneyOverflow();
    throw ExpressionOverflow(MessageName(to));
  }
  return static_cast<int64_t>(*number);
}

std::optional<double> ParseFloat(std::string_view text) {
  std::string digits(Trimmed(text));
  if (digits.starts_with('+')) {
    digits.erase(0, 1);
    if (digits.starts_with('-')) return std::nullopt;
  }
  // No words (inf, nan), which the standard library takes; an exponent may be written with a d.
  if (digits.find_first_not_of("0123456789+-.eEdD") != std::string::npos) return std::nullopt;
  if (const size_t d = digits.find_first_of("dD"); d != std::string::npos) digits[d] = 'e';
  double number = 0;
  const char* const end = digits.data() + digits.size();
  const auto [stopped, error] = std::from_chars(digits.data(), end, number);
  if (stopped != end || error == std::errc::invalid_argument) return std::nullopt;
  if (error == std::errc::result_out_of_range) return std::numeric_limits<double>::infinity();
  return number;
}

Value ToFloat(ValueRef value, TypeInfo from, TypeInfo to) {
  double number = 0;
  switch (ClassOf(from.type)) {
    case TypeClass::Float:
      number = value.Double();
      break;
    case TypeClass::Whole:
    case TypeClass::Decimal:
    case TypeClass::Money:
      number =
          static_cast<double>(static_cast<long double>(value.Integer()) /
                              std::pow(10.0L, static_cast<long double>(AsDecimal(from).scale)));
      break;
    case TypeClass::DateTime:
      number = DaysOf(value.Text());
      break;
    default: {
      const bool isBlank = Trimmed(value.Text()).empty();
      const auto parsed = isBlank ? 0.0 : ParseFloat(value.Text());
      if (!parsed) throw InvalidNumberText(MessageName(from), MessageName(to));
      number = *parsed;
      if (std::isinf(number)) throw ConversionOverflow(MessageName(from), MessageName(to));
    }
  }
  if (to.type != SqlType::Real) return number;
  const auto narrow = static_cast<float>(number);
  if (std::isinf(narrow)) throw FloatOverflow(u"real", number);
  return double{narrow};
}

void RefuseHijri(int32_t style) {
  if (style == 130 || style == 131) throw Unsupported(u"convert with style 130 or 131");
}

// ---- To dates and identifiers -------------------------------------------------------------------

Moment MomentFromDays(double days, TypeInfo to) {
  if (!(std::fabs(days) < 4e6)) throw ExpressionOverflow(MessageName(to));
  const double day = std::floor(days);
  const auto tick = static_cast<int32_t>(std::round((days - day) * kTicksOfDay));
  const auto whole = static_cast<int32_t>(day);
  return tick < kTicksOfDay ? Moment{whole, tick} : Moment{whole + 1, 0};
}

Value ToDate(ValueRef value, TypeInfo from, TypeInfo to, int32_t style) {
  const TypeClass source = ClassOf(from.type);
  Moment moment;
  if (source == TypeClass::Text) {
    RefuseHijri(style);
    const ParsedDate parsed = ParseDateText(value.Text(), style);
    if (parsed.error == DateError::Syntax) {
      throw to.type == SqlType::SmallDateTime ? InvalidSmallDateText() : InvalidDateText();
    }
    if (parsed.error == DateError::Range) {
      // A date has no message of its own for days that do not exist.
      throw to.type == SqlType::Date ? InvalidDateText()
                                     : DateTextOutOfRange(MessageName(from), MessageName(to));
    }
    moment = parsed.moment;
  } else if (source == TypeClass::DateTime) {
    moment = StoredMoment(value.Text());
  } else {
    moment = MomentFromDays(ValueRef(ToFloat(value, from, kFloat)).Double(), to);
  }
  auto stored = Store(moment, to.type);
  if (stored) return std::move(*stored);
  if (source == TypeClass::Text || source == TypeClass::DateTime) {
    throw DateTextOutOfRange(MessageName(from), MessageName(to));
  }
  throw ExpressionOverflow(MessageName(to));
}

Value ToGuid(std::string_view text) {
  constexpr std::string_view kForm = "00000000-0000-0000-0000-000000000000";
  std::string_view digits = text;
  if (digits.starts_with('{') && digits.size() >= 38 && digits[37] == '}') digits.remove_prefix(1);
  // What follows the identifier does not count.
  if (digits.size() < kForm.size()) throw InvalidGuidText();
  std::string guid(digits.substr(0, kForm.size()));
  for (size_t i = 0; i < kForm.size(); ++i) {
    char& c = guid[i];
    if (c >= 'a' && c <= 'f') c = static_cast<char>(c - 32);
    const bool isHex = IsAsciiDigit(c) || (c >= 'A' && c <= 'F');
    if (kForm[i] == '-' ? c != '-' : !isHex) throw InvalidGuidText();
  }
  return guid;
}

// ---- To text ------------------------------------------------------------------------------------

void AppendMoney(std::string& out, int64_t value, int32_t style) {
  if (style == 2 || style == 126) return AppendScaled(out, value, 4);
  AppendScaled(out, static_cast<int64_t>(*Rescale(value, 4, 2)), 2);
  if (style != 1) return;
  const size_t first = out[0] == '-' ? 1 : 0;
  for (size_t i = out.size() - 3; i > first + 3; i -= 3) out.insert(i - 3, 1, ',');
}

// As SQL Server writes a float: six digits, or those of the style, and an exponent of three.
void AppendFloat(std::string& out, double value, int32_t style) {
  static constexpr const char* kFormats[] = {"%.6g", "%.7e", "%.15e", "%.16e"};
  char text[48];
  std::snprintf(text, sizeof text, kFormats[style >= 0 && style <= 3 ? style : 0], value);
  std::string_view written(text);
  const size_t exponent = written.find('e');
  out.append(written.substr(0, exponent));
  if (exponent == std::string_view::npos) return;
  out.append(written.substr(exponent, 2));
  const std::string_view digits = written.substr(exponent + 2);
  out.append(digits.size() < 3 ? 3 - digits.size() : 0, '0').append(digits);
}

// What a number does that does not fit into its text: small ones become an asterisk, the others
// fail.
std::string TooLong(ValueRef value, TypeInfo from, TypeInfo to) {
  switch (ClassOf(from.type)) {
    case TypeClass::Whole:
      if (from.type != SqlType::BigInt && IsCharacterType(to)) return "*";
      throw ExpressionOverflow(MessageName(to));
    case TypeClass::Money:
      throw MoneyTextTooLong(MessageName(to));
    case TypeClass::Float:
      throw FloatOverflow(MessageName(to), value.Double());
    case TypeClass::Guid:
      throw GuidTextTooLong();
    default:
      throw ConversionOverflow(u"numeric", MessageName(to));
  }
}

void Pad(std::string& text, TypeInfo to) {
  if (!IsPadded(to)) return;
  const int64_t length = Utf16Length(text);
  if (length < to.length) text.append(static_cast<size_t>(to.length - length), ' ');
}

bool IsTooLong(std::string_view text, TypeInfo to) {
  if (to.length < 0 || text.size() <= static_cast<size_t>(to.length)) return false;
  return Utf16Length(text) > to.length;
}

std::string TextOf(ValueRef value, TypeInfo from, TypeInfo to, int32_t style) {
  std::string text;
  switch (ClassOf(from.type)) {
    case TypeClass::Whole:
    case TypeClass::Decimal:
      AppendScaled(text, value.Integer(), AsDecimal(from).scale);
      break;
    case TypeClass::Money:
      AppendMoney(text, value.Integer(), style);
      break;
    case TypeClass::Float:
      AppendFloat(text, value.Double(), style);
      break;
    case TypeClass::DateTime:
      RefuseHijri(style);
      if (!AppendDate(text, StoredMoment(value.Text()), from.type, style)) {
        throw InvalidStyle(style, MessageName(from));
      }
      break;
    default:
      text = value.Text();
      if (IsNational(from) && !IsNational(to)) text = Narrow(std::move(text));
  }
  return text;
}

bool IsCutSilently(TypeInfo from) { return IsText(from) || IsDate(from); }

Value ToText(ValueRef value, TypeInfo from, TypeInfo to, int32_t style) {
  std::string text = TextOf(value, from, to, style);
  if (IsTooLong(text, to)) {
    text = IsCutSilently(from) ? std::string(Slice(text, 0, to.length).View())
                               : TooLong(value, from, to);
  }
  Pad(text, to);
  return text;
}

}  // namespace

Value Convert(ValueRef value, TypeInfo from, TypeInfo to, int32_t style) {
  if (value.IsNull()) return {};
  switch (ClassOf(to.type)) {
    case TypeClass::Whole:
      return ToWhole(value, from, to);
    case TypeClass::Decimal:
      return ToDecimal(value, from, to);
    case TypeClass::Money:
      return ToMoney(value, from, to);
    case TypeClass::Float:
      return ToFloat(value, from, to);
    case TypeClass::DateTime:
      return ToDate(value, from, to, style);
    case TypeClass::Text:
      return ToText(value, from, to, style);
    case TypeClass::Guid:
      return ToGuid(value.Text());
    case TypeClass::Binary:
      break;
  }
  throw ExplicitNotAllowed(MessageName(from), MessageName(to));
}

Value Assign(ValueRef value, TypeInfo from, TypeInfo to, TextView column, TextView table) {
  if (value.IsNull() || !IsText(to) || !IsCutSilently(from)) return Convert(value, from, to);
  std::string text = TextOf(value, from, to, 0);
  if (IsTooLong(text, to)) {
    std::string kept(Slice(text, 0, to.length).View());
    const std::string_view lost = std::string_view(text).substr(std::min(kept.size(), text.size()));
    if (lost.find_first_not_of(' ') != std::string_view::npos) {
      throw TextTruncated(table, column, FromUtf8(kept));
    }
    text = std::move(kept);
  }
  Pad(text, to);
  return text;
}

bool IsSameValue(TypeInfo from, TypeInfo to) {
  if (from == to) return true;
  const TypeClass target = ClassOf(to.type);
  if (ClassOf(from.type) != target) {
    return ClassOf(from.type) == TypeClass::Whole && target == TypeClass::Decimal &&
           to.scale == 0 && AsDecimal(from).precision <= to.precision;
  }
  switch (target) {
    case TypeClass::Whole:
      return to.type != SqlType::Bit && from.type <= to.type;
    case TypeClass::Decimal:
      return from.scale == to.scale && from.precision <= to.precision;
    case TypeClass::Money:
    case TypeClass::Float:
      // The wider one comes first in SqlType.
      return to.type <= from.type;
    case TypeClass::DateTime:
      return from.type == to.type ||
             (from.type == SqlType::SmallDateTime && to.type == SqlType::DateTime);
    case TypeClass::Text:
      if (IsNational(from) && !IsNational(to)) return false;
      if (IsPadded(to)) return IsPadded(from) && from.length == to.length;
      return to.length == -1 || (from.length != -1 && from.length <= to.length);
    default:
      return true;
  }
}

bool IsNumeric(std::string_view text) {
  if (Trimmed(text).empty()) return false;
  bool overflow = false;
  return ParseMoney(text, overflow).has_value() || ParseFloat(text).has_value();
}

}  // namespace vellum250::database::embedded
