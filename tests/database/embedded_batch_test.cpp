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
       "conflict occurred in table \"dbo.member\"."},
      {u"INSERT INTO member (name, code) VALUES ('Bob', 'XXX')",
       "#547 line 1: The INSERT statement conflicted with the FOREIGN KEY constraint \"fk_grade\". "
       "The conflict occurred in table \"dbo.grade\", column 'code'."},
      {u"DELETE FROM grade",
       "#547 line 1: The DELETE statement conflicted with the REFERENCE constraint \"fk_grade\". "
       "The conflict occurred in table \"dbo.member\", column 'code'."},
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
       "conflict occurred in table \"dbo.member\"."},
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
            "The conflict occurred in table \"dbo.member\".");
  EXPECT_EQ(scratch.Answer(u"CREATE PROCEDURE usp_self AS EXEC usp_self"), "");
  EXPECT_EQ(scratch.Answer(u"EXEC usp_self").substr(0, 4), "#217");
}

}  // namespace
}  // namespace vellum250::database
