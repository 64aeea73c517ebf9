#include "database/embedded/sqlite.h"

#include <filesystem>
#include <string_view>
#include <thread>
#include <utility>

#include "database/embedded/failures.h"
#include "database/embedded/transaction.h"

namespace vellum250::database::embedded {
namespace {

// "VB25": tells our files from other SQLite databases.
constexpr int32_t kApplicationId = 0x56423235;
// Steps of SQLite's machine between two looks at the clock: some tens of microseconds.
constexpr int kStepsBetweenLooks = 5000;

constexpr uintmax_t kSmallestFile = 512;  // bytes

// A waiter looks this often whether it is its turn: all equally often, or the newest wins.
constexpr auto kLockInterval = std::chrono::milliseconds(1);

DatabaseFailure FileFailure(TextView words, const Text& path) {
  return DatabaseFailure(kUnspecifiedFailure, kLibrarySource, Text(words) + u": " + path);
}

}  // namespace

void Prepared::Bind(int position, const Value& value) {
  sqlite3_stmt* statement = statement_.get();
  int code = SQLITE_OK;
  if (const auto* text = std::get_if<std::string>(&value)) {
    code = sqlite3_bind_text64(statement, position, text->data(), text->size(), SQLITE_STATIC,
                               SQLITE_UTF8);
  } else if (const auto* integer = std::get_if<int64_t>(&value)) {
    code = sqlite3_bind_int64(statement, position, *integer);
  } else if (const auto* number = std::get_if<double>(&value)) {
    code = sqlite3_bind_double(statement, position, *number);
  } else {
    code = sqlite3_bind_null(statement, position);
  }
  if (code == SQLITE_TOOBIG) throw Unsupported(u"a text of more than 1,000,000,000 bytes");
  if (code != SQLITE_OK) throw std::bad_alloc();
}

ValueRef Prepared::Column(int index) const {
  sqlite3_stmt* statement = statement_.get();
  switch (sqlite3_column_type(statement, index)) {
    case SQLITE_INTEGER:
      return int64_t{sqlite3_column_int64(statement, index)};
    case SQLITE_FLOAT:
      return sqlite3_column_double(statement, index);
    case SQLITE_NULL:
      return {};
    default: {
      const auto* text = static_cast<const char*>(sqlite3_column_blob(statement, index));
      const auto length = static_cast<size_t>(sqlite3_column_bytes(statement, index));
      return text ? std::string_view(text, length) : std::string_view("");
    }
  }
}

bool Prepared::Step(Database& database) {
  const int code = sqlite3_step(statement_.get());
  if (code == SQLITE_ROW) return true;
  if (code == SQLITE_DONE) return false;
  try {
    database.Fail(sqlite3_extended_errcode(database.Get()));
  } catch (...) {
    Reset();
    throw;
  }
}

void Prepared::Reset() {
  sqlite3_reset(statement_.get());
  sqlite3_clear_bindings(statement_.get());
}

Database::Database(const Text& path, bool create, int32_t timeoutMilliseconds)
    : path_(path), timeoutMilliseconds_(timeoutMilliseconds) {
  CheckFile(path, create);
  sqlite3* handle = nullptr;
  const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX | SQLITE_OPEN_EXRESCODE |
                    (create ? SQLITE_OPEN_CREATE : 0);
  const int code = sqlite3_open_v2(ToUtf8(path).c_str(), &handle, flags, nullptr);
  handle_.reset(handle);
  if (code != SQLITE_OK) Fail(code);
  Configure();
}

void Database::CheckFile(const Text& path, bool create) const {
  if (path.empty() || path.find(u'\0') != Text::npos) {
    throw DatabaseFailure(kUnspecifiedFailure, kLibrarySource,
                          u"the connection string names no database file");
  }
  std::error_code error;
  const std::string utf8 = ToUtf8(path);
  // Of char8_t, for char may be of another encoding.
  const std::filesystem::path file(std::u8string(utf8.begin(), utf8.end()));
  const auto status = std::filesystem::status(file, error);
  // No right to look, a name that is too long ...
  if (!std::filesystem::status_known(status)) FailFile(u"the database file cannot be reached");
  if (std::filesystem::is_directory(status)) FailFile(u"this is a folder, not a database file");
  if (!std::filesystem::exists(status)) {
    if (!create) FailFile(u"there is no database file");
    const auto folder = file.has_parent_path() ? file.parent_path() : std::filesystem::path(".");
    if (!std::filesystem::is_directory(folder, error)) {
      FailFile(u"there is no folder for the database file");
    }
  } else if (!std::filesystem::is_regular_file(status)) {
    FailFile(u"this is no database file");
  } else if (const auto size = std::filesystem::file_size(file, error); size < kSmallestFile) {
    // SQLite would make its own of it.
    if (size > 0) FailFile(u"this is no database file");
    if (!create) FailFile(u"the database file is empty");
  }
}

int Database::WaitForLock(void* self, int round) {
  using std::chrono::milliseconds;
  auto& database = *static_cast<Database*>(self);
  const auto now = std::chrono::steady_clock::now();
  if (round == 0) database.waitingSince_ = now;
  if (now - database.waitingSince_ >= milliseconds(database.timeoutMilliseconds_)) return 0;
  std::this_thread::sleep_for(kLockInterval);
  return 1;
}

void Database::Configure() {
  sqlite3* handle = handle_.get();
  sqlite3_busy_handler(handle, &WaitForLock, this);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DML, 0, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_DQS_DDL, 0, nullptr);
  sqlite3_db_config(handle, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 1, nullptr);
  RegisterFunctions(handle, context_);
  sqlite3_progress_handler(
      handle, kStepsBetweenLooks,
      [](void* database) { return static_cast<int>(static_cast<Database*>(database)->IsTimeUp()); },
      this);
  if (sqlite3_db_readonly(handle, "main") == 1) {
    FailFile(u"the database file may not be written");
  }
  if (Integer("PRAGMA application_id") != kApplicationId) {
    // Another connection may be making the file right now: it marks it before it fills it.
    if (Integer("SELECT count(*) FROM sqlite_schema") != 0 &&
        Integer("PRAGMA application_id") != kApplicationId) {
      FailFile(u"this SQLite file was not made by this library");
    }
    Execute("PRAGMA application_id = " + std::to_string(kApplicationId));
  }
  StartLog();
  Execute(
      "PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON;"
      "PRAGMA recursive_triggers = OFF; PRAGMA temp_store = MEMORY");
  // Ready, for there may be no memory left to prepare it.
  rollback_ = Prepare("ROLLBACK");
}

