// Many threads and processes at one embedded database; some of them die.
#include <sys/wait.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <list>
#include <random>
#include <thread>

#include "database/embedded/sqlite.h"
#include "scratch.h"
#include "support/sqlite_faults.h"

namespace vellum250::database {
namespace {

using Clock = std::chrono::steady_clock;

// A child process, and a pipe on which it tells what it did.
class Child {
 public:
  // No other thread may run. SQLite must hold none of the files that the child opens.
  template <typename Action>
  explicit Child(Action action) {
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    process_ = ::fork();
    if (process_ == 0) {
      ::close(ends[0]);
      action(ends[1]);
      ::_exit(0);
    }
    ::close(ends[1]);
    pipe_ = ends[0];
  }
  ~Child() {
    if (process_ > 0) ::waitpid(process_, nullptr, 0);
    ::close(pipe_);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void Kill() {
    ::kill(process_, SIGKILL);
    ::waitpid(std::exchange(process_, 0), nullptr, 0);
  }

  template <typename T>
  bool Read(T& told) const {
    return ::read(pipe_, &told, sizeof told) == static_cast<ssize_t>(sizeof told);
  }
  template <typename T>
  static void Tell(int pipe, const T& told) {
    if (::write(pipe, &told, sizeof told) != static_cast<ssize_t>(sizeof told)) ::_exit(1);
  }

 private:
  pid_t process_ = 0;
  int pipe_ = -1;
};

class EmbeddedCrowd : public testing::Test {
 protected:
  EmbeddedCrowd()
      : file_(std::filesystem::temp_directory_path() /
              ("crowd" + std::to_string(::getpid()) + ".db")),
        text_(u"Driver=Vellum250;Database=" + FromUtf8(file_.string()) + u";Create=yes;") {
    RemoveFile();
  }
  ~EmbeddedCrowd() override {
    support::ArmedFaults() = {};
    RemoveFile();
  }

  void RemoveFile() const {
    for (const char* suffix : {"", "-wal", "-shm", "-journal"}) {
      std::filesystem::remove(file_.string() + suffix);
    }
  }

  // On a thread whose end closes everything.
  std::vector<std::string> AnswersOf(std::initializer_list<const char16_t*> batches) const {
    std::vector<std::string> answers;
    std::thread([&] {
      const auto connection = Connection::Open(text_);
      for (const char16_t* sql : batches) answers.push_back(Scratch::AnswerOf(*connection, sql));
    }).join();
    return answers;
  }

