// SQLite on files, locks and memory that fail on demand. Linked into a test program it stands
// under every database that the program opens, and lets everything through until it is armed.
#pragma once

#include <cstdint>

namespace vellum250::support {

enum class SqliteFault : uint8_t {
  None,
  DiskFull,
  WriteError,
  ShortWrite,  // half of it is written
  ReadError,
  ShortRead,  // half of it is read, the rest is zeros
  SyncError,
  Locked,
  CannotOpen,   // nor find, nor remove
  NoMemory,     // of SQLite's
  NoNewMemory,  // operator new
};

struct SqliteFaults {
  SqliteFault fault = SqliteFault::None;
  int64_t at = 0;     // the operation that fails, from 1; only those count that can fail this way
  int64_t times = 1;  // so many, one after the other

  bool syncs = true;  // whether the disk is waited for

  int64_t operations = 0;  // so far
  int64_t injected = 0;
  const char* in = "none";  // the operation that failed last
};

// To be set while no other thread uses SQLite.
SqliteFaults& ArmedFaults();

// Files that SQLite holds open in this process.
int64_t OpenSqliteFiles();

}  // namespace vellum250::support
