#include "database/provider.h"

#include <algorithm>
#include <charconv>

namespace vellum250::database {

namespace {

using Entry = ConnectionString::Entry;

constexpr TextView kSqlServerDriver = u"SQL Server";
constexpr TextView kFreeTdsDriver = u"FreeTDS";

[[noreturn]] void Fail(Text description) {
  throw DatabaseFailure(kUnspecifiedFailure, kLibrarySource, std::move(description));
}

// The version in a name like "ODBC Driver 18 for SQL Server" or "SQL Server Native Client 11.0";
// the second are the older ones, whatever their number. 0 when the driver is another.
int SqlServerDriverVersion(TextView name) {
  const auto numberAfter = [&](TextView prefix) {
    const std::string digits = ToUtf8(name.substr(prefix.size()));
    int number = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return number;
  };
  constexpr TextView kModern = u"ODBC Driver ";
  constexpr TextView kModernEnd = u" for SQL Server";
  constexpr TextView kNativeClient = u"SQL Server Native Client ";
  constexpr int kModernBase = 1000;
  if (StartsWithIgnoreAsciiCase(name, kModern) && name.size() > kModernEnd.size() &&
      EqualsIgnoreAsciiCase(name.substr(name.size() - kModernEnd.size()), kModernEnd)) {
    return kModernBase + numberAfter(kModern);
  }
  return StartsWithIgnoreAsciiCase(name, kNativeClient) ? numberAfter(kNativeClient) : 0;
}

// The driver that speaks to a SQL Server: the classic one where it is installed and `classicFirst`,
// else the newest, the classic one and FreeTDS in this order.
Text ChooseSqlServerDriver(const std::vector<Text>& installed, bool classicFirst) {
  const auto find = [&](TextView name) {
    return std::ranges::find_if(
        installed, [&](const Text& driver) { return EqualsIgnoreAsciiCase(driver, name); });
  };
  const auto classic = find(kSqlServerDriver);
  if (classicFirst && classic != installed.end()) return *classic;
  const auto newest = std::ranges::max_element(installed, {}, SqlServerDriverVersion);
  if (newest != installed.end() && SqlServerDriverVersion(*newest) > 0) return *newest;
  if (classic != installed.end()) return *classic;
  if (const auto freeTds = find(kFreeTdsDriver); freeTds != installed.end()) return *freeTds;
  Fail(
      u"No ODBC driver for SQL Server is installed: install \"ODBC Driver 18 for SQL Server\" or "
      u"FreeTDS");
}

enum class ValueKind : uint8_t {
  AsItStands,
  YesNo,    // true, yes, 1, SSPI / false, no, 0
  Encrypt,  // those, or a word that ODBC has as well: strict, optional ...
  Dropped,  // means nothing to ODBC
};

struct Keyword {
  TextView oleDb;
  TextView odbc;
  ValueKind kind = ValueKind::AsItStands;
};

constexpr Keyword kKeywords[] = {
    {u"Data Source", u"Server"},
    {u"Server", u"Server"},
    {u"Address", u"Server"},
    {u"Addr", u"Server"},
    {u"Network Address", u"Server"},
    {u"Initial Catalog", u"Database"},
    {u"Database", u"Database"},
    {u"User ID", u"UID"},
    {u"User", u"UID"},
    {u"UID", u"UID"},
    {u"Password", u"PWD"},
    {u"PWD", u"PWD"},
    {u"Authentication", u"Authentication"},
    {u"Integrated Security", u"Trusted_Connection", ValueKind::YesNo},
    {u"Trusted_Connection", u"Trusted_Connection", ValueKind::YesNo},
    {u"Encrypt", u"Encrypt", ValueKind::Encrypt},
    {u"Use Encryption for Data", u"Encrypt", ValueKind::Encrypt},
    {u"Trust Server Certificate", u"TrustServerCertificate", ValueKind::YesNo},
    {u"Host Name In Certificate", u"HostnameInCertificate"},
    {u"Server Certificate", u"ServerCertificate"},
    {u"Application Name", u"APP"},
    {u"App", u"APP"},
    {u"Application Intent", u"ApplicationIntent"},
    {u"Workstation ID", u"WSID"},
    {u"WSID", u"WSID"},
    {u"Current Language", u"Language"},
    {u"Language", u"Language"},
    {u"Failover Partner", u"Failover_Partner"},
    {u"Failover_Partner", u"Failover_Partner"},
    {u"MultiSubnetFailover", u"MultiSubnetFailover", ValueKind::YesNo},
    {u"MARS Connection", u"MARS_Connection", ValueKind::YesNo},
    {u"MultipleActiveResultSets", u"MARS_Connection", ValueKind::YesNo},
    {u"MARSConn", u"MARS_Connection", ValueKind::YesNo},
    {u"Auto Translate", u"AutoTranslate", ValueKind::YesNo},
    {u"Connect Timeout", u"Connect Timeout"},
    {u"Connection Timeout", u"Connect Timeout"},
    {u"Timeout", u"Connect Timeout"},
    {u"Command Timeout", u"Command Timeout"},
    {u"General Timeout", u"Command Timeout"},
    {u"Provider", {}, ValueKind::Dropped},
    {u"Persist Security Info", {}, ValueKind::Dropped},
    {u"Network Library", {}, ValueKind::Dropped},
    {u"Network", {}, ValueKind::Dropped},
    {u"Packet Size", {}, ValueKind::Dropped},
    {u"OLE DB Services", {}, ValueKind::Dropped},
    {u"Locale Identifier", {}, ValueKind::Dropped},
    {u"Prompt", {}, ValueKind::Dropped},
    {u"Use Procedure for Prepare", {}, ValueKind::Dropped},
    {u"Tag with column collation when possible", {}, ValueKind::Dropped},
    {u"DataTypeCompatibility", {}, ValueKind::Dropped},
};

bool IsOneOf(TextView value, std::initializer_list<TextView> words) {
  return std::ranges::any_of(words,
                             [&](TextView word) { return EqualsIgnoreAsciiCase(value, word); });
}

Text OdbcValue(const Keyword& keyword, TextView value) {
  if (keyword.kind == ValueKind::AsItStands) return Text(value);
  if (IsOneOf(value, {u"yes", u"true", u"1", u"SSPI"})) return u"yes";
  if (IsOneOf(value, {u"no", u"false", u"0", u""})) return u"no";
  if (keyword.kind == ValueKind::Encrypt &&
      IsOneOf(value, {u"strict", u"mandatory", u"optional"})) {
    return ToAsciiLower(value);
  }
  Fail(u"The connection string has no valid value for \"" + Text(keyword.oleDb) + u"\"");
}

// An OLE DB connection string for a SQL Server as one for ODBC.
ConnectionString Translated(const ConnectionString& source, Text driver) {
  std::vector<Entry> entries{{u"Driver", std::move(driver)}};
  int64_t position = 0;
  for (const Entry& entry : source.Entries()) {
    ++position;
    const auto keyword = std::ranges::find_if(
        kKeywords, [&](const Keyword& known) { return SameKey(known.oleDb, entry.key); });
    // Not by its name: behind a password with a ";" in it stands its remainder.
    if (keyword == std::end(kKeywords)) {
      Fail(u"The connection string has an unknown keyword: that of entry " + NumberText(position));
    }
    if (keyword->kind == ValueKind::Dropped) continue;
    entries.push_back({Text(keyword->odbc), OdbcValue(*keyword, entry.value)});
  }
  return ConnectionString(std::move(entries));
}

ConnectionString WithDriver(const ConnectionString& source, const Text& driver) {
  std::vector<Entry> entries = source.Entries();
  for (Entry& entry : entries) {
    if (SameKey(entry.key, u"Driver")) entry.value = driver;
  }
  return ConnectionString(std::move(entries));
}

// FreeTDS does not know "Encrypt" and would go on without; nor a protocol before the server.
ConnectionString ForStandIn(ConnectionString source) {
  if (!EqualsIgnoreAsciiCase(*source.Find(u"Driver"), kFreeTdsDriver)) return source;
  std::vector<Entry> entries = source.Entries();
  for (Entry& entry : entries) {
    if (SameKey(entry.key, u"Encrypt")) {
      const bool isFree = IsOneOf(entry.value, {u"no", u"false", u"0", u"optional"});
      entry = {u"Encryption", isFree ? u"request" : u"require"};
    } else if (SameKey(entry.key, u"Server") && StartsWithIgnoreAsciiCase(entry.value, u"tcp:")) {
      entry.value.erase(0, 4);
    }
  }
  return ConnectionString(std::move(entries));
}

// The provider of an OLE DB name, which may end with a version ("SQLNCLI11.1").
bool IsSqlServerProvider(TextView name) {
  for (TextView known : {u"SQLOLEDB", u"MSOLEDBSQL", u"SQLNCLI"}) {
    if (StartsWithIgnoreAsciiCase(name, known) &&
        name.find_first_not_of(u"0123456789.", known.size()) == TextView::npos) {
      return true;
    }
  }
  return false;
}

}  // namespace

bool IsServerKeyword(TextView key) {
  return std::ranges::any_of(kKeywords, [&](const Keyword& keyword) {
    return SameKey(key, keyword.oleDb) || (!keyword.odbc.empty() && SameKey(key, keyword.odbc));
  });
}

ProviderChoice ChooseProvider(const ConnectionString& connectionString,
                              const std::function<std::vector<Text>()>& installedDrivers) {
  using enum ProviderChoice::Kind;
  if (connectionString.Entries().empty()) Fail(u"The connection string is empty");
  if (const auto provider = connectionString.Find(u"Provider")) {
    if (!IsSqlServerProvider(*provider)) {
      Fail(u"There is no provider \"" + Text(*provider) + u"\"");
    }
    const bool classicFirst = StartsWithIgnoreAsciiCase(*provider, u"SQLOLEDB");
    return {Odbc, ForStandIn(Translated(connectionString,
                                        ChooseSqlServerDriver(installedDrivers(), classicFirst)))};
  }
  if (const auto driver = connectionString.Find(u"Driver")) {
    if (EqualsIgnoreAsciiCase(*driver, u"Vellum250")) return {Embedded, connectionString};
    if (!EqualsIgnoreAsciiCase(*driver, kSqlServerDriver)) return {Odbc, connectionString};
    return {Odbc, ForStandIn(WithDriver(connectionString,
                                        ChooseSqlServerDriver(installedDrivers(), true)))};
  }
  if (connectionString.Find(u"DSN") || connectionString.Find(u"FileDSN")) {
    return {Odbc, connectionString};
  }
  Fail(u"The connection string names no \"Driver\", \"DSN\" or \"Provider\"");
}

}  // namespace vellum250::database