  bool IsWhole() const {
    embedded::Database database(FromUtf8(file_.string()), false, 15'000);
    embedded::Prepared check = database.Prepare("PRAGMA integrity_check", false);
    return check.Step(database) && check.Column(0).Text() == "ok";
  }

  // Rows go into both tables, or into none.
  static std::string MakeTables(Connection& connection) {
    return Scratch::AnswerOf(
        connection,
        u"BEGIN TRAN\r\n"
        u"IF object_id('entry') IS NULL BEGIN\r\n"
        u"  CREATE TABLE entry (entry_ref int IDENTITY(1,1) PRIMARY KEY, writer int NOT NULL,\r\n"
        u"    n int NOT NULL, CONSTRAINT uq_entry UNIQUE (writer, n))\r\n"
        u"  CREATE TABLE total (writer int NOT NULL PRIMARY KEY, n int NOT NULL)\r\n"
        u"END\r\n"
        u"COMMIT");
  }

  std::filesystem::path file_;
  Text text_;
};

TEST_F(EmbeddedCrowd, AKilledWriterLeavesWholeBatchesAndAllThatItToldOf) {
  constexpr int kKills = 200;
  const unsigned seed = std::random_device()();
  std::cout << "seed " << seed << "\n";
  std::mt19937 random(seed);
  // A process that dies takes nothing with it that the system has; without waiting for the disk
  // more of the kills hit a batch.
  support::ArmedFaults().syncs = false;
  int32_t told = 0;
  int64_t all = 0;
  int64_t untold = 0;
  for (int run = 0; run < kKills; ++run) {
    // Now and then the kill comes while the file is made or opened.
    const bool early = run % 4 == 0;
    if (run % 8 == 0) {
      RemoveFile();
      told = 0;
    }
    const int32_t first = told + 1;
    Child writer([&](int pipe) {
      const auto connection = Connection::Open(text_);
      if (!MakeTables(*connection).empty()) ::_exit(1);
      for (int32_t n = first;; ++n) {
        const std::vector<Variant> values = {n, n, n};
        const Batch batch = connection->Run(
            u"BEGIN TRAN INSERT INTO entry (writer, n) VALUES (1, ?) "
            u"IF ? = 1 INSERT INTO total VALUES (1, 0) UPDATE total SET n = ? COMMIT",
            values);
        if (batch.failure) ::_exit(1);
        Child::Tell(pipe, n);
      }
    });
    if (!early && writer.Read(told)) ++all;
    std::this_thread::sleep_for(std::chrono::microseconds(random() % (early ? 30'000 : 10'000)));
    writer.Kill();
    while (writer.Read(told)) ++all;
    const auto answers = AnswersOf(
        {u"IF object_id('entry') IS NULL SELECT '0|0' ELSE SELECT count(*), isNull(max(n), 0) FROM "
         u"entry",
         u"IF object_id('total') IS NULL SELECT 0 ELSE SELECT isNull(max(n), 0) FROM total"});
    const int32_t there = std::stoi(answers[1]);
    ASSERT_EQ(answers[0], answers[1] + "|" + answers[1]) << "run " << run;
    // The last batch may have come in without a chance to tell.
    ASSERT_TRUE(there == told || there == told + 1) << there << " " << told << ", run " << run;
    untold += there - told;
    told = there;
    ASSERT_TRUE(IsWhole()) << "run " << run;
  }
  EXPECT_GT(all, kKills);
  std::cout << kKills << " kills, " << all << " batches told of and there, " << untold
            << " there and not told of\n";
}

// What one writer of a crowd reports.
struct Report {
  int64_t rows = 0;
  int64_t longest = 0;  // milliseconds that one batch took
  char failure[200] = "";
};

class Crowd {
 public:
  Crowd(Text text, Clock::time_point end) : text_(std::move(text)), end_(end) {}

  Report Write(int32_t writer) const {
    Report report;
    try {
      // From the pool each time, as pages do.
      for (int32_t n = 1; Clock::now() < end_ && report.failure[0] == 0; ++n) {
        const auto begin = Clock::now();
        const auto connection = Connection::Open(text_);
        const std::vector<Variant> values = {writer, n};
        const auto* sql = n % 2 == 0 ? kReadThenWrite : u"EXEC usp_write ?, ?";
        Check(report, connection->Run(sql, values));
        const auto took = Clock::now() - begin;
        report.longest =
            std::max(report.longest,
                     int64_t{std::chrono::duration_cast<std::chrono::milliseconds>(took).count()});
        if (report.failure[0] == 0) ++report.rows;
        // One of them changes the schema meanwhile.
        if (writer == 1 && n % 10 == 1) {
          Check(report, connection->Run(u"CREATE TABLE gone (a int) DROP TABLE gone"));
          Check(report, connection->Run(u"BEGIN TRAN DROP PROCEDURE usp_write"));
          Check(report, connection->Run(kProcedure));
          Check(report, connection->Run(u"COMMIT"));
        }
      }
    } catch (const Failure& failure) {
      Note(report, failure);
    }
    return report;
  }

  // Sees all of a transaction or nothing of it.
  std::string Read() const {
    int64_t looks = 0;
    try {
      for (; Clock::now() < end_; ++looks) {
        const auto connection = Connection::Open(text_);
        const std::string answer = Scratch::AnswerOf(
            *connection, u"SELECT count(*) FROM entry SELECT isNull(sum(n), 0) FROM total");
        const size_t half = answer.find(" / ");
        if (half == answer.npos || answer.substr(0, half) != answer.substr(half + 3)) {
          return answer;
        }
      }
    } catch (const Failure& failure) {
      return failure.what();
    }
    return looks == 0 ? "no look" : "";
  }

  static constexpr const char16_t* kProcedure =
      u"CREATE PROCEDURE usp_write @writer int, @n int AS\r\n"
      u"BEGIN TRAN\r\n"
      u"INSERT INTO entry (writer, n) VALUES (@writer, @n)\r\n"
      u"UPDATE total SET n = n + 1 WHERE writer = @writer\r\n"
      u"COMMIT";

