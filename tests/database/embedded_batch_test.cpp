// Batches on the embedded database: what stands after a failure, and what a failure says.
#include "scratch.h"

namespace vellum250::database {
namespace {

constexpr const char16_t* kTables =
    u"CREATE TABLE grade (code char(3) NOT NULL PRIMARY KEY, fee money NULL)\r\n"
    u"CREATE TABLE member (\r\n"
    u"  member_ref int IDENTITY(1,1) NOT NULL PRIMARY KEY,\r\n"
    u"  name varchar(10) NOT NULL,\r\n"
    u"  code char(3) NULL CONSTRAINT fk_grade REFERENCES grade (code),\r\n"
    u"  points smallint NULL CONSTRAINT ck_points CHECK (points BETWEEN 0 AND 500),\r\n"
    u"  email varchar(40) NULL CONSTRAINT uq_email UNIQUE)\r\n"
    u"INSERT INTO grade VALUES ('FEL', 10)\r\n"
    u"INSERT INTO member (name, code, points, email) VALUES ('Ann', 'FEL', 5, 'a@x')";

struct Case {
  const char16_t* sql;
  const char* answer;
};

// Each case has a database of its own, with the tables above.
void Check(std::span<const Case> cases) {
  for (const Case& test : cases) {
    Scratch scratch;
    ASSERT_EQ(scratch.Answer(kTables), "");
    EXPECT_EQ(scratch.Answer(test.sql), test.answer) << ToUtf8(test.sql);
  }
}

TEST(EmbeddedBatch, RefusedRowsAreToldAndTheBatchGoesOn) {
  const Case cases[] = {
      {u"INSERT INTO member (name, points) VALUES (NULL, 1)",
       "#515 line 1: Cannot insert the value NULL into column 'name', table 'dbo.member'; column "
       "does not allow nulls. INSERT fails."},
      {u"\r\nUPDATE member SET points = 501",
       "#547 line 2: The UPDATE statement conflicted with the CHECK constraint \"ck_points\". The "
       "conflict occurred in database \"vellum250\", table \"dbo.member\"."},
      {u"INSERT INTO member (name, code) VALUES ('Bob', 'XXX')",
       "#547 line 1: The INSERT statement conflicted with the FOREIGN KEY constraint \"fk_grade\". "
       "The conflict occurred in database \"vellum250\", table \"dbo.grade\", column 'code'."},
      {u"DELETE FROM grade",
       "#547 line 1: The DELETE statement conflicted with the REFERENCE constraint \"fk_grade\". "
       "The conflict occurred in database \"vellum250\", table \"dbo.member\", column 'code'."},
      {u"INSERT INTO member (name, email) VALUES ('Bob', 'A@X  ')",
       "#2627 line 1: Violation of UNIQUE KEY constraint 'uq_email'. Cannot insert duplicate key "
       "in object 'dbo.member'."},
      // NULL counts as a value of its own.
      {u"INSERT INTO member (name) VALUES ('Bob')\r\nINSERT INTO member (name) VALUES ('Cid')",
       "#2627 line 2: Violation of UNIQUE KEY constraint 'uq_email'. Cannot insert duplicate key "
       "in object 'dbo.member'."},
      {u"INSERT INTO member (member_ref, name) VALUES (9, 'Bob')",
       "#544 line 1: Cannot insert explicit value for identity column in table 'member' when "
       "IDENTITY_INSERT is set to OFF."},
      {u"DROP TABLE grade",
       "#3726 line 1: Could not drop object 'grade' because it is referenced by a FOREIGN KEY "
       "constraint."},
  };
  Check(cases);
}

TEST(EmbeddedBatch, AFailingStatementUndoesItselfOnly) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(kTables), "");
  // The statements around a refused row stand; its key is used up.
  scratch.Answer(
      u"INSERT INTO member (name, email) VALUES ('Bob', 'b@x')\r\n"
      u"INSERT INTO member (name, email) VALUES ('Cid', 'b@x'), ('Dot', 'd@x')\r\n"
      u"INSERT INTO member (name, email) VALUES ('Eve', 'e@x')");
  EXPECT_EQ(scratch.Answer(u"SELECT member_ref, name FROM member ORDER BY member_ref"),
            "1|Ann;2|Bob;4|Eve");
  // A conversion that fails ends the batch: what stands before it stays.
  scratch.Answer(
      u"UPDATE member SET points = 1\r\n"
      u"UPDATE member SET points = 'many'\r\n"
      u"UPDATE member SET points = 3");
  EXPECT_EQ(scratch.Answer(u"SELECT DISTINCT points FROM member"), "1");
  // A row in the middle of an UPDATE that fails leaves none changed.
  EXPECT_EQ(scratch.Answer(u"UPDATE member SET name = name + ' Longname' WHERE member_ref > 0")
                .substr(0, 5),
            "#2628");
  EXPECT_EQ(scratch.Answer(u"SELECT name FROM member ORDER BY member_ref"), "Ann;Bob;Eve");
  // What cannot be bound runs nothing of the batch.
  EXPECT_EQ(scratch.Answer(u"UPDATE member SET points = 7\r\nSELECT nme FROM member"),
            "#207 line 2: Invalid column name 'nme'.");
  EXPECT_EQ(scratch.Answer(u"SELECT DISTINCT points FROM member"), "1");
}

