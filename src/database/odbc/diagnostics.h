// What ODBC says about a failed call, as the failure that the library raises.
#pragma once

#include <span>

#include "database/connection.h"
#include "database/odbc/handles.h"

namespace vellum250::database::odbc {

// What `Failure::Source` says of everything that arises at or behind the driver manager.
inline constexpr char16_t kSource[] = u"vellum250 ODBC";

// The failure of the last call on a handle: its number from the SQLSTATE, the driver's own words
// without any of the passwords, the server's number and line where the driver tells them.
DatabaseFailure FailureOf(SQLSMALLINT handleType, SQLHANDLE handle,
                          std::span<const Text> passwords);

// Raises a failure that this library found itself.
[[noreturn]] void Fail(Text description);

}  // namespace vellum250::database::odbc