 private:
  static constexpr const char16_t* kReadThenWrite =
      u"DECLARE @writer int, @n int SET @writer = ?\r\n"
      u"BEGIN TRAN\r\n"
      u"SELECT @n = n FROM total WHERE writer = @writer\r\n"
      u"UPDATE total SET n = @n + 1 WHERE writer = @writer\r\n"
      u"INSERT INTO entry (writer, n) VALUES (@writer, ?)\r\n"
      u"COMMIT";

  static void Note(Report& report, const Failure& failure) {
    std::snprintf(report.failure, sizeof report.failure, "%s", failure.what());
  }
  static void Check(Report& report, const Batch& batch) {
    if (batch.failure) Note(report, *batch.failure);
  }

  Text text_;
  Clock::time_point end_;
};

TEST_F(EmbeddedCrowd, ManyMakeOneFile) {
  constexpr int kProcesses = 4;
  for (int round = 0; round < 10; ++round) {
    RemoveFile();
    std::list<Child> makers;
    for (int32_t i = 0; i < kProcesses; ++i) {
      makers.emplace_back([&](int pipe) {
        Report report;
        try {
          const auto connection = Connection::Open(text_);
          std::string answer = MakeTables(*connection);
          answer += Scratch::AnswerOf(
              *connection, u"INSERT INTO total SELECT isNull(max(writer), 0) + 1, 0 FROM total");
          std::snprintf(report.failure, sizeof report.failure, "%s", answer.c_str());
        } catch (const Failure& failure) {
          std::snprintf(report.failure, sizeof report.failure, "%s", failure.what());
        }
        Child::Tell(pipe, report);
      });
    }
    for (const Child& maker : makers) {
      Report report;
      ASSERT_TRUE(maker.Read(report));
      EXPECT_STREQ(report.failure, "");
    }
  }
}

TEST_F(EmbeddedCrowd, ThreadsAndProcessesWriteInTurn) {
  constexpr int32_t kProcesses = 4;
  constexpr int32_t kThreads = 8;
  const char* seconds = std::getenv("VELLUM250_CROWD_SECONDS");
  const auto time = std::chrono::seconds(seconds == nullptr ? 3 : std::atoi(seconds));
  std::thread([&] {
    const auto connection = Connection::Open(text_);
    ASSERT_EQ(MakeTables(*connection), "");
    for (int32_t writer = 1; writer <= kProcesses + kThreads; ++writer) {
      const Variant value = writer;
      ASSERT_FALSE(
          connection->Run(u"INSERT INTO total VALUES (?, 0)", std::span(&value, 1)).failure);
    }
    ASSERT_EQ(Scratch::AnswerOf(*connection, Crowd::kProcedure), "");
  }).join();

  const Crowd crowd(text_, Clock::now() + time);
  std::list<Child> processes;
  for (int32_t i = 1; i <= kProcesses; ++i) {
    processes.emplace_back([&](int pipe) { Child::Tell(pipe, crowd.Write(i)); });
  }
  std::vector<Report> reports(kThreads);
  std::string seen;
  {
    std::list<std::jthread> threads;
    for (int32_t i = 0; i < kThreads; ++i) {
      threads.emplace_back(
          [&, i] { reports[static_cast<size_t>(i)] = crowd.Write(kProcesses + 1 + i); });
    }
    threads.emplace_back([&] { seen = crowd.Read(); });
  }
  EXPECT_EQ(seen, "");
  for (const Child& process : processes) {
    ASSERT_TRUE(process.Read(reports.emplace_back()));
  }
  int64_t rows = 0;
  for (const Report& report : reports) {
    EXPECT_STREQ(report.failure, "");
    EXPECT_GT(report.rows, 0);
    rows += report.rows;
  }
  const auto [fewest, most] = std::ranges::minmax(reports, {}, &Report::rows);
  std::cout << rows << " batches in " << time.count() << " s, by each writer " << fewest.rows
            << " to " << most.rows << "; the longest took "
            << std::ranges::max(reports, {}, &Report::longest).longest << " ms\n";
  const std::string count = std::to_string(rows);
  EXPECT_EQ(AnswersOf({u"SELECT count(*), count(DISTINCT entry_ref) FROM entry",
                       u"SELECT sum(n) FROM total"}),
            (std::vector<std::string>{count + "|" + count, count}));
  EXPECT_TRUE(IsWhole());
}

}  // namespace
}  // namespace vellum250::database
