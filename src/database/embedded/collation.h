// The order and the equality of texts: the collation TSQL.
#pragma once

#include <string_view>

#include "automation/text.h"

namespace vellum250::database::embedded {

// Less than, equal to or greater than 0. Case does not count, nor do blanks at the end; accents
// do, after the letters: signs come before digits, digits before letters, an accented letter behind
// its plain one. Texts are equal exactly when their folded units are.
int Compare(std::string_view left, std::string_view right);

// One UTF-16 unit without case.
char16_t Fold(char16_t unit);

// The unit's place among units, case left out: for ranges in LIKE.
uint32_t Weight(char16_t unit);

// Reads the UTF-16 units of a UTF-8 text one by one.
class Units {
 public:
  explicit Units(std::string_view text) : next_(text.data()), end_(text.data() + text.size()) {}
  bool AtEnd() const { return next_ == end_ && pending_ == 0; }
  char16_t Next();
  // The bytes not yet read begin here; only meaningful between characters.
  const char* Position() const { return next_; }

 private:
  const char* next_;
  const char* end_;
  char16_t pending_ = 0;  // the second half of a surrogate pair
};

}  // namespace vellum250::database::embedded