TEST(EmbeddedBatch, TransactionsAreWholeAndEndWithTheConnection) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(kTables), "");
  const Case cases[] = {
      // A refused row does not end a transaction, a failed conversion does.
      {u"BEGIN TRAN\r\nUPDATE member SET points = 6\r\nUPDATE member SET points = 999\r\nCOMMIT\r\n"
       u"SELECT 1",
       "#547 line 3: The UPDATE statement conflicted with the CHECK constraint \"ck_points\". The "
       "conflict occurred in database \"vellum250\", table \"dbo.member\"."},
      {u"SELECT points, @@TRANCOUNT FROM member", "6|0"},
      {u"BEGIN TRAN\r\nUPDATE member SET points = 7\r\nUPDATE member SET points = 'x'\r\nCOMMIT",
       "#245 line 3: Conversion failed when converting the varchar value 'x' to data type "
       "smallint."},
      {u"SELECT points, @@TRANCOUNT FROM member", "6|0"},
      // Keys given in a transaction that is rolled back are not given again.
      {u"BEGIN TRAN INSERT INTO member (name, email) VALUES ('Bob', 'b') ROLLBACK "
       u"INSERT INTO member (name, email) VALUES ('Cid', 'c') SELECT SCOPE_IDENTITY()",
       "3"},
      // Tables made in it go with it, and statements prepared for them.
      {u"BEGIN TRAN CREATE TABLE t (a int) INSERT INTO t VALUES (1) SELECT a FROM t ROLLBACK", "1"},
      {u"SELECT a FROM t", "#208 line 1: Invalid object name 't'."},
      {u"CREATE TABLE t (a varchar(5)) INSERT INTO t VALUES ('x') SELECT a FROM t", "x"},
  };
  for (const Case& test : cases) {
    EXPECT_EQ(scratch.Answer(test.sql), test.answer) << ToUtf8(test.sql);
  }
  scratch.Another()->Run(u"BEGIN TRAN UPDATE member SET points = 9");
  EXPECT_EQ(scratch.Answer(u"SELECT max(points) FROM member"), "6");
  scratch.Another()->Run(u"CREATE TABLE #t (a int) SET IDENTITY_INSERT member ON SET NOCOUNT ON");
  const auto fresh = scratch.Another();
  EXPECT_EQ(Scratch::AnswerOf(*fresh, u"SELECT a FROM #t"),
            "#208 line 1: Invalid object name '#t'.");
  EXPECT_EQ(fresh->Run(u"UPDATE member SET points = 6").rowCounts, std::vector<int64_t>{2});
}

