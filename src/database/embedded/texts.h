// Text functions on UTF-8, positions and lengths counted in UTF-16 code units from 1.
//
// A position inside a surrogate pair cuts it; the halves are three-byte forms, as ToUtf8 makes
// them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "database/embedded/value.h"

namespace vellum250::database::embedded {

// As varchar holds it: what the single-byte code page lacks is the letter without its accent, or
// "?".
std::string Narrow(std::string text);

// UTF-16 code units in `text`.
int64_t Utf16Length(std::string_view text);

// A part of a text: the bytes themselves, or a copy where a surrogate pair was cut.
class Slice {
 public:
  // `count` units from position `start` (0-based); both may go beyond the ends.
  Slice(std::string_view text, int64_t start, int64_t count);
  std::string_view View() const { return isCopy_ ? std::string_view(copy_) : view_; }

 private:
  std::string_view view_;
  std::string copy_;
  bool isCopy_ = false;
};

std::string_view TrimLeadingBlanks(std::string_view text);
std::string_view TrimTrailingBlanks(std::string_view text);

// The position of `sought` in `text` from position `start`, without regard to case; 0 when absent
// or when `sought` is empty.
int64_t CharIndex(std::string_view sought, std::string_view text, int64_t start = 1);
// Every occurrence, without regard to case.
std::string Replace(std::string_view text, std::string_view sought, std::string_view replacement);
// nullopt (NULL) when the positions are outside the text.
std::optional<std::string> Stuff(std::string_view text, int64_t start, int64_t count,
                                 std::string_view insertion);
std::string Upper(std::string_view text);
std::string Lower(std::string_view text);
std::string Reverse(std::string_view text);
// A number as text of `length` characters, right aligned; asterisks when it does not fit. nullopt
// (NULL) for a length or a number of decimals out of range.
std::optional<std::string> Str(double number, int64_t length, int64_t decimals);
// nullopt (NULL) for a negative count. Cut at the 8,000 bytes of the types that are not max.
std::optional<std::string> Replicate(std::string_view text, int64_t count, TypeInfo type);
// The unit with this number; nullopt outside 0-65535.
std::optional<std::string> NChar(int64_t unit);
// The character of the single-byte code page; nullopt outside 0-255.
std::optional<std::string> Char(int64_t code);
// The first character's code in the single-byte code page, or its UTF-16 unit; nullopt for "".
std::optional<int64_t> Ascii(std::string_view text);
std::optional<int64_t> Unicode(std::string_view text);
// In brackets, or in the quote given; nullopt for another quote or more than 128 characters.
std::optional<std::string> QuoteName(std::string_view text, std::string_view quote);
// Bytes as SQL Server stores a value.
int64_t DataLength(ValueRef value, TypeInfo type);

}  // namespace vellum250::database::embedded
