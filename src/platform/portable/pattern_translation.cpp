#include "platform/portable/pattern_translation.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <span>
#include <utility>
#include <vector>

#include "automation/failure.h"
#include "automation/locale.h"

namespace vellum250::platform {

namespace {

constexpr char16_t kLast = 0xFFFF;

// From the first to the second, both included.
using Range = std::pair<char16_t, char16_t>;
using Ranges = std::vector<Range>;

// The engine's classes know ASCII only.
constexpr Range kDigits[] = {{u'0', u'9'}};
constexpr Range kSpaces[] = {{u'\t', u'\r'}, {u' ', u' '}};
constexpr Range kWordCharacters[] = {{u'0', u'9'}, {u'A', u'Z'}, {u'_', u'_'}, {u'a', u'z'}};
constexpr Range kLineEnd[] = {{u'\n', u'\n'}};

// The capital of every code unit.
const Text& Capitals() {
  static const Text capitals = [] {
    Text all(size_t{kLast} + 1, u'\0');
    for (size_t i = 0; i < all.size(); ++i) all[i] = static_cast<char16_t>(i);
    Text upper = ToUpper(all);
    for (size_t i = 0x80; i < all.size(); ++i) {
      if (upper[i] < 0x80) upper[i] = all[i];
    }
    return upper;
  }();
  return capitals;
}

// The code units that are not their own capitals, in order.
const Text& SmallLetters() {
  static const Text small = [] {
    Text letters;
    for (size_t i = 0; i <= kLast; ++i) {
      if (Capitals()[i] != i) letters.push_back(static_cast<char16_t>(i));
    }
    return letters;
  }();
  return small;
}

// In order, none touching the next.
Ranges Merged(Ranges ranges) {
  std::ranges::sort(ranges);
  Ranges merged;
  for (const auto& [first, last] : ranges) {
    if (!merged.empty() && first <= merged.back().second + 1) {
      merged.back().second = std::max(merged.back().second, last);
    } else {
      merged.emplace_back(first, last);
    }
  }
  return merged;
}

// All that is in none of them; they are merged.
Ranges Complement(std::span<const Range> ranges) {
  Ranges others;
  int next = 0;
  for (const auto& [first, last] : ranges) {
    if (first > next) others.emplace_back(static_cast<char16_t>(next), first - 1);
    next = last + 1;
  }
  if (next <= kLast) others.emplace_back(static_cast<char16_t>(next), kLast);
  return others;
}

// The ranges and the capitals of what is in them.
Ranges WithoutCase(const Ranges& ranges) {
  Ranges all = Merged(ranges);
  const Text& letters = SmallLetters();
  for (size_t i = 0, count = all.size(); i < count; ++i) {
    const auto [first, last] = all[i];
    for (auto at = std::ranges::lower_bound(letters, first); at != letters.end() && *at <= last;
         ++at) {
      all.emplace_back(Capitals()[*at], Capitals()[*at]);
    }
  }
  return Merged(std::move(all));
}

std::optional<uint32_t> DigitValue(char16_t c, uint32_t base) {
  uint32_t value = base;
  if (c >= u'0' && c <= u'9') value = c - u'0';
  if (AsciiLower(c) >= u'a' && AsciiLower(c) <= u'f') value = AsciiLower(c) - u'a' + 10;
  return value < base ? std::optional(value) : std::nullopt;
}

void AppendCharacter(Text& out, char16_t c) {
  static constexpr char16_t kHexadecimal[] = u"0123456789abcdef";
  if (c < 0x80 && (DigitValue(c, 10) || (AsciiLower(c) >= u'a' && AsciiLower(c) <= u'z'))) {
    out.push_back(c);
    return;
  }
  out.append(u"\\x{");
  for (int shift = 12; shift >= 0; shift -= 4) out.push_back(kHexadecimal[c >> shift & 0xF]);
  out.push_back(u'}');
}

void AppendClass(Text& out, const Ranges& ranges) {
  // PCRE2 has no empty class, but one that leaves nothing.
  out.append(ranges.empty() ? u"[^" : u"[");
  for (const auto& [first, last] : ranges.empty() ? Complement({}) : ranges) {
    AppendCharacter(out, first);
    out.push_back(u'-');
    AppendCharacter(out, last);
  }
  out.push_back(u']');
}

class Translation {
 public:
  explicit Translation(TextView pattern) : pattern_(pattern) { CountGroups(); }

