// Any text as a batch of the embedded database.
//
// Besides crashes, sanitizers, hangs and memory this looks for: failures that are not the server's
// or the room's own words (SQLite's would mean that it was given text it does not take), failures
// and results that break what their headers promise, sessions that are not as before, cached
// batches that answer otherwise than fresh ones, and constraints that do not hold.
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "database/embedded/run.h"

namespace vellum250::database::embedded {
namespace {

// Short: a time-out is one answer among others, and no input shall take long.
constexpr TimeLimits kLimits = {.lock = 0, .command = 200};
constexpr int64_t kMostMemory = int64_t{64} << 20;

struct Outcome {
  Batch batch;
  bool outOfMemory = false;
  bool outOfTime = false;  // before it began

  // What another run need not give again.
  bool IsByChance() const {
    return outOfMemory || outOfTime ||
           (batch.failure && batch.failure->Number() == kTimeoutFailure);
  }
};

std::string Describe(const Batch& batch) {
  std::string text;
  for (const Recordset& result : batch.results) {
    for (const Column& column : result.Columns()) {
      text.append(ToUtf8(column.name)).append(" ").append(ToUtf8(SqlTypeName(column.type)));
      text.append("(").append(std::to_string(column.precision));
      text.append(",").append(std::to_string(column.scale)).append(") ");
    }
    text += std::to_string(result.RowCount()) + " rows\n";
  }
  for (const int64_t count : batch.rowCounts) text += std::to_string(count) + " changed\n";
  if (batch.failure) {
    text.append("line ").append(std::to_string(batch.failure->Line()));
    text.append(", ").append(std::to_string(batch.failure->NativeNumber()));
    text.append(": ").append(batch.failure->what()).append("\n");
  }
  return text;
}

[[noreturn]] void Report(const char* what, TextView sql, const std::string& detail) {
  std::fprintf(stderr, "%s\n---- batch\n%s\n---- answer\n%s\n", what, ToUtf8(sql).c_str(),
               detail.c_str());
  std::abort();
}

bool SameColumn(const Column& a, const Column& b) {
  return a.name == b.name && a.type == b.type && a.precision == b.precision && a.scale == b.scale;
}

bool SameRecordset(const Recordset& a, const Recordset& b) {
  if (a.RowCount() != b.RowCount()) return false;
  if (!std::ranges::equal(a.Columns(), b.Columns(), SameColumn)) return false;
  for (size_t row = 0; row < a.RowCount(); ++row) {
    for (size_t column = 0; column < a.Columns().size(); ++column) {
      const double* left = a.At(row, column).If<double>();
      const double* right = b.At(row, column).If<double>();
      const bool bothNan = left && right && *left != *left && *right != *right;
      if (!bothNan && !(a.At(row, column) == b.At(row, column))) return false;
    }
  }
  return true;
}

bool SameBatch(const Batch& a, const Batch& b) {
  if (a.failure.has_value() != b.failure.has_value()) return false;
  if (a.failure && (a.failure->NativeNumber() != b.failure->NativeNumber() ||
                    a.failure->Description() != b.failure->Description() ||
                    a.failure->Line() != b.failure->Line())) {
    return false;
  }
  return a.rowCounts == b.rowCounts && std::ranges::equal(a.results, b.results, SameRecordset);
}

// ---- What must hold of every answer -------------------------------------------------------------

// Words of SQLite, and what the room calls its own things there. None may reach a user who has not
// written it.
constexpr TextView kForeignWords[] = {
    u"sqlite",
    u"v_",
    u"vellum250_",
    u"malformed",
    u"no such ",
    u"near \"",
    u"sql logic error",
    u"misuse",
    u"constraint failed",
    u"datatype mismatch",
    u"ambiguous column name: ",
    u"failure of a function",
};

bool IsAsciiLetter(char16_t c) { return c >= u'a' && c <= u'z'; }

void CheckFailure(const DatabaseFailure& failure, TextView sql) {
  const Text words = ToAsciiLower(failure.Description());
  const Text given = ToAsciiLower(sql);
  for (const TextView word : kForeignWords) {
    const size_t found = words.find(word);
    // A value may be told that happens to hold the letters.
    const bool begins = found == 0 || (found != Text::npos && !IsAsciiLetter(words[found - 1]));
    if (begins && given.find(word) == Text::npos) {
      Report("a failure in SQLite's words", sql, failure.what());
    }
  }
  const bool isRefusal = words.starts_with(u"not supported by the embedded database: ");
  const bool isTimeout = failure.Description() == u"Query timeout expired";
  if (failure.NativeNumber() == 0 && !isRefusal && !isTimeout) {
    Report("a failure without a number", sql, failure.what());
  }
  if (failure.Number() >= 0) Report("a failure that is no HRESULT", sql, failure.what());
  if (failure.Line() < 0) Report("a failure on no line", sql, failure.what());
}

bool IsValueOf(const Variant& value, const Column& column) {
  if (value.IsNull()) return true;
  switch (column.type) {
    case SqlType::Bit:
      return value.Is(VariantType::Boolean);
    case SqlType::TinyInt:
      return value.Is(VariantType::Byte);
    case SqlType::SmallInt:
      return value.Is(VariantType::Int16);
    case SqlType::Int:
      return value.Is(VariantType::Int32);
    case SqlType::BigInt:
      return value.Is(VariantType::Decimal);
    case SqlType::Decimal: {
      const auto* decimal = value.If<Decimal>();
      if (decimal == nullptr) return false;
      const TextView digits = decimal->digits;
      const size_t point = digits.find(u'.');
      const size_t scale = point == TextView::npos ? 0 : digits.size() - point - 1;
      const auto count = std::ranges::count_if(digits, [](char16_t c) { return c >= u'0'; });
      // A zero before the point is no digit of the number.
      return static_cast<int32_t>(scale) == column.scale && count <= column.precision + 1;
    }
    case SqlType::Money:
    case SqlType::SmallMoney:
      return value.Is(VariantType::Currency);
    case SqlType::Float:
    case SqlType::Real:
      return value.Is(VariantType::Double);
    case SqlType::DateTime:
    case SqlType::SmallDateTime:
    case SqlType::Date:
      return value.Is(VariantType::Date);
    default: {
      const auto* text = value.If<Text>();
      return text && (column.length <= 0 || text->size() <= static_cast<size_t>(column.length));
    }
  }
}

void CheckResults(const Batch& batch, TextView sql) {
  for (const Recordset& result : batch.results) {
    for (size_t row = 0; row < result.RowCount(); ++row) {
      for (size_t i = 0; i < result.Columns().size(); ++i) {
        if (IsValueOf(result.At(row, i), result.Columns()[i])) continue;
        Report("a value that is none of its column's type", sql,
               ToUtf8(result.Columns()[i].name).append("\n").append(Describe(batch)));
      }
    }
  }
}

// ---- The database -------------------------------------------------------------------------------

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::stringstream text;
  text << file.rdbuf();
  if (!file) std::fprintf(stderr, "cannot read %s\n", path.c_str()), std::abort();
  return text.str();
}

// A small members' database that is the same before every run.
class Playground {
 public:
  Playground() : session_(FromUtf8(File()), true, {.lock = 0, .command = 0}) {
    // From here on it is this process's alone, and nothing of it need last.
    session_.Db().Execute(
        "PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = MEMORY; PRAGMA synchronous = OFF");
    std::filesystem::remove(File());
    const std::string root = VELLUM250_SOURCE_DIR;
    RunScript(root + "/tests/database/tsql-cases/fixture.sql");
    RunScript(root + "/fuzz/fixture.sql");
    sqlite3_open(":memory:", &copy_);
    Copy(Handle(), copy_);
    Prepared keys = session_.Db().Prepare("SELECT name, seq FROM main.sqlite_sequence", false);
    restoreKeys_ = "UPDATE main.sqlite_sequence SET seq = CASE name";
    while (keys.Step(session_.Db())) {
      restoreKeys_.append(" WHEN '").append(keys.Column(0).Text()).append("' THEN ");
      restoreKeys_.append(std::to_string(keys.Column(1).Integer()));
    }
    restoreKeys_ += " END";
    sqlite3_commit_hook(
        Handle(), [](void* count) { return ++*static_cast<int*>(count), 0; }, &commits_);
    sqlite3_hard_heap_limit64(kMostMemory);
    session_.Limit(kLimits);
  }
  ~Playground() { sqlite3_close(copy_); }
  Playground(const Playground&) = delete;
  Playground& operator=(const Playground&) = delete;

