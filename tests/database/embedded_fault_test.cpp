// The embedded database on a disk, on locks and in memory that fail: each operation in turn.
#include <cstdlib>
#include <iostream>
#include <thread>

#include "automation/failure.h"
#include "database/embedded/sqlite.h"
#include "scratch.h"
#include "support/sqlite_faults.h"

namespace vellum250::database {
namespace {

using support::ArmedFaults;
using support::SqliteFault;

// A batch that does all or nothing, and what it answers.
struct Step {
  const char16_t* sql;
  const char* answer;
};

constexpr int64_t kAll = int64_t{1} << 60;
constexpr const char16_t* kCall = u"usp_add";
constexpr Step kSteps[] = {
    {u"CREATE TABLE member (member_ref int IDENTITY(1,1) PRIMARY KEY, name varchar(20) NOT NULL, "
     u"points int NOT NULL DEFAULT 1 CONSTRAINT ck_points CHECK (points < 1000))",
     ""},
    {u"INSERT INTO member (name) VALUES ('Ann') SELECT SCOPE_IDENTITY()", "1"},
    {u"CREATE TABLE note (member_ref int NOT NULL REFERENCES member (member_ref), words "
     u"varchar(8000) NOT NULL)",
     ""},
    {u"BEGIN TRAN INSERT INTO member (name, points) VALUES ('Bob', 2) INSERT INTO note VALUES "
     u"(1, replicate('Zo\u00eb ', 1500)) UPDATE member SET points = points + 1 COMMIT",
     ""},
    {u"CREATE PROCEDURE usp_add @name varchar(20) AS INSERT INTO member (name) SELECT @name + "
     u"a.name FROM member a, member b, member c RETURN 5",
     ""},
    {kCall, "5"},
    {u"INSERT INTO member (name, points) SELECT TOP 90 a.name, 7 FROM member a, member b", ""},
    {u"SELECT name, upper(name) + '\u00e9' FROM member ORDER BY name, member_ref", "100 rows"},
    {u"BEGIN TRAN UPDATE member SET points = 3 WHERE points = 7 INSERT INTO member (name, points) "
     u"VALUES ('C', 1000) DELETE FROM note COMMIT",
     "#547 line 1: The INSERT statement conflicted with the CHECK constraint \"ck_points\". The "
     "conflict occurred in database \"vellum250\", table \"dbo.member\"."},
    {u"SELECT name INTO #t FROM member WHERE points = 3 SELECT count(*) FROM #t DROP TABLE #t",
     "91"},
    {u"BEGIN TRAN DELETE FROM member CREATE TABLE gone (a int) ROLLBACK", ""},
    {u"CREATE VIEW v AS SELECT name FROM member", ""},
    {u"DROP PROCEDURE usp_add", ""},
};

std::string AnswerTo(Connection& connection, const Step& step) {
  if (step.sql == kCall) {
    const ProcedureParameter name{u"@name", SqlType::VarChar, u"X", Direction::In, 20};
    return std::to_string(connection.Call(kCall, std::span(&name, 1)).returnValue);
  }
  const Batch batch = connection.Run(step.sql);
  // That of a fault has no number.
  if (batch.failure && batch.failure->NativeNumber() == 0) throw *batch.failure;
  if (batch.failure) return Scratch::FailureText(*batch.failure);
  if (batch.results.empty()) return "";
  const Recordset& rows = batch.results[0];
  return rows.RowCount() == 1 ? ToUtf8(ToText(rows.At(0, 0)))
                              : std::to_string(rows.RowCount()) + " rows";
}

// What the file holds, as somebody else sees it, who could also write.
std::string StateOf(const Text& connectionText) {
  const auto connection = Connection::Open(connectionText + u"Timeout=0;");
  const auto answer = [&](const char16_t* sql) { return Scratch::AnswerOf(*connection, sql); };
  const std::string names = answer(u"SELECT name FROM sysobjects ORDER BY name");
  std::string state = answer(u"BEGIN TRAN ROLLBACK") + names;
  for (const char16_t* sql :
       {u"SELECT count(*), count(DISTINCT member_ref), sum(points), sum(len(name)) FROM member",
        u"SELECT count(*), sum(len(words)) FROM note"}) {
    const std::string rows = answer(sql);
    if (!rows.starts_with("#208 ")) state += " / " + rows;
  }
  return state;
}

void ExpectWords(const Failure& failure) {
  const std::string words = failure.what();
  for (const char* raw : {"malformed", "unknown", "SQL logic", "not an error", "I/O", "failed:"}) {
    EXPECT_EQ(words.find(raw), std::string::npos) << words;
  }
  EXPECT_TRUE(words.find(".db") != words.npos || failure.Number() == 7 ||
              failure.Number() == kTimeoutFailure)
      << words;
}

struct Kind {
  const char* name;
  SqliteFault fault;
  int64_t times = 1;
  const char16_t* options = u"";
  bool silent = false;  // nobody may notice
  int64_t leaps = 0;    // the N-th in turn, but N grows by itself / leaps; 0 is by one
};

void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }

class EmbeddedFault : public testing::TestWithParam<Kind> {
 protected:
  EmbeddedFault()
      : file_(std::filesystem::temp_directory_path() /
              ("faults" + std::to_string(::getpid()) + ".db")),
        text_(u"Driver=Vellum250;Database=" + FromUtf8(file_.string()) + u";Create=yes;") {}
  ~EmbeddedFault() override {
    ArmedFaults() = {};
    RemoveFile();
  }

  void RemoveFile() const {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
      std::filesystem::remove(file_.string() + suffix);
    }
  }

  // On a thread of its own, whose end closes everything.
  template <typename Action>
  static void OnThread(Action action) {
    std::thread(action).join();
  }

