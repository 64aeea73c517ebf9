#include "database/provider.h"

namespace vellum250::database {
namespace {

// What is chosen, as text: the kind and the connection string, or the failure.
std::string Chosen(TextView connectionString, const std::vector<Text>& installed) {
  try {
    const auto choice =
        ChooseProvider(ConnectionString::Parse(connectionString), [&] { return installed; });
    return (choice.kind == ProviderChoice::Kind::Embedded ? "embedded " : "odbc ") +
           ToUtf8(choice.connectionString.ToText());
  } catch (const DatabaseFailure& failure) {
    return failure.what();
  }
}

TEST(Provider, FollowsTheConnectionString) {
  const struct {
    const char16_t* connectionString;
    const char* chosen;
  } cases[] = {
      {u"Driver=Vellum250;Database=/a b.db;", "embedded Driver=Vellum250;Database=/a b.db;"},
      {u"DRIVER={vellum250};Database=x", "embedded DRIVER=vellum250;Database=x;"},
      {u"Driver={SQLite3};Database=x;", "odbc Driver=SQLite3;Database=x;"},
      {u"DSN=members;UID=a;PWD={s;3}", "odbc DSN=members;UID=a;PWD={s;3};"},
      {u"FileDSN=members.dsn", "odbc FileDSN=members.dsn;"},
      {u"", "The connection string is empty"},
      {u" ; ", "The connection string is empty"},
      {u"Server=db1;Database=x;PWD=s3cret",
       "The connection string names no \"Driver\", \"DSN\" or \"Provider\""},
      {u"Provider=Microsoft.Jet.OLEDB.4.0;Data Source=x.mdb",
       "There is no provider \"Microsoft.Jet.OLEDB.4.0\""},
      {u"Provider=SQLOLEDBX;", "There is no provider \"SQLOLEDBX\""},
      {u"Provider=;", "There is no provider \"\""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Chosen(c.connectionString, {}), c.chosen) << ToUtf8(c.connectionString);
  }
}

TEST(Provider, TranslatesOleDbKeywords) {
  const struct {
    const char16_t* oleDb;  // after "Provider=SQLOLEDB;"
    const char* odbc;       // after the driver
  } cases[] = {
      {u"Data Source=db1,1433;Initial Catalog=members;User ID=web;Password={s;3}",
       "Server=db1,1433;Database=members;UID=web;PWD={s;3};"},
      {u"server=db1;database=m;uid=web;pwd=x", "Server=db1;Database=m;UID=web;PWD=x;"},
      {u"Data Source=tcp:db1;Integrated Security=SSPI;Persist Security Info=False",
       "Server=tcp:db1;Trusted_Connection=yes;"},
      {u"Trusted_Connection=no", "Trusted_Connection=no;"},
      {u"Encrypt=True;Trust Server Certificate=yes", "Encrypt=yes;TrustServerCertificate=yes;"},
      {u"Use Encryption for Data=Strict", "Encrypt=strict;"},
      {u"Encrypt=Optional;TrustServerCertificate=0", "Encrypt=optional;TrustServerCertificate=no;"},
      {u"Connect Timeout=5;Application Name=members area;Workstation ID=w",
       "Connect Timeout=5;APP=members area;WSID=w;"},
      {u"MultipleActiveResultSets=true;Packet Size=4096;Network Library=DBMSSOCN",
       "MARS_Connection=yes;"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Chosen(Text(u"Provider=SQLOLEDB;") + c.oleDb, {u"SQL Server"}),
              std::string("odbc Driver=SQL Server;") + c.odbc);
  }
}

TEST(Provider, RefusesWhatItCannotTranslateWithoutRepeatingIt) {
  const struct {
    const char16_t* oleDb;
    const char* message;
  } cases[] = {
      {u"Inital Catalog=m;", "The connection string has an unknown keyword: that of entry 2"},
      {u"Password=s3;cret=1;", "The connection string has an unknown keyword: that of entry 3"},
      {u"Encrypt=s3cret", "The connection string has no valid value for \"Encrypt\""},
      {u"Integrated Security=strict",
       "The connection string has no valid value for \"Integrated Security\""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Chosen(Text(u"Provider=SQLOLEDB;") + c.oleDb, {u"SQL Server"}), c.message);
  }
}

TEST(Provider, PicksTheSqlServerDriver) {
  constexpr char kNone[] =
      "No ODBC driver for SQL Server is installed: install \"ODBC Driver 18 for SQL Server\" or "
      "FreeTDS";
  const std::vector<Text> windows = {u"SQL Server", u"SQL Server Native Client 11.0",
                                     u"ODBC Driver 9 for SQL Server",
                                     u"ODBC Driver 18 for SQL Server"};
  const std::vector<Text> nativeClients = {u"FreeTDS", u"SQL Server Native Client 10.0",
                                           u"sql server native client 11.0"};
  const struct {
    const char16_t* connectionString;
    std::vector<Text> installed;
    const char* chosen;
  } cases[] = {
      {u"Driver={SQL Server}", windows, "odbc Driver=SQL Server;"},
      {u"Provider=SQLOLEDB.1", windows, "odbc Driver=SQL Server;"},
      {u"Provider=MSOLEDBSQL19", windows, "odbc Driver=ODBC Driver 18 for SQL Server;"},
      {u"Provider=SQLNCLI11.1", windows, "odbc Driver=ODBC Driver 18 for SQL Server;"},
      {u"Driver={SQL Server};Server=a", nativeClients,
       "odbc Driver=sql server native client 11.0;Server=a;"},
      {u"Driver={sql server};Server=a", {u"SQLite3", u"FreeTDS"}, "odbc Driver=FreeTDS;Server=a;"},
      {u"Provider=sqloledb", {u"freetds"}, "odbc Driver=freetds;"},
      // Which must not go on without what was asked for.
      {u"Provider=SQLOLEDB;Data Source=tcp:db1,1444;Encrypt=Mandatory",
       {u"FreeTDS"},
       "odbc Driver=FreeTDS;Server=db1,1444;Encryption=require;"},
      {u"Driver={SQL Server};Encrypt=yes;Server=db1\\inst",
       {u"FreeTDS"},
       "odbc Driver=FreeTDS;Encryption=require;Server=db1\\inst;"},
      {u"Driver={SQL Server};Encrypt=no", {u"FreeTDS"}, "odbc Driver=FreeTDS;Encryption=request;"},
      {u"Provider=MSOLEDBSQL", {u"FreeTDS", u"SQL Server"}, "odbc Driver=SQL Server;"},
      {u"Driver={SQL Server}", {u"SQLite3", u"ODBC Driver for SQL"}, kNone},
      {u"Provider=SQLOLEDB", {}, kNone},
      // A driver asked for by its own name is not replaced.
      {u"Driver={ODBC Driver 17 for SQL Server}", windows,
       "odbc Driver=ODBC Driver 17 for SQL Server;"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Chosen(c.connectionString, c.installed), c.chosen) << ToUtf8(c.connectionString);
  }
}

}  // namespace
}  // namespace vellum250::database
