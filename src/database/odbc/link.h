// A connected ODBC connection and the statements on it.
#pragma once

#include <optional>
#include <vector>

#include "database/connection_string.h"
#include "database/odbc/diagnostics.h"
#include "database/odbc/handles.h"

namespace vellum250::database::odbc {

// Logged in while it lives; the end gives it back to the driver manager's pool.
class Link {
 public:
  // Raises a DatabaseFailure. `timeout` in seconds, 0 for no limit.
  Link(const ConnectionString& connectionString, SQLULEN timeout);
  Link(Link&&) = default;
  Link& operator=(Link&&) = default;
  ~Link();

  SQLHANDLE get() const { return handle_.get(); }
  std::span<const Text> Passwords() const { return passwords_; }

  // Whether it died in the pool. Asks the driver, and the server as well when it has rested there
  // or has failed before: many drivers find out only by speaking to it.
  bool IsDead() const;

  // Takes back whatever is not committed. Never fails: a link for which it did is of no use to
  // anybody, and the driver manager finds that out.
  void RollBack() noexcept;

  // A failure that may mean that the server is gone.
  void Doubt() const { isDoubtful_ = true; }

 private:
  std::vector<Text> passwords_;
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