TEST(EmbeddedBatch, FailuresNameTheLine) {
  const Case cases[] = {
      {u"SELECT 1\r\nSELEC 2", "#102 line 2: Incorrect syntax near '2'."},
      {u"SELECT 1,\r\n\r\nFROM member", "#156 line 3: Incorrect syntax near the keyword 'FROM'."},
      {u"SELECT 1 FROM\r\n", "#102 line 1: Incorrect syntax near 'FROM'."},
      {u"SELECT 'a\r\nb',\r\n  nothing\r\nFROM member",
       "#207 line 3: Invalid column name 'nothing'."},
      {u"SELECT 1 -- a\r\n/* b\r\n */ SELECT x.y FROM member m",
       "#4104 line 3: The multi-part identifier \"x.y\" could not be bound."},
      {u"SELECT 1\r\nWHILE 1 = 1 SELECT 2",
       "#0 line 2: not supported by the embedded database: WHILE"},
      {u"SELECT\r\n  soundex(name) FROM member",
       "#0 line 2: not supported by the embedded database: function soundex"},
      {u"EXEC nowhere 1", "#2812 line 1: Could not find stored procedure 'nowhere'."},
      {u"SELECT * FROM members", "#208 line 1: Invalid object name 'members'."},
      {u"SELECT 1 / 0\r\nSELECT 2", "#8134 line 1: Divide by zero error encountered."},
      {u"SELECT\r\n  {fn now()}", "#0 line 2: not supported by the embedded database: {fn ...}"},
      {u"SELECT name FROM member ORDER BY 5",
       "#108 line 1: The ORDER BY position number 5 is out of range of the number of items in the "
       "select list."},
      {u"SELECT name FROM member m GROUP BY points",
       "#8120 line 1: Column 'm.name' is invalid in the select list because it is not contained in "
       "either an aggregate function or the GROUP BY clause."},
  };
  Check(cases);
}

TEST(EmbeddedBatch, AFailureInAProcedureEndsOnlyItsStatement) {
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(kTables), "");
  ASSERT_EQ(scratch.Answer(u"CREATE PROCEDURE usp_add @name varchar(10), @points int = 1, @key int "
                           u"OUTPUT AS\r\nINSERT INTO member (name, points, email) VALUES (@name, "
                           u"@points, @name)\r\nSET @key = SCOPE_IDENTITY()\r\nSELECT @name AS name"
                           u"\r\nRETURN 7"),
            "");
  const ProcedureParameter parameters[] = {
      {u"@name", SqlType::VarChar, Variant(u"Zed"), Direction::In, 10},
      {u"@points", SqlType::Int, Variant(int32_t{12}), Direction::In, 0},
      {u"@key", SqlType::Int, Variant(Null()), Direction::Out, 0}};
  const ProcedureResult result = scratch.Get().Call(u"usp_add", parameters);
  EXPECT_EQ(result.returnValue, 7);
  ASSERT_EQ(result.outputs.size(), 1u);
  EXPECT_EQ(result.outputs[0], Variant(int32_t{2}));
  ASSERT_EQ(result.results.size(), 1u);
  EXPECT_EQ(result.results[0].At(0, 0), Variant(u"Zed"));
  EXPECT_EQ(FailureOf([&] { scratch.Get().Call(u"usp_add", parameters); }).substr(0, 35),
            "Violation of UNIQUE KEY constraint ");
  EXPECT_EQ(FailureOf([&] { scratch.Get().Call(u"usp_gone", parameters); }),
            "Could not find stored procedure 'usp_gone'.");
  EXPECT_EQ(scratch.Answer(u"DECLARE @k int, @r int\r\nEXEC @r = usp_add 'Yan', 900, @k OUTPUT\r\n"
                           u"SELECT @r, @k"),
            "#547 line 2: The INSERT statement conflicted with the CHECK constraint \"ck_points\". "
            "The conflict occurred in database \"vellum250\", table \"dbo.member\".");
  EXPECT_EQ(scratch.Answer(u"CREATE PROCEDURE usp_self AS EXEC usp_self"), "");
  EXPECT_EQ(scratch.Answer(u"EXEC usp_self").substr(0, 4), "#217");
}

