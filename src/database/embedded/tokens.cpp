#include "database/embedded/tokens.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <iterator>

#include "database/embedded/convert.h"
#include "database/embedded/failures.h"
#include "database/embedded/texts.h"

namespace vellum250::database::embedded {
namespace {

// In the shape: begins the kind of a literal. Outside quotes no batch that parses holds it.
constexpr char16_t kLiteralMark = 0xFFFF;

// In order.
// clang-format off
constexpr TextView kReserved[] = {
    u"add", u"all", u"alter", u"and", u"any", u"as", u"asc", u"authorization", u"backup", u"begin",
    u"between", u"break", u"browse", u"bulk", u"by", u"cascade", u"case", u"check", u"checkpoint",
    u"close", u"clustered", u"coalesce", u"collate", u"column", u"commit", u"compute",
    u"constraint", u"contains", u"continue", u"convert", u"create", u"cross", u"current",
    u"cursor", u"database", u"deallocate", u"declare", u"default", u"delete", u"deny", u"desc",
    u"distinct", u"double", u"drop", u"else", u"end", u"escape", u"except", u"exec", u"execute",
    u"exists", u"exit", u"fetch", u"for", u"foreign", u"from", u"full", u"function", u"goto",
    u"grant", u"group", u"having", u"holdlock", u"identity", u"identity_insert", u"if", u"in",
    u"index", u"inner", u"insert", u"intersect", u"into", u"is", u"join", u"key", u"kill", u"left",
    u"like", u"merge", u"national", u"nocheck", u"nonclustered", u"not", u"null", u"nullif", u"of",
    u"off", u"on", u"open", u"option", u"or", u"order", u"outer", u"over", u"percent", u"pivot",
    u"primary", u"print", u"proc", u"procedure", u"public", u"raiserror", u"read", u"references",
    u"restore", u"return", u"revoke", u"right", u"rollback", u"rowcount", u"save", u"schema",
    u"select", u"set", u"some", u"table", u"then", u"to", u"top", u"tran", u"transaction",
    u"trigger", u"truncate", u"union", u"unique", u"update", u"use", u"user", u"values",
    u"varying", u"view", u"waitfor", u"when", u"where", u"while", u"with"};
// clang-format on

constexpr bool IsDigit(char16_t c) { return c >= u'0' && c <= u'9'; }
constexpr bool IsNameStart(char16_t c) {
  return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || c == u'_' || c == u'#' ||
         (c >= 0xC0 && c < 0x2000 && c != 0xD7 && c != 0xF7) || (c >= 0x2C00 && c < 0xD800);
}
constexpr auto kNameParts = [] {
  std::array<bool, 128> parts{};
  for (char16_t c = 0; c < 128; ++c) {
    parts[c] = IsNameStart(c) || IsDigit(c) || c == u'@' || c == u'$';
  }
  return parts;
}();
constexpr bool IsNamePart(char16_t c) { return c < 128 ? kNameParts[c] : IsNameStart(c); }

constexpr bool IsPair(char16_t first, char16_t second) {
  switch (second) {
    case u'=':
      return TextView(u"<>!+-*/%").find(first) != TextView::npos;
    case u'>':
      return first == u'<' || first == u'!';
    case u'<':
      return first == u'!';
    default:
      return first == u':' && second == u':';
  }
}

class Scanner {
 public:
  explicit Scanner(TextView batch) : batch_(batch) {
    // Offsets are 32 bits wide; SQLite takes no longer text either.
    if (batch.size() > 100'000'000)
      throw Unsupported(u"a batch of more than 100 million characters");
    out_.tokens.reserve(batch.size() / 5 + 2);
    out_.shape.reserve(batch.size());
  }

  Scanned Run() {
    while (SkipBlanks()) Next();
    Add(TokenKind::End, at_);
    out_.shape.append(batch_, copied_);
    return std::move(out_);
  }

 private:
  char16_t Peek(size_t ahead = 0) const {
    return at_ + ahead < batch_.size() ? batch_[at_ + ahead] : u'\0';
  }

  void Add(TokenKind kind, size_t begin, int32_t index = 0) {
    out_.tokens.push_back({kind, static_cast<uint32_t>(begin), static_cast<uint32_t>(at_ - begin),
                           startLine_, index});
  }

