#include "database/embedded/texts.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <iterator>

#include "automation/locale.h"
#include "database/embedded/collation.h"
#include "database/embedded/failures.h"
#include "platform/code_page.h"

namespace vellum250::database::embedded {
namespace {

// What a text function makes is not larger than this.
constexpr int64_t kLongestText = int64_t{64} << 20;

bool IsAscii(std::string_view text) {
  return std::none_of(text.begin(), text.end(),
                      [](char c) { return static_cast<unsigned char>(c) >= 0x80; });
}

size_t CharacterSize(char lead) {
  const auto byte = static_cast<unsigned char>(lead);
  return byte < 0x80 ? 1 : byte < 0xE0 ? 2 : byte < 0xF0 ? 3 : 4;
}

// A place between UTF-16 units: the bytes before it, and whether it is inside the four bytes that
// follow.
struct Place {
  size_t offset = 0;
  bool insidePair = false;
};
Place Walk(std::string_view text, size_t offset, int64_t units) {
  while (units > 0 && offset < text.size()) {
    const size_t size = std::min(CharacterSize(text[offset]), text.size() - offset);
    if (size == 4 && units == 1) return {offset, true};
    units -= size == 4 ? 2 : 1;
    offset += size;
  }
  return {offset, false};
}

// One half of the surrogate pair at `offset`, in its three-byte form.
std::string HalfPair(std::string_view text, size_t offset, bool second) {
  Units units(text.substr(offset, 4));
  char16_t unit = units.Next();
  if (second && !units.AtEnd()) unit = units.Next();
  return ToUtf8(TextView(&unit, 1));
}

struct Found {
  size_t offset;
  size_t size;
};
// The first occurrence from a byte offset on, without regard to case.
std::optional<Found> Find(std::string_view text, std::string_view sought, size_t offset) {
  while (offset < text.size()) {
    Units units(text.substr(offset));
    Units wanted(sought);
    bool same = true;
    while (same && !wanted.AtEnd()) {
      same = !units.AtEnd() && Fold(units.Next()) == Fold(wanted.Next());
    }
    if (same && !units.InsidePair()) {
      return Found{offset, text.size() - offset - units.Rest().size()};
    }
    offset += CharacterSize(text[offset]);
  }
  return std::nullopt;
}

void CheckSize(int64_t bytes) {
  if (bytes > kLongestText) throw Unsupported(u"a text of more than 64 MB");
}

// ASCII with the other case for the letters from `first` to `last`.
std::string OtherCase(std::string_view text, char first, char last) {
  std::string result(text);
  for (char& c : result) {
    if (c >= first && c <= last) c = static_cast<char>(c ^ 0x20);
  }
  return result;
}

char16_t Narrow(char16_t unit) {
  if (platform::CharacterCode(unit) != u'?') return unit;
  if (unit >= 0xFF01 && unit <= 0xFF5E) return static_cast<char16_t>(unit - 0xFEE0);  // wide ASCII
  if (unit == 0x110) return 0xD0;
  const char16_t folded = Fold(unit);
  const char16_t plain = PlainLetter(folded);
  if (plain == 0) return u'?';
  return folded == unit ? plain : static_cast<char16_t>(plain - 32);
}

}  // namespace

std::string Narrow(std::string text) {
  if (IsAscii(text)) return text;
  Text units = FromUtf8(text);
  std::ranges::transform(units, units.begin(), [](char16_t unit) { return Narrow(unit); });
  return ToUtf8(units);
}

int64_t Utf16Length(std::string_view text) {
  int64_t units = 0;
  for (const char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    units += ((byte & 0xC0) != 0x80) + (byte >= 0xF0);
  }
  return units;
}

Slice::Slice(std::string_view text, int64_t start, int64_t count) {
  if (start < 0) {
    count += start;
    start = 0;
  }
  if (count <= 0) return;
  const Place begin = Walk(text, 0, start);
  if (begin.offset >= text.size()) return;
  if (!begin.insidePair) {
    const Place end = Walk(text, begin.offset, count);
    view_ = text.substr(begin.offset, end.offset - begin.offset);
    if (!end.insidePair) return;
    copy_ = std::string(view_) + HalfPair(text, end.offset, false);
  } else {
    const size_t next = std::min(begin.offset + 4, text.size());
    const Place end = Walk(text, next, count - 1);
    copy_ = HalfPair(text, begin.offset, true);
    copy_.append(text.substr(next, end.offset - next));
    if (end.insidePair) copy_ += HalfPair(text, end.offset, false);
  }
  isCopy_ = true;
}

std::string_view TrimLeadingBlanks(std::string_view text) {
  const size_t first = text.find_first_not_of(' ');
  return first == std::string_view::npos ? std::string_view() : text.substr(first);
}

std::string_view TrimTrailingBlanks(std::string_view text) {
  return text.substr(0, text.find_last_not_of(' ') + 1);
}

int64_t CharIndex(std::string_view sought, std::string_view text, int64_t start) {
  if (sought.empty()) return 0;
  const Place from = Walk(text, 0, start - 1);
  const auto found = Find(text, sought, from.insidePair ? from.offset + 4 : from.offset);
  return found ? Utf16Length(text.substr(0, found->offset)) + 1 : 0;
}

std::string Replace(std::string_view text, std::string_view sought, std::string_view replacement) {
  if (sought.empty()) return std::string(text);
  std::string result;
  size_t done = 0;
  while (const auto found = Find(text, sought, done)) {
    result.append(text.substr(done, found->offset - done)).append(replacement);
    done = found->offset + found->size;
    CheckSize(static_cast<int64_t>(result.size()));
  }
  return result.append(text.substr(done));
}

std::optional<std::string> Stuff(std::string_view text, int64_t start, int64_t count,
                                 std::string_view insertion) {
  const int64_t length = Utf16Length(text);
  if (start < 1 || start > length || count < 0) return std::nullopt;
  count = std::min(count, length);
  std::string result(Slice(text, 0, start - 1).View());
  result.append(insertion).append(Slice(text, start - 1 + count, length).View());
  return result;
}

std::string Upper(std::string_view text) {
  return IsAscii(text) ? OtherCase(text, 'a', 'z') : ToUtf8(ToUpper(FromUtf8(text)));
}

std::string Lower(std::string_view text) {
  return IsAscii(text) ? OtherCase(text, 'A', 'Z') : ToUtf8(ToLower(FromUtf8(text)));
}

std::string Reverse(std::string_view text) {
  if (IsAscii(text)) return std::string(text.rbegin(), text.rend());
  Text units = FromUtf8(text);
  std::reverse(units.begin(), units.end());
  return ToUtf8(units);
}

std::optional<std::string> Str(double number, int64_t length, int64_t decimals) {
  if (length < 1 || length > 8000 || decimals < 0) return std::nullopt;
  decimals = std::min<int64_t>(decimals, 16);
  const std::string stars(static_cast<size_t>(length), '*');
  for (;;) {
    const long double factor = std::pow(10.0L, static_cast<long double>(decimals));
    // Half away from zero; the addition takes the sign from a zero.
    const long double rounded = std::round(number * factor) / factor + 0.0L;
    char text[400];
    const int size = std::snprintf(text, sizeof text, "%.*Lf", static_cast<int>(decimals), rounded);
    if (size < 0 || static_cast<size_t>(size) >= sizeof text) return stars;
    if (size <= length) return std::string(static_cast<size_t>(length - size), ' ') + text;
    const int64_t whole = decimals == 0 ? size : size - decimals - 1;
    if (whole > length) return stars;
    // The decimals that there is room for.
    decimals = std::max<int64_t>(0, length - whole - 1);
  }
}

std::optional<std::string> Replicate(std::string_view text, int64_t count, TypeInfo type) {
  if (count < 0) return std::nullopt;
  if (text.empty() || count == 0) return std::string();
  const int64_t room = type.length == -1 ? kLongestText * 2 : LongestText(type);
  const int64_t units = std::max<int64_t>(1, Utf16Length(text));
  const int64_t times = std::min(count, room / units + 1);
  CheckSize(static_cast<int64_t>(text.size()) * times);
  std::string result;
  result.reserve(text.size() * static_cast<size_t>(times));
  for (int64_t i = 0; i < times; ++i) result.append(text);
  if (times * units <= room) return result;
  return std::string(Slice(result, 0, room).View());
}

std::optional<std::string> NChar(int64_t unit) {
  if (unit < 0 || unit > 0xFFFF) return std::nullopt;
  const auto single = static_cast<char16_t>(unit);
  return ToUtf8(TextView(&single, 1));
}

std::optional<std::string> Char(int64_t code) {
  if (code < 0 || code > 255) return std::nullopt;
  return NChar(platform::CharacterOfCode(static_cast<uint8_t>(code)));
}

std::optional<int64_t> Ascii(std::string_view text) {
  if (text.empty()) return std::nullopt;
  return platform::CharacterCode(Narrow(Units(text).Next())) & 0xFF;
}

std::optional<int64_t> Unicode(std::string_view text) {
  if (text.empty()) return std::nullopt;
  return Units(text).Next();
}

std::optional<std::string> QuoteName(std::string_view text, std::string_view quote) {
  static constexpr std::string_view kPairs[] = {"[]", "''", "\"\"", "()", "<>", "{}", "``"};
  if (Utf16Length(text) > 128 || quote.size() != 1) return std::nullopt;
  const auto* pair = std::find_if(
      std::begin(kPairs), std::end(kPairs),
      [&](std::string_view entry) { return entry.find(quote) != std::string_view::npos; });
  if (pair == std::end(kPairs)) return std::nullopt;
  const char close = (*pair)[1];
  std::string result(1, (*pair)[0]);
  for (const char c : text) {
    result.push_back(c);
    if (c == close) result.push_back(c);
  }
  return result + close;
}

int64_t DataLength(ValueRef value, TypeInfo type) {
  const int32_t bytes = StoredBytes(type);
  return bytes != 0 ? bytes : Utf16Length(value.Text()) * (IsNational(type) ? 2 : 1);
}

}  // namespace vellum250::database::embedded