TEST(EmbeddedBatch, FailuresHaveTheServersNumbers) {
  constexpr const char16_t* kProcedures[] = {
      u"CREATE PROCEDURE usp_none AS SELECT 1",
      u"CREATE PROCEDURE usp_two @a tinyint, @b datetime = NULL AS SELECT @a"};
  const std::pair<const char16_t*, int32_t> cases[] = {
      {u"INSERT INTO member VALUES (9, 'Bob', NULL, 1, NULL)", 8101},
      {u"INSERT INTO grade VALUES ('A', 1), ('B')", 10709},
      {u"INSERT INTO grade OUTPUT inserted.code VALUES ('A', 1)", 0},
      {u"SET IDENTITY_INSERT nothing ON", 1088},
      {u"SELECT @nothing", 137},
      {u"SELECT @nothing FROM WHERE", 156},
      {u"IF 1 = 0 SET @nothing = 1", 137},
      {u"DECLARE @a int, @A int", 134},
      {u"RETURN 5", 178},
      {u"RAISERROR ('x', 16)", 102},
      {u"RAISERROR ('x' + 'y', 16, 1)", 102},
      {u"BEGIN TRAN a ROLLBACK TRAN b", 6401},
      {u"SET ANSI_NULLS OFF", 0},
      {u"SET QUOTED_IDENTIFIER OFF SELECT \"x\"", 0},
      {u"DECLARE c CURSOR FOR SELECT 1", 0},
      {u"THROW 50000, 'x', 1", 0},
      {u"EXEC sp_help", 0},
      {u"EXEC usp_none 1", 8146},
      {u"EXEC usp_two @a = 1, 2", 119},
      {u"EXEC usp_two @a = 1, @a = 2", 8143},
      {u"EXEC usp_two 300", 8114},
      {u"EXEC usp_two 1, 'never'", 8114},
      {u"CREATE PROCEDURE p AS", 102},
      {u"CREATE PROCEDURE p AS IF 1 = 0 SELECT nme FROM member", 207},
      {u"CREATE PROCEDURE p AS SELECT @a", 137},
      {u"CREATE TABLE t ()", 102},
      {u"CREATE TABLE t (a varchar(0))", 1001},
      {u"CREATE TABLE t (a int NULL PRIMARY KEY)", 8111},
      {u"CREATE TABLE t (a int NULL IDENTITY)", 8147},
      {u"CREATE TABLE #t (a tinyint IDENTITY(255, 1), b int) INSERT INTO #t VALUES (1), (2)", 8115},
      {u"CREATE TABLE #t (a int IDENTITY(2147483647, 5), b int) INSERT INTO #t VALUES (1), (2)",
       8115},
      {u"SELECT name, code AS name FROM member ORDER BY name", 209},
      {u"SELECT name, * FROM member ORDER BY name", 209},
      {u"SELECT round(1)", 189},
      {u"SELECT datepart('yy', getdate())", 1023},
      {u"CREATE INDEX ix ON nothing (a)", 1088},
      {u"CREATE TABLE u (a int REFERENCES grade (code))", 1778},
      {u"CREATE TABLE u (a text UNIQUE)", 1919},
      {u"SELECT sum(CASE WHEN EXISTS (SELECT 1) THEN points END) FROM member", 130},
      {u"SELECT 1 FROM member GROUP BY (SELECT 1)", 144},
      {u"SELECT 1 FROM member GROUP BY max(name)", 144},
      {u"SELECT 1 FROM member m JOIN grade g ON max(m.name) = g.code", 1015},
      {u"CREATE TABLE t (a int CONSTRAINT uq_email UNIQUE)", 2714},
      {u"CREATE TABLE t (a int CHECK (a > (SELECT 1)))", 1046},
      {u"CREATE INDEX ix ON member (name) CREATE INDEX ix ON member (code)", 1913},
      {u"DROP VIEW member", 3705},
      {u"CREATE VIEW v (a, b) AS SELECT name FROM member", 8159},
      {u"CREATE VIEW v (a) AS SELECT name, code FROM member", 8158},
      {u"CREATE VIEW v AS SELECT name, name FROM member", 4506},
      {u"CREATE VIEW v AS SELECT name FROM member ORDER BY name", 1033},
      {u"SELECT (SELECT name FROM member ORDER BY name)", 1033},
      {u"SELECT * FROM (SELECT 1 AS a, 2 AS a) x", 8156},
      {u"SELECT name FROM member ORDER BY 'x'", 408},
      {u"DECLARE @n int SELECT TOP @n name FROM member", 102},
      {u"DECLARE @n int SELECT TOP (@n) name FROM member", 1060},
      {u"DECLARE @n int SET @n = -1 SELECT TOP (@n) name FROM member", 127},
      {u"SELECT 1e309", 168},
      {u"DECLARE @d decimal(9, -1)", 102},
      {u"CREATE TABLE n (a int CONSTRAINT member_key UNIQUE) SELECT 1 AS a INTO member_key", 2714},
      {u"SELECT name FROM other.dbo.member", 0},
      {u"SELECT * FROM syscolumns", 0},
      {u"SELECT * FROM member PIVOT (max(name) FOR code IN (x)) p", 0},
      {u"SELECT name COLLATE Latin1_General_BIN FROM member", 0},
      {u"SELECT 1 FROM member HAVING count(*) > 0", 0},
      {u"SELECT * FROM (VALUES (1), (2)) AS t (a)", 0},
      {u"INSERT TOP (1) INTO grade SELECT 'A', 1", 0},
      {u"SELECT 1 FROM member WHERE contains(name, 'x')", 0},
      {u"SELECT 1 FROM member WHERE NOT freetext(name, 'x')", 0},
      {u"EXECUTE AS USER = 'x'", 0},
      {u"SELECT {t '10:00:00'}", 0},
      {u"SELECT {fn now()}", 0},
      {u"{call usp_none}", 0},
      {u"SELECT 1 FROM {oj member m LEFT JOIN grade g ON g.code = m.code}", 0},
      {u"SELECT {ts 5}", 102},
      {u"SET", 102},
      {u"UPDATE member SET points = max(points)", 157},
      {u"UPDATE member SET points = 1 + (max(points))", 157},
  };
  Scratch scratch;
  ASSERT_EQ(scratch.Answer(kTables), "");
  for (const char16_t* procedure : kProcedures) ASSERT_EQ(scratch.Answer(procedure), "");
  for (const auto& [sql, number] : cases) {
    const Batch batch = scratch.Another()->Run(sql);
    ASSERT_TRUE(batch.failure) << ToUtf8(sql);
    EXPECT_EQ(batch.failure->NativeNumber(), number) << ToUtf8(sql) << batch.failure->what();
    const std::string words = batch.failure->what();
    EXPECT_EQ(words.starts_with("not supported by the embedded database: "), number == 0) << words;
  }
}

