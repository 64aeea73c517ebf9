// What stands behind `Connection::Open`.
#pragma once

#include <memory>

#include "database/connection.h"
#include "database/connection_string.h"

namespace vellum250::database {

// Each gives an open connection or raises a DatabaseFailure.
namespace embedded {
// `Driver=Vellum250;Database=<file>;`. The file must exist, unless `Create=yes` stands there too.
std::unique_ptr<Connection> Open(const ConnectionString& connectionString);
}  // namespace embedded

namespace odbc {
std::unique_ptr<Connection> Open(const ConnectionString& connectionString);
}  // namespace odbc

}  // namespace vellum250::database
