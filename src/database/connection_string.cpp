#include "database/connection_string.h"

#include <algorithm>

#include "database/connection.h"

namespace vellum250::database {

namespace {

constexpr TextView kPasswordWords[] = {u"password", u"pwd", u"secret"};

bool IsBlank(char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r'); }

TextView WithoutBlanks(TextView text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

// The key as it is compared.
Text PlainKey(TextView key) {
  Text plain = ToAsciiLower(key);
  std::erase_if(plain, IsBlank);
  return plain;
}

// Reads a connection string entry by entry.
class Reader {
 public:
  explicit Reader(TextView text) : text_(text) {}

  // False at the end of the text. Raises a DatabaseFailure when the entry cannot be read; Position
  // then is still where it begins.
  bool Next(ConnectionString::Entry& entry) {
    size_t at = position_;
    while (at < text_.size() && (text_[at] == u';' || IsBlank(text_[at]))) ++at;
    if (at == text_.size()) return false;
    ++count_;

    const size_t equals = text_.find_first_of(u"=;", at);
    if (equals == TextView::npos || text_[equals] == u';') Fail(u"has no \"=\"");
    entry.key = WithoutBlanks(text_.substr(at, equals - at));
    if (entry.key.empty()) Fail(u"has no keyword before its \"=\"");

    at = equals + 1;
    while (at < text_.size() && IsBlank(text_[at])) ++at;
    const char16_t mark = at < text_.size() ? text_[at] : u';';
    const bool enclosed = mark == u'{' || mark == u'"' || mark == u'\'';
    position_ = enclosed ? ReadEnclosed(at, mark == u'{' ? u'}' : mark, entry.value)
                         : ReadPlain(at, entry.value);
    return true;
  }

  size_t Position() const { return position_; }

 private:
  // Both give the position of the ";" after the value, or of the end.
  size_t ReadPlain(size_t at, Text& value) const {
    const size_t end = std::min(text_.find(u';', at), text_.size());
    value = WithoutBlanks(text_.substr(at, end - at));
    return end;
  }

  size_t ReadEnclosed(size_t at, char16_t closing, Text& value) const {
    value.clear();
    for (++at;; ++at) {
      if (at == text_.size()) Fail(Text(u"has no closing ") + closing);
      if (text_[at] == closing) {
        if (at + 1 == text_.size() || text_[at + 1] != closing) break;
        ++at;
      }
      value.push_back(text_[at]);
    }
    do ++at;
    while (at < text_.size() && IsBlank(text_[at]));
    if (at < text_.size() && text_[at] != u';') {
      Fail(Text(u"goes on after its closing ") + closing);
    }
    return at;
  }

  [[noreturn]] void Fail(TextView what) const {
    throw DatabaseFailure(
        kUnspecifiedFailure, kLibrarySource,
        u"The connection string cannot be read: entry " + NumberText(count_) + u" " + Text(what));
  }

  TextView text_;
  size_t position_ = 0;
  int64_t count_ = 0;
};

// How long "=" and the value behind it are at the beginning of a text; all of it when the value
// cannot be read.
size_t ValueLength(TextView text) {
  const Text entry = u"x" + Text(text);
  Reader reader(entry);
  ConnectionString::Entry value;
  try {
    reader.Next(value);
    return reader.Position() - 1;
  } catch (const DatabaseFailure&) {
    return text.size();
  }
}

// Whether a value would be read otherwise when it stood there plainly.
bool NeedsBraces(TextView value) {
  return value.find_first_of(u";{}") != TextView::npos || value.starts_with(u'"') ||
         value.starts_with(u'\'') || WithoutBlanks(value).size() != value.size();
}

void AppendEntry(Text& out, const ConnectionString::Entry& entry) {
  out.append(entry.key).push_back(u'=');
  if (NeedsBraces(entry.value)) {
    out.append(u"{").append(ReplaceAll(entry.value, u"}", u"}}")).append(u"}");
  } else {
    out.append(entry.value);
  }
  out.push_back(u';');
}

}  // namespace

ConnectionString::ConnectionString(std::vector<Entry> entries)
    : entries_(std::move(entries)), source_(ToText()) {}

ConnectionString ConnectionString::Parse(TextView text) {
  if (text.find(u'\0') != TextView::npos) {
    throw DatabaseFailure(kUnspecifiedFailure, kLibrarySource,
                          u"The connection string cannot be read: it holds a character 0");
  }
  ConnectionString result;
  result.source_ = text;
  Reader reader(text);
  for (Entry entry; reader.Next(entry);) result.entries_.push_back(std::move(entry));
  return result;
}

std::optional<TextView> ConnectionString::Find(TextView key) const {
  for (const Entry& entry : entries_) {
    if (SameKey(entry.key, key)) return entry.value;
  }
  return std::nullopt;
}

std::vector<Text> ConnectionString::Passwords() const {
  std::vector<Text> passwords;
  for (const Entry& entry : entries_) {
    if (IsPasswordKey(entry.key) && !entry.value.empty()) passwords.push_back(entry.value);
  }
  return passwords;
}

Text ConnectionString::ToText() const {
  Text text;
  for (const Entry& entry : entries_) AppendEntry(text, entry);
  return text;
}

bool SameKey(TextView a, TextView b) {
  const auto skipBlanks = [](TextView& key) {
    while (!key.empty() && IsBlank(key.front())) key.remove_prefix(1);
  };
  while (true) {
    skipBlanks(a);
    skipBlanks(b);
    if (a.empty() || b.empty()) return a.empty() && b.empty();
    if (AsciiLower(a.front()) != AsciiLower(b.front())) return false;
    a.remove_prefix(1);
    b.remove_prefix(1);
  }
}

bool IsPasswordKey(TextView key) {
  const Text plain = PlainKey(key);
  return std::ranges::any_of(kPasswordWords,
                             [&](TextView word) { return plain.find(word) != Text::npos; });
}

Text WithoutPasswords(TextView text) {
  Text result;
  Reader reader(text);
  ConnectionString::Entry entry;
  try {
    while (true) {
      const size_t begin = reader.Position();
      if (!reader.Next(entry)) return result.append(text.substr(begin));
      const TextView source = text.substr(begin, reader.Position() - begin);
      if (IsPasswordKey(entry.key)) {
        result.append(source.substr(0, source.find(u'=') + 1)).append(u"***");
      } else {
        result.append(source);
      }
    }
  } catch (const DatabaseFailure&) {
    return result.append(u"***");
  }
}

Text WithoutPasswords(TextView message, std::span<const Text> passwords, bool alsoParts) {
  constexpr size_t kPart = 4;
  const Text lower = ToAsciiLower(message);
  std::vector<bool> hidden(message.size());
  const auto hide = [&](size_t from, size_t to) {
    std::fill(hidden.begin() + static_cast<std::ptrdiff_t>(from),
              hidden.begin() + static_cast<std::ptrdiff_t>(to), true);
  };
  for (const Text& password : passwords) {
    // As it is, and with the closing mark doubled.
    for (TextView mark : {u"", u"}", u"\"", u"'"}) {
      const Text written =
          ToAsciiLower(mark.empty() ? password : ReplaceAll(password, mark, Text(mark) += mark));
      const size_t length = alsoParts ? std::min(written.size(), kPart) : written.size();
      for (size_t part = 0; part + length <= written.size(); ++part) {
        const TextView sought = TextView(written).substr(part, length);
        for (size_t at = lower.find(sought); at != Text::npos; at = lower.find(sought, at + 1)) {
          hide(at, at + length);
        }
      }
    }
  }
  // Also those that are not known here: a data source has passwords of its own.
  for (size_t equals = lower.find(u'='); equals != Text::npos;
       equals = lower.find(u'=', equals + 1)) {
    const TextView key = WithoutBlanks(TextView(lower).substr(0, equals));
    if (!std::ranges::any_of(kPasswordWords, [&](TextView word) { return key.ends_with(word); })) {
      continue;
    }
    hide(equals + 1, equals + ValueLength(message.substr(equals)));
  }
  Text result;
  for (size_t i = 0; i < message.size(); ++i) {
    if (!hidden[i]) {
      result.push_back(message[i]);
    } else if (i == 0 || !hidden[i - 1]) {
      result.append(u"***");
    }
  }
  return result;
}

}  // namespace vellum250::database