  Text Result() {
    while (position_ < pattern_.size()) Term();
    if (depth_ > 0) throw PatternSyntaxError(u"expected ')'");
    return std::move(out_);
  }

 private:
  // What a class escape means, or the one character of any other.
  struct Escaped {
    std::optional<Ranges> set;
    char16_t character;
  };

  bool AtEnd() const { return position_ == pattern_.size(); }
  char16_t Next() { return pattern_[position_++]; }
  bool Accept(TextView text) {
    if (!pattern_.substr(position_).starts_with(text)) return false;
    position_ += text.size();
    return true;
  }

  void CountGroups() {
    bool inClass = false;
    for (size_t i = 0; i < pattern_.size(); ++i) {
      const char16_t c = pattern_[i];
      if (c == u'\\') ++i;
      if (c == u'[') inClass = true;
      if (c == u']') inClass = false;
      if (c == u'(' && !inClass && !pattern_.substr(i + 1).starts_with(u'?')) ++groups_;
    }
  }

  void Term() {
    const bool repeatable = std::exchange(repeatable_, true);
    const size_t start = position_;
    switch (const char16_t c = Next()) {
      case u'|':
      case u'^':
        out_.push_back(c);
        repeatable_ = false;
        break;
      case u'$':
        out_.append(u"\\z");  // not before a last line end
        repeatable_ = false;
        break;
      case u'(':
        OpenGroup();
        break;
      case u')':
        if (depth_-- == 0) throw PatternSyntaxError(u"unexpected ')'");
        out_.push_back(c);
        break;
      case u'[':
        Class();
        break;
      case u'.':
        AppendClass(out_, Complement(kLineEnd));
        break;
      case u'\\':
        EscapeOutsideClass();
        break;
      case u'*':
      case u'+':
      case u'?':
      case u'{':
        position_ = start;
        if (!Quantifier(repeatable)) Literal(Next());
        break;
      default:
        Literal(c);
    }
  }

  void Literal(char16_t c) { AppendCharacter(out_, Capitals()[c]); }

  void OpenGroup() {
    TextView kind;
    for (const TextView known : {u"?:", u"?=", u"?!"}) {
      if (kind.empty() && Accept(known)) kind = known;
    }
    if (kind.empty() && Accept(u"?")) throw PatternSyntaxError(u"unexpected quantifier");
    out_.append(u"(").append(kind).append(u"(?C)");
    ++depth_;
    repeatable_ = false;
  }