TEST(EmbeddedBatch, WhatAFailureEnds) {
  // The first names that are there after the batch; the second batch shows them.
  const Case cases[] = {
      // The statement only: out of range, too many digits, a table that others refer to.
      {u"SELECT cast('2005-02-30' AS datetime) DELETE FROM member", "(none)"},
      {u"SELECT left('a', -1) DELETE FROM member", "(none)"},
      {u"DROP TABLE grade DELETE FROM member", "(none)"},
      {u"CREATE TABLE a (n int) CREATE TABLE b (n int) DROP TABLE a, gone, b IF object_id('a') IS "
       u"NULL AND object_id('b') IS NULL DELETE FROM member",
       "(none)"},
      // The batch: a letter where a number should be, a table that is there already.
      {u"SELECT cast('x' AS int) DELETE FROM member", "Ann"},
      {u"CREATE TABLE grade (a int) DELETE FROM member", "Ann"},
      {u"SET XACT_ABORT ON BEGIN TRAN DELETE FROM member DELETE FROM grade WHERE 1 / 0 = 1 COMMIT",
       "Ann"},
      // A procedure that cannot be bound is left, and its caller goes on.
      {u"EXEC usp_gone INSERT INTO member (name, email) VALUES ('Cid', 'c')", "Ann;Bob;Cid"},
      {u"EXEC usp_text INSERT INTO member (name, email) VALUES ('Cid', 'c')", "Ann;Bob"},
      {u"EXEC usp_open IF @@TRANCOUNT = 1 ROLLBACK", "Ann"},
  };
  for (const Case& test : cases) {
    Scratch scratch;
    ASSERT_EQ(scratch.Answer(kTables), "");
    const Text bob = u" AS INSERT INTO member (name, email) VALUES ('Bob', 'b') ";
    scratch.Answer(u"CREATE PROCEDURE usp_gone" + bob + u"SELECT * FROM gone DELETE FROM member");
    scratch.Answer(u"CREATE PROCEDURE usp_text" + bob + u"SELECT 1 + 'x' DELETE FROM member");
    scratch.Answer(u"CREATE PROCEDURE usp_open AS BEGIN TRAN DELETE FROM member");
    EXPECT_EQ(scratch.Answer(test.sql).substr(0, 1), "#") << ToUtf8(test.sql);
    EXPECT_EQ(scratch.Answer(u"SELECT name FROM member ORDER BY name"), test.answer)
        << ToUtf8(test.sql);
  }
}

