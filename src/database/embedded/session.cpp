#include "database/embedded/session.h"

#include "automation/locale.h"
#include "database/embedded/failures.h"

namespace vellum250::database::embedded {
namespace {

void SqliteFailure(sqlite3_context* context, Database& database, DatabaseFailure failure) {
  database.Context().failure = std::move(failure);
  sqlite3_result_error(context, "failed", -1);
}

// v_identity(temporary, table, increment): the next key.
void NextKeyFunction(sqlite3_context* context, int, sqlite3_value** arguments) {
  Session& session = *static_cast<Session*>(sqlite3_user_data(context));
  try {
    const auto* table = reinterpret_cast<const char*>(sqlite3_value_text(arguments[1]));
    sqlite3_result_int64(context, session.NextKey(sqlite3_value_int(arguments[0]) != 0, table,
                                                  sqlite3_value_int64(arguments[2])));
  } catch (DatabaseFailure& failure) {
    SqliteFailure(context, session.Db(), std::move(failure));
  } catch (...) {
    sqlite3_result_error_nomem(context);
  }
}

// v_single(x): the value of a sub-query that must not give several rows.
void SingleStep(sqlite3_context* context, int, sqlite3_value** arguments) {
  auto** kept = static_cast<sqlite3_value**>(sqlite3_aggregate_context(context, sizeof(void*)));
  if (kept == nullptr) return sqlite3_result_error_nomem(context);
  if (*kept != nullptr) {
    Session& session = *static_cast<Session*>(sqlite3_user_data(context));
    try {
      SqliteFailure(context, session.Db(),
                    ServerFailure(512,
                                  u"Subquery returned more than 1 value. This is not permitted "
                                  u"when the subquery follows =, !=, <, <= , >, >= or when the "
                                  u"subquery is used as an expression."));
    } catch (...) {
      sqlite3_result_error_nomem(context);
    }
    return;
  }
  *kept = sqlite3_value_dup(arguments[0]);
  if (*kept == nullptr) sqlite3_result_error_nomem(context);
}

void SingleFinal(sqlite3_context* context) {
  auto** kept = static_cast<sqlite3_value**>(sqlite3_aggregate_context(context, 0));
  if (kept == nullptr || *kept == nullptr) return sqlite3_result_null(context);
  sqlite3_result_value(context, *kept);
  sqlite3_value_free(*kept);
}

}  // namespace

Session::Session(const Text& path, bool create, TimeLimits limits)
    : database_(path, create, limits.lock), catalog_(database_), commandLimit_(limits.command) {
  if (sqlite3_create_function_v2(database_.Get(), "v_identity", 3, SQLITE_UTF8, this,
                                 &NextKeyFunction, nullptr, nullptr, nullptr) != SQLITE_OK ||
      sqlite3_create_function_v2(database_.Get(), "v_single", 1, SQLITE_UTF8, this, nullptr,
                                 &SingleStep, &SingleFinal, nullptr) != SQLITE_OK) {
    throw std::bad_alloc();
  }
}

Session::~Session() { EndTransactions(); }

std::shared_ptr<Program> Session::Procedure(TextView name) {
  if (proceduresGeneration_ != catalog_.Generation()) {
    procedures_.clear();
    proceduresGeneration_ = catalog_.Generation();
  }
  const ObjectPtr object = catalog_.Find(name);
  if (!object || object->kind != ObjectKind::Procedure) return nullptr;
  std::shared_ptr<Program>& program = procedures_[ToLower(name)];
  if (!program) {
    program = std::make_shared<Program>(object->definition, Scan(object->definition),
                                        std::vector<std::optional<TypeInfo>>());
  }
  return program;
}

void Session::BeginTransaction(const Text& name) {
  if (state_.transactionCount == 0) {
    database_.Execute("BEGIN IMMEDIATE");
    state_.transactionName = name;
  }
  ++state_.transactionCount;
  // What others changed while this one waited for its turn.
  catalog_.Refresh();
}

void Session::CommitTransaction() {
  if (state_.transactionCount == 0) {
    throw ServerFailure(3902,
                        u"The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION.");
  }
  if (state_.transactionCount == 1) {
    database_.Execute("COMMIT");
    state_.keysGiven.clear();
    state_.schemaChanged = false;
  }
  --state_.transactionCount;
}

void Session::RollbackTransaction(const Text& name) {
  if (state_.transactionCount == 0) {
    throw ServerFailure(
        3903, u"The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION.");
  }
  if (!name.empty() && name != state_.transactionName) {
    throw ServerFailure(6401, u"Cannot roll back " + name +
                                  u". No transaction or savepoint of that name was found.");
  }
  TakeBack();
}

void Session::TakeBack() {
  state_.transactionCount = 0;
  // SQLite may have rolled back by itself, after a full disk for one.
  if (!database_.Rollback()) database_.Execute("ROLLBACK");
  if (std::exchange(state_.schemaChanged, false)) catalog_.Reload();
  RestoreKeys();
}

void Session::Settle() {
  if (database_.InTransaction() != (state_.transactionCount > 0)) TakeBack();
}

void Session::EndTransactions() noexcept {
  try {
    if (state_.transactionCount > 0 || database_.InTransaction()) TakeBack();
  } catch (...) {
    // Settle, or closing the connection, takes back what is left.
    return;
  }
}

void Session::RestoreKeys() {
  const auto keys = std::exchange(state_.keysGiven, {});
  for (const auto& [table, key] : keys) {
    Prepared update = database_.Prepare(
        "UPDATE main.sqlite_sequence SET seq = max(seq, ?1) WHERE name = ?2", false);
    const Value name = table;
    update.Bind(1, key);
    update.Bind(2, name);
    update.Step(database_);
  }
}

void Session::UseUpKey(const ObjectInfo& table) {
  const ColumnInfo* identity = table.Identity();
  if (identity == nullptr) return;
  Prepared update =
      database_.Prepare("UPDATE " + table.Schema() +
                            "sqlite_sequence SET seq = seq + ?1 WHERE name = ?2 RETURNING seq",
                        false);
  const Value name = ToUtf8(table.name);
  update.Bind(1, identity->increment);
  update.Bind(2, name);
  if (!update.Step(database_)) return;
  const int64_t key = update.Column(0).Integer();
  update.Step(database_);
  if (state_.transactionCount > 0 && !table.temporary) {
    state_.keysGiven[std::get<std::string>(name)] = key;
  }
}

int64_t Session::NextKey(bool temporary, const std::string& table, int64_t increment) {
  if (!nextKey_) {
    Prepared select =
        database_.Prepare(temporary ? "SELECT seq FROM temp.sqlite_sequence WHERE name = ?"
                                    : "SELECT seq FROM main.sqlite_sequence WHERE name = ?",
                          false);
    const Value name = table;
    select.Bind(1, name);
    nextKey_ = select.Step(database_) ? select.Column(0).Integer() : 0;
  }
  *nextKey_ += increment;
  return *nextKey_;
}

bool Session::Reset() noexcept {
  try {
    database_.LimitTime(0);
    EndTransactions();
    if (database_.InTransaction()) return false;
    catalog_.DropTemporary();
    state_ = SessionState();
    return true;
  } catch (...) {
    return false;
  }
}

void Session::Limit(TimeLimits limits) {
  database_.SetTimeout(limits.lock);
  commandLimit_ = limits.command;
}

bool Session::IsCurrent() {
  int moved = 0;
  const int code = sqlite3_file_control(database_.Get(), "main", SQLITE_FCNTL_HAS_MOVED, &moved);
  return code != SQLITE_OK || moved == 0;
}

}  // namespace vellum250::database::embedded
