// A connected ODBC connection and the statements on it.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "database/connection_string.h"
#include "database/odbc/diagnostics.h"
#include "database/odbc/handles.h"

namespace vellum250::database::odbc {

// Logged in while it lives.
class Link {
 public:
  // Raises a DatabaseFailure. `timeout` in seconds, 0 for no limit.
  Link(const ConnectionString& connectionString, SQLULEN timeout);
  Link(const Link&) = delete;
  ~Link();

  SQLHANDLE get() const { return handle_.get(); }
  std::span<const Text> Passwords() const { return passwords_; }

  // Whether it was made from just these.
  bool IsFor(const ConnectionString& connectionString, SQLULEN timeout) const;

  // Whether another can use it, as if it were new where the server can do that. Asks the driver,
  // and the server as well when it may be gone: many drivers find out only by speaking to it.
  bool BeginAnew(bool hasRested);

  // Takes back whatever is not committed. False when it is of no further use.
  bool RollBack() noexcept;

  // A failure that may mean that the server is gone.
  void Doubt() const { isDoubtful_ = true; }
  bool IsDoubtful() const { return isDoubtful_; }

 private:
  Text source_;
  SQLULEN timeout_;
  std::vector<Text> passwords_;
  int64_t process_;
  Handle<SQL_HANDLE_DBC> handle_;
  mutable bool isDoubtful_ = false;
};

class Statement {
 public:
  // `timeout` in seconds, 0 for no limit; a driver without time-outs has none.
  Statement(const Link& link, SQLULEN timeout);

  SQLHANDLE get() const { return handle_.get(); }
  // Raises the failure of a call on this statement.
  void Check(SQLRETURN result) const {
    if (!SQL_SUCCEEDED(result)) Raise(result);
  }

 private:
  [[noreturn]] void Raise(SQLRETURN result) const;

  const Link& link_;
  Handle<SQL_HANDLE_STMT> handle_;
};

}  // namespace vellum250::database::odbc
