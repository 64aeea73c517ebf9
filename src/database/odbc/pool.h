// This thread's idle connections: at most 8, each for at most 60 seconds.
//
// The driver manager's own pool is left off: unixODBC's loses memory whenever it hands one out.
#pragma once

#include <chrono>
#include <memory>

#include "database/odbc/link.h"

namespace vellum250::database::odbc {

// One that lives: an idle one, the one used last first, or else a new one. Raises a
// DatabaseFailure. `timeout` of logging in, in seconds, 0 for no limit.
std::unique_ptr<Link> TakeLink(const ConnectionString& connectionString, SQLULEN timeout);

// Keeps it, without its open transaction, or closes it.
void GiveBack(std::unique_ptr<Link> link, bool mayHoldTransaction) noexcept;

// Closes those that at `now` have been idle for too long. Taking and giving back do so as well;
// there is no thread that would.
void CloseExpired(std::chrono::steady_clock::time_point now) noexcept;

}  // namespace vellum250::database::odbc