  // Forgets what it has translated.
  void Forget() { session_.Programs() = ProgramCache(); }

  // `inTransaction`: within one that is rolled back.
  Outcome Run(TextView sql, std::span<const Variant> parameters, bool inTransaction,
              bool checkFile) {
    const int64_t changes = sqlite3_total_changes64(Handle());
    const uint64_t generation = session_.Objects().Generation();
    commits_ = 0;
    if (inTransaction) RunOwn(u"BEGIN TRAN");
    Outcome outcome;
    if (sql.find(u"#work") != TextView::npos) outcome.outOfTime = !RunOwn(kWorkTable);
    try {
      Runner(session_, outcome.batch).RunBatch(sql, parameters);
    } catch (const std::bad_alloc&) {
      outcome.outOfMemory = true;
    }
    session_.Db().LimitTime(0);
    CheckSession(sql, outcome.batch);
    if (outcome.batch.failure) CheckFailure(*outcome.batch.failure, sql);
    CheckResults(outcome.batch, sql);
    if (checkFile) CheckFile(sql);
    const bool isChanged =
        commits_ > 0 || (!inTransaction && (changes != sqlite3_total_changes64(Handle()) ||
                                            generation != session_.Objects().Generation()));
    if (isChanged || outcome.outOfMemory) {
      RestoreAll(sql);
    } else {
      session_.EndTransactions();
      session_.State() = SessionState();
      // A roll-back keeps the keys that were given.
      if (commits_ > 0) session_.Db().Execute(restoreKeys_);
    }
    return outcome;
  }

