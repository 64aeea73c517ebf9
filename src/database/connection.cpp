#include "database/connection.h"

namespace vellum250::database {

DatabaseFailure::DatabaseFailure(int32_t number, Text source, Text description,
                                 int32_t nativeNumber, int32_t line)
    : Failure(number, std::move(source), std::move(description)),
      nativeNumber_(nativeNumber),
      line_(line) {}

Recordset Connection::Execute(TextView sql, std::span<const Variant> parameters) {
  Batch batch = Run(sql, parameters);
  if (batch.failure) throw *batch.failure;
  return batch.results.empty() ? Recordset() : std::move(batch.results.front());
}

}  // namespace vellum250::database