  // A number of repetitions, if there is one here. PCRE2 refuses more than 65535.
  std::optional<uint32_t> Repetitions() {
    if (AtEnd() || !DigitValue(pattern_[position_], 10)) return std::nullopt;
    uint32_t value = 0;
    for (; !AtEnd() && DigitValue(pattern_[position_], 10); ++position_) {
      value = std::min(value * 10 + *DigitValue(pattern_[position_], 10), 100'000U);
    }
    return value;
  }

  // False when a brace is none, which stays where it is.
  bool Quantifier(bool repeatable) {
    const size_t start = position_;
    if (Next() == u'{') {
      const auto least = Repetitions();
      const bool comma = Accept(u",");
      const auto most = comma ? Repetitions() : least;
      if (!least || !Accept(u"}")) {
        position_ = start;
        return false;
      }
      if (most && *most < *least) throw PatternSyntaxError(u"unexpected quantifier");
    }
    if (!repeatable) throw PatternSyntaxError(u"unexpected quantifier");
    Accept(u"?");
    out_.append(pattern_.substr(start, position_ - start));
    repeatable_ = false;
    return true;
  }

  void EscapeOutsideClass() {
    if (Accept(u"b") || Accept(u"B")) {
      out_.push_back(u'\\');
      out_.push_back(pattern_[position_ - 1]);
      repeatable_ = false;
      return;
    }
    if (const uint32_t group = GroupNumber(); group > 0) {
      out_.append(u"\\g{");
      AppendNumber(out_, group);
      out_.push_back(u'}');
      return;
    }
    const Escaped escaped = Escape();
    if (escaped.set) {
      AppendClass(out_, *escaped.set);
    } else {
      Literal(escaped.character);
    }
  }

  // As many digits as make the number of a group of the pattern; 0 when none do, and for the three
  // of an octal number.
  uint32_t GroupNumber() {
    const TextView three = pattern_.substr(position_, 3);
    if (three.size() == 3 && three < u"4" &&
        std::ranges::all_of(three, [](char16_t c) { return DigitValue(c, 8).has_value(); })) {
      return 0;
    }
    uint32_t group = 0;
    for (; !AtEnd(); ++position_) {
      const auto digit = DigitValue(pattern_[position_], 10);
      if (!digit || group * 10 + *digit > groups_ || group * 10 + *digit == 0) break;
      group = group * 10 + *digit;
    }
    return group;
  }

  // What follows a backslash, in a class or not.
  Escaped Escape() {
    if (AtEnd()) throw PatternSyntaxError(u"nothing follows '\\'");
    switch (const char16_t c = Next()) {
      case u'd':
        return {Ranges(std::begin(kDigits), std::end(kDigits)), 0};
      case u'D':
        return {Complement(kDigits), 0};
      case u's':
        return {Ranges(std::begin(kSpaces), std::end(kSpaces)), 0};
      case u'S':
        return {Complement(kSpaces), 0};
      case u'w':
        return {Ranges(std::begin(kWordCharacters), std::end(kWordCharacters)), 0};
      case u'W':
        return {Complement(kWordCharacters), 0};
      default:
        return {std::nullopt, CharacterEscape(c)};
    }
  }

  char16_t CharacterEscape(char16_t c) {
    switch (c) {
      case u'f':
        return u'\f';
      case u'n':
        return u'\n';
      case u'r':
        return u'\r';
      case u't':
        return u'\t';
      case u'v':
        return u'\v';
      case u'x':
        return Hexadecimal(2).value_or(c);
      case u'u':
        return Hexadecimal(4).value_or(c);
      case u'c':
        if (AtEnd() || AsciiLower(pattern_[position_]) < u'a' ||
            AsciiLower(pattern_[position_]) > u'z') {
          return c;
        }
        return Next() % 32;
      default:
        return DigitValue(c, 8) ? Octal(*DigitValue(c, 8)) : c;
    }
  }

  std::optional<char16_t> Hexadecimal(size_t digits) {
    if (pattern_.size() - position_ < digits) return std::nullopt;
    uint32_t value = 0;
    for (const char16_t c : pattern_.substr(position_, digits)) {
      const auto digit = DigitValue(c, 16);
      if (!digit) return std::nullopt;
      value = value * 16 + *digit;
    }
    position_ += digits;
    return static_cast<char16_t>(value);
  }

  // Up to three digits and 0377, the first of which has been read.
  char16_t Octal(uint32_t value) {
    for (int more = 2; more > 0 && !AtEnd(); --more, ++position_) {
      const auto digit = DigitValue(pattern_[position_], 8);
      if (!digit || value * 8 + *digit > 0377) break;
      value = value * 8 + *digit;
    }
    return static_cast<char16_t>(value);
  }

  Escaped ClassAtom() {
    if (AtEnd()) throw PatternSyntaxError(u"expected ']'");
    const char16_t c = Next();
    if (c != u'\\') return {std::nullopt, c};
    if (Accept(u"b")) return {std::nullopt, u'\b'};
    return Escape();
  }

  void Class() {
    const bool negated = Accept(u"^");
    Ranges ranges;
    while (!Accept(u"]")) {
      const Escaped first = ClassAtom();
      if (first.set) {
        ranges.insert(ranges.end(), first.set->begin(), first.set->end());
        continue;
      }
      char16_t last = first.character;
      if (position_ + 1 < pattern_.size() && pattern_[position_ + 1] != u']' && Accept(u"-")) {
        const Escaped end = ClassAtom();
        if (end.set || end.character < last) {
          throw PatternSyntaxError(u"invalid range in character set");
        }
        last = end.character;
      }
      ranges.emplace_back(first.character, last);
    }
    ranges = WithoutCase(ranges);
    AppendClass(out_, negated ? Complement(ranges) : ranges);
  }

  TextView pattern_;
  size_t position_ = 0;
  size_t groups_ = 0;        // of the whole pattern: a reference may come before its group
  size_t depth_ = 0;         // groups open here
  bool repeatable_ = false;  // what stands before here
  Text out_;
};

}  // namespace

Text WithoutCase(TextView text) {
  Text out(text);
  for (char16_t& c : out) c = Capitals()[c];
  return out;
}

Text TranslatedPattern(TextView pattern) { return Translation(pattern).Result(); }

}  // namespace vellum250::platform
