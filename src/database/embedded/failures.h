// Makers of the failures that the server's own messages describe.
#pragma once

#include "database/connection.h"

namespace vellum250::database::embedded {

// The automation layer's "cannot convert" (DB_E_CANTCONVERTVALUE as SQL Server's provider uses it).
inline constexpr int32_t kConversionFailure = static_cast<int32_t>(0x80040E07);

// `line` 0 when unknown.
DatabaseFailure ServerFailure(int32_t message, Text description, int32_t line = 0);
// "not supported by the embedded database: <construct>".
DatabaseFailure Unsupported(TextView construct, int32_t line = 0);
DatabaseFailure NestedTooDeeply(int32_t line = 0);
// The same failure, with the line when it has none yet.
DatabaseFailure AtLine(const DatabaseFailure& failure, int32_t line);
// What a failure of this message ends when it comes up while a statement runs: the statement alone,
// so that the batch goes on; the batch; or the batch and, undone, the open transaction.
enum class Ends : uint8_t { Statement, Batch, Transaction };
Ends EffectOf(int32_t message);

}  // namespace vellum250::database::embedded
