#include <algorithm>
#include <filesystem>
#include <initializer_list>

#include "database/embedded/convert.h"
#include "database/embedded/failures.h"
#include "database/embedded/run.h"
#include "database/provider.h"

namespace vellum250::database::embedded {
namespace {

constexpr size_t kMostIdle = 8;

struct Settings {
  Text source;  // the connection string
  Text path;
  bool create = false;
  TimeLimits limits;
};

// A connection may outlive its thread's pool: one that the process keeps until it ends.
thread_local bool poolEnded = false;

// Idle sessions of this thread, the one used last at the end.
struct Pool {
  std::vector<std::unique_ptr<Session>> idle;
  ~Pool() { poolEnded = true; }
};
thread_local Pool pool;

std::unique_ptr<Session> TakeSession(const Settings& settings) {
  for (auto at = pool.idle.rbegin(); at != pool.idle.rend(); ++at) {
    if (!SameText((*at)->Db().Path(), settings.path)) continue;
    std::unique_ptr<Session> session = std::move(*at);
    pool.idle.erase(std::next(at).base());
    // A file that was replaced on disk is opened anew.
    if (!session->IsCurrent()) return TakeSession(settings);
    session->Limit(settings.limits);
    return session;
  }
  return std::make_unique<Session>(settings.path, settings.create, settings.limits);
}

// What cannot be kept is closed.
void GiveBack(std::unique_ptr<Session> session) noexcept {
  if (poolEnded || !session->Reset()) return;
  try {
    pool.idle.push_back(std::move(session));
  } catch (const std::bad_alloc&) {
    return;
  }
  if (pool.idle.size() > kMostIdle) pool.idle.erase(pool.idle.begin());
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
  explicit EmbeddedConnection(std::unique_ptr<Session> session) : session_(std::move(session)) {}
  ~EmbeddedConnection() override { GiveBack(std::move(session_)); }

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

  std::unique_ptr<Session> session_;
};

bool YesOrNo(const ConnectionString& connectionString, TextView keyword) {
  const TextView value = connectionString.Find(keyword).value_or(u"no");
  const auto isOneOf = [&](std::initializer_list<TextView> words) {
    return std::ranges::any_of(words,
                               [&](TextView word) { return EqualsIgnoreAsciiCase(value, word); });
  };
  const bool yes = isOneOf({u"yes", u"true", u"1"});
  if (yes || isOneOf({u"no", u"false", u"0"})) return yes;
  throw DatabaseFailure(kUnspecifiedFailure, kLibrarySource,
                        u"the connection string's " + Text(keyword) + u" is neither yes nor no");
}

// What a server would take means nothing here; anything else is a slip. Behind a password a
// keyword may be a part of it, and is told by its place only.
void CheckKeywords(const ConnectionString& connectionString) {
  bool secret = false;
  int64_t place = 0;
  for (const auto& [keyword, value] : connectionString.Entries()) {
    ++place;
    const bool own = SameKey(keyword, u"Driver") || SameKey(keyword, u"Create");
    if (!own && !IsServerKeyword(keyword)) {
      throw DatabaseFailure(kUnspecifiedFailure, kLibrarySource,
                            u"the connection string has an unknown keyword: " +
                                (secret ? u"that of entry " + NumberText(place) : keyword));
    }
    secret = secret || IsPasswordKey(keyword);
  }
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

Settings ReadSettings(const ConnectionString& connectionString) {
  const auto database = connectionString.Find(u"Database");
  if (!database || database->empty()) {
    throw DatabaseFailure(kUnspecifiedFailure, kLibrarySource,
                          u"the connection string names no database file");
  }
  CheckKeywords(connectionString);
  Settings settings;
  settings.path = *database;
  settings.create = YesOrNo(connectionString, u"Create");
  TimeLimits& limits = settings.limits;
  limits.lock = TimeOf(connectionString, u"Timeout", limits.lock);
  limits.command = TimeOf(connectionString, u"Command Timeout", limits.command);
  settings.source = connectionString.Source();
  return settings;
}

}  // namespace

std::unique_ptr<Connection> Open(const ConnectionString& connectionString) {
  // The next one is most often the same.
  thread_local Settings last;
  try {
    if (!SameText(last.source, connectionString.Source())) last = ReadSettings(connectionString);
    return std::make_unique<EmbeddedConnection>(TakeSession(last));
  } catch (const std::bad_alloc&) {
    throw OutOfMemory();
  }
}

}  // namespace vellum250::database::embedded
