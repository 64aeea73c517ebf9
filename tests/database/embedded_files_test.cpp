// Files that are no database, or not ours, or not to be touched: told in words, with the path.
#include <sys/prctl.h>

#include <fstream>
#include <functional>
#include <thread>

#include "database/embedded/sqlite.h"
#include "scratch.h"
#include "support/sqlite_faults.h"

namespace vellum250::database {
namespace {

namespace fs = std::filesystem;

// Rights count for nothing with the superuser: while this lives he is nobody.
class AsNobody {
 public:
  explicit AsNobody(bool wanted) : changed_(wanted && ::geteuid() == 0) {
    if (changed_ && ::seteuid(kNobody) != 0) std::abort();
  }
  ~AsNobody() {
    if (changed_ && ::seteuid(0) != 0) std::abort();
    // A leak checker looks into its own process, which a change of user forbids.
    ::prctl(PR_SET_DUMPABLE, 1);
  }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;

 private:
  static constexpr uid_t kNobody = 65534;
  bool changed_;
};

class EmbeddedFiles : public testing::Test {
 protected:
  EmbeddedFiles() : folder_(fs::temp_directory_path() / ("files" + std::to_string(::getpid()))) {
    fs::create_directories(folder_);
    support::ArmedFaults().syncs = false;
  }
  ~EmbeddedFiles() override {
    support::ArmedFaults() = {};
    fs::permissions(folder_, fs::perms::all);
    fs::remove_all(folder_);
  }

  // The database is opened, read and written. It does not stay in the pool.
  static std::string Use(const std::string& file, const char16_t* options = u"") {
    std::string answer;
    std::thread([&] {
      answer = FailureOf([&] {
        const auto connection =
            Connection::Open(u"Driver=Vellum250;Database={" +
                             ReplaceAll(FromUtf8(file), u"}", u"}}") + u"};" + options);
        const Batch batch = connection->Run(
            u"IF object_id('t') IS NULL CREATE TABLE t (a int NOT NULL, b varchar(8000))\r\n"
            u"INSERT INTO t SELECT count(*), replicate('x', 8000) FROM t WHERE b LIKE 'x%'");
        if (batch.failure) throw *batch.failure;
      });
    }).join();
    return answer;
  }

