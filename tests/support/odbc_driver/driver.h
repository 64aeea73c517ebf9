// An ODBC driver that speaks like SQL Server's from a script, and can fail or lie at any call.
//
// The tests load the same library beside the driver manager and reach its control block through
// kControlFunction.
#pragma once

#include <cstdint>

namespace vellum250::support {

enum class Fault : uint8_t {
  None,
  Error,          // an error with words, the password among them
  SilentError,    // an error without a diagnostic record
  StrangeResult,  // SQL_NEED_DATA from executing, SQL_INVALID_HANDLE from all others
  SmallLie,       // success with values that are too small: negative lengths, an early end
  LargeLie,       // success with values that are too large
};

struct OdbcDriverControl {
  // The fault comes at this call, counted from 1 and from the last setting of `calls`.
  Fault fault = Fault::None;
  int faultAt = 0;
  int calls = 0;
  const char* faultedIn = nullptr;  // the function that had the fault
  int died = 0;                     // so many connections, counted from the first, are dead

  int openHandles = 0;
  int connects = 0;
  int resets = 0;
  int openConnections = 0;
  int openTransactions = 0;
  int abandonedTransactions = 0;   // still open when their connection was given back
  unsigned long queryTimeout = 0;  // as set last
  unsigned long loginTimeout = 0;
};

using OdbcDriverControlFunction = OdbcDriverControl* (*)();
inline constexpr char kControlFunction[] = "TestOdbcDriverControl";

}  // namespace vellum250::support