// SQLite does not wait by itself while another connection starts the log.
void Database::StartLog() {
  for (int round = 0;; ++round) {
    Prepared start = Prepare("PRAGMA journal_mode = WAL", false);
    const int code = sqlite3_step(start.Get());
    if ((code & 0xFF) == SQLITE_BUSY && WaitForLock(this, round) != 0) continue;
    if (code != SQLITE_ROW) Fail(code);
    if (start.Column(0).Text() == "wal") return;
    FailFile(u"the database file cannot have a write-ahead log");
  }
}

Prepared Database::Prepare(std::string_view sql, bool keep) {
  Prepared prepared;
  sqlite3_stmt* statement = nullptr;
  const int code = sqlite3_prepare_v3(handle_.get(), sql.data(), static_cast<int>(sql.size()),
                                      keep ? SQLITE_PREPARE_PERSISTENT : 0, &statement, nullptr);
  if (code != SQLITE_OK) Fail(code);
  prepared.statement_.reset(statement);
  return prepared;
}

void Database::Execute(const std::string& sql) {
  const int code = sqlite3_exec(handle_.get(), sql.c_str(), nullptr, nullptr, nullptr);
  if (code != SQLITE_OK) Fail(code);
}

bool Database::Rollback() noexcept {
  if (InTransaction()) {
    sqlite3_step(rollback_.Get());
    rollback_.Reset();
  }
  return !InTransaction();
}

int64_t Database::Integer(std::string_view sql) {
  Prepared statement = Prepare(sql, false);
  return statement.Step(*this) ? statement.Column(0).Integer() : 0;
}

