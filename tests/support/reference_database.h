// A database of a test's own, made from the scripts of database/.
#pragma once

#include <filesystem>
#include <string>

#include "database/connection.h"

namespace vellum250::support {

enum class Contents {
  Schema,  // the tables, empty
  Sample,  // with the sample data
};

// A new embedded file for each object, removed with it. The scripts are loaded once in a process,
// after that the file is copied.
class ReferenceDatabase {
 public:
  explicit ReferenceDatabase(Contents contents = Contents::Sample);
  ~ReferenceDatabase();
  ReferenceDatabase(const ReferenceDatabase&) = delete;
  ReferenceDatabase& operator=(const ReferenceDatabase&) = delete;

  const Text& ConnectionString() const { return connectionString_; }

  // Runs one batch on a connection of its own. Raises its failure.
  database::Recordset Query(TextView sql) const;
  // The first field of the first row as text, NULL as "NULL"; "(no row)" without one.
  std::string Value(TextView sql) const;

 private:
  std::filesystem::path file_;
  Text connectionString_;
};

}  // namespace vellum250::support