  // True when a token begins here.
  bool SkipBlanks() {
    for (; at_ < batch_.size(); ++at_) {
      const char16_t c = batch_[at_];
      if (c < 128 && kNameParts[c]) break;
      if (c == u'\n') {
        ++line_;
      } else if (c == u'-' && Peek(1) == u'-') {
        at_ = std::min(batch_.find(u'\n', at_), batch_.size()) - 1;
      } else if (c == u'/' && Peek(1) == u'*') {
        SkipComment();
      } else if (c != u' ' && c != u'\t' && c != u'\r' && c != u'\f' && c != u'\v' && c != 0xA0 &&
                 c != 0xFEFF) {
        break;
      }
    }
    startLine_ = line_;
    return at_ < batch_.size();
  }

  // Comments nest. Ends on the last character of the comment.
  void SkipComment() {
    const int32_t firstLine = line_;
    int depth = 0;
    for (; at_ < batch_.size(); ++at_) {
      if (batch_[at_] == u'\n') {
        ++line_;
      } else if (batch_[at_] == u'/' && Peek(1) == u'*') {
        ++depth;
        ++at_;
      } else if (batch_[at_] == u'*' && Peek(1) == u'/') {
        ++at_;
        if (--depth == 0) return;
      }
    }
    throw ServerFailure(113, u"Missing end comment mark '*/'.", firstLine);
  }

  void Next() {
    const size_t begin = at_;
    const char16_t c = batch_[at_];
    if ((c == u'N' || c == u'n') && Peek(1) == u'\'') {
      ++at_;
      return TakeText(begin, SqlType::NVarChar);
    }
    if (IsNameStart(c)) return TakeName(TokenKind::Name, begin);
    if (c == u'\'') return TakeText(begin, SqlType::VarChar);
    if (IsDigit(c) || (c == u'.' && IsDigit(Peek(1)))) return TakeNumber(begin);
    if (c == u'$' || c == 0xA3) {
      ++at_;
      return TakeNumber(begin);
    }
    if (c == u'[') return TakeQuotedName(begin, u']');
    if (c == u'"') return TakeQuotedName(begin, u'"');
    if (c == u'@') {
      const TokenKind kind = Peek(1) == u'@' ? TokenKind::SystemVariable : TokenKind::Variable;
      at_ += kind == TokenKind::Variable ? 1 : 2;
      return TakeName(kind, begin);
    }
    if (c == u'?') {
      ++at_;
      return Add(TokenKind::Marker, begin, out_.markers++);
    }
    at_ += IsPair(c, Peek(1)) ? 2 : 1;
    Add(TokenKind::Symbol, begin);
  }

  void TakeName(TokenKind kind, size_t begin) {
    while (at_ < batch_.size() && IsNamePart(batch_[at_])) ++at_;
    Add(kind, begin);
  }

  void TakeQuotedName(size_t begin, char16_t quote) {
    for (++at_; at_ < batch_.size(); ++at_) {
      if (batch_[at_] == u'\n') ++line_;
      if (batch_[at_] != quote) continue;
      ++at_;
      if (Peek() != quote) return Add(TokenKind::QuotedName, begin);
    }
    throw Unclosed(begin + 1);
  }

  DatabaseFailure Unclosed(size_t begin) const {
    return ServerFailure(105,
                         u"Unclosed quotation mark after the character string '" +
                             Text(batch_.substr(begin, 128)) + u"'.",
                         startLine_);
  }

  // at_ is on the opening quote.
  void TakeText(size_t begin, SqlType type) {
    const size_t first = ++at_;
    bool plain = true;
    for (;; ++at_) {
      if (at_ == batch_.size()) throw Unclosed(first);
      if (batch_[at_] == u'\n') ++line_;
      if (batch_[at_] == u'\\') plain = false;
      if (batch_[at_] != u'\'') continue;
      if (Peek(1) != u'\'') break;
      plain = false;
      ++at_;
    }
    TextView text = batch_.substr(first, at_++ - first);
    Text meant;
    if (!plain) {
      // A backslash at the end of a line joins the next to it.
      meant = ReplaceAll(ReplaceAll(ReplaceAll(text, u"''", u"'"), u"\\\r\n", u""), u"\\\n", u"");
      text = meant;
    }
    const auto length = std::max(1, static_cast<int32_t>(text.size()));
    std::string value = ToUtf8(text);
    if (type == SqlType::VarChar) value = Narrow(std::move(value));
    const TypeInfo sized{type, length, 0, 0};
    const bool fits = length <= LongestText(sized);
    AddLiteral(begin, {std::move(value), TypeInfo{type, fits ? length : -1, 0, 0}});
  }