  // Whether it came to its end, with the fault on its way. A failure must be in words and due to
  // the fault, which then is over.
  template <typename Action>
  bool Comes(Action action) {
    bool came = false;
    try {
      ArmedFaults().fault = fault_;
      action();
      came = true;
      ArmedFaults().fault = SqliteFault::None;
    } catch (const Failure& failure) {
      ArmedFaults().fault = fault_ = SqliteFault::None;
      ExpectWords(failure);
    } catch (const std::bad_alloc&) {
      // There was none for the words.
      ArmedFaults().fault = fault_ = SqliteFault::None;
    }
    EXPECT_TRUE(came || ArmedFaults().injected > 0);
    return came;
  }

  // The steps one after the other; one that fails is taken up again where it left off.
  void RunSteps(const Kind& kind) {
    std::unique_ptr<Connection> connection;
    const Text opening = text_ + kind.options;
    if (!Comes([&] { connection = Connection::Open(opening); })) {
      ++failures_;
      connection = Connection::Open(opening);
    }
    for (size_t i = 0; i < std::size(kSteps); ++i) {
      std::string answer;
      const auto run = [&] { answer = AnswerTo(*connection, kSteps[i]); };
      if (!Comes(run)) {
        ++failures_;
        // Where there was no memory even to roll back, that is done now.
        if (kind.fault == SqliteFault::NoMemory && kind.times == kAll) connection->Run(u"");
        const std::string state = StateOf(text_);
        const bool done = state != states_[i];
        if (done) {
          EXPECT_EQ(state, states_[i + 1]);
          continue;
        }
        if (!Comes(run)) return;
        // Nobody else sees that a temporary table had been made.
        if (answer.starts_with("#2714 ") && answer.find("'#t'") != answer.npos) continue;
      }
      EXPECT_EQ(answer, kSteps[i].answer);
    }
    ArmedFaults().fault = fault_;  // what follows is closing
  }

  void ExpectWhole() {
    EXPECT_EQ(StateOf(text_), states_.back());
    embedded::Database database(FromUtf8(file_.string()), false, 0);
    embedded::Prepared check = database.Prepare("PRAGMA integrity_check", false);
    ASSERT_TRUE(check.Step(database));
    EXPECT_EQ(check.Column(0).Text(), "ok");
  }

  void LearnStates() {
    states_.push_back(StateOf(text_));
    const auto connection = Connection::Open(text_);
    for (const Step& step : kSteps) {
      EXPECT_EQ(AnswerTo(*connection, step), step.answer) << ToUtf8(step.sql);
      states_.push_back(StateOf(text_));
    }
  }

  std::filesystem::path file_;
  Text text_;
  std::vector<std::string> states_;  // before the first step, after the first ...
  SqliteFault fault_ = SqliteFault::None;
  int64_t failures_ = 0;
};

TEST_P(EmbeddedFault, ComesOutInWordsAndLeavesAWholeFile) {
  const Kind& kind = GetParam();
  const bool all = std::getenv("VELLUM250_ALL_FAULTS") != nullptr;
  RemoveFile();
  OnThread([&] { LearnStates(); });
  const int64_t memory = sqlite3_memory_used();
  const int64_t openFiles = support::OpenSqliteFiles();
  int64_t injected = 0;
  for (int64_t at = 1;; at += all || kind.leaps == 0 ? 1 : 1 + at / kind.leaps) {
    RemoveFile();
    OnThread([&] {
      ArmedFaults() = {.at = at, .times = kind.times, .syncs = false};
      fault_ = kind.fault;
      RunSteps(kind);
    });
    ArmedFaults().fault = SqliteFault::None;
    const auto faults = ArmedFaults();
    if (faults.injected == 0) {
      std::cout << kind.name << ": " << injected << " faults in " << at << " places at most, "
                << failures_ << " failures\n";
      break;
    }
    injected += faults.injected;
    OnThread([&] { ExpectWhole(); });
    EXPECT_EQ(support::OpenSqliteFiles(), openFiles);
    EXPECT_EQ(sqlite3_memory_used(), memory);
    EXPECT_TRUE(!kind.silent || failures_ == 0);
    if (HasFailure()) FAIL() << "at " << faults.in << " " << at;
  }
  EXPECT_GT(injected, 5);
}

INSTANTIATE_TEST_SUITE_P(
    Kinds, EmbeddedFault,
    testing::Values(
        Kind{"DiskFull", SqliteFault::DiskFull}, Kind{"DiskStaysFull", SqliteFault::DiskFull, kAll},
        Kind{"WriteError", SqliteFault::WriteError}, Kind{"ShortWrite", SqliteFault::ShortWrite},
        Kind{"ReadError", SqliteFault::ReadError}, Kind{"ReadErrors", SqliteFault::ReadError, kAll},
        Kind{"ShortRead", SqliteFault::ShortRead}, Kind{"SyncError", SqliteFault::SyncError},
        Kind{"Locked", SqliteFault::Locked, 1, u"Timeout=0;"},
        Kind{"StaysLocked", SqliteFault::Locked, 4, u"Timeout=0;"},
        Kind{"LockedForAMoment", SqliteFault::Locked, 1, u"", true},
        Kind{"CannotOpen", SqliteFault::CannotOpen},
        Kind{"NoMemory", SqliteFault::NoMemory, 1, u"", false, 20},
        Kind{"MemoryEnds", SqliteFault::NoMemory, kAll, u"", false, 20},
        Kind{"NoNewMemory", SqliteFault::NoNewMemory, 1, u"", false, 20},
        Kind{"NewMemoryEnds", SqliteFault::NoNewMemory, kAll, u"", false, 20}),
    [](const auto& kind) { return std::string(kind.param.name); });

}  // namespace
}  // namespace vellum250::database