 private:
  static constexpr TextView kWorkTable =
      u"CREATE TABLE #work (a int NULL, b varchar(20) NULL, c datetime NULL, d decimal(9,2) NULL) "
      u"INSERT INTO #work VALUES (1, 'one', '20040229', 1.5), (2, 'two', NULL, NULL)";

  static std::string File() {
    return std::filesystem::temp_directory_path() / ("fuzz" + std::to_string(::getpid()) + ".db");
  }

  sqlite3* Handle() { return session_.Db().Get(); }

  // False when there was no time for it.
  bool RunOwn(TextView sql) {
    Batch batch;
    Runner(session_, batch).RunBatch(sql, {});
    session_.State().rowCount = 0;
    if (!batch.failure) return true;
    if (batch.failure->Number() == kTimeoutFailure) return false;
    Report("the database cannot be made", sql, batch.failure->what());
  }

  void RunScript(const std::string& path) {
    std::string script = ReadFile(path) + "\nGO\n";
    std::erase(script, '\r');
    for (size_t end; (end = script.find("\nGO\n")) != std::string::npos;) {
      RunOwn(FromUtf8(script.substr(0, end)));
      script.erase(0, end + 4);
    }
  }

  static void Copy(sqlite3* from, sqlite3* to) {
    sqlite3_backup* backup = sqlite3_backup_init(to, "main", from, "main");
    if (backup == nullptr || sqlite3_backup_step(backup, -1) != SQLITE_DONE) {
      std::fprintf(stderr, "cannot copy the database: %s\n", sqlite3_errmsg(to));
      std::abort();
    }
    sqlite3_backup_finish(backup);
  }

  void RestoreAll(TextView sql) {
    if (!session_.Reset()) Report("a session that cannot be reset", sql, "");
    Copy(copy_, Handle());
    session_.Objects().Reload();
  }

  void CheckSession(TextView sql, const Batch& batch) {
    const bool counts = session_.State().transactionCount > 0;
    if (counts != session_.Db().InTransaction()) {
      Report("a transaction that only one side knows", sql, Describe(batch));
    }
    if (session_.Db().Context().failure) Report("a failure that is kept", sql, Describe(batch));
    for (sqlite3_stmt* at = nullptr; (at = sqlite3_next_stmt(Handle(), at)) != nullptr;) {
      if (sqlite3_stmt_busy(at)) Report("a statement that still runs", sql, sqlite3_sql(at));
    }
  }

