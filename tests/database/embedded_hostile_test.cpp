// Input that wants to break the embedded database.

#include "scratch.h"

namespace vellum250::database {
namespace {

using namespace std::string_literals;

Text Repeated(TextView part, size_t count) {
  Text text;
  for (size_t i = 0; i < count; ++i) text += part;
  return text;
}

// "1 AS c0, 1 AS c1 ..."
Text Columns(int64_t count) {
  Text text = u"1 AS c0";
  for (int64_t i = 1; i < count; ++i) text += u", 1 AS c" + NumberText(i);
  return text;
}

Text Joins(int64_t count) {
  Text text;
  for (int64_t i = 1; i <= count; ++i) text += u" CROSS JOIN t t" + NumberText(i);
  return text;
}

TEST(EmbeddedHostile, AnyTextIsStoredAsItIs) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(u"CREATE TABLE t (a int IDENTITY(1,1) PRIMARY KEY, b nvarchar(max))"),
            "");
  Text everyCharacter;
  for (char16_t c = 0; c < 256; ++c) everyCharacter += c;
  const Text texts[] = {u"",
                        u"  a  ",
                        Text(1, u'\0'),
                        u"a\0b"s,
                        Text(1, 0xD800) + u"x" + Text(1, 0xDC00),
                        u"'; DROP TABLE t --",
                        u"?1 :a @b $c \"x\" [y]",
                        everyCharacter,
                        Text(1'000'000, u'\u00e9'),
                        Repeated(u"\U0001F600'", 100'000)};
  for (const Text& text : texts) {
    const Text literal = u"N'" + ReplaceAll(text, u"'", u"''") + u"'";
    const Variant parameter(text);
    ASSERT_EQ(scratch.Answer(u"DELETE FROM t INSERT INTO t (b) VALUES (" + literal + u")"), "");
    ASSERT_EQ(scratch.Answer(u"INSERT INTO t (b) VALUES (?)", std::span(&parameter, 1)), "");
    const Recordset rows = scratch.Get().Execute(u"SELECT b FROM t WHERE b = " + literal);
    ASSERT_EQ(rows.RowCount(), 2u);
    EXPECT_TRUE(rows.At(0, 0) == Variant(text));
    EXPECT_TRUE(rows.At(1, 0) == Variant(text));
  }
}

TEST(EmbeddedHostile, NestedOrEndlessTextFailsInWords) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(u"CREATE TABLE t (a int NULL)"), "");
  const std::string deep =
      "#191 line 1: Some part of your SQL statement is nested too deeply. Rewrite the query or "
      "break it up into smaller queries.";
  const std::string refused = "#0 line 1: not supported by the embedded database: ";
  const struct {
    Text sql;
    std::string answer;
  } cases[] = {
      {u"SELECT " + Repeated(u"(", 10'000) + u"1" + Repeated(u")", 10'000), deep},
      {u"SELECT " + Repeated(u"(", 10'000), deep},
      {u"SELECT " + Repeated(u"abs(", 150) + u"1" + Repeated(u")", 150), deep},
      {u"SELECT 1" + Repeated(u" + 1", 100'000), deep},
      {u"SELECT 1 WHERE " + Repeated(u"NOT ", 100'000) + u"1 = 1", deep},
      {u"SELECT " + Repeated(u"- ", 100'000) + u"1", deep},
      {u"SELECT " + Repeated(u"CASE WHEN 1 = 1 THEN ", 5'000) + u"1", deep},
      {Repeated(u"BEGIN ", 100'000), deep},
      {Repeated(u"IF 1 = 1 ", 100'000), deep},
      {u"SELECT 1 FROM " + Repeated(u"(SELECT 1 AS a FROM ", 5'000), deep},
      {u"SELECT 1 WHERE 1 = 1" + Repeated(u" AND 1 = 1", 5'000), deep},
      {u"SELECT count(*) FROM t WHERE a IN (0" + Repeated(u", 1", 100'000) + u")", "0"},
      {u"SELECT 1 WHERE 'It''s' IN ('x'" + Repeated(u", N'it''s '", 100'000) + u")", "1"},
      {u"SELECT 1" + Repeated(u" UNION SELECT 1", 499), "1"},
      {u"SELECT 1" + Repeated(u" UNION SELECT 1", 500), refused + "a UNION of more than 500 parts"},
      {u"SELECT 1" + Repeated(u", 1", 2'000), refused + "a SELECT of more than 2,000 columns"},
      {u"SELECT coalesce(NULL" + Repeated(u", NULL", 127) + u", 1)",
       refused + "a function of more than 127 arguments"},
      {u"SELECT 1 FROM t t0" + Joins(64), refused + "a join of more than 64 tables"},
      {u"INSERT INTO t VALUES (1)" + Repeated(u", (1)", 1'000),
       "#10738 line 1: The number of row value expressions in the INSERT statement exceeds the "
       "maximum allowed number of 1000 row values."},
      {u"SELECT " + Columns(1'025) + u" INTO wide",
       "#1702 line 1: CREATE TABLE failed because column 'c1024' in table 'wide' exceeds the "
       "maximum of 1024 columns."},
      {u"SELECT '" + Text(1'000'000, u'x'),
       "#105 line 1: Unclosed quotation mark after the character string '" + std::string(128, 'x') +
           "'."},
      {u"SELECT 1 /*" + Text(1'000'000, u'*'), "#113 line 1: Missing end comment mark '*/'."},
      {u"SELECT [" + Text(100'000, u'x') + u"]", "#103 line 1: The identifier that starts with '" +
                                                     std::string(128, 'x') +
                                                     "' is too long. Maximum length is 128."},
      {u"SELECT 1\uFFFF", "#102 line 1: Incorrect syntax near '\uFFFF'."},
      {Text(1, u'\0'), "#102 line 1: Incorrect syntax near '"},
      {u"", ""},
      {u" ;;\r\n -- nothing", ""},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(scratch.Answer(test.sql), test.answer) << ToUtf8(test.sql.substr(0, 60));
  }
  EXPECT_EQ(scratch.Answer(u"SELECT a FROM t"), "(none)");
}

TEST(EmbeddedHostile, WhatGrowsWithoutEndIsBounded) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(u"CREATE TABLE d (a int) INSERT INTO d VALUES "
                           u"(0), (1), (2), (3), (4), (5), (6), (7), (8), (9)"),
            "");
  const Recordset million = scratch.Get().Execute(u"SELECT a.a FROM d a, d b, d c, d d, d e, d f");
  EXPECT_EQ(million.RowCount(), 1'000'000u);
  EXPECT_EQ(scratch.Answer(u"SELECT replicate('x', 8000) FROM d a, d b, d c, d d, d e"),
            "#0 line 1: not supported by the embedded database: a result of more than "
            "500,000,000 bytes");
  // Each view doubles the one before, or only stands on it.
  for (const auto& [from, failure] :
       {std::pair(u" a, # b",
                  "#106 line 1: Too many table names in the query. The maximum "
                  "allowable is 256."),
        std::pair(u" a",
                  "#191 line 1: Some part of your SQL statement is nested too deeply. "
                  "Rewrite the query or break it up into smaller queries.")}) {
    std::string answer = scratch.Answer(u"CREATE VIEW v0 AS SELECT a FROM d");
    int views = 1;
    for (; answer.empty() && views < 300; ++views) {
      const Text before = u"v" + NumberText(views - 1);
      answer = scratch.Answer(u"CREATE VIEW v" + NumberText(views) + u" AS SELECT a.a FROM " +
                              before + ReplaceAll(from, u"#", before));
    }
    EXPECT_EQ(answer, failure);
    for (int view = 0; view < views - 1; ++view) {
      EXPECT_EQ(scratch.Answer(u"DROP VIEW v" + NumberText(view)), "");
    }
  }
  ASSERT_EQ(scratch.Answer(u"CREATE PROCEDURE usp_a AS EXEC usp_b"), "");
  ASSERT_EQ(scratch.Answer(u"CREATE PROCEDURE usp_b AS EXEC usp_a"), "");
  EXPECT_EQ(scratch.Answer(u"EXEC usp_a"),
            "#217 line 1: Maximum stored procedure, function, trigger, or view nesting level "
            "exceeded (limit 32).");
}

TEST(EmbeddedHostile, TheSameShapeWithOtherValuesGivesOtherAnswers) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(u"CREATE TABLE t (a int, b varchar(9), c decimal(9,2))\r\n"
                           u"INSERT INTO t VALUES (1, 'x', 1.5), (2, 'y', 2.25), (3, 'z', 3)"),
            "");
  const struct {
    const char16_t* sql;
    const char* answer;
  } cases[] = {
      {u"SELECT TOP 1 a FROM t ORDER BY 1 DESC", "3"},
      {u"SELECT TOP 2 a FROM t ORDER BY 1 DESC", "3;2"},
      {u"SELECT b, a FROM t WHERE a < 3 ORDER BY 1", "x|1;y|2"},
      {u"SELECT b, -a FROM t WHERE a < 9 ORDER BY 2", "z|-3;y|-2;x|-1"},
      {u"SELECT cast('abcdef' AS varchar(2))", "ab"},
      {u"SELECT cast('abcdef' AS varchar(4))", "abcd"},
      {u"SELECT isNull(b + 'q', 'long enough') FROM t WHERE a = 9", "(none)"},
      {u"SELECT count(*) FROM t WHERE c = 1", "0"},
      {u"SELECT count(*) FROM t WHERE c = 3", "1"},
      {u"SELECT count(*) FROM t WHERE c < 2000000000", "3"},
      {u"SELECT count(*) FROM t WHERE c < 20000000000", "3"},
      {u"SELECT 5 / 2.0", "2.500000"},
      {u"SELECT 500000 / 2.0", "250000.000000"},
      {u"SELECT left(b, 1), count(*) FROM t GROUP BY left(b, 1) ORDER BY 1", "x|1;y|1;z|1"},
      {u"SELECT left(b, 1), count(*) FROM t GROUP BY left(b, 2) ORDER BY 1",
       "#8120 line 1: Column 't.b' is invalid in the select list because it is not contained in "
       "either an aggregate function or the GROUP BY clause."},
      {u"SELECT object_id('t') - object_id('t')", "0"},
      {u"SELECT object_id('u') - object_id('t')", "NULL"},
  };
  // Twice: parsed, and from the cache.
  for (int run = 0; run < 2; ++run) {
    for (const auto& test : cases) {
      EXPECT_EQ(scratch.Answer(test.sql), test.answer) << ToUtf8(test.sql);
    }
  }
}

TEST(EmbeddedHostile, ConnectionsSeeEachOthersTables) {
  Scratch scratch;
  const auto other = scratch.Another();
  ASSERT_EQ(scratch.Answer(u"CREATE TABLE t (a int) INSERT INTO t VALUES (1)"), "");
  EXPECT_EQ(Scratch::AnswerOf(*other, u"SELECT a FROM t"), "1");
  ASSERT_EQ(
      scratch.Answer(u"DROP TABLE t CREATE TABLE t (b int, a varchar(5)) INSERT INTO t VALUES "
                     u"(2, 'x')"),
      "");
  EXPECT_EQ(Scratch::AnswerOf(*other, u"SELECT a FROM t"), "x");
  ASSERT_EQ(scratch.Answer(u"CREATE PROCEDURE usp_a AS SELECT a FROM t"), "");
  EXPECT_EQ(Scratch::AnswerOf(*other, u"EXEC usp_a"), "x");
  ASSERT_EQ(scratch.Answer(u"DROP PROCEDURE usp_a DROP TABLE t"), "");
  EXPECT_EQ(Scratch::AnswerOf(*other, u"SELECT a FROM t"), "#208 line 1: Invalid object name 't'.");
  EXPECT_EQ(Scratch::AnswerOf(*other, u"EXEC usp_a"),
            "#2812 line 1: Could not find stored procedure 'usp_a'.");
}

TEST(EmbeddedHostile, ALockedFileFailsAfterTheTimeout) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(u"CREATE TABLE t (a int) INSERT INTO t VALUES (1)"), "");
  ASSERT_EQ(scratch.Answer(u"BEGIN TRAN UPDATE t SET a = 2"), "");
  const auto other = Connection::Open(scratch.ConnectionText() + u"Timeout=0;");
  const Batch batch = other->Run(u"UPDATE t SET a = 3");
  ASSERT_TRUE(batch.failure.has_value());
  EXPECT_EQ(batch.failure->Number(), kTimeoutFailure);
  // Reading goes on, and sees what was committed.
  EXPECT_EQ(Scratch::AnswerOf(*other, u"SELECT a FROM t"), "1");
  ASSERT_EQ(scratch.Answer(u"COMMIT"), "");
  EXPECT_EQ(Scratch::AnswerOf(*other, u"UPDATE t SET a = 3 SELECT a FROM t"), "3");
}

TEST(EmbeddedHostile, ABatchWithoutEndFailsAfterItsTime) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(u"CREATE TABLE t (a int) INSERT INTO t VALUES (1)"), "");
  for (int i = 0; i < 7; ++i) ASSERT_EQ(scratch.Answer(u"INSERT INTO t SELECT a FROM t"), "");
  ASSERT_EQ(scratch.Answer(u"CREATE PROCEDURE usp_a @n int AS SET @n = @n - 1 "
                           u"IF @n > 0 BEGIN EXEC usp_a @n EXEC usp_a @n END"),
            "");
  for (const Text& sql :
       {Text(u"SELECT count(*) FROM t a, t b, t c, t d, t e, t f"), Text(u"EXEC usp_a 30")}) {
    const auto limited = Connection::Open(scratch.ConnectionText() + u"Command Timeout=1;");
    ASSERT_FALSE(limited->Run(u"BEGIN TRAN UPDATE t SET a = 2").failure.has_value());
    const Batch batch = limited->Run(sql + u" SELECT 'not reached'");
    ASSERT_TRUE(batch.failure.has_value());
    EXPECT_EQ(batch.failure->Number(), kTimeoutFailure) << batch.failure->what();
    EXPECT_TRUE(batch.results.empty());
    // A query that was given up leaves its transaction open.
    EXPECT_EQ(Scratch::AnswerOf(*limited, u"SELECT max(a), @@trancount FROM t"), "2|1");
  }
  EXPECT_EQ(scratch.Answer(u"SELECT max(a) FROM t"), "1");
}

}  // namespace
}  // namespace vellum250::database
