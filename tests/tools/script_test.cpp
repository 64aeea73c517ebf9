#include "vellum250-sql/script.h"

#include <gtest/gtest.h>

#include "automation/failure.h"

namespace vellum250::sqltool {
namespace {

// "line: sql" of each batch, line ends written as | (and \r as ~).
std::vector<std::string> Batches(std::u16string_view script) {
  std::vector<std::string> batches;
  for (const ScriptBatch& batch : SplitBatches(script)) {
    std::string text = std::to_string(batch.firstLine) + ": " + ToUtf8(batch.sql);
    for (char& c : text) c = c == '\n' ? '|' : c == '\r' ? '~' : c;
    if (batch.times != 1) text += " x" + std::to_string(batch.times);
    batches.push_back(text);
  }
  return batches;
}

TEST(SplitBatches, SplitsAtLinesOfGoAlone) {
  const struct {
    const char16_t* script;
    std::vector<std::string> batches;
  } cases[] = {
      {u"", {}},
      {u" \r\n\t\n", {}},
      {u"GO\nGO\r\nGO", {}},
      {u"SELECT 1", {"1: SELECT 1"}},
      {u"SELECT 1\nGO", {"1: SELECT 1|"}},
      {u"SELECT 1\r\nGO\r\nSELECT 2\r\n", {"1: SELECT 1~|", "3: SELECT 2~|"}},
      {u"SELECT 1\n  go \t\nSELECT 2\nGo\nSELECT 3",
       {"1: SELECT 1|", "3: SELECT 2|", "5: SELECT 3"}},
      {u"\n\nSELECT 1\nGO\n\n\nSELECT 2", {"1: ||SELECT 1|", "5: ||SELECT 2"}},
      {u"SELECT 1\nGO 3\nSELECT 2\n go\t12 \r\nSELECT 3\nGO 0",
       {"1: SELECT 1| x3", "3: SELECT 2| x12", "5: SELECT 3| x0"}},
      // No separators: more on the line, part of a word, another letter.
      {u"SELECT 1 GO\nGOTO x\nG O\nGO x\n_GO\nGO5\nGO -1\nSELECT 2",
       {"1: SELECT 1 GO|GOTO x|G O|GO x|_GO|GO5|GO -1|SELECT 2"}},
  };
  for (const auto& c : cases) EXPECT_EQ(Batches(c.script), c.batches) << ToUtf8(c.script);
}

TEST(SplitBatches, LeavesGoInsideCommentsTextsAndNames) {
  const char16_t* const wholes[] = {
      u"/* a\nGO\n*/ SELECT 1",
      u"/* a /* b */\nGO\n*/ SELECT 1",
      u"SELECT 'a\nGO\n'",
      u"SELECT 'it''s\nGO\n'",
      u"SELECT '\n''\nGO\n'",
      u"SELECT \"a'\nGO\n\"",
      u"SELECT 1 AS [a'\nGO\n]",
      u"SELECT 1 AS [a]]\nGO\n]",
      u"SELECT '--\nGO\n'",
      u"SELECT '/*\nGO\n*/'",
      u"SELECT 'never ends\nGO\nSELECT 2",
      u"/* never ends\nGO\nSELECT 2",
  };
  for (const auto* whole : wholes) EXPECT_EQ(Batches(whole).size(), 1u) << ToUtf8(whole);

  const char16_t* const halves[] = {
      u"SELECT 1 -- it's\nGO\nSELECT 2",    u"SELECT 1 -- /*\nGO\nSELECT 2",
      u"SELECT 1 -- [\nGO\nSELECT 2",       u"/* it's */\nGO\nSELECT 2",
      u"/* -- */ SELECT 'x'\nGO\nSELECT 2", u"SELECT '/*', \"--'\", [a]]'], 5 / *\nGO\nSELECT 2",
      u"SELECT ''''\nGO\nSELECT 2",         u"/* a */ /* b\n*/\nGO\nSELECT 2",
  };
  for (const auto* half : halves) EXPECT_EQ(Batches(half).size(), 2u) << ToUtf8(half);
}

TEST(ScriptFromBytes, TakesUtf8AndNamesTheLineThatIsNot) {
  EXPECT_EQ(ScriptFromBytes("caf\xC3\xA9"), u"café");
  EXPECT_EQ(ScriptFromBytes("\xEF\xBB\xBFSELECT 1"), u"SELECT 1");
  EXPECT_EQ(ScriptFromBytes("\xEF\xBB\xBF"), u"");
  EXPECT_EQ(ScriptFromBytes("\xEF\xBF\xBD"), u"\uFFFD");
  EXPECT_EQ(ScriptFromBytes(std::string_view("a\0b", 3)), TextView(u"a\0b", 3));
  const struct {
    std::string_view bytes;
    const char* message;
  } cases[] = {
      {"caf\xE9", "line 1 "},
      {"a\nb\r\nc\xFF", "line 3 "},
      {std::string_view("\xFF\xFEG\0O\0", 6), "line 1 "},
      {"a\n\xC3", "line 2 "},
  };
  for (const auto& c : cases) {
    try {
      ScriptFromBytes(c.bytes);
      ADD_FAILURE() << c.message;
    } catch (const Failure& failure) {
      EXPECT_TRUE(std::string(failure.what()).starts_with(c.message)) << failure.what();
    }
  }
}

}  // namespace
}  // namespace vellum250::sqltool
