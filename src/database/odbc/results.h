// Reads the results of an executed statement.
#pragma once

#include "database/connection.h"
#include "database/odbc/link.h"

namespace vellum250::database::odbc {

// All results, from the one the statement stands at to the last. Complete ones stay in `batch`
// when a DatabaseFailure is raised.
void ReadResults(const Statement& statement, Batch& batch);

}  // namespace vellum250::database::odbc
