// What stands behind `Connection::Open`.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "database/connection.h"
#include "database/connection_string.h"

namespace vellum250::database {

// Each gives an open connection or raises a DatabaseFailure.
namespace embedded {
// `Driver=Vellum250;Database=<file>;`. The file must exist, unless `Create=yes` stands there too.
std::unique_ptr<Connection> Open(const ConnectionString& connectionString);
}  // namespace embedded

namespace odbc {
// Keywords as ODBC has them go to the driver as they stand. Two are this library's own:
// `Connect Timeout` and `Command Timeout`, in seconds, 15 and 30 when absent, 0 for no limit.
std::unique_ptr<Connection> Open(const ConnectionString& connectionString);

// The names of the ODBC drivers that the driver manager knows.
std::vector<Text> InstalledDrivers();
}  // namespace odbc

// Which provider a connection string means, and the connection string as that provider takes it.
struct ProviderChoice {
  enum class Kind : uint8_t { Embedded, Odbc };
  Kind kind = Kind::Odbc;
  ConnectionString connectionString;
};

// `installedDrivers` is asked only when the driver for SQL Server must be chosen. Raises a
// DatabaseFailure when the connection string names no provider that there is.
ProviderChoice ChooseProvider(const ConnectionString& connectionString,
                              const std::function<std::vector<Text>()>& installedDrivers);

// Whether connection strings to a SQL Server have this key, in OLE DB's words or in ODBC's.
bool IsServerKeyword(TextView key);

}  // namespace vellum250::database