void Database::LimitTime(int32_t milliseconds) {
  deadline_ = milliseconds == 0 ? Clock::time_point::max()
                                : Clock::now() + std::chrono::milliseconds(milliseconds);
}

void Database::CheckTime() {
  if (IsTimeUp()) throw FailureOf(SQLITE_INTERRUPT);
}

bool Database::IsTimeUp() {
  if (Clock::now() < deadline_) return false;
  deadline_ = Clock::time_point::max();
  return true;
}

void Database::Fail(int code) {
  if (context_.failure) throw *std::exchange(context_.failure, std::nullopt);
  if ((code & 0xFF) == SQLITE_CONSTRAINT) {
    throw ConstraintViolation{code, sqlite3_errmsg(handle_.get())};
  }
  throw FailureOf(code);
}

void Database::FailFile(TextView words) const { throw FileFailure(words, path_); }

DatabaseFailure Database::FailureOf(int code) {
  const char* message = handle_ ? sqlite3_errmsg(handle_.get()) : sqlite3_errstr(code);
  switch (code & 0xFF) {
    case SQLITE_NOMEM:
      throw std::bad_alloc();
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
    case SQLITE_PROTOCOL:
      return DatabaseFailure(kTimeoutFailure, kLibrarySource,
                             u"the database is locked by another connection: time-out expired");
    case SQLITE_INTERRUPT:
      return DatabaseFailure(kTimeoutFailure, kLibrarySource, u"Query timeout expired");
    case SQLITE_CANTOPEN:
      return FileFailure(u"the database file cannot be opened", path_);
    case SQLITE_NOTADB:
      return FileFailure(u"this is no database file", path_);
    case SQLITE_CORRUPT:
      return FileFailure(u"the database file is damaged", path_);
    case SQLITE_READONLY:
    case SQLITE_PERM:
      return FileFailure(u"the database file may not be written", path_);
    case SQLITE_FULL:
      return FileFailure(u"the disk is full", path_);
    case SQLITE_IOERR:
      return FileFailure(u"the database file cannot be read or written", path_);
    case SQLITE_TOOBIG:
      return Unsupported(u"a text of more than 1,000,000,000 bytes");
    default:
      break;
  }
  const std::string_view words(message);
  // SQLite's own limits on how deep its parser and its expressions go.
  if (words.find("parser stack overflow") != words.npos ||
      words.find("Expression tree is too large") != words.npos) {
    return NestedTooDeeply();
  }
  static constexpr std::pair<std::string_view, TextView> kLimits[] = {
      {"too many arguments on function", u"a function of more than 127 arguments"},
      {"tables in a join", u"a join of more than 64 tables"},
      {"too many FROM clause terms", u"a join of more than 64 tables"},
      {"too many terms in", u"GROUP BY or ORDER BY with more than 2,000 terms"}};
  for (const auto& [limit, construct] : kLimits) {
    if (words.find(limit) != words.npos) return Unsupported(construct);
  }
  // Nobody else than a damaged file has too few of the catalogue's own tables.
  if (words.find("no such table: main.vellum250_") != words.npos) {
    return FileFailure(u"the database file is damaged", path_);
  }
  return DatabaseFailure(kUnspecifiedFailure, kLibrarySource,
                         u"the embedded database failed: " + FromUtf8(words));
}

Transaction::~Transaction() {
  if (!open_ || !database_.InTransaction()) return;
  sqlite3* handle = database_.Get();
  const bool undone = nested_ && sqlite3_exec(handle, "ROLLBACK TO step; RELEASE step", nullptr,
                                              nullptr, nullptr) == SQLITE_OK;
  // What cannot be undone alone goes with all the rest.
  if (!undone) database_.Rollback();
}

void Transaction::Commit() {
  database_.Execute(nested_ ? "RELEASE step" : "COMMIT");
  open_ = false;
}

std::string QuotedName(TextView name) {
  std::string quoted = "\"";
  AppendUtf8(quoted, ReplaceAll(name, u"\"", u"\"\""));
  quoted += '"';
  return quoted;
}

}  // namespace vellum250::database::embedded
