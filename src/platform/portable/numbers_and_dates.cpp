// Numbers and dates as text, as the scripting run time writes and reads them in the British
// locale: day first, "." before decimals.

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "automation/locale.h"

namespace vellum250 {

namespace {

Text FromAscii(std::string_view text) { return Text(text.begin(), text.end()); }

void AppendPadded(Text& out, int number, int width) {
  const Text digits = NumberText(number);
  out.append(std::max<int>(0, width - static_cast<int>(digits.size())), u'0').append(digits);
}

constexpr std::array<TextView, 12> kMonths = {u"january",   u"february", u"march",    u"april",
                                              u"may",       u"june",     u"july",     u"august",
                                              u"september", u"october",  u"november", u"december"};

// One piece of a date text: a number, a word, or a separator.
struct Piece {
  enum class Kind { Number, Word, Separator } kind;
  Text text;  // lower case
  int number = 0;
};

std::optional<std::vector<Piece>> Split(TextView text) {
  std::vector<Piece> pieces;
  for (size_t i = 0; i < text.size();) {
    const size_t start = i;
    const auto isDigit = [&](size_t at) { return text[at] >= u'0' && text[at] <= u'9'; };
    const auto isLetter = [&](size_t at) {
      const char16_t c = AsciiLower(text[at]);
      return c >= u'a' && c <= u'z';
    };
    if (isDigit(i)) {
      int number = 0;
      while (i < text.size() && isDigit(i)) {
        if (i - start == 4) return std::nullopt;  // no field has more digits than a year
        number = number * 10 + (text[i++] - u'0');
      }
      pieces.push_back({Piece::Kind::Number, Text(text.substr(start, i - start)), number});
    } else if (isLetter(i)) {
      while (i < text.size() && isLetter(i)) ++i;
      pieces.push_back({Piece::Kind::Word, ToAsciiLower(text.substr(start, i - start))});
    } else if (text[i] == u' ') {
      ++i;
    } else if (TextView(u"/-.,:").find(text[i]) != TextView::npos) {
      pieces.push_back({Piece::Kind::Separator, Text(1, text[i++])});
    } else {
      return std::nullopt;
    }
  }
  return pieces;
}

// 1 to 12, or 0: at least three letters of an English month's name.
int MonthNumber(TextView word) {
  if (word.size() < 3) return 0;
  for (size_t i = 0; i < kMonths.size(); ++i) {
    if (kMonths[i].starts_with(word)) return static_cast<int>(i) + 1;
  }
  return 0;
}

// Two digits: 00 to 29 are in this century, as the run time has it.
int FullYear(const Piece& piece) {
  if (piece.text.size() > 2) return piece.number;
  return piece.number + (piece.number < 30 ? 2000 : 1900);
}

// Takes "h:mm[:ss] [am|pm]" from the pieces, wherever it stands.
bool TakeTime(std::vector<Piece>& pieces, CivilTime& time, bool& found) {
  found = false;
  for (size_t i = 0; i + 2 < pieces.size(); ++i) {
    if (pieces[i].kind != Piece::Kind::Number || pieces[i + 1].text != u":") continue;
    int* const fields[] = {&time.hour, &time.minute, &time.second};
    size_t count = 0;
    size_t end = i;
    while (true) {
      if (count == 3 || end >= pieces.size() || pieces[end].kind != Piece::Kind::Number) {
        return false;
      }
      *fields[count++] = pieces[end++].number;
      if (end >= pieces.size() || pieces[end].text != u":") break;
      ++end;
    }
    if (end < pieces.size() && (pieces[end].text == u"am" || pieces[end].text == u"pm")) {
      if (time.hour < 1 || time.hour > 12) return false;
      time.hour = time.hour % 12 + (pieces[end].text == u"pm" ? 12 : 0);
      ++end;
    }
    pieces.erase(pieces.begin() + static_cast<std::ptrdiff_t>(i),
                 pieces.begin() + static_cast<std::ptrdiff_t>(end));
    found = true;
    break;
  }
  return time.hour < 24 && time.minute < 60 && time.second < 60;
}

// The three fields of a date in one of: d m y, m-name d y, d m-name y, y m d (four digits first).
bool ReadDate(const std::vector<Piece>& fields, CivilTime& time) {
  if (fields.size() != 3) return false;
  const auto isNumber = [&](size_t i) { return fields[i].kind == Piece::Kind::Number; };
  size_t yearAt = 2;
  size_t monthAt = 1;
  size_t dayAt = 0;
  if (isNumber(0) && fields[0].text.size() > 2) {
    yearAt = 0, dayAt = 2;
  } else if (!isNumber(0)) {
    monthAt = 0, dayAt = 1;
  }
  if (!isNumber(yearAt) || !isNumber(dayAt)) return false;
  time.year = FullYear(fields[yearAt]);
  time.month = isNumber(monthAt) ? fields[monthAt].number : MonthNumber(fields[monthAt].text);
  time.day = fields[dayAt].number;
  if (time.month > 12 && isNumber(monthAt) && yearAt == 2) std::swap(time.month, time.day);
  return time.year >= 100 && time.month >= 1 && time.month <= 12 && time.day >= 1 &&
         time.day <= DaysInMonth(time.year, time.month);
}

// "&H11", "&o17": the digits and the letter of the base.
std::optional<double> ParseBased(TextView digits, char16_t base) {
  if (base != u'h' && base != u'o') return std::nullopt;
  std::string ascii;
  for (char16_t c : digits) ascii.push_back(c < 128 ? static_cast<char>(c) : '?');
  uint64_t number = 0;
  const char* const end = ascii.data() + ascii.size();
  const auto [stop, error] = std::from_chars(ascii.data(), end, number, base == u'h' ? 16 : 8);
  if (error != std::errc() || stop != end) return std::nullopt;
  return static_cast<double>(number);
}

}  // namespace

Text DoubleText(double number) {
  if (std::isnan(number)) return u"-1.#IND";
  if (std::isinf(number)) return number < 0 ? u"-1.#INF" : u"1.#INF";
  char digits[40];
  std::snprintf(digits, sizeof digits, "%.14E", number);
  // Mantissa d.dddddddddddddd and exponent, then laid out as the run time does.
  std::string mantissa(digits);
  const size_t e = mantissa.find('E');
  const int exponent = std::atoi(mantissa.c_str() + e + 1);
  mantissa.erase(e);
  const bool negative = mantissa[0] == '-';
  if (negative) mantissa.erase(0, 1);
  mantissa.erase(1, 1);
  mantissa.erase(mantissa.find_last_not_of('0') + 1);
  if (mantissa.empty()) return u"0";

  const int count = static_cast<int>(mantissa.size());
  std::string out = negative ? "-" : "";
  if (exponent >= 15 || exponent < -15 || (exponent < -1 && count - exponent > 15)) {
    out += mantissa.substr(0, 1);
    if (count > 1) out += "." + mantissa.substr(1);
    out += exponent < 0 ? "E-" : "E+";
    if (std::abs(exponent) < 10) out += "0";
    out += std::to_string(std::abs(exponent));
  } else if (exponent < 0) {
    out += "0." + std::string(static_cast<size_t>(-exponent - 1), '0') + mantissa;
  } else if (count <= exponent + 1) {
    out += mantissa + std::string(static_cast<size_t>(exponent + 1 - count), '0');
  } else {
    out += mantissa.substr(0, static_cast<size_t>(exponent) + 1) + "." +
           mantissa.substr(static_cast<size_t>(exponent) + 1);
  }
  return FromAscii(out);
}

Text DateText(Date date) {
  const CivilTime time = ToCivil(date);
  const bool hasTime = time.hour != 0 || time.minute != 0 || time.second != 0;
  const bool hasDay = std::trunc(date.days) != 0;
  Text out;
  if (hasDay) {
    AppendPadded(out, time.day, 2);
    out.push_back(u'/');
    AppendPadded(out, time.month, 2);
    out.push_back(u'/');
    AppendPadded(out, time.year, 4);
  }
  if (hasTime || !hasDay) {
    if (hasDay) out.push_back(u' ');
    AppendPadded(out, time.hour, 2);
    out.push_back(u':');
    AppendPadded(out, time.minute, 2);
    out.push_back(u':');
    AppendPadded(out, time.second, 2);
  }
  return out;
}

std::optional<double> ParseDouble(TextView text) {
  TextView rest = TrimBlanks(text);
  if (rest.size() > 2 && rest[0] == u'&') return ParseBased(rest.substr(2), AsciiLower(rest[1]));
  bool negative = rest.starts_with(u'(') && rest.ends_with(u')') && rest.size() > 2;
  bool hasSign = negative;
  if (negative) rest = rest.substr(1, rest.size() - 2);
  // A sign and the currency's may stand before or behind.
  bool hasCurrency = false;
  const auto isRead = [&](char16_t c) {
    if (c == u'+' || c == u'-') {
      negative = negative || c == u'-';
      return !std::exchange(hasSign, true);
    }
    return c == u' ' || (c == u'\u00A3' && !std::exchange(hasCurrency, true));
  };
  while (!rest.empty() && isRead(rest.front())) rest.remove_prefix(1);
  while (!rest.empty() && isRead(rest.back())) rest.remove_suffix(1);

  std::string ascii;
  for (char16_t c : rest) {
    // Grouping commas are read over, as the run time does; letters only in an exponent.
    if (c == u',') continue;
    const bool allowed =
        (c >= u'0' && c <= u'9') || c == u'.' || c == u'-' || c == u'+' || c == u'e' || c == u'E';
    if (!allowed) return std::nullopt;
    ascii.push_back(static_cast<char>(c));
  }
  if (ascii.empty() || ascii[0] == '-' || rest.starts_with(u',')) return std::nullopt;
  double number = 0;
  const char* const end = ascii.data() + ascii.size();
  const auto [stop, error] = std::from_chars(ascii.data(), end, number);
  if (error != std::errc() || stop != end) return std::nullopt;
  return negative ? -number : number;
}

std::optional<Date> ParseDate(TextView text) {
  auto pieces = Split(TrimBlanks(text));
  if (!pieces || pieces->empty()) return std::nullopt;
  CivilTime time;
  bool hasTime = false;
  if (!TakeTime(*pieces, time, hasTime)) return std::nullopt;
  if (pieces->empty()) return FromCivil(time);
  std::vector<Piece> fields;
  bool afterSeparator = true;  // a date neither begins nor ends with one, nor has two in a row
  for (const Piece& piece : *pieces) {
    const bool separator = piece.kind == Piece::Kind::Separator;
    if (separator && (afterSeparator || piece.text == u":")) return std::nullopt;
    if (!separator) fields.push_back(piece);
    afterSeparator = separator;
  }
  if (afterSeparator || !ReadDate(fields, time)) return std::nullopt;
  return FromCivil(time);
}

}  // namespace vellum250