TEST(EmbeddedBatch, CountsNamesAndTemporaryTablesAreTheServers) {
  const Case cases[] = {
      {u"UPDATE member SET points = 1 IF @@ROWCOUNT = 1 SELECT @@ROWCOUNT", "0"},
      {u"SELECT 1 DECLARE @a int SET @a = 5 SELECT @@ROWCOUNT", "1 / 1"},
      {u"BEGIN TRAN UPDATE member SET points = 1 COMMIT SELECT @@ROWCOUNT", "0"},
      {u"DECLARE @n int = 3 SET @n += 4 UPDATE member SET points -= @n WHERE 1 = 0 SELECT @n", "7"},
      {u"UPDATE member SET points = 4, code = DEFAULT SELECT points, code FROM member", "4|NULL"},
      {u"BEGIN TRAN a UPDATE member SET points = 9 ROLLBACK TRAN a SELECT points FROM member", "5"},
      {u"RAISERROR ('%s has %d%%, %% of', 16, 1, 'Ann', 5)", "#50000 line 1: Ann has 5%, % of"},
      {u"SELECT points FROM member EXCEPT SELECT 4 SELECT 5 INTERSECT SELECT points FROM member",
       "5 / 5"},
      {u"SELECT m.name FROM grade g LEFT JOIN member m JOIN grade h ON h.code = m.code ON m.code = "
       u"g.code",
       "Ann"},
      {u"SELECT 6 ^ 3, 6 & 3, 6 | 3", "5|2|7"},
      // SELECT ... INTO takes identity and NOT NULL along, but not through a join.
      {u"SELECT * INTO #m FROM member INSERT INTO #m (name) VALUES ('Bob') SELECT member_ref, name "
       u"FROM #m INSERT INTO #m (name) VALUES (NULL)",
       "1|Ann;2|Bob / #515 line 1: Cannot insert the value NULL into column 'name', table "
       "'dbo.#m'; column does not allow nulls. INSERT fails."},
      {u"SELECT m.member_ref INTO #m FROM member m, grade g INSERT INTO #m VALUES (7) SELECT * "
       u"FROM "
       u"#m",
       "1;7"},
      // A procedure's temporary tables go with it.
      {u"EXEC usp_make EXEC usp_make SELECT * FROM #made",
       "1 / 1 / #208 line 1: Invalid object name '#made'."},
      {u"SELECT column_default, numeric_precision_radix, character_octet_length FROM "
       u"information_schema.columns WHERE table_name = 'd' ORDER BY ordinal_position",
       "((-1))|10|NULL;(getdate())|NULL|NULL;('x')|NULL|8"},
      {u"IF EXISTS (SELECT * FROM dbo.sysobjects WHERE id = object_id(N'[dbo].[member]') AND "
       u"OBJECTPROPERTY(id, N'IsUserTable') = 1) SELECT object_id('member', 'V')",
       "NULL"},
      {u"SELECT isnull(points, 0) AS p, isnull(points, code) AS q, len(cast(name AS varchar(max))) "
       u"'n', 't' = email INTO made FROM member SELECT column_name, data_type, is_nullable FROM "
       u"information_schema.columns WHERE table_name = 'made' ORDER BY ordinal_position",
       "p|smallint|NO;q|smallint|YES;n|bigint|YES;t|varchar|YES"},
      {u"SELECT name FROM sys.objects WHERE object_id = object_id('usp_make') AND type IN (N'P')",
       "usp_make"},
  };
  for (const Case& test : cases) {
    Scratch scratch;
    ASSERT_EQ(scratch.Answer(kTables), "");
    ASSERT_EQ(scratch.Answer(u"CREATE TABLE d (a int DEFAULT ((-1)), b datetime DEFAULT getdate(), "
                             u"c nvarchar(4) DEFAULT ('x'))"),
              "");
    ASSERT_EQ(scratch.Answer(u"CREATE PROCEDURE usp_make AS CREATE TABLE #made (a int) INSERT INTO "
                             u"#made VALUES (1) SELECT a FROM #made"),
              "");
    EXPECT_EQ(scratch.Answer(test.sql), test.answer) << ToUtf8(test.sql);
  }
}

}  // namespace
}  // namespace vellum250::database
