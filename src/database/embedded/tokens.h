// First stage: the text of a batch as tokens.
//
// Literals are taken out on the way. What remains, with the kind of each literal in its place, is
// the batch's shape: two batches of one shape differ only in the values that are bound when they
// run.
#pragma once

#include <cstdint>
#include <vector>

#include "automation/text.h"
#include "database/embedded/value.h"

namespace vellum250::database::embedded {

enum class TokenKind : uint8_t {
  End,
  Name,            // as typed
  QuotedName,      // [name] or "name": never a keyword
  Variable,        // @name
  SystemVariable,  // @@name
  Literal,         // `index` into Scanned::literals
  Marker,          // ?, `index` counts from 0
  Symbol           // an operator or punctuation
};

struct Token {
  TokenKind kind = TokenKind::End;
  uint32_t offset = 0;  // of its first code unit in the batch
  uint32_t length = 0;
  int32_t line = 1;
  int32_t index = 0;
};

struct Scanned {
  std::vector<Token> tokens;  // ends with one of kind End
  std::vector<TypedValue> literals;
  int32_t markers = 0;
  Text shape;
};

// Raises a DatabaseFailure for an unclosed literal (105), name or comment (113), and for a number
// that no supported type holds.
Scanned Scan(TextView batch);

// A quoted name without its quotes.
Text Unquoted(TextView quotedName);

// One of the words that are names only between brackets.
bool IsReserved(TextView word);

}  // namespace vellum250::database::embedded
