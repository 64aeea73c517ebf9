// What is kept from one statement to the next, and what must not be.
#include <malloc.h>

#include <thread>

#include "scratch.h"

namespace vellum250::database {
namespace {

TEST(EmbeddedCache, AKeptQueryNoticesWhatChangedSince) {
  const struct {
    TextView query;
    const char* before;
    TextView change;
    const char* after;
  } cases[] = {
      {u"SELECT * FROM t", "1|one", u"INSERT INTO t VALUES (2, 'two')", "1|one;2|two"},
      {u"SELECT * FROM t", "1|one", u"DELETE FROM t", "(none)"},
      {u"SELECT * FROM t", "1|one",
       u"DROP TABLE t CREATE TABLE t (c money, a bit) INSERT INTO t VALUES (1.5, 1)", "1.5|True"},
      {u"SELECT isNull(a, 'none') FROM t", "1",
       u"DROP TABLE t CREATE TABLE t (a varchar(9)) INSERT INTO t VALUES (NULL)", "none"},
      {u"SELECT b FROM t", "one", u"DROP TABLE t CREATE TABLE t (a int)",
       "#207 line 1: Invalid column name 'b'."},
      {u"SELECT b FROM t", "one", u"DROP TABLE t", "#208 line 1: Invalid object name 't'."},
      {u"SELECT b FROM v", "one", u"DROP VIEW v", "#208 line 1: Invalid object name 'v'."},
      {u"SELECT b FROM t WHERE a = 'x'",
       "#245 line 1: Conversion failed when converting the varchar value 'x' to data type int.",
       u"DROP TABLE t CREATE TABLE t (a varchar(1), b int) INSERT INTO t VALUES ('X', 5)", "5"},
  };
  for (const bool own : {false, true}) {
    for (const auto& [query, before, change, after] : cases) {
      Scratch scratch;
      ASSERT_EQ(
          scratch.Answer(u"CREATE TABLE t (a int, b varchar(5)) INSERT INTO t VALUES (1, 'one')"),
          "");
      ASSERT_EQ(scratch.Answer(u"CREATE VIEW v AS SELECT b FROM t"), "");
      for (int i = 0; i < 3; ++i) ASSERT_EQ(scratch.Answer(query), before) << ToUtf8(query);
      const auto other = own ? nullptr : scratch.Another();
      ASSERT_EQ(Scratch::AnswerOf(own ? scratch.Get() : *other, change), "");
      for (int i = 0; i < 3; ++i) EXPECT_EQ(scratch.Answer(query), after) << ToUtf8(query);
    }
  }
}

TEST(EmbeddedCache, AKeptQueryOutlivesARollback) {
  Scratch scratch;
  const Text query = u"SELECT * FROM t";
  ASSERT_EQ(scratch.Answer(u"CREATE TABLE t (a int) INSERT INTO t VALUES (1)"), "");
  for (int i = 0; i < 3; ++i) ASSERT_EQ(scratch.Answer(query), "1");
  ASSERT_EQ(scratch.Answer(u"BEGIN TRAN DROP TABLE t CREATE TABLE t (b varchar(5))"), "");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(scratch.Answer(query), "(none)");
  ASSERT_EQ(scratch.Answer(u"ROLLBACK"), "");
  for (int i = 0; i < 3; ++i) EXPECT_EQ(scratch.Answer(query), "1");
}

TEST(EmbeddedCache, AFileThatWasReplacedIsOpenedAnew) {
  Scratch scratch;
  const auto answer = [&] { return Scratch::AnswerOf(*scratch.Another(), u"SELECT a FROM t"); };
  ASSERT_EQ(scratch.Answer(u"CREATE TABLE t (a int) INSERT INTO t VALUES (1)"), "");
  ASSERT_EQ(answer(), "1");
  for (const char* suffix : {"-wal", "-shm"}) {
    std::filesystem::remove(scratch.File().string() + suffix);
  }
  const Scratch other;
  Scratch::AnswerOf(*other.Another(), u"CREATE TABLE t (a int) INSERT INTO t VALUES (2)");
  for (const char* suffix : {"", "-wal", "-shm"}) {
    std::filesystem::rename(other.File().string() + suffix, scratch.File().string() + suffix);
  }
  EXPECT_EQ(answer(), "2");
}

// Every text has its own shape: none is used again.
TEST(EmbeddedCache, StatementsThatDifferTakeNoMoreAndMoreMemory) {
  Scratch scratch;
  size_t early = 0;
  for (int i = 1; i <= 6000; ++i) {
    scratch.Get().Execute(u"SELECT 1 AS c" + NumberText(i));
    if (i == 1000) early = ::mallinfo2().uordblks;
  }
  EXPECT_LT(::mallinfo2().uordblks, early + 1'000'000);
}

TEST(EmbeddedCache, AConnectionMayOutliveItsThread) {
  Scratch scratch;
  std::thread([&] {
    // Made before what the thread keeps for connections, and so destroyed after it.
    thread_local std::unique_ptr<Connection> kept;
    kept = scratch.Another();
  }).join();
  EXPECT_EQ(scratch.Answer(u"CREATE TABLE t (a int) SELECT a FROM t"), "(none)");
}

}  // namespace
}  // namespace vellum250::database
