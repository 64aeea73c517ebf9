// All or nothing, inside an open transaction too.
#pragma once

#include "database/embedded/sqlite.h"

namespace vellum250::database::embedded {

// Undone on destruction unless it was committed.
class Transaction {
 public:
  explicit Transaction(Database& database)
      : database_(database), nested_(database.InTransaction()) {
    // IMMEDIATE: writers queue here instead of failing when they first write.
    database.Execute(nested_ ? "SAVEPOINT step" : "BEGIN IMMEDIATE");
  }
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  void Commit();

 private:
  Database& database_;
  bool nested_;
  bool open_ = true;
};

}  // namespace vellum250::database::embedded
