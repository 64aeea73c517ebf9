#include "platform/code_page.h"

namespace vellum250::platform {
namespace {

TEST(CodePage, GivesTheCodeOfACharacterOrThatOfAQuestionMark) {
  const struct {
    char16_t character;
    int16_t code;
  } cases[] = {
      {0, 0},
      {u'\t', 9},
      {u' ', 32},
      {u'A', 65},
      {0x7F, 127},
      {0x20AC, 128},
      {0x201A, 130},
      {0x0192, 131},
      {0x2018, 145},
      {0x2019, 146},
      {0x201C, 147},
      {0x2014, 151},
      {0x2122, 153},
      {0x017E, 158},
      {0x0178, 159},
      {0xA0, 160},
      {0xA3, 163},
      {0xC2, 194},
      {0xE9, 233},
      {0xFF, 255},
      // Undefined in the code page: themselves.
      {0x81, 129},
      {0x8D, 141},
      {0x8F, 143},
      {0x90, 144},
      {0x9D, 157},
      // No code: the other control characters, look-alikes, other scripts, surrogates.
      {0x80, 63},
      {0x9F, 63},
      {0x0100, 63},
      {0x0141, 63},
      {0x2032, 63},
      {0x2012, 63},
      {0xFF21, 63},
      {0x0416, 63},
      {0x4E2D, 63},
      {0xD83D, 63},
      {0xDC00, 63},
      {0xFFFD, 63},
      {0xFFFF, 63},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(CharacterCode(c.character), c.code) << std::hex << static_cast<int>(c.character);
  }
}

TEST(CodePage, EveryByteSurvivesTheWayThereAndBack) {
  std::string bytes;
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<char>(i));
  EXPECT_EQ(ToCodePage(FromCodePage(bytes)), bytes);
}

TEST(CodePage, AgreesWithItselfOnEveryCodeUnit) {
  int withoutCode = 0;
  for (int unit = 0; unit <= 0xFFFF; ++unit) {
    const char16_t c = static_cast<char16_t>(unit);
    const int16_t code = CharacterCode(c);
    ASSERT_TRUE(code >= 0 && code <= 255) << unit;
    if (CharacterOfCode(static_cast<uint8_t>(code)) == c) continue;
    ASSERT_EQ(code, u'?') << unit;
    ++withoutCode;
  }
  EXPECT_EQ(withoutCode, 0x10000 - 256);
}

TEST(CodePage, ConvertsWholeTexts) {
  EXPECT_EQ(ToCodePage(u""), "");
  EXPECT_EQ(FromCodePage(""), u"");
  EXPECT_EQ(ToCodePage(TextView(u"a\0b", 3)), std::string("a\0b", 3));
  EXPECT_EQ(ToCodePage(u"Zoë \u2013 5 \u20AC \u0416 \U0001F600"), "Zo\xEB \x96 5 \x80 ? ??");
  EXPECT_EQ(FromCodePage("Zo\xEB \x96 5 \x80"), u"Zoë \u2013 5 \u20AC");
}

}  // namespace
}  // namespace vellum250::platform
