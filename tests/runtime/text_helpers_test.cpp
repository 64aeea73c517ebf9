#include "runtime/text_helpers.h"

#include <limits>

#include "automation/failure.h"

namespace vellum250 {
namespace {

TEST(TextHelpers, ChecksTheShapeOfEmailAddresses) {
  const struct {
    TextView address;
    bool valid;
  } cases[] = {
      {u"", false},         {u"a@b.uk", true},      {u"a@b.com", true},
      {u"a@b.info", false}, {u"a@b.c", false},      {u"a@b.", false},
      {u"@b.com", false},   {u"a.b@com", false},    {u"ab.com", false},
      {u"a@b", false},      {u"a@b.co.uk", true},   {u"a@b@c.com", true},
      {u" @.uk", true},     {u"a b@c d.com", true}, {u"a@.com", true},
      {u"a@b.com ", false}, {u"a.com@", false},     {TextView(u"a\0@b.uk", 7), true},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(IsValidEmailAddress(c.address), c.valid) << ToUtf8(c.address);
  }
}

TEST(TextHelpers, TestsBitsOf16BitMasks) {
  const int16_t top = std::numeric_limits<int16_t>::min();
  EXPECT_TRUE(IsBitSet(-1, 16384));
  EXPECT_TRUE(IsBitSet(-1, top));
  EXPECT_TRUE(IsBitSet(top, top));
  EXPECT_TRUE(IsBitSet(6, 4));
  EXPECT_FALSE(IsBitSet(6, 8));
  EXPECT_FALSE(IsBitSet(32767, top));
  for (int bit = 0; bit < 16; ++bit) {
    EXPECT_FALSE(IsBitSet(0, static_cast<int16_t>(1 << bit))) << bit;
  }
}

TEST(TextHelpers, KeepsDigits) {
  EXPECT_EQ(DigitsOnly(u"4111-1111 1111/1111"), u"4111111111111111");
  EXPECT_EQ(DigitsOnly(u"none \u0661\uFF11"), u"");
  EXPECT_EQ(DigitsOnly(u""), u"");
}

TEST(TextHelpers, Pads) {
  EXPECT_EQ(PadLeft(u"42", u"0", 5), u"00042");
  EXPECT_EQ(PadLeft(u"42", u"ab", 5), u"abab42");
  EXPECT_EQ(PadLeft(u"42", u"0", 2), u"42");
  EXPECT_EQ(PadLeft(u"42", u"", 2), u"42");
  EXPECT_EQ(PadLeft(u"42", u"0", -7), u"42");
  EXPECT_EQ(PadLeft(u"", u"-", 3), u"---");
  EXPECT_EQ(PadLeft(u"", u" ", 32767).size(), 32767u);
}

TEST(TextHelpers, RepeatsBeyondTheModel) {
  EXPECT_EQ(RepeatToLength(u"abc", u"xyz"), u"xyzxyz");
  EXPECT_EQ(RepeatToLength(u"ab", u"xyz"), u"xyz");
  EXPECT_EQ(RepeatToLength(u"", u"k"), u"k");
  EXPECT_EQ(RepeatToLength(Text(1 << 20, u'm'), u"k").size(), (1u << 20) + 1);
}

TEST(TextHelpers, RefuseToFillWithNothing) {
  const auto numberOf = [](auto call) {
    try {
      call();
    } catch (const Failure& failure) {
      return failure.Number();
    }
    return 0;
  };
  EXPECT_EQ(numberOf([] { PadLeft(u"4", u"", 2); }), 5);
  EXPECT_EQ(numberOf([] { RepeatToLength(u"", u""); }), 5);
}

}  // namespace
}  // namespace vellum250
