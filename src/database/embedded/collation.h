// The order and the equality of texts: the collation TSQL.
#pragma once

#include <string_view>

#include "automation/text.h"

namespace vellum250::database::embedded {

// Less than, equal to or greater than 0. Case does not count, nor do blanks at the end. Letters
// come first: signs before digits, digits before letters; where those are the same, accents
// decide. Two texts are equal exactly when their folded units are.
int Compare(std::string_view left, std::string_view right);

// One UTF-16 unit without case.
char16_t FoldBeyondAscii(char16_t unit);
inline char16_t Fold(char16_t unit) {
  return unit < 0x80 ? AsciiLower(unit) : FoldBeyondAscii(unit);
}

// The letter of ASCII that a letter of Latin-1 or Latin Extended-A has beneath its accent; 0 for
// others. `folded` is a folded unit.
char16_t PlainLetter(char16_t folded);

// The unit's place among units, case left out; the upper 16 bits leave the accent out, too.
uint32_t Weight(char16_t unit);

// Reads the UTF-16 units of a UTF-8 text one by one. A byte that belongs to no character is U+FFFD.
class Units {
 public:
  Units() = default;
  explicit Units(std::string_view text) : next_(text.data()), end_(text.data() + text.size()) {}

  bool AtEnd() const { return next_ == end_ && pending_ == 0; }
  // Only when not at the end.
  char16_t Next() {
    if (pending_ == 0 && static_cast<unsigned char>(*next_) < 0x80) {
      return static_cast<char16_t>(*next_++);
    }
    return NextBeyondAscii();
  }
  // What has not been read. A character of which one half was read counts as read.
  std::string_view Rest() const { return {next_, static_cast<size_t>(end_ - next_)}; }
  // Whether the next unit is the second half of a surrogate pair.
  bool InsidePair() const { return pending_ != 0; }

 private:
  char16_t NextBeyondAscii();

  const char* next_ = nullptr;
  const char* end_ = nullptr;
  char16_t pending_ = 0;
};

}  // namespace vellum250::database::embedded
