// Answers beyond the golden cases: forms of the dialect that pages and merge SQL use.
#include "automation/locale.h"
#include "scratch.h"

namespace vellum250::database {
namespace {

struct Case {
  const char16_t* sql;
  const char* answer;
};

constexpr const char16_t* kTables =
    u"CREATE TABLE person (person_ref int IDENTITY(1,1) NOT NULL PRIMARY KEY, name varchar(20) NOT "
    u"NULL, town varchar(20) NULL, born datetime NULL, fee decimal(9,2) NULL, active bit NOT NULL "
    u"DEFAULT (1))\r\n"
    u"CREATE TABLE note (note_ref int IDENTITY(10,5), person_ref int NOT NULL, body text NULL)\r\n"
    u"INSERT INTO person (name, town, born, fee) VALUES ('Ann', 'Leeds', '19600229', 10.5)\r\n"
    u"INSERT INTO person (name, town, born, fee) VALUES ('bob', 'York', '1 Mar 1970', NULL)\r\n"
    u"INSERT INTO person (name, town, active) VALUES ('Cid', NULL, 0)\r\n"
    u"INSERT INTO note (person_ref, body) VALUES (1, 'first'), (1, 'second'), (2, 'third')";

void Check(std::span<const Case> cases) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(kTables), "");
  for (const Case& test : cases) {
    EXPECT_EQ(scratch.Answer(test.sql), test.answer) << ToUtf8(test.sql);
  }
}

TEST(EmbeddedDialect, Queries) {
  const Case cases[] = {
      {u"SELECT name FROM person WHERE name LIKE 'B%' OR town = 'LEEDS  ' ORDER BY name",
       "Ann;bob"},
      {u"SELECT p.name, n.n FROM person p LEFT JOIN (SELECT person_ref, count(*) AS n FROM note "
       u"GROUP BY person_ref) n ON n.person_ref = p.person_ref ORDER BY 1",
       "Ann|2;bob|1;Cid|NULL"},
      {u"SELECT p.name FROM person p WHERE (SELECT count(*) FROM note n WHERE n.person_ref = "
       u"p.person_ref) > 1",
       "Ann"},
      {u"SELECT town, count(*) FROM person GROUP BY town ORDER BY count(*) DESC, town DESC",
       "York|1;Leeds|1;NULL|1"},
      {u"SELECT TOP 1 name FROM person ORDER BY born DESC", "bob"},
      {u"SELECT name FROM person WHERE town = 'York' UNION SELECT town FROM person WHERE town LIKE "
       u"'l%' ORDER BY 1 DESC",
       "Leeds;bob"},
      {u"SELECT min(name) + '-' + max(name) FROM person", "Ann-Cid"},
      {u"SELECT CASE WHEN fee IS NULL THEN 'none' ELSE convert(varchar, fee) END FROM person ORDER "
       u"BY person_ref",
       "10.50;none;none"},
      {u"SELECT name FROM person, (SELECT 2 AS k UNION ALL SELECT 3) x WHERE x.k = person_ref "
       u"ORDER "
       u"BY k",
       "bob;Cid"},
      {u"SELECT count(*) FROM person WHERE born > '1960' AND born <= getdate()", "2"},
      {u"SELECT x.name FROM person x WITH (NOLOCK) WHERE x.active = 'false'", "Cid"},
      {u"SELECT isNull(town, name) FROM person WHERE person_ref IN (1, 3)", "Leeds;Cid"},
  };
  Check(cases);
}

TEST(EmbeddedDialect, VariablesAndBranches) {
  const Case cases[] = {
      {u"DECLARE @a int, @b int SELECT @a = 1, @b = @a + 1 SELECT @a, @b", "1|2"},
      {u"DECLARE @n varchar(3) = 'abcdef' SELECT @n", "abc"},
      {u"DECLARE @a int, @b int SELECT @a = person_ref, @b = @a FROM person",
       "#0 line 1: not supported by the embedded database: a variable read by the SELECT that sets "
       "it"},
      {u"DECLARE @t varchar(9) SELECT @t = name FROM person WHERE person_ref = 2 IF @t = 'BOB' "
       u"BEGIN "
       u"SELECT 1 RETURN END SELECT 2",
       "1"},
      {u"IF (SELECT max(person_ref) FROM person) BETWEEN 2 AND 3 PRINT 'x' ELSE SELECT 9 SELECT 8",
       "8"},
      {u"DECLARE @k decimal(9,2) SET @k = 10.5 SELECT name FROM person WHERE fee = @k", "Ann"},
      {u"IF object_id('nowhere') IS NULL SELECT 'none' ELSE SELECT * FROM nowhere", "none"},
      {u"SELECT 1 FROM person ORDER BY count(*)",
       "#0 line 1: not supported by the embedded database: ORDER BY an aggregate without GROUP BY "
       "or one selected"},
  };
  Check(cases);
}

