#include "database/connection_string.h"

#include <optional>

#include "database/connection.h"

namespace vellum250::database {

namespace {

using Entries = std::vector<std::pair<Text, Text>>;

Entries EntriesOf(const ConnectionString& connectionString) {
  Entries entries;
  for (const auto& entry : connectionString.Entries()) entries.emplace_back(entry.key, entry.value);
  return entries;
}

std::string FailureText(TextView connectionString) {
  try {
    const ConnectionString parsed = ConnectionString::Parse(connectionString);
    return "no failure: " + ToUtf8(parsed.ToText());
  } catch (const DatabaseFailure& failure) {
    EXPECT_EQ(failure.Number(), kUnspecifiedFailure);
    return failure.what();
  }
}

TEST(ConnectionString, ReadsEntries) {
  const struct {
    const char16_t* text;
    Entries entries;
  } cases[] = {
      {u"", {}},
      {u" ; ;\r\n;", {}},
      {u"Driver=Vellum250;Database=/var/lib/site.db;",
       {{u"Driver", u"Vellum250"}, {u"Database", u"/var/lib/site.db"}}},
      {u"  Data Source =  db1 ;; Initial  Catalog= members",
       {{u"Data Source", u"db1"}, {u"Initial  Catalog", u"members"}}},
      {u"PWD=", {{u"PWD", u""}}},
      {u"PWD=;UID=a", {{u"PWD", u""}, {u"UID", u"a"}}},
      {u"PWD=a=b;", {{u"PWD", u"a=b"}}},
      {u"PWD={a;b}", {{u"PWD", u"a;b"}}},
      {u"PWD={a}}b}", {{u"PWD", u"a}b"}}},
      {u"PWD={}}}  ; X=1", {{u"PWD", u"}"}, {u"X", u"1"}}},
      {u"PWD={ a }", {{u"PWD", u" a "}}},
      {u"PWD={{a}", {{u"PWD", u"{a"}}},
      {u"PWD=\"a;'\"\"b\"", {{u"PWD", u"a;'\"b"}}},
      {u"PWD='it''s';", {{u"PWD", u"it's"}}},
      {u"PWD={}", {{u"PWD", u""}}},
      {u"PWD=it's {a}", {{u"PWD", u"it's {a}"}}},
      {u"PWD=Zoë\u4E2D\xD800", {{u"PWD", u"Zoë\u4E2D\xD800"}}},
  };
  for (const auto& c : cases) {
    const ConnectionString parsed = ConnectionString::Parse(c.text);
    EXPECT_EQ(EntriesOf(parsed), c.entries) << ToUtf8(c.text);
    const Text again = parsed.ToText();
    EXPECT_EQ(EntriesOf(ConnectionString::Parse(again)), c.entries) << ToUtf8(again);
  }
}

TEST(ConnectionString, TellsWhatIsNoneWithoutRepeatingIt) {
  const struct {
    TextView text;
    const char* message;
  } cases[] = {
      {u"s3cret", "entry 1 has no \"=\""},
      {u"UID=a;;s3cret;", "entry 2 has no \"=\""},
      {u"UID=a; =s3cret", "entry 2 has no keyword before its \"=\""},
      {u"PWD={s3cret", "entry 1 has no closing }"},
      {u"PWD={s3cret}}", "entry 1 has no closing }"},
      {u"PWD='s3cret", "entry 1 has no closing '"},
      {u"PWD=\"s3cret\"\";UID=a", "entry 1 has no closing \""},
      {u"PWD={a}s3cret;", "entry 1 goes on after its closing }"},
      {TextView(u"PWD=s3cret\0;", 12), "it holds a character 0"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(FailureText(c.text),
              std::string("The connection string cannot be read: ") + c.message);
  }
}

TEST(ConnectionString, FindsTheFirstValueOfAKey) {
  const auto parsed = ConnectionString::Parse(u"Initial Catalog=a;initialcatalog=b;PWD=");
  EXPECT_EQ(parsed.Find(u"initial catalog"), std::optional<TextView>(u"a"));
  EXPECT_EQ(parsed.Find(u"INITIALCATALOG"), std::optional<TextView>(u"a"));
  EXPECT_EQ(parsed.Find(u"pwd"), std::optional<TextView>(u""));
  EXPECT_EQ(parsed.Find(u"Initial"), std::nullopt);
}

TEST(ConnectionString, HidesPasswords) {
  const struct {
    const char16_t* text;
    const char16_t* shown;
  } cases[] = {
      {u"", u""},
      {u"Driver=x;UID=a;", u"Driver=x;UID=a;"},
      {u"PWD=s3cret", u"PWD=***"},
      {u"UID=a; password = s3cret ;X=1", u"UID=a; password =***;X=1"},
      {u"Jet OLEDB:Database Password={s3;c}}ret};X=1;", u"Jet OLEDB:Database Password=***;X=1;"},
      {u"pass word='s3;cret'", u"pass word=***"},
      // From where it cannot be read nothing is shown.
      {u"UID=a;PWD={s3cret;X=1", u"UID=a***"},
      {u"PWD=s3;cret;X=1", u"PWD=******"},
      {u"s3cret", u"***"},
  };
  for (const auto& c : cases) EXPECT_EQ(WithoutPasswords(c.text), c.shown) << ToUtf8(c.text);
}

TEST(ConnectionString, HidesPasswordsInMessages) {
  const struct {
    std::vector<Text> passwords;
    const char16_t* message;
    bool alsoParts;
    const char16_t* shown;
  } cases[] = {
      {{}, u"", true, u""},
      {{}, u"a = b; x", true, u"a = b; x"},
      {{u"s3cret"}, u"for s3cret and S3CRET", false, u"for *** and ***"},
      {{u"a;b}c"}, u"Driver=x;PWD={a;b}}c};UID=a", false, u"Driver=x;PWD=***;UID=a"},
      {{u"a;b}c"}, u"in '{a;b}}c}'", false, u"in '{***}'"},
      {{u"it's"}, u"as 'it''s'", false, u"as '***'"},
      {{u"s3", u"s3cret"}, u"s3cret s3", false, u"*** ***"},
      {{u"aa"}, u"aaa", false, u"***"},
      // A data source's own, and one that the driver has cut off.
      {{}, u"for Password = x; UID=a", false, u"for Password =***; UID=a"},
      {{}, u"(PASSWORD={a;b}}c}; x) {pwd=\"a;", false, u"(PASSWORD=***; x) {pwd=***"},
      {{u"s3cret"}, u"pwd=s3cr", false, u"pwd=***"},
      // A driver that ends the value at the first ";" takes the rest for a keyword.
      {{u"a;b}}tail"}, u"Invalid keyword 'b}}tail'", true, u"Invalid keyword '***'"},
      {{u"s3cret"}, u"near '3cre' and 's3c'", true, u"near '***' and 's3c'"},
      {{u"members1"}, u"no table members", false, u"no table members"},
      {{u"x"}, u"axb", true, u"a***b"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(WithoutPasswords(c.message, c.passwords, c.alsoParts), c.shown) << ToUtf8(c.message);
  }
}

}  // namespace
}  // namespace vellum250::database
