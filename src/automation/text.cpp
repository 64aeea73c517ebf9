#include "automation/text.h"

#include <charconv>

namespace vellum250 {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

bool IsLeadSurrogate(char16_t c) { return (c & 0xFC00) == 0xD800; }
bool IsTrailSurrogate(char16_t c) { return (c & 0xFC00) == 0xDC00; }

// Length of the UTF-8 sequence at `bytes`, its code point in `codePoint`; 0 when it is none.
// Surrogates are accepted as code points, overlong forms are not.
size_t DecodeOne(std::string_view bytes, char32_t& codePoint) {
  const auto at = [&](size_t i) { return static_cast<unsigned char>(bytes[i]); };
  const unsigned char first = at(0);
  size_t length = 0;
  char32_t smallest = 0;
  if (first >= 0xC2 && first <= 0xDF) {
    length = 2, smallest = 0x80, codePoint = first & 0x1F;
  } else if ((first & 0xF0) == 0xE0) {
    length = 3, smallest = 0x800, codePoint = first & 0x0F;
  } else if (first >= 0xF0 && first <= 0xF4) {
    length = 4, smallest = 0x10000, codePoint = first & 0x07;
  } else {
    return 0;
  }
  if (bytes.size() < length) return 0;
  for (size_t i = 1; i < length; ++i) {
    if ((at(i) & 0xC0) != 0x80) return 0;
    codePoint = (codePoint << 6) | (at(i) & 0x3F);
  }
  return codePoint >= smallest && codePoint <= 0x10FFFF ? length : 0;
}

}  // namespace

void AppendUtf8(std::string& out, TextView text) {
  out.reserve(out.size() + text.size());
  const auto put = [&out](char32_t bits) { out.push_back(static_cast<char>(bits)); };
  for (size_t i = 0; i < text.size(); ++i) {
    char32_t c = text[i];
    if (c < 0x80) {
      put(c);
      continue;
    }
    if (IsLeadSurrogate(text[i]) && i + 1 < text.size() && IsTrailSurrogate(text[i + 1])) {
      c = 0x10000 + ((c - 0xD800) << 10) + (text[++i] - 0xDC00u);
    }
    if (c < 0x800) {
      put(0xC0 | (c >> 6));
    } else if (c < 0x10000) {
      put(0xE0 | (c >> 12));
      put(0x80 | ((c >> 6) & 0x3F));
    } else {
      put(0xF0 | (c >> 18));
      put(0x80 | ((c >> 12) & 0x3F));
      put(0x80 | ((c >> 6) & 0x3F));
    }
    put(0x80 | (c & 0x3F));
  }
}

std::string ToUtf8(TextView text) {
  std::string out;
  AppendUtf8(out, text);
  return out;
}

Text FromUtf8(std::string_view bytes) {
  Text out;
  out.reserve(bytes.size());
  for (size_t i = 0; i < bytes.size();) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    if (byte < 0x80) {
      out.push_back(byte);
      ++i;
      continue;
    }
    char32_t codePoint = 0;
    const size_t length = DecodeOne(bytes.substr(i), codePoint);
    if (length == 0) {
      out.push_back(kReplacement);
      ++i;
      continue;
    }
    if (codePoint >= 0x10000) {
      out.push_back(static_cast<char16_t>(0xD7C0 + (codePoint >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 | (codePoint & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(codePoint));
    }
    i += length;
  }
  return out;
}

bool EqualsIgnoreAsciiCase(TextView a, TextView b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
  }
  return true;
}

bool StartsWithIgnoreAsciiCase(TextView text, TextView prefix) {
  return EqualsIgnoreAsciiCase(text.substr(0, prefix.size()), prefix);
}

Text ToAsciiLower(TextView text) {
  Text out(text);
  for (char16_t& c : out) c = AsciiLower(c);
  return out;
}

TextView TrimBlanks(TextView text) {
  const size_t first = text.find_first_not_of(u' ');
  if (first == TextView::npos) return {};
  return text.substr(first, text.find_last_not_of(u' ') - first + 1);
}

Text ReplaceAll(TextView text, TextView from, TextView to) {
  Text out;
  out.reserve(text.size());
  size_t start = 0;
  for (size_t found; (found = text.find(from, start)) != TextView::npos;
       start = found + from.size()) {
    out.append(text, start, found - start).append(to);
  }
  out.append(text, start, TextView::npos);
  return out;
}

void AppendNumber(Text& out, int64_t number) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  out.append(digits, end);
}

Text NumberText(int64_t number) {
  Text out;
  AppendNumber(out, number);
  return out;
}

}  // namespace vellum250
