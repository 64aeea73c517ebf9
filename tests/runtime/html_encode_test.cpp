#include "runtime/html_encode.h"

#include <random>

#include "platform/code_page.h"

namespace vellum250 {
namespace {

TEST(HtmlEncode, ReplacesWhatMarkupAndTheCodePageCannotTake) {
  const struct {
    TextView text;
    TextView encoded;
  } cases[] = {
      {u"", u""},
      {u"a & b <c> \"d\"", u"a &amp; b &lt;c&gt; &quot;d&quot;"},
      {u"O'Neil", u"O'Neil"},
      {u"&amp;", u"&amp;amp;"},
      {u"\t\r\n", u"&#9;&#13;&#10;"},
      {TextView(u"a\0b", 3), u"a&#0;b"},
      {u"\x1F \x7E\x7F", u"&#31; \x7E\x7F"},
      {u"caf\u00E9", u"caf&#233;"},
      {u"\u20AC5 \u2013 \u201Cx\u201D", u"&#128;5 &#150; &#147;x&#148;"},
      {u"\u00A0\u00FF\u0081", u"&#160;&#255;&#129;"},
      // Without a code: as they are.
      {u"\u0080\u0416\u4E2D\U0001F600", u"\u0080\u0416\u4E2D\U0001F600"},
      {u"\xD83D|\xDE00", u"\xD83D|\xDE00"},
      // A no-break space in UTF-8, read as two characters.
      {u"a\u00C2\u00A0b", u"a b"},
      {u"\u00C2\u00C2\u00A0\u00A0", u"&#194; &#160;"},
      {u"\u00A0\u00C2", u"&#160;&#194;"},
  };
  for (const auto& c : cases) EXPECT_EQ(HtmlEncode(c.text), c.encoded) << ToUtf8(c.text);
}

// The rule word by word: from the last character to the first, on the text after the no-break
// spaces are gone.
Text EncodedBackwards(TextView text) {
  Text out = ReplaceAll(text, u"\u00C2\u00A0", u" ");
  for (size_t i = out.size(); i-- > 0;) {
    const int16_t code = platform::CharacterCode(out[i]);
    Text replacement(1, out[i]);
    if (code == 34) replacement = u"&quot;";
    if (code == 38) replacement = u"&amp;";
    if (code == 60) replacement = u"&lt;";
    if (code == 62) replacement = u"&gt;";
    if (code < 32 || code >= 128) replacement = u"&#" + NumberText(code) + u";";
    out.replace(i, 1, replacement);
  }
  return out;
}

TEST(HtmlEncode, AgreesWithTheRuleOnEveryCharacterAtEveryPlaceOfABlock) {
  for (int unit = 0; unit <= 0xFFFF; ++unit) {
    const Text alone(1, static_cast<char16_t>(unit));
    ASSERT_EQ(HtmlEncode(alone), EncodedBackwards(alone)) << unit;
    Text among(200, u'x');
    among[static_cast<size_t>(unit % 200)] = static_cast<char16_t>(unit);
    ASSERT_EQ(HtmlEncode(among), EncodedBackwards(among)) << unit;
  }
}

TEST(HtmlEncode, AgreesWithTheRuleOnMixturesOfEveryLength) {
  const TextView special = u"\"&<>\u00C2\u00A0\u00C2\u00A0\u00E9\u0416\x09\x7F\xD800";
  std::mt19937 random(250);
  for (size_t length = 0; length < 700; ++length) {
    for (unsigned oneIn : {2u, 20u, 300u}) {
      Text text(length, u'p');
      for (char16_t& c : text) {
        if (random() % oneIn == 0) c = special[random() % special.size()];
      }
      ASSERT_EQ(HtmlEncode(text), EncodedBackwards(text)) << length;
    }
  }
}

TEST(HtmlEncode, AppendsToWhatIsThere) {
  Text out = u"<b>";
  AppendHtmlEncoded(out, u"1 < 2");
  AppendHtmlEncoded(out, u"");
  EXPECT_EQ(out, u"<b>1 &lt; 2");
}

TEST(HtmlEncode, TakesAMillionSpecialCharacters) {
  const Text encoded = HtmlEncode(Text(1 << 20, u'"'));
  EXPECT_EQ(encoded.size(), 6u << 20);
  EXPECT_EQ(encoded.substr(encoded.size() - 12), u"&quot;&quot;");
}

}  // namespace
}  // namespace vellum250
