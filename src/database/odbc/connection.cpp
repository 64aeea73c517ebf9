#include "database/connection.h"

#include <algorithm>
#include <array>
#include <limits>

#include "database/odbc/link.h"
#include "database/odbc/parameter.h"
#include "database/odbc/pool.h"
#include "database/odbc/results.h"
#include "database/provider.h"

namespace vellum250::database::odbc {

namespace {

constexpr TextView kConnectTimeout = u"Connect Timeout";
constexpr TextView kCommandTimeout = u"Command Timeout";

// Whole seconds of a keyword; `otherwise` when it is not there.
SQLULEN Seconds(const ConnectionString& connectionString, TextView keyword, SQLULEN otherwise) {
  const auto value = connectionString.Find(keyword);
  if (!value) return otherwise;
  constexpr size_t kMostDigits = 6;
  if (value->empty() || value->size() > kMostDigits ||
      value->find_first_not_of(u"0123456789") != TextView::npos) {
    Fail(u"The connection string has no valid value for \"" + Text(keyword) + u"\"");
  }
  SQLULEN seconds = 0;
  for (char16_t digit : *value) seconds = seconds * 10 + (digit - u'0');
  return seconds;
}

// Without what is this library's own.
ConnectionString ForDriver(const ConnectionString& connectionString) {
  std::vector<ConnectionString::Entry> entries = connectionString.Entries();
  std::erase_if(entries, [](const ConnectionString::Entry& entry) {
    return SameKey(entry.key, kConnectTimeout) || SameKey(entry.key, kCommandTimeout);
  });
  return ConnectionString(std::move(entries));
}

// Whether a batch can end with a transaction open: one that begins otherwise than data manipulation
// does, be it with the bare name of a procedure, or speaks of transactions or procedures anywhere.
// Asking the server each time would cost a round trip.
bool MayLeaveTransaction(TextView sql) {
  const Text lower = ToAsciiLower(sql);
  const auto isLetter = [](char16_t c) { return c >= u'a' && c <= u'z'; };
  const auto begin = std::ranges::find_if_not(
      lower, [](char16_t c) { return c == u' ' || (c >= u'\t' && c <= u'\r') || c == u'('; });
  const auto end = std::find_if_not(begin, lower.end(), isLetter);
  const bool isWholeWord =
      end == lower.end() || TextView(u" \t\r\n*@[").find(*end) != TextView::npos;
  const TextView first(begin, end);
  constexpr std::array<TextView, 5> kPlain = {u"select", u"insert", u"update", u"delete", u"set"};
  constexpr std::array<TextView, 3> kRisky = {u"tran", u"begin", u"exec"};
  return !isWholeWord || std::ranges::find(kPlain, first) == kPlain.end() ||
         std::ranges::any_of(kRisky, [&](TextView word) { return lower.find(word) != Text::npos; });
}

// `{? = call name(?, ?)}`. The name is one that cannot end the call.
Text CallText(TextView procedure, size_t parameterCount) {
  const bool valid = !procedure.empty() &&
                     procedure.find_first_of(TextView(u"{}()?'\";,\0\r\n", 12)) == TextView::npos;
  if (!valid) Fail(u"Not the name of a procedure: " + Text(procedure));
  Text text = u"{? = call " + Text(procedure);
  for (size_t i = 0; i < parameterCount; ++i) text += i == 0 ? u"(?" : u", ?";
  return text + (parameterCount == 0 ? u"}" : u")}");
}

class OdbcConnection final : public Connection {
 public:
  OdbcConnection(std::unique_ptr<Link> link, SQLULEN timeout)
      : link_(std::move(link)), timeout_(timeout) {}
  ~OdbcConnection() override { GiveBack(std::move(link_), mayHoldTransaction_); }

  Batch Run(TextView sql, std::span<const Variant> parameters) override {
    std::vector<Parameter> bound;
    bound.reserve(parameters.size());
    for (const Variant& parameter : parameters) bound.emplace_back(parameter);
    mayHoldTransaction_ = mayHoldTransaction_ || MayLeaveTransaction(sql);
    Batch batch;
    try {
      Statement statement(*link_, timeout_);
      Execute(statement, sql, bound, batch);
    } catch (const DatabaseFailure& failure) {
      batch.failure = failure;
    }
    return batch;
  }

  ProcedureResult Call(TextView procedure,
                       std::span<const ProcedureParameter> parameters) override {
    const Text sql = CallText(procedure, parameters.size());
    std::vector<Parameter> bound;
    bound.reserve(parameters.size() + 1);
    bound.emplace_back(ProcedureParameter{u"return value", SqlType::Int, {}, Direction::Out});
    for (const ProcedureParameter& parameter : parameters) bound.emplace_back(parameter);
    mayHoldTransaction_ = true;
    Batch batch;
    Statement statement(*link_, timeout_);
    Execute(statement, sql, bound, batch);

    // Only now, behind the last result, has the driver got them.
    ProcedureResult result;
    result.results = std::move(batch.results);
    if (const Variant value = bound.front().Result(); !value.IsNull()) {
      result.returnValue = value.As<int32_t>();
    }
    for (size_t i = 0; i < parameters.size(); ++i) {
      if (parameters[i].direction != Direction::In) result.outputs.push_back(bound[i + 1].Result());
    }
    return result;
  }

 private:
  static void Execute(const Statement& statement, TextView sql, std::vector<Parameter>& parameters,
                      Batch& batch) {
    if (sql.size() > size_t{std::numeric_limits<SQLINTEGER>::max()} ||
        parameters.size() > std::numeric_limits<SQLUSMALLINT>::max()) {
      Fail(u"The statement is longer than ODBC takes");
    }
    SQLUSMALLINT number = 0;
    for (Parameter& parameter : parameters) parameter.Bind(statement, ++number);
    const SQLRETURN result =
        SQLExecDirectW(statement.get(), Wide(sql.data()), static_cast<SQLINTEGER>(sql.size()));
    // Changing no row at all is success.
    if (result != SQL_NO_DATA) statement.Check(result);
    ReadResults(statement, batch);
  }

  std::unique_ptr<Link> link_;
  SQLULEN timeout_;
  bool mayHoldTransaction_ = false;
};

}  // namespace

std::unique_ptr<Connection> Open(const ConnectionString& connectionString) {
  const SQLULEN connectTimeout = Seconds(connectionString, kConnectTimeout, 15);
  const SQLULEN commandTimeout = Seconds(connectionString, kCommandTimeout, 30);
  return std::make_unique<OdbcConnection>(TakeLink(ForDriver(connectionString), connectTimeout),
                                          commandTimeout);
}

}  // namespace vellum250::database::odbc