TEST(EmbeddedDialect, Changes) {
  const Case cases[] = {
      {u"INSERT note SELECT person_ref, name FROM person WHERE active = 0 SELECT @@ROWCOUNT, "
       u"@@IDENTITY, SCOPE_IDENTITY()",
       "1|25|25"},
      {u"UPDATE n SET body = p.name FROM note n JOIN person p ON p.person_ref = n.person_ref WHERE "
       u"p.name = 'bob' SELECT body FROM note ORDER BY note_ref",
       "first;second;bob;Cid"},
      {u"UPDATE person SET fee = isNull(fee, 0) + 1, town = upper(town) SELECT fee, town FROM "
       u"person "
       u"ORDER BY person_ref",
       "11.50|LEEDS;1.00|YORK;1.00|NULL"},
      {u"DELETE n FROM note n, person p WHERE p.person_ref = n.person_ref AND p.name = 'ann' "
       u"SELECT "
       u"count(*) FROM note",
       "2"},
      {u"SET IDENTITY_INSERT note ON INSERT INTO note (note_ref, person_ref) VALUES (100, 1) SET "
       u"IDENTITY_INSERT note OFF INSERT INTO note (person_ref) VALUES (1) SELECT SCOPE_IDENTITY()",
       "105"},
      {u"DELETE FROM note SELECT @@ROWCOUNT", "4"},
      {u"INSERT INTO note (person_ref) SELECT person_ref FROM person ORDER BY name DESC SELECT "
       u"person_ref FROM note ORDER BY note_ref",
       "3;2;1"},
      {u"SELECT name, isNull(town, '?') AS town, 7 AS k INTO #copy FROM person INSERT INTO #copy "
       u"VALUES ('Eve', 'Hull', 8) SELECT * FROM #copy ORDER BY name",
       "Ann|LEEDS|7;bob|YORK|7;Cid|?|7;Eve|Hull|8"},
      {u"INSERT INTO #copy (town) VALUES (replicate('x', 21))",
       "#2628 line 1: String or binary data would be truncated in table 'dbo.#copy', column "
       "'town'. "
       "Truncated value: 'xxxxxxxxxxxxxxxxxxxx'."},
      {u"SELECT table_name INTO #names FROM information_schema.tables SELECT count(*) FROM #names",
       "2"},
      {u"SELECT name INTO note FROM person",
       "#2714 line 1: There is already an object named 'note' in the database."},
      {u"SELECT 1 / (person_ref - 2) AS q INTO #bad FROM person",
       "#8134 line 1: Divide by zero error encountered."},
      {u"SELECT q FROM #bad", "#208 line 1: Invalid object name '#bad'."},
      {u"CREATE VIEW who AS SELECT name, 'x' + name AS xname FROM person WHERE active = 1", ""},
      {u"SELECT w.xname FROM who w, person p WHERE p.name = w.name ORDER BY 1 DESC", "xbob;xAnn"},
      {u"DROP VIEW who SELECT table_name FROM information_schema.tables ORDER BY 1", "note;person"},
  };
  Check(cases);
}

