#include "database/embedded/collation.h"
#include "database/embedded/like.h"
#include "database/embedded/texts.h"
#include "stored_values.h"

namespace vellum250::database::embedded {
namespace {

const std::string kFace = "\xF0\x9F\x99\x82";  // U+1F642
const std::string kHighHalf = "\xED\xA0\xBD";  // its first unit alone
const std::string kLowHalf = "\xED\xB9\x82";   // its second
const std::string kCombined = "e\xCC\x81";     // e and a combining accent
const std::string kZero("a\0b", 3);

std::string Cut(std::string_view text, int64_t start, int64_t count) {
  return std::string(Slice(text, start, count).View());
}

TEST(Texts, CountUtf16Units) {
  EXPECT_EQ(Utf16Length(""), 0);
  EXPECT_EQ(Utf16Length("Zo\xC3\xAB"), 3);
  EXPECT_EQ(Utf16Length(kFace), 2);
  EXPECT_EQ(Utf16Length(kHighHalf), 1);
  EXPECT_EQ(Utf16Length(kCombined), 2);
  EXPECT_EQ(Utf16Length(kZero), 3);
}

TEST(Texts, AreCutBetweenUnits) {
  const std::string text = "a" + kFace + "\xC3\xAB";
  EXPECT_EQ(Cut(text, 0, 1), "a");
  EXPECT_EQ(Cut(text, 0, 2), "a" + kHighHalf);
  EXPECT_EQ(Cut(text, 1, 2), kFace);
  EXPECT_EQ(Cut(text, 2, 1), kLowHalf);
  EXPECT_EQ(Cut(text, 2, 9), kLowHalf + "\xC3\xAB");
  EXPECT_EQ(Cut(kFace + kFace, 1, 2), kLowHalf + kHighHalf);
  EXPECT_EQ(Cut(text, 4, 9), "");
  EXPECT_EQ(Cut("abc", -1, 3), "ab");
  EXPECT_EQ(Cut("abc", -3, 3), "");
  EXPECT_EQ(Cut(kZero, 1, 2), kZero.substr(1));
  EXPECT_EQ(FromUtf8(Cut(text, 0, 2) + Cut(text, 2, 9)), FromUtf8(text));
}

TEST(Texts, AreSearchedWithoutRegardToCase) {
  EXPECT_EQ(CharIndex("c", "abcabc"), 3);
  EXPECT_EQ(CharIndex("C", "abcabc", 4), 6);
  EXPECT_EQ(CharIndex("c", "abcabc", -5), 3);
  EXPECT_EQ(CharIndex("c", "abcabc", 99), 0);
  EXPECT_EQ(CharIndex("", "abc"), 0);
  EXPECT_EQ(CharIndex("\xC3\x89", kFace + "\xC3\xA9"), 3);
  EXPECT_EQ(CharIndex("e", "\xC3\xA9"), 0);
  EXPECT_EQ(CharIndex("b", kZero), 3);
  EXPECT_EQ(Replace("Smith SMITH smith", "smith", "x"), "x x x");
  EXPECT_EQ(Replace("aaa", "aa", "b"), "ba");
  EXPECT_EQ(Replace("abc", "", "x"), "abc");
  EXPECT_EQ(Replace(kZero, std::string_view("\0", 1), "-"), "a-b");
  EXPECT_EQ(Replace("\xC3\x89t\xC3\xA9", "\xC3\xA9", "e"), "ete");
}

TEST(Texts, ChangeAsTheServerChangesThem) {
  using Maybe = std::optional<std::string>;
  EXPECT_EQ(Stuff("abcdef", 2, 3, "XY"), Maybe("aXYef"));
  EXPECT_EQ(Stuff("abcdef", 3, 0, "-"), Maybe("ab-cdef"));
  EXPECT_EQ(Stuff("abc", 3, 99, ""), Maybe("ab"));
  EXPECT_EQ(Stuff("abc", 4, 1, "x"), std::nullopt);
  EXPECT_EQ(Stuff("abc", 0, 1, "x"), std::nullopt);
  EXPECT_EQ(Upper("Zo\xC3\xAB"), "ZO\xC3\x8B");
  EXPECT_EQ(Lower("\xC3\x89THIQUE"), "\xC3\xA9thique");
  EXPECT_EQ(Upper(kFace + kHighHalf + "@`{z"), kFace + kHighHalf + "@`{Z");
  EXPECT_EQ(Reverse("a\xC3\xA9z"),
            "z\xC3\xA9"
            "a");
  EXPECT_EQ(Str(123.6, 10, 0), Maybe("       124"));
  EXPECT_EQ(Str(-5, 10, 0), Maybe("        -5"));
  EXPECT_EQ(Str(2.5, 3, 0), Maybe("  3"));
  EXPECT_EQ(Str(-0.4, 3, 0), Maybe("  0"));
  EXPECT_EQ(Str(123.456, 5, 2), Maybe("123.5"));
  EXPECT_EQ(Str(1234, 3, 0), Maybe("***"));
  EXPECT_EQ(Str(1e300, 10, 2), Maybe("**********"));
  EXPECT_EQ(Str(1, 0, 0), std::nullopt);
  EXPECT_EQ(Replicate("ab", 3, VarChar(2)), Maybe("ababab"));
  EXPECT_EQ(Replicate("x", -1, VarChar(1)), std::nullopt);
  EXPECT_EQ(Replicate("", 2147483647, VarChar(1)), Maybe(""));
  EXPECT_EQ(Replicate("ab", 2147483647, VarChar(2))->size(), 8000u);
  EXPECT_EQ(Replicate("abc", 5000, NVarChar(3))->size(), 4000u);
  EXPECT_THROW(Replicate("ab", int64_t{1} << 60, VarChar(-1)), DatabaseFailure);
  EXPECT_EQ(Char(128), Maybe("\xE2\x82\xAC"));
  EXPECT_EQ(Char(256), std::nullopt);
  EXPECT_EQ(NChar(0xD83D), Maybe(kHighHalf));
  EXPECT_EQ(Ascii("\xE2\x82\xAC"), 128);
  EXPECT_EQ(Unicode(kFace), 0xD83D);
  EXPECT_EQ(Unicode(""), std::nullopt);
  EXPECT_EQ(QuoteName("a]b", "["), Maybe("[a]]b]"));
  EXPECT_EQ(QuoteName("a'b", "'"), Maybe("'a''b'"));
  EXPECT_EQ(QuoteName("a", "x"), std::nullopt);
  EXPECT_EQ(DataLength(std::string_view("abc  "), T("varchar(9)")), 5);
  EXPECT_EQ(DataLength(std::string_view("Zo\xC3\xAB"), T("nvarchar(9)")), 6);
  EXPECT_EQ(DataLength(int64_t{1}, T("decimal(9,2)")), 5);
}

TEST(Collation, OrdersWithoutRegardToCase) {
  for (const auto& [left, right] : std::vector<std::pair<std::string, std::string>>{
           {"\x01", ""},
           {"-a", "1"},
           {"9", "a"},
           {"a", "\xC3\xA1"},
           {"\xC3\xA1", "AB"},
           {"AB", "\xC3\x81Z"},
           {"\xC3\x81Z", "b"},
           {"B", "muller"},
           {"muller", "M\xC3\xBCller"},
           {"M\xC3\xBCller", "mullers"},
           {"n", "\xC3\x91"},
           {"\xC3\x91", "O"},
           {"z", "\xCE\xB1"},
           {"a\x01", "a"},
           {"a", "a!"},
           {"z", kFace},
       }) {
    EXPECT_LT(Compare(left, right), 0) << left << " | " << right;
    EXPECT_GT(Compare(right, left), 0) << left << " | " << right;
  }
  for (const auto& [left, right] : std::vector<std::pair<std::string, std::string>>{
           {"abc", "ABC   "},
           {"", "  "},
           {"\xC3\x89", "\xC3\xA9  "},
           {kFace, kHighHalf + kLowHalf},
           {"\xCE\x91", "\xCE\xB1"},
       }) {
    EXPECT_EQ(Compare(left, right), 0) << left << " | " << right;
    EXPECT_EQ(Compare(right, left), 0) << left << " | " << right;
  }
}

TEST(Like, FitsPatterns) {
  struct Case {
    std::string text;
    std::string pattern;
    bool expected;
  };
  for (const Case& c : std::vector<Case>{
           {"Acme Ltd", "acme%", true},
           {"Acme", "%m%", true},
           {"Acme", "%m", false},
           {"", "%", true},
           {"", "_", false},
           {"", "", true},
           {"a", "", false},
           {"abc  ", "abc", true},
           {"abc", "abc  ", false},
           {"abc ", "_b_", true},
           {"aXbXc", "a%x%c", true},
           {"aaaaaaaaaaaaaaaaaaaaaaaaaaaaaaab", "%a%a%a%a%a%a%a%c", false},
           {"de Souza", "[a-m]%", true},
           {"O'Brien", "[a-m]%", false},
           {"\xC3\xA9t\xC3\xA9", "[a-m]%", true},
           {"C1", "[^M]%", true},
           {"m1", "[^M]%", false},
           {"5", "[0-9]", true},
           {"x", "[0-9x]", true},
           {"-", "[a-]", true},
           {"b", "[a-]", false},
           {"^", "[a^]", true},
           {"50%", "%[%]%", true},
           {"A_B", "%[_]%", true},
           {"AxB", "a[_]b", false},
           {"[Draft]", "[[]%", true},
           {"]", "[]]", false},
           {"a", "[a", false},
           {"a", "[", false},
           {kFace, "__", true},
           {kFace, "_", false},
           {"\xC3\x89", "\xC3\xA9", true},
           {kZero, "a_b", true},
       }) {
    EXPECT_EQ(Like(c.text, c.pattern), c.expected) << c.text << " LIKE " << c.pattern;
  }
  EXPECT_TRUE(Like("50% Off", "50!%%", u'!'));
  EXPECT_FALSE(Like("500", "50!%%", u'!'));
  EXPECT_TRUE(Like("a]b", "a[!]]b", u'!'));
  EXPECT_FALSE(Like("a", "a!", u'!'));
  EXPECT_TRUE(Like("%", "%%", u'%'));
  EXPECT_FALSE(Like("abc ", "abc", std::nullopt, true));
  EXPECT_TRUE(Like("abc ", "abc%", std::nullopt, true));
}

TEST(PatIndex, TellsWhereThePatternBegins) {
  EXPECT_EQ(PatIndex("%[0-9]%", "M0001"), 2);
  EXPECT_EQ(PatIndex("M%", "M0001"), 1);
  EXPECT_EQ(PatIndex("0%", "M0001"), 0);
  EXPECT_EQ(PatIndex("%1", "M0001"), 5);
  EXPECT_EQ(PatIndex("%x%", "abc"), 0);
  EXPECT_EQ(PatIndex("%b%", kFace + "b"), 3);
  EXPECT_EQ(PatIndex("%", ""), 1);
  EXPECT_EQ(PatIndex("", "a"), 0);
  // A hundred thousand starts, each of which would look through the rest.
  EXPECT_EQ(PatIndex("%a%b%", std::string(100000, 'a')), 0);
}

}  // namespace
}  // namespace vellum250::database::embedded