  // The catalogue is what the file says, and the file is whole.
  void CheckFile(TextView sql) {
    Database& database = session_.Db();
    const std::string before = DescribeCatalog();
    session_.Objects().Reload();
    if (before != DescribeCatalog()) Report("a catalogue that is not the file's", sql, before);
    if (database.Integer("SELECT count(*) FROM pragma_foreign_key_check") != 0) {
      Report("a foreign key that does not hold", sql, "");
    }
    if (database.Integer("SELECT count(*) FROM pragma_integrity_check WHERE integrity_check <> "
                         "'ok'") != 0) {
      Report("a table that is not whole", sql, "");
    }
  }

  std::string DescribeCatalog() {
    std::string text;
    for (const auto& [name, object] : session_.Objects().Objects()) {
      text += ToUtf8(name) + (object->temporary ? " temporary:" : ":");
      for (const ColumnInfo& column : object->columns) text.append(" ").append(ToUtf8(column.name));
      text.append("; ").append(std::to_string(object->constraints.size())).append("\n");
    }
    return text;
  }

  Session session_;
  sqlite3* copy_ = nullptr;
  int commits_ = 0;
  std::string restoreKeys_;
};

// ---- One input ----------------------------------------------------------------------------------

// The same batch with other literals: its shape stays. Empty when it has none.
Text WithOtherLiterals(TextView sql, const Scanned& scanned) {
  if (scanned.literals.empty()) return {};
  Text other;
  size_t copied = 0;
  for (const Token& token : scanned.tokens) {
    if (token.kind != TokenKind::Literal) continue;
    other.append(sql.substr(copied, token.offset - copied));
    copied = token.offset + token.length;
    Text literal(sql.substr(token.offset, token.length));
    const size_t last = literal.size() - 1;
    if (literal[last] == u'\'') {
      literal.insert(last, 1, u'1');
    } else if (literal[last] >= u'0' && literal[last] <= u'8') {
      ++literal[last];
    }
    other += literal;
  }
  return other.append(sql.substr(copied));
}

// Whether it asks for what no two runs have in common.
bool AsksForChance(TextView sql) {
  static constexpr TextView kWords[] = {u"getdate", u"current_timestamp", u"newid"};
  const Text lower = ToAsciiLower(sql);
  const auto has = [&](TextView word) { return lower.find(word) != Text::npos; };
  // Its default is the time.
  if (has(u"individual") && has(u"insert")) return true;
  return std::ranges::any_of(kWords, has);
}

void RunInput(Playground& playground, TextView sql, size_t seed) {
  static const Variant kParameters[] = {Variant(int32_t{7}), Variant(u"x 1"), Variant(Null{}),
                                        Variant(2.5)};
  Scanned scanned;
  try {
    scanned = Scan(sql);
  } catch (const DatabaseFailure&) {
    // The run below tells.
  }
  const std::span<const Variant> parameters(
      kParameters, std::min(std::size(kParameters), static_cast<size_t>(scanned.markers)));
  const bool inTransaction = seed % 8 > 0;
  const bool checkFile = seed % 256 < 16;
  const auto run = [&](TextView batch) {
    return playground.Run(batch, parameters, inTransaction, checkFile);
  };
  playground.Forget();
  const Outcome first = run(sql);
  const bool gaveNothing = first.batch.results.empty() && first.batch.rowCounts.empty();
  if (first.IsByChance() || (gaveNothing && first.batch.failure && seed % 16 > 1)) return;
  if (AsksForChance(sql)) return;
  // With what the first run left in the cache, and without.
  const Text other = WithOtherLiterals(sql, scanned);
  const Outcome warm = run(other.empty() ? sql : TextView(other));
  if (!other.empty()) playground.Forget();
  const Outcome cold = other.empty() ? first : run(other);
  if (warm.IsByChance() || cold.IsByChance() || SameBatch(warm.batch, cold.batch)) return;
  Report("a cached batch that answers otherwise", other.empty() ? sql : TextView(other),
         Describe(warm.batch) + "---- instead of\n" + Describe(cold.batch));
}

}  // namespace
}  // namespace vellum250::database::embedded

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace vellum250::database::embedded;
  static Playground playground;
  const std::string_view input(reinterpret_cast<const char*>(data), size);
  RunInput(playground, vellum250::FromUtf8(input), std::hash<std::string_view>()(input) >> 8);
  return 0;
}