  fs::path folder_;
};

TEST_F(EmbeddedFiles, SlipsInTheConnectionStringAreTold) {
  const std::string start = "the connection string";
  const struct {
    const char16_t* options;
    std::string answer;
  } cases[] = {
      {u"CREATE = True;Command Timeout=5", "no failure"},
      {u"Server=a;UID=b;PWD=c;Trusted_Connection=no;Encrypt=yes;Data Source=d;WSID=e;Create=0",
       "no failure"},
      {u"Create=maybe", start + "'s Create is neither yes nor no"},
      {u"Timeout=soon", start + "'s Timeout is no number of seconds"},
      {u"Creat=yes", start + " has an unknown keyword: Creat"},
      // What may be a part of a password is not repeated.
      {u"PWD=s3;cret=1", start + " has an unknown keyword: that of entry 4"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(Use((folder_ / "a.db").string(), test.options), test.answer) << ToUtf8(test.options);
  }
}

TEST_F(EmbeddedFiles, WrongOnesAreToldInWords) {
  const auto rights = [](int octal) {
    return [octal](const fs::path& file) { fs::permissions(file, static_cast<fs::perms>(octal)); };
  };
  const auto folderRights = [](int octal) {
    return [octal](const fs::path& file) {
      fs::permissions(file.parent_path(), static_cast<fs::perms>(octal));
    };
  };
  const auto text = [](const std::string& content) {
    return [content](const fs::path& file) { std::ofstream(file) << content; };
  };
  const auto sqlite = [](const char* sql) {
    return [sql](const fs::path& file) {
      sqlite3* database = nullptr;
      ASSERT_EQ(sqlite3_open(file.c_str(), &database), SQLITE_OK);
      EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK);
      sqlite3_close(database);
    };
  };
  const auto cut = [](uintmax_t size) {
    return [size](const fs::path& file) { fs::resize_file(file, size); };
  };
  const auto spoil = [](std::streamoff from, std::streamoff to) {
    return [=](const fs::path& file) {
      std::fstream stream(file, std::ios::in | std::ios::out | std::ios::binary);
      stream.seekp(from);
      for (std::streamoff at = from; at < to; ++at) stream.put('\x55');
    };
  };
  const struct {
    const char* what;
    std::function<void(const fs::path&)> spoil;  // a good database, readable by all
    std::string answer;                          // ": " and the path follow
    bool nobody = false;
    const char16_t* options = u"";
  } cases[] = {
      {"whole", [](const fs::path&) {}, "no failure"},
      {"whole, for nobody", [](const fs::path&) {}, "no failure", true},
      {"gone", [](const fs::path& file) { fs::remove(file); }, "there is no database file"},
      {"folder",
       [](const fs::path& file) {
         fs::remove(file);
         fs::create_directory(file);
       },
       "this is a folder, not a database file"},
      {"empty", cut(0), "the database file is empty"},
      {"empty, to be made", cut(0), "no failure", false, u"Create=yes"},
      {"text", text(std::string(5000, 'x')), "this is no database file"},
      {"short text", text("x"), "this is no database file"},
      {"short text, not to be made", text("x"), "this is no database file", false, u"Create=yes"},
      {"cut in its header", cut(50), "this is no database file"},
      {"cut after its header", cut(3 * 4096), "the database file is damaged"},
      {"cut at its end", cut(20 * 4096), "the database file is damaged"},
      {"spoilt header", spoil(0, 16), "this is no database file"},
      {"spoilt pages", spoil(4096, 20 * 4096), "the database file is damaged"},
      {"without a catalogue", sqlite("DROP TABLE vellum250_object"),
       "the database file is damaged"},
      {"not ours", sqlite("PRAGMA application_id = 7"),
       "this SQLite file was not made by this library"},
      {"newer", sqlite("PRAGMA user_version = 16777219"),
       "the database file was made by a newer version of this library"},
      {"written by a newer SQLite", spoil(18, 19), "the database file may not be written"},
      {"read by a newer SQLite only", spoil(19, 20), "this is no database file"},
      {"read-only", rights(0444), "the database file may not be written", true},
      {"write-only", rights(0222), "the database file cannot be opened", true},
      {"forbidden", rights(0), "the database file cannot be opened", true},
      {"in a read-only folder", folderRights(0555), "the database file may not be written", true},
      {"in a forbidden folder", folderRights(0), "the database file cannot be reached", true},
      {"to be made in a read-only folder",
       [](const fs::path& file) {
         fs::remove(file);
         fs::permissions(file.parent_path(), static_cast<fs::perms>(0555));
       },
       "the database file cannot be opened", true, u"Create=yes"},
  };
  const fs::path good = folder_ / "good.db";
  for (int row = 0; row < 30; ++row) ASSERT_EQ(Use(good.string(), u"Create=yes"), "no failure");
  int count = 0;
  for (const auto& test : cases) {
    const fs::path file = folder_ / std::to_string(++count) / "a.db";
    fs::create_directories(file.parent_path());
    fs::permissions(file.parent_path(), fs::perms::all);
    fs::copy_file(good, file);
    fs::permissions(file, static_cast<fs::perms>(0666));
    test.spoil(file);
    const bool fine = test.answer == "no failure";
    {
      const AsNobody nobody(test.nobody);
      EXPECT_EQ(Use(file.string(), test.options), test.answer + (fine ? "" : ": " + file.string()))
          << test.what;
    }
    fs::permissions(file.parent_path(), fs::perms::all);
  }
}

TEST_F(EmbeddedFiles, WrongPathsAreToldInWords) {
  const std::string longName = (folder_ / std::string(5000, 'x')).string();
  const struct {
    std::string path;
    std::string answer;
    const char16_t* options = u"Create=yes";
  } cases[] = {
      {"", "the connection string names no database file"},
      {"//server/share/a.db", "there is no folder for the database file: //server/share/a.db"},
      {"//server/share/a.db", "there is no database file: //server/share/a.db", u""},
      {"/dev/full", "this is no database file: /dev/full"},
      {longName, "the database file cannot be reached: " + longName},
      {(folder_ / "no" / "a.db").string(),
       "there is no folder for the database file: " + (folder_ / "no" / "a.db").string()},
      {(folder_ / "a.db").string(), "the connection string's Timeout is no number of seconds",
       u"Timeout=soon"},
      {(folder_ / "Zo\u00eb's \"own\"; file=1} {?#%20.db").string(), "no failure"},
      {(folder_ / "file:b.db?mode=memory").string(), "no failure"},
  };
  for (const auto& test : cases) {
    EXPECT_EQ(Use(test.path, test.options), test.answer);
    std::error_code error;
    EXPECT_EQ(fs::exists(test.path, error),
              test.answer == "no failure" || test.path == "/dev/full");
  }
}

TEST_F(EmbeddedFiles, AReplacedOneIsNoticedThoughAConnectionToItWasKept) {
  const Text text = u"Driver=Vellum250;Database=" + FromUtf8((folder_ / "a.db").string()) + u";";
  const auto answer = [&](const char16_t* sql, const char16_t* options = u"") {
    return Scratch::AnswerOf(*Connection::Open(text + options), sql);
  };
  EXPECT_EQ(answer(u"CREATE TABLE t (a int) INSERT INTO t VALUES (1)", u"Create=yes"), "");
  fs::remove(folder_ / "a.db");
  EXPECT_EQ(FailureOf([&] { Connection::Open(text); }),
            "there is no database file: " + (folder_ / "a.db").string());
  EXPECT_EQ(answer(u"CREATE TABLE u (b int)", u"Create=yes"), "");
  EXPECT_EQ(answer(u"SELECT count(*) FROM u"), "0");
  EXPECT_EQ(answer(u"SELECT a FROM t"), "#208 line 1: Invalid object name 't'.");
}

}  // namespace
}  // namespace vellum250::database