// 8,000 bytes unless one of the texts is max, whatever the run that a plan was made in.
TEST(EmbeddedDialect, LongTexts) {
  const Text a8000(8000, u'a');
  const Text a4001(4001, u'a');
  const auto literal = [](const Text& text) { return u"'" + text + u"'"; };
  const Text setUp = u"CREATE TABLE long (a varchar(8000), b nvarchar(4000), c varchar(max))";
  const std::pair<Text, std::string> cases[] = {
      {setUp, ""},
      {u"SELECT len(replicate('a', 8000) + 'b'), len(replicate(N'a', 4000) + 'b')", "8000|4000"},
      {u"SELECT len('b' + replicate('a', 8000) + 'b' + convert(varchar(max), 'c'))", "8001"},
      {u"SELECT len(replicate('a', 8000) + ('b' + convert(varchar(max), 'c')))", "8002"},
      {u"SELECT right('x' + replicate('a', 7999) + 'b' + 'c', 2)", "aa"},
      {u"SELECT len(replicate(convert(varchar(max), 'a'), 9000)), len(replicate('a', 9000))",
       "9000|8000"},
      {u"SELECT len(replace(replicate('a', 8000), 'a', 'bb')), "
       u"len(stuff(replicate('a', 8000), 1, 1, 'bbb'))",
       "8000|8000"},
      {u"SELECT len(replace(convert(varchar(max), replicate('a', 8000)), 'a', 'bb'))", "16000"},
      {u"SELECT len(" + literal(a8000) + u" + 'b')", "8000"},
      {u"SELECT len(" + literal(a8000 + u"a") + u" + 'b')", "8002"},
      {u"SELECT len(" + literal(a4001) + u" + N'b'), len(N" + literal(a4001) + u" + N'b')",
       "4000|4002"},
      {u"DECLARE @v varchar(8000) SET @v = " + literal(a8000 + u"a") + u" SELECT len(@v)", "8000"},
      {u"SELECT len(convert(varchar(8000), " + literal(a8000 + u"a") + u"))", "8000"},
      {u"INSERT long (a) VALUES (" + literal(a8000) + u") SELECT len(a) FROM long", "8000"},
      {u"INSERT long (a) VALUES (" + literal(a8000 + u"a") + u")", "!2628"},
      {u"INSERT long (b) VALUES (" + literal(a4001) + u")", "!2628"},
      {u"INSERT long (b) VALUES (N" + literal(a4001) + u")", "!2628"},
      {u"DELETE long INSERT long (c) VALUES (" + literal(a8000 + u"a") +
           u") SELECT len(c) FROM long",
       "8001"},
  };
  Scratch scratch;
  for (const auto& [batch, expected] : cases) {
    const std::string answer = scratch.Answer(batch);
    const bool fails = expected.starts_with('!');
    EXPECT_EQ(fails ? answer.substr(0, answer.find(' ')) : answer,
              fails ? "#" + expected.substr(1) : expected)
        << ToUtf8(batch).substr(0, 100);
  }
}

TEST(EmbeddedDialect, AStatementHasOneMoment) {
  Scratch scratch;
  Text insert = u"INSERT seen (b) VALUES (1)";
  for (int row = 1; row < 1000; ++row) insert += u", (1)";
  ASSERT_EQ(scratch.Answer(u"CREATE TABLE seen (a datetime DEFAULT getdate(), b int)"), "");
  for (int run = 0; run < 10; ++run) ASSERT_EQ(scratch.Answer(insert), "");
  EXPECT_EQ(scratch.Answer(u"SELECT 1 FROM seen GROUP BY a HAVING count(*) % 1000 <> 0"), "(none)");
}

TEST(EmbeddedDialect, ParametersTakeTheirOwnTypes) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(kTables), "");
  const Variant text(u"Ann");
  const Variant number(int32_t{2});
  const Variant null{Null()};
  const Variant date(FromCivil({1960, 2, 29, 0, 0, 0, 0}));
  const auto answer = [&](TextView sql, std::initializer_list<Variant> parameters) {
    return scratch.Answer(sql, std::span(parameters.begin(), parameters.size()));
  };
  EXPECT_EQ(answer(u"SELECT name FROM person WHERE name = ?", {text}), "Ann");
  EXPECT_EQ(answer(u"SELECT name FROM person WHERE person_ref = ? OR born = ? ORDER BY 1",
                   {number, date}),
            "Ann;bob");
  // The same text with another type is another statement.
  EXPECT_EQ(answer(u"SELECT ? + 1", {number}), "3");
  EXPECT_EQ(answer(u"SELECT ? + 1", {Variant(u"41")}), "42");
  EXPECT_EQ(answer(u"SELECT ? + 1", {Variant(1.5)}), "2.5");
  EXPECT_EQ(answer(u"SELECT isNull(?, 'none')", {null}), "none");
  EXPECT_EQ(answer(u"SELECT isNull(?, 'none')", {text}), "Ann");
  EXPECT_EQ(answer(u"INSERT INTO person (name, town) VALUES (?, ?) SELECT town FROM person WHERE "
                   u"name = ?",
                   {Variant(u"Dot"), null, Variant(u"DOT")}),
            "NULL");
  EXPECT_EQ(answer(u"SELECT ?, ?", {number}),
            "#8144 line 1: There are fewer values than ? markers.");
  EXPECT_EQ(answer(u"SELECT ?", {number, text}),
            "#8144 line 0: There are more values than ? markers.");
}

}  // namespace
}  // namespace vellum250::database
