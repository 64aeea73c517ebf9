// One open database with everything that lives as long as it does.
#pragma once

#include <map>

#include "database/embedded/catalog.h"
#include "database/embedded/program.h"

namespace vellum250::database::embedded {

// What a client's connection changes as it goes; begun anew for each.
struct SessionState {
  bool noCount = false;
  bool xactAbort = false;
  bool quotedTexts = false;  // SET QUOTED_IDENTIFIER OFF
  int32_t transactionCount = 0;
  Text transactionName;  // of the outermost one
  int64_t rowCount = 0;
  int32_t error = 0;           // @@ERROR
  Value identity;              // @@IDENTITY
  Text identityInsert;         // the table of SET IDENTITY_INSERT ... ON
  bool schemaChanged = false;  // within the open transaction
  // The last keys given in the open transaction: a roll-back does not give them again.
  std::map<std::string, int64_t> keysGiven;  // by the table's name, unquoted
};

// In milliseconds.
struct TimeLimits {
  int32_t lock = 15'000;     // waiting for another writer
  int32_t command = 30'000;  // a batch or procedure call; 0 is no limit
};

class Session {
 public:
  Session(const Text& path, bool create, TimeLimits limits);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  Database& Db() { return database_; }
  Catalog& Objects() { return catalog_; }
  ProgramCache& Programs() { return programs_; }
  SessionState& State() { return state_; }

  // The program of a stored procedure; nullptr when there is none of that name.
  std::shared_ptr<Program> Procedure(TextView name);

  void BeginTransaction(const Text& name);
  void CommitTransaction();                    // 3902
  void RollbackTransaction(const Text& name);  // 3903; 6401 when it has another name
  // Rolls back what is open, if anything.
  void EndTransactions() noexcept;
  // Before a batch: takes back what a failure has left half begun or half ended.
  void Settle();

  // A key was used up though its row was refused.
  void UseUpKey(const ObjectInfo& table);
  // The next key of a table that does not count by one. Called from within a statement.
  int64_t NextKey(bool temporary, const std::string& table, int64_t increment);
  void BeginBatch() { database_.LimitTime(commandLimit_); }
  // Raises the time-out when the batch has had its time.
  void BeginStatement() {
    database_.CheckTime();
    nextKey_.reset();
  }

  // Ready for the next client. False when it should be closed instead.
  bool Reset() noexcept;
  void Limit(TimeLimits limits);
  // Whether the file is still the one that was opened.
  bool IsCurrent();

 private:
  void TakeBack();
  void RestoreKeys();

  Database database_;
  Catalog catalog_;
  ProgramCache programs_;
  SessionState state_;
  std::map<Text, std::shared_ptr<Program>> procedures_;
  uint64_t proceduresGeneration_ = 0;
  std::optional<int64_t> nextKey_;
  int32_t commandLimit_;
};

}  // namespace vellum250::database::embedded
