#include "database/embedded/collation.h"

#include <algorithm>
#include <array>

#include "automation/locale.h"

namespace vellum250::database::embedded {
namespace {

constexpr uint32_t kDigits = 0x180;
constexpr uint32_t kLetters = 0x200;
constexpr uint32_t kOthers = 0x300;

constexpr uint32_t PrimaryOfAscii(char16_t unit) {
  const char16_t folded = AsciiLower(unit);
  if (folded >= u'a' && folded <= u'z') return kLetters + (folded - u'a');
  if (unit >= u'0' && unit <= u'9') return kDigits + (unit - u'0');
  return unit;
}

constexpr auto kAsciiPrimary = [] {
  std::array<uint16_t, 128> table{};
  for (char16_t unit = 0; unit < 128; ++unit) {
    table[unit] = static_cast<uint16_t>(PrimaryOfAscii(unit));
  }
  return table;
}();

// The plain letters of U+00C0 to U+017F; "." has none.
constexpr std::string_view kPlainLetters =
    "aaaaaaaceeeeiiiidnooooo.ouuuuyts"
    "aaaaaaaceeeeiiiidnooooo.ouuuuyty"
    "aaaaaaccccccccddddeeeeeeeeeegggggggghhhhiiiiiiiiiiiijjkkkllllllllllnnnnnnnnnoooooooorrrrrr"
    "ssssssssttttttuuuuuuuuuuuuwwyyyzzzzzzs";
static_assert(kPlainLetters.size() == 0x180 - 0xC0);

uint32_t PrimaryOf(char16_t folded) {
  if (folded < 0x80) return kAsciiPrimary[folded];
  // The signs of Latin-1 stand behind those of ASCII.
  if (folded < 0xC0) return folded;
  if (const char16_t plain = PlainLetter(folded)) return PrimaryOfAscii(plain);
  return folded < 0x400 ? kOthers + (folded >> 2) : folded;
}

// The second comparison: by accents, when the letters are the same.
class Difference {
 public:
  // Whether the letters differ; then Sign tells.
  bool Decides(char16_t left, char16_t right) {
    if (left == right) return false;
    const uint32_t a = Weight(left);
    const uint32_t b = Weight(right);
    if (a >> 16 != b >> 16) {
      sign_ = a < b ? -1 : 1;
      return true;
    }
    if (sign_ == 0 && a != b) sign_ = a < b ? -1 : 1;
    return false;
  }
  int Sign() const { return sign_; }

 private:
  int sign_ = 0;
};

int CompareUnits(Units left, Units right) {
  Difference difference;
  while (!left.AtEnd() || !right.AtEnd()) {
    // The shorter text goes on with blanks.
    const char16_t a = left.AtEnd() ? u' ' : left.Next();
    const char16_t b = right.AtEnd() ? u' ' : right.Next();
    if (difference.Decides(a, b)) break;
  }
  return difference.Sign();
}

}  // namespace

char16_t FoldBeyondAscii(char16_t unit) {
  static const Text folded = [] {
    Text units(0x10000, u'\0');
    for (size_t i = 0; i < units.size(); ++i) units[i] = static_cast<char16_t>(i);
    return ToLower(units);
  }();
  return folded[unit];
}

char16_t PlainLetter(char16_t folded) {
  if (folded < 0xC0 || folded >= 0x180) return 0;
  const char plain = kPlainLetters[folded - 0xC0];
  return plain == '.' ? char16_t{0} : static_cast<char16_t>(plain);
}

uint32_t Weight(char16_t unit) {
  const char16_t folded = Fold(unit);
  return PrimaryOf(folded) << 16 | (folded < 0x80 ? 0u : folded);
}

int Compare(std::string_view left, std::string_view right) {
  const size_t common = std::min(left.size(), right.size());
  for (size_t i = 0; i < common; ++i) {
    const auto a = static_cast<unsigned char>(left[i]);
    const auto b = static_cast<unsigned char>(right[i]);
    if ((a | b) >= 0x80) return CompareUnits(Units(left.substr(i)), Units(right.substr(i)));
    if (a == b) continue;
    const int difference = kAsciiPrimary[a] - kAsciiPrimary[b];
    if (difference != 0) return difference;
  }
  const std::string_view rest = left.size() > common ? left.substr(common) : right.substr(common);
  const size_t sign = rest.find_first_not_of(' ');
  if (sign == std::string_view::npos) return 0;
  const int order = CompareUnits(Units(rest.substr(sign)), Units());
  return left.size() > common ? order : -order;
}

char16_t Units::NextBeyondAscii() {
  if (pending_ != 0) {
    const char16_t low = pending_;
    pending_ = 0;
    return low;
  }
  constexpr char16_t kBad = 0xFFFD;
  const auto lead = static_cast<unsigned char>(*next_++);
  const size_t count = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : lead >= 0xC0 ? 1 : 0;
  if (count == 0 || static_cast<size_t>(end_ - next_) < count) return kBad;
  uint32_t code = lead & (0x3Fu >> count);
  for (size_t i = 0; i < count; ++i) {
    const auto byte = static_cast<unsigned char>(next_[i]);
    if ((byte & 0xC0) != 0x80) return kBad;
    code = code << 6 | (byte & 0x3Fu);
  }
  if (code > 0x10FFFF) return kBad;
  next_ += count;
  if (code < 0x10000) return static_cast<char16_t>(code);
  pending_ = static_cast<char16_t>(0xDC00 | (code & 0x3FF));
  return static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
}

}  // namespace vellum250::database::embedded
