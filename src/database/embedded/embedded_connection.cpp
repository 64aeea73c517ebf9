#include <filesystem>
#include <list>

#include "database/embedded/convert.h"
#include "database/embedded/failures.h"
#include "database/embedded/run.h"
#include "database/provider.h"

namespace vellum250::database::embedded {
namespace {

constexpr size_t kMostIdle = 8;

// Idle sessions of this thread, the one used last at the end.
struct Idle {
  std::u16string path;
  std::unique_ptr<Session> session;
};
thread_local std::list<Idle> pool;

std::unique_ptr<Session> TakeSession(const Text& path, bool create, TimeLimits limits) {
  for (auto at = pool.rbegin(); at != pool.rend(); ++at) {
    if (at->path != path) continue;
    std::unique_ptr<Session> session = std::move(at->session);
    pool.erase(std::next(at).base());
    // A file that was replaced on disk is opened anew.
    if (session->IsCurrent() && session->Reset(limits)) return session;
    return TakeSession(path, create, limits);
  }
  return std::make_unique<Session>(path, create, limits);
}

// What cannot be kept is closed.
void GiveBack(const Text& path, std::unique_ptr<Session> session) noexcept {
  if (!session->Reset({})) return;
  try {
    pool.push_back({path, std::move(session)});
  } catch (const std::bad_alloc&) {
    return;
  }
  if (pool.size() > kMostIdle) pool.pop_front();
}

// Where memory ends, the open transaction does.
template <typename Action>
auto InMemory(Session& session, Action action) {
  try {
    return action();
  } catch (const std::bad_alloc&) {
    session.EndTransactions();
    throw OutOfMemory();
  }
}

class EmbeddedConnection final : public Connection {
 public:
  EmbeddedConnection(Text path, bool create, TimeLimits limits)
      : path_(std::move(path)), session_(TakeSession(path_, create, limits)) {}
  ~EmbeddedConnection() override { GiveBack(path_, std::move(session_)); }

  Batch Run(TextView sql, std::span<const Variant> parameters) override {
    return InMemory(*session_, [&] {
      Batch batch;
      Runner(*session_, batch).RunBatch(sql, parameters);
      return batch;
    });
  }

  ProcedureResult Call(TextView procedure,
                       std::span<const ProcedureParameter> parameters) override {
    return InMemory(*session_, [&] { return CallInMemory(procedure, parameters); });
  }

 private:
  ProcedureResult CallInMemory(TextView procedure, std::span<const ProcedureParameter> parameters) {
    std::vector<TypedValue> values;
    for (const ProcedureParameter& parameter : parameters) {
      values.push_back(FromVariant(parameter.value));
    }
    Batch batch;
    ProcedureResult result;
    result.returnValue = Runner(*session_, batch).CallProcedure(procedure, values);
    if (batch.failure) throw *batch.failure;
    result.results = std::move(batch.results);
    for (size_t i = 0; i < parameters.size(); ++i) {
      if (parameters[i].direction == Direction::In) continue;
      result.outputs.push_back(ToVariant(values[i].value, values[i].type));
    }
    return result;
  }

  Text path_;
  std::unique_ptr<Session> session_;
};

bool IsYes(TextView value) {
  return EqualsIgnoreAsciiCase(value, u"yes") || EqualsIgnoreAsciiCase(value, u"true") ||
         value == u"1";
}

// The milliseconds of a keyword that says seconds.
int32_t TimeOf(const ConnectionString& connectionString, TextView keyword, int32_t otherwise) {
  const auto value = connectionString.Find(keyword);
  if (!value) return otherwise;
  int32_t seconds = 0;
  for (const char16_t c : *value) {
    if (c < u'0' || c > u'9' || seconds > 86400) {
      throw DatabaseFailure(
          kUnspecifiedFailure, kLibrarySource,
          u"the connection string's " + Text(keyword) + u" is no number of seconds");
    }
    seconds = seconds * 10 + (c - u'0');
  }
  return std::min(seconds, 86400) * 1000;
}

}  // namespace

std::unique_ptr<Connection> Open(const ConnectionString& connectionString) {
  const auto database = connectionString.Find(u"Database");
  if (!database || database->empty()) {
    throw DatabaseFailure(kUnspecifiedFailure, kLibrarySource,
                          u"the connection string names no database file");
  }
  const bool create = IsYes(connectionString.Find(u"Create").value_or(u""));
  TimeLimits limits;
  limits.lock = TimeOf(connectionString, u"Timeout", limits.lock);
  limits.command = TimeOf(connectionString, u"Command Timeout", limits.command);
  try {
    return std::make_unique<EmbeddedConnection>(Text(*database), create, limits);
  } catch (const std::bad_alloc&) {
    throw OutOfMemory();
  }
}

}  // namespace vellum250::database::embedded
