#include "platform/pattern.h"

#include <gtest/gtest.h>

#include <span>
#include <string>

#include "automation/failure.h"
#include "support/wine.h"

namespace vellum250::platform {
namespace {

// The matches as "<position>+<length> ..", or the number of the failure.
std::string Found(TextView pattern, TextView subject) {
  std::string found;
  try {
    for (const auto& [position, length] : FindMatches(pattern, subject)) {
      if (!found.empty()) found += ' ';
      found += std::to_string(position) + '+' + std::to_string(length);
    }
  } catch (const Failure& failure) {
    EXPECT_FALSE(failure.Description().empty());
    return std::to_string(failure.Number());
  }
  return found;
}

Text Times(size_t count, TextView text) {
  Text all;
  for (size_t i = 0; i < count; ++i) all += text;
  return all;
}

struct Case {
  TextView pattern;
  TextView subject;
  const char* found;
};

void ExpectAll(std::span<const Case> cases) {
  for (const auto& [pattern, subject, found] : cases) {
    EXPECT_EQ(Found(pattern, subject), found) << ToUtf8(pattern) << " in " << ToUtf8(subject);
  }
}

TEST(Pattern, FindsWhatTheScriptEngineFinds) {
  static constexpr Case kCases[] = {
      {u"abc", u"xABCabc", "1+3 4+3"},
      {u"abc", u"", ""},
      {u"", u"", "0+0"},
      {u"^[\\w.-]+@[\\w-]+(\\.[\\w-]+)+$", u"Anne.Smith@example.co.uk", "0+24"},
      {u"^[A-Z]{1,2}\\d[A-Z\\d]? ?\\d[A-Z]{2}$", u"sw1a 2aa", "0+8"},
      {u"aa", u"aaaaa", "0+2 2+2"},
      // Ends of the text, not of lines.
      {u"^b", u"a\nb", ""},
      {u"a$", u"a\n", ""},
      {u"a.c", u"a\nc a\tc", "4+3"},
      {u"\\bcat\\b|\\Bs", u"cat cats _cat", "0+3 7+1"},
      // Repetition, greedy and not; a brace that repeats nothing is itself.
      {u"a+?b??", u"aab", "0+1 1+1"},
      {u"a{2}", u"aaaaa", "0+2 2+2"},
      {u"a{2,}", u"aaaaa", "0+5"},
      {u"a{1,2}?", u"aaa", "0+1 1+1 2+1"},
      {u"a{,3}", u"a{,3} aaa", "0+5"},
      {u"{", u"{", "0+1"},
      {u"a{1", u"a{1", "0+3"},
      {u"a{1,b", u"a{1,b", "0+5"},
      {u"a{ 1}", u"a{ 1}", "0+5"},
      {u"]}", u"]}", "0+2"},
      {u"(?=a)*a", u"aa", "0+1 1+1"},
      {u"(?!a){2}\\w", u"ab", "1+1"},
      // Groups and references; what has not matched yet is empty.
      {u"(a|b)\\1", u"abBaA", "1+2 3+2"},
      {u"\\1(a)", u"aa", "0+1 1+1"},
      {u"(a)|b\\1", u"b", "0+1"},
      {u"(?!(a))\\1b", u"ab", "1+1"},
      {u"(?:a(?=b)|c(?!b))", u"abcbca", "0+1 4+1"},
      {u"(a)(b)(c)(d)(e)(f)(g)(h)(i)(j)\\10", u"abcdefghijj", "0+11"},
      // Sets.
      {u"[a-c-e]", u"abd-e", "0+1 1+1 3+1 4+1"},
      {u"[^a-y]", u"aZz-", "1+1 2+1 3+1"},
      {u"[Z-a]", u"zAb_", "0+1 1+1 3+1"},
      {u"[\\w-]", u"a-5 ", "0+1 1+1 2+1"},
      {u"[\\d-a]", u"a-5", "0+1 1+1 2+1"},
      {u"[^\\W\\d]", u"1a ", "1+1"},
      {u"[\\s\\S]", u"\n", "0+1"},
      {u"[]", u"[]", ""},
      {u"[]a]", u"a]", ""},
      {u"[^]", u"a\n", "0+1 1+1"},
      {u"[[:alpha:]]", u"a] x]", "0+2"},
      {u"[\\b\\B\\]]", u"\bb]", "0+1 1+1 2+1"},
      {u"[(]\\(", u"((", "0+2"},
      // Escapes. A letter that has no meaning as one is itself.
      {u"\\f\\n\\r\\t\\v", u"\f\n\r\t\v", "0+5"},
      {u"\\x41\\u0042\\103", u"abc", "0+3"},
      {u"\\cA\\cz", u"\x01\x1A", "0+2"},
      {u"\\08[\\12]\\2(a)", TextView(u"\0008\n\002a", 5), "0+5"},
      {u"\\a\\e\\h\\i\\A\\Z\\z\\G\\K\\R\\X\\p\\C\\N", u"aehiAZzGKRXpCN", "0+14"},
      {u"\\Q.\\E", u"Q.E QxE", "0+3 4+3"},
      {u"a b#c", u"ab a b#c", "3+5"},
      // ASCII only.
      {u"\\w|\\d", u"\u00E9\u0661_9", "2+1 3+1"},
      {u"\\b.", u"\u00E9a\u00E9", "1+1 2+1"},
      // Code units, halves of characters too.
      {u"\xD83D", u"\U0001F600", "0+1"},
      {u"^..$", u"\U0001F600", "0+2"},
      {u"[\xDE00-\xDFFF]", u"\xDE00 \xD83D", "0+1"},
      // A capital beyond ASCII is none of ASCII's letters: long s, sign of kelvin, i without dot.
      {u"[a-z]", u"\u017F\u212A\u0131", ""},
      {u"(k|s|i)", u"\u017F\u212A\u0130", ""},
      {u"\u017F", u"sS\u017F", "2+1"},
  };
  ExpectAll(kCases);
}

// As Microsoft documents its engine, or where that is silent as ECMA-262 has it.
TEST(Pattern, FindsWhatWinesEngineDoesNot) {
  if (support::IsWine()) GTEST_SKIP() << "Wine differs here";
  static constexpr Case kCases[] = {
      // Wine knows the case of ASCII only.
      {u"\u00E9", u"\u00C9\u00E9", "0+1 1+1"},
      {u"[\u0430-\u044F]+", u"\u0416\u0436", "0+2"},
      {u"[^\u0416]", u"\u0436\u0418", "1+1"},
      {u"(\u00B5)\\1", u"\u039C\u03BC", "0+2"},
      {u"\u00FF", u"\u0178", "0+1"},
      // Wine ends a pattern at a zero character, and does not leave it out of a set.
      {TextView(u"a\0b", 3), TextView(u"a\0b", 3), "0+3"},
      {TextView(u"[^\0]", 4), TextView(u"a\0b", 3), "0+1 2+1"},
      {u"[^\\0]b", TextView(u"\0b\0ab", 5), "3+2"},
      // In Wine a dot is no carriage return, U+2028 or U+2029, and white space is Unicode's.
      {u".", u"\r\u2028\n\u2029", "0+1 1+1 3+1"},
      {u"\\s", u" \t\n\v\f\r\u00A0\u2003\uFEFF", "0+1 1+1 2+1 3+1 4+1 5+1"},
      {u"\\S", u" \u00A0", "1+1"},
      // Wine takes what is left for the number or drops it.
      {u"\\x4", u"x4", "0+2"},
      {u"[\\u41]", u"u4A", "0+1 1+1"},
      {u"\\c1", u"c1", "0+2"},
      {u"\\400", u" 0", "0+2"},
      {u"(a)\\10", u"aa0", "0+3"},
      {u"\\8", u"8", "0+1"},
      // Wine finds the same empty match again and again.
      {u"a*", u"baac", "0+0 1+2 3+0 4+0"},
      {u"a|", u"ba", "0+0 1+1 2+0"},
      {u"()", u"ab", "0+0 1+0 2+0"},
      {u"$", u"ab", "2+0"},
      {u"(a*)*", u"b", "0+0 1+0"},
      // In Wine nothing at the end of what is looked ahead for is no match.
      {u"(?=a*?)b", u"b", "0+1"},
  };
  ExpectAll(kCases);
}

TEST(Pattern, RefusesWhatIsNoPattern) {
  const TextView patterns[] = {
      u"(",       u"(?:",    u"a)",     u"(?",      u"(?<a>b)", u"(?<=a)b", u"(?<!a)b", u"(?i)b",
      u"(?:?=a)", u"(?>b)",  u"(?#b)b", u"(?P<a>",  u"(?|a)",   u"(*UTF)b", u"(*:a)",   u"*",
      u"a|*",     u"a**",    u"a*+",    u"a++",     u"a?+",     u"a???",    u"a{1}{2}", u"a{1,2}+",
      u"{1}",     u"a{2,1}", u"^*",     u"$+",      u"\\b?",    u"\\B{2}",  u"[",       u"[^",
      u"[a",      u"[\\]",   u"[z-a]",  u"[a-\\d]", u"\\",      u"a\\",     u"(\\",
  };
  for (const TextView pattern : patterns) {
    const std::string number = Found(pattern, u"a");
    // The engine tells kinds of errors apart.
    EXPECT_TRUE(number >= "5017" && number <= "5021" && number.size() == 4)
        << ToUtf8(pattern) << ": " << number;
  }
}

TEST(Pattern, FindsManyAndFar) {
  const Text subject = Times(100'000, u"a");
  EXPECT_EQ(Found(u"^a+$", subject), "0+100000");
  EXPECT_EQ(Found(u"b", subject), "");
  EXPECT_EQ(FindMatches(u"a", subject.substr(0, 2000)).size(), 2000U);
  EXPECT_EQ(Found(subject.substr(0, 10'000), subject.substr(0, 10'000)), "0+10000");
  const Text nested = Times(200, u"(").append(u"a").append(Times(200, u")"));
  EXPECT_EQ(Found(nested, u"a"), "0+1");
}

#ifndef _WIN32
// The script engine has bounds of its own, or none.
TEST(Pattern, GivesUpOnWhatTakesTooMuch) {
  Text text = Times(100'000, u"a");
  EXPECT_EQ(Found(u"(?:a|b)*", text), "0+100000 100000+0");
  EXPECT_EQ(Found(text, u"a"), "7");
  text.push_back(u'b');
  EXPECT_EQ(Found(u"(a+)+$", text), "7");
  EXPECT_EQ(Found(u"(a|aa)+$", text), "7");
  EXPECT_EQ(Found(u"((a{1000}){1000}){1000}", u"a"), "7");
  EXPECT_EQ(Found(u"a{0,65536}", u"a"), "7");
  const Text open = Times(100'000, u"(");
  EXPECT_EQ(Found(open, u"a"), "5017");
  EXPECT_EQ(Found(Text(open).append(Times(100'000, u")")), u"a"), "7");
}
#endif

}  // namespace
}  // namespace vellum250::platform
