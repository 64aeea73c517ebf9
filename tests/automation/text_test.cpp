#include "automation/text.h"

#include <gtest/gtest.h>

#include "automation/locale.h"

namespace vellum250 {
namespace {

TEST(Utf8, EveryCodeUnitComesBack) {
  Text all;
  for (uint32_t c = 0; c <= 0xFFFF; ++c) all.push_back(static_cast<char16_t>(c));
  EXPECT_EQ(FromUtf8(ToUtf8(all)), all);
}

TEST(Utf8, EncodesAsTheStandardSays) {
  EXPECT_EQ(ToUtf8(u"a\u00E9\u20AC\U0001F600"), "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x98\x80");
  EXPECT_EQ(ToUtf8(Text{0xDE00, 0xD83D}), "\xED\xB8\x80\xED\xA0\xBD") << "not a pair";
  EXPECT_EQ(ToUtf8(Text{u'a', 0, u'b'}), std::string("a\0b", 3));
}

TEST(Utf8, ReplacesWhatIsNoEncoding) {
  const struct {
    std::string_view bytes;
    Text text;
  } cases[] = {
      {"\xC3", u"\uFFFD"},                                // cut off
      {"\xC0\x80", u"\uFFFD\uFFFD"},                      // overlong
      {"\xE0\x80\xAF", u"\uFFFD\uFFFD\uFFFD"},            // overlong
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD"},  // beyond Unicode
      {"a\xFF"
       "b",
       u"a\uFFFDb"},
      {"\xE2\x82(", u"\uFFFD\uFFFD("},
  };
  for (const auto& c : cases) EXPECT_EQ(FromUtf8(c.bytes), c.text) << c.bytes;
}

TEST(TextHelpers, TrimsBlanksOnly) {
  EXPECT_EQ(TrimBlanks(u"  a b  "), u"a b");
  EXPECT_EQ(TrimBlanks(u"\ta\u00A0 "), u"\ta\u00A0");
  EXPECT_EQ(TrimBlanks(u"   "), u"");
}

TEST(TextHelpers, ReplacesFromLeftToRightAndNeverAgain) {
  EXPECT_EQ(ReplaceAll(u"aaa", u"aa", u"b"), u"ba");
  EXPECT_EQ(ReplaceAll(u"O'Neil's", u"'", u"''"), u"O''Neil''s");
  EXPECT_EQ(ReplaceAll(u"", u"x", u"y"), u"");
}

TEST(LetterCase, MapsLettersAndKeepsTheLength) {
  EXPECT_EQ(ToUpper(u"stra\u00DFe \u00E9\u00FF\u03B1\u0436"),
            u"STRA\u00DFE \u00C9\u0178\u0391\u0416");
  EXPECT_EQ(ToLower(u"\u00C9COLE \u0130"), ToLower(u"\u00E9cole \u0130"));
  const Text surrogates{0xD83D, 0xDE00, 0xD800};
  EXPECT_EQ(ToUpper(surrogates), surrogates);
}

}  // namespace
}  // namespace vellum250
