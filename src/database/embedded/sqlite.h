// SQLite's handles, owned, with failures in words.
#pragma once

#include <sqlite3.h>

#include <chrono>
#include <memory>
#include <string>
#include <string_view>

#include "database/embedded/functions.h"
#include "database/embedded/value.h"

namespace vellum250::database::embedded {

class Database;

// SQLite refused a row. `code` is the extended result code, `message` SQLite's own.
struct ConstraintViolation {
  int code;
  std::string message;
};

// A prepared statement. Reset and cleared whenever it is not being stepped.
class Prepared {
 public:
  Prepared() = default;
  explicit operator bool() const { return statement_ != nullptr; }
  sqlite3_stmt* Get() const { return statement_.get(); }

  // Positions count from 1. Texts are not copied: they live until the next Reset.
  void Bind(int position, const Value& value);
  ValueRef Column(int index) const;
  int ColumnCount() const { return sqlite3_column_count(statement_.get()); }
  // Steps; false at the end. Raises a DatabaseFailure or a ConstraintViolation; the statement is
  // then reset.
  bool Step(Database& database);
  void Reset();

 private:
  friend class Database;
  struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  std::unique_ptr<sqlite3_stmt, Finalizer> statement_;
};

// An open database file. Not copied, not moved: the functions refer to its context.
class Database {
 public:
  // `path` as the user gave it. Raises a DatabaseFailure that tells what is wrong with the file.
  Database(const Text& path, bool create, int32_t timeoutMilliseconds);
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  sqlite3* Get() const { return handle_.get(); }
  const Text& Path() const { return path_; }  // as the user gave it
  FunctionContext& Context() { return context_; }

  Prepared Prepare(std::string_view sql, bool keep = true);
  // Statements without result, one after the other.
  void Execute(const std::string& sql);
  // Whether no transaction is open any more.
  bool Rollback() noexcept;
  // The first column of the first row; 0 when there is none.
  int64_t Integer(std::string_view sql);
  bool InTransaction() const { return sqlite3_get_autocommit(handle_.get()) == 0; }
  // How long a statement waits for another connection's lock.
  void SetTimeout(int32_t milliseconds) { timeoutMilliseconds_ = milliseconds; }
  int64_t Changes() const { return sqlite3_changes64(handle_.get()); }

  // From now on, what runs longer than this is given up as a time-out; 0 is no limit.
  void LimitTime(int32_t milliseconds);
  // Raises the time-out when the limit has passed.
  void CheckTime();

  // Raises what SQLite's last failure means to a user: a DatabaseFailure, or a
  // ConstraintViolation. `code` is its extended result code.
  [[noreturn]] void Fail(int code);
  // "<words>: <path>".
  [[noreturn]] void FailFile(TextView words) const;

 private:
  DatabaseFailure FailureOf(int code);
  void CheckFile(const Text& path, bool create) const;
  void Configure();
  void StartLog();
  static int WaitForLock(void* database, int round);
  // Only once: what a time-out undoes has time.
  bool IsTimeUp();

  struct Closer {
    void operator()(sqlite3* handle) const { sqlite3_close_v2(handle); }
  };
  using Clock = std::chrono::steady_clock;
  Text path_;
  Clock::time_point deadline_ = Clock::time_point::max();
  int32_t timeoutMilliseconds_;
  Clock::time_point waitingSince_;
  FunctionContext context_;  // outlives the handle
  std::unique_ptr<sqlite3, Closer> handle_;
  Prepared rollback_;
};

// A name between double quotes, as SQLite takes it.
std::string QuotedName(TextView name);

}  // namespace vellum250::database::embedded
