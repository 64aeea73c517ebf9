// One interface to a database, whatever stands behind it.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "automation/failure.h"
#include "automation/variant.h"
#include "database/recordset.h"

namespace vellum250::database {

// A failure of a database. `Number` is the HRESULT class of the provider; `NativeNumber` is the
// server's own message number (SQL Server's: 102, 208, 2627 ...) or 0, `Line` the 1-based line of
// the batch or 0 when unknown.
class DatabaseFailure : public Failure {
 public:
  DatabaseFailure(int32_t number, Text source, Text description, int32_t nativeNumber = 0,
                  int32_t line = 0);
  int32_t NativeNumber() const noexcept { return nativeNumber_; }
  int32_t Line() const noexcept { return line_; }

 private:
  int32_t nativeNumber_;
  int32_t line_;
};

// HRESULTs of the automation database layer.
inline constexpr int32_t kUnspecifiedFailure = static_cast<int32_t>(0x80004005);
inline constexpr int32_t kSyntaxFailure = static_cast<int32_t>(0x80040E14);
inline constexpr int32_t kConstraintFailure = static_cast<int32_t>(0x80040E2F);
inline constexpr int32_t kTimeoutFailure = static_cast<int32_t>(0x80040E31);
inline constexpr int32_t kLogonFailure = static_cast<int32_t>(0x80040E4D);

// What one batch gave: the complete result sets and the counts of changed rows, in order, up to
// the first failure.
struct Batch {
  std::vector<Recordset> results;
  std::vector<int64_t> rowCounts;
  std::optional<DatabaseFailure> failure;
};

enum class Direction : uint8_t { In, Out, InOut };

struct ProcedureParameter {
  Text name;  // with its "@"; the order is the procedure's
  SqlType type = SqlType::Int;
  Variant value;
  Direction direction = Direction::In;
  int32_t size = 0;  // characters, for text; 0 is the type's largest
};

struct ProcedureResult {
  int32_t returnValue = 0;
  std::vector<Recordset> results;
  std::vector<Variant> outputs;  // one for each parameter that is Out or InOut, in order
};

// An open connection, for one thread. Closing gives it back to the provider's pool.
class Connection {
 public:
  // Raises a DatabaseFailure when the text is no connection string, names no provider, or the
  // database cannot be reached.
  static std::unique_ptr<Connection> Open(TextView connectionString);

  virtual ~Connection() = default;

  // Runs one batch to its end or its first failure. `parameters` replace the `?` markers.
  virtual Batch Run(TextView sql, std::span<const Variant> parameters = {}) = 0;

  // Runs a stored procedure by name. Raises a DatabaseFailure.
  virtual ProcedureResult Call(TextView procedure,
                               std::span<const ProcedureParameter> parameters) = 0;

  // Runs one batch and gives its first result set, an empty one without columns when there is
  // none. Raises the batch's failure, also one after that result set.
  Recordset Execute(TextView sql, std::span<const Variant> parameters = {});
};

}  // namespace vellum250::database
