// Makers of the failures that the server's own messages describe.
#pragma once

#include "database/connection.h"

namespace vellum250::database::embedded {

// `line` 0 when unknown.
DatabaseFailure ServerFailure(int32_t message, Text description, int32_t line = 0);
// "not supported by the embedded database: <construct>".
DatabaseFailure Unsupported(TextView construct, int32_t line = 0);
DatabaseFailure NestedTooDeeply(int32_t line = 0);
// The same failure, with the line when it has none yet.
DatabaseFailure AtLine(const DatabaseFailure& failure, int32_t line);
// Whether a failure of this message ends only its statement, so that the batch goes on.
bool EndsStatementOnly(int32_t message);

}  // namespace vellum250::database::embedded