  void TakeNumber(size_t begin) {
    if (batch_[at_] == u'0' && (Peek(1) == u'x' || Peek(1) == u'X')) {
      throw Unsupported(u"a binary literal", startLine_);
    }
    const bool money = begin != at_;
    int64_t number = 0;
    int32_t length = 0;  // without the point and leading zeros
    int32_t scale = 0;
    bool point = false;
    for (; IsDigit(Peek()) || (Peek() == u'.' && !point); ++at_) {
      if (batch_[at_] == u'.') {
        point = true;
        continue;
      }
      if (point) ++scale;
      if (length == 0 && batch_[at_] == u'0') continue;
      if (++length <= 18) number = number * 10 + (batch_[at_] - u'0');
    }
    if (!money && (Peek() == u'e' || Peek() == u'E')) return TakeFloat(begin);
    length = std::max(length, 1);
    if (length > 18 || scale > 18)
      throw Unsupported(u"a number of more than 18 digits", startLine_);
    const TypeInfo decimal = DecimalType(std::max(length, std::max(scale, 1)), scale);
    if (money) return AddLiteral(begin, {Convert(number, decimal, kMoney), kMoney});
    if (!point && number <= INT32_MAX) {
      return AddLiteral(begin, {number, TypeInfo{SqlType::Int, 0, length, 0}});
    }
    AddLiteral(begin, {number, decimal});
  }

  void TakeFloat(size_t begin) {
    ++at_;
    if (Peek() == u'+' || Peek() == u'-') ++at_;
    while (IsDigit(Peek())) ++at_;
    // "1e" is 1.
    const std::string number =
        ToUtf8(batch_.substr(begin, at_ - begin)) + (IsDigit(batch_[at_ - 1]) ? "" : "0");
    double value = 0;
    const auto read = std::from_chars(number.data(), number.data() + number.size(), value);
    // What is too small for a float is 0.
    if (read.ec == std::errc::result_out_of_range && number.find('-') == number.npos) {
      throw ServerFailure(168,
                          u"The floating point value '" + FromUtf8(number) +
                              u"' is out of the range of computer representation (8 bytes).",
                          startLine_);
    }
    AddLiteral(begin, {value, kFloat});
  }

  void AddLiteral(size_t begin, TypedValue literal) {
    out_.shape.append(batch_, copied_, begin - copied_);
    copied_ = at_;
    const TypeInfo& type = literal.type;
    out_.shape.push_back(kLiteralMark);
    out_.shape.push_back(static_cast<char16_t>(type.type));
    if (type.type == SqlType::Decimal) {
      out_.shape.push_back(static_cast<char16_t>(type.precision * 256 + type.scale));
    } else if (IsText(type)) {
      out_.shape.push_back(static_cast<char16_t>(LengthClass(type)));
    }
    // Lines stay told apart when a literal spans several.
    if (line_ != startLine_) {
      out_.shape.append(static_cast<size_t>(line_ - startLine_), u'\n');
    }
    Add(TokenKind::Literal, begin, static_cast<int32_t>(out_.literals.size()));
    out_.literals.push_back(std::move(literal));
  }

  TextView batch_;
  size_t at_ = 0;
  size_t copied_ = 0;  // how much of the batch the shape holds
  int32_t line_ = 1;
  int32_t startLine_ = 1;
  Scanned out_;
};

}  // namespace

Scanned Scan(TextView batch) { return Scanner(batch).Run(); }

Text Unquoted(TextView quotedName) {
  const char16_t quote = quotedName.back();
  const char16_t doubled[] = {quote, quote};
  return ReplaceAll(quotedName.substr(1, quotedName.size() - 2), TextView(doubled, 2),
                    TextView(&quote, 1));
}

bool IsReserved(TextView word) {
  return std::ranges::binary_search(kReserved, TextView(ToAsciiLower(word)));
}

}  // namespace vellum250::database::embedded
