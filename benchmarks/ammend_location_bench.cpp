// AmmendLocation that updates in place, against the statements it sends, sent straight to SQLite on
// a file opened once with the same journal and durability.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

#include "automation/dictionary.h"
#include "database/connection.h"
#include "server/factory.h"
#include "texts.h"

namespace vellum250 {
namespace {

constexpr TextView kTowns[] = {u"Whitby", u"Scarborough"};

class Amender {
 public:
  explicit Amender(const std::string& file)
      : connectionString_(u"Driver=Vellum250;Database=" + FromUtf8(file) + u";") {
    const auto connection = database::Connection::Open(connectionString_);
    // Any person's main address that its link may edit.
    auto rows = connection->Execute(
        u"SELECT TOP 1 individual_ref, ind_loc_ref, type FROM individual_loc "
        u"WHERE main_location = 'Y' AND edit_link = 1 AND valid_to IS NULL ORDER BY ind_loc_ref");
    individual_ = rows.Field(u"individual_ref");
    link_ = rows.Field(u"ind_loc_ref");
    type_ = rows.Field(u"type");
    country_ =
        connection->Execute(u"SELECT lookup_ref FROM lookup WHERE lookup_code = 'UK'").Field(0);

    // An earlier run left one of the towns behind.
    connection->Execute(
        u"UPDATE location SET town = NULL FROM location l JOIN individual_loc ll ON "
        u"ll.location_ref = l.location_ref WHERE ll.ind_loc_ref = " +
        ToText(link_));

    settings_->Add(u"globalDisplayAsReadOnly", u"0");
    settings_->Add(u"globalNewUpdate", u"99");
    settings_->Add(u"globalLocationUpdate_" + ToText(type_), u"1");
    Enter();
  }

  // The context is the thread's: another benchmark may have set it since.
  void Enter() {
    Call(u"Connection", {connectionString_});
    Call(u"appDictWebConfig", {settings_});
  }

  void Amend() {
    const Variant result = Call(u"AmmendLocation", {u"INDIVIDUAL",
                                                    individual_,
                                                    link_,
                                                    u"",
                                                    u"Home",
                                                    u"1 Harbour View",
                                                    u"",
                                                    u"",
                                                    kTowns[++count_ % 2],
                                                    u"North Yorkshire",
                                                    u"YO22 4DE",
                                                    u"",
                                                    country_,
                                                    u"Y",
                                                    type_,
                                                    u"Add1,Address:|",
                                                    false,
                                                    false,
                                                    0,
                                                    0,
                                                    0,
                                                    0,
                                                    u"Ring the bell"});
    if (result != link_) throw std::runtime_error("AmmendLocation did not update");
  }

  Text StoredTown() const {
    return ToText(database::Connection::Open(connectionString_)
                      ->Execute(u"SELECT l.town FROM location l JOIN individual_loc ll ON "
                                u"ll.location_ref = l.location_ref WHERE ll.ind_loc_ref = " +
                                ToText(link_))
                      .Field(0));
  }

 private:
  Variant Call(TextView member, std::vector<Variant> arguments) {
    return address_->Invoke(member, InvokeKind::Method | InvokeKind::Get, arguments);
  }

  Text connectionString_;
  ObjectRef address_ = server::CreateObject(u"vellum250.address");
  Ref<Dictionary> settings_ = MakeObject<Dictionary>();
  Variant individual_;
  Variant link_;
  Variant type_;
  Variant country_;
  size_t count_ = 0;
};

class PlainSqlite {
 public:
  explicit PlainSqlite(const std::string& file) {
    std::remove(file.c_str());
    sqlite3* handle = nullptr;
    sqlite3_open_v2(file.c_str(), &handle,
                    SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    db_.reset(handle);
    Run("PRAGMA journal_mode = WAL");
    Run("PRAGMA synchronous = FULL");
    Run("PRAGMA foreign_keys = ON");
    Run("CREATE TABLE lookup (lookup_ref INTEGER PRIMARY KEY, lookup_full_desc TEXT)");
    Run("CREATE TABLE location (location_ref INTEGER PRIMARY KEY, display_name TEXT, address1 TEXT,"
        " address2 TEXT, address3 TEXT, town TEXT, county TEXT, postcode TEXT, country TEXT,"
        " country_ref INTEGER REFERENCES lookup, region1 INTEGER, region2 INTEGER)");
    Run("CREATE TABLE individual_loc (ind_loc_ref INTEGER PRIMARY KEY, individual_ref INTEGER,"
        " type INTEGER, location_ref INTEGER REFERENCES location, valid_from TEXT, valid_to TEXT,"
        " main_location TEXT, differentiator TEXT, edit_link INTEGER, comments TEXT)");
    Run("CREATE INDEX by_individual ON individual_loc (individual_ref)");
    Run("CREATE INDEX by_location ON individual_loc (location_ref)");
    Run("INSERT INTO lookup WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE"
        " i < 60) SELECT i, 'Country ' || i FROM n");
    Run("INSERT INTO location (location_ref, address1) WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL"
        " SELECT i + 1 FROM n WHERE i < 100) SELECT i, 'Street' FROM n");
    Run("INSERT INTO individual_loc SELECT location_ref, location_ref, 21, location_ref,"
        " '2004-01-01', NULL, 'Y', 'Home', 1, NULL FROM location");
  }

  void Enter() {}

  void Amend() {
    const std::string town = ToUtf8(kTowns[++count_ % 2]);
    Run("SELECT count(*) FROM individual_loc WHERE main_location = 'Y' AND individual_ref = 7");
    Run("SELECT l.location_ref, ifNull(ll.Differentiator, '') AS differentiator,"
        " ifNull(l.display_name, '') AS display_name, ifNull(ll.main_location, '') AS "
        "main_location,"
        " ifNull(ll.type, 0) AS type, ifNull(l.address1, '') AS address1,"
        " ifNull(l.address2, '') AS address2, ifNull(l.address3, '') AS address3,"
        " ifNull(l.town, '') AS town, ifNull(l.county, '') AS county,"
        " ifNull(l.postcode, '') AS postcode, ifNull(l.country, '') AS country,"
        " ifNull(l.country_ref, 0) AS country_ref, ifNull(ll.comments, '') AS comments"
        " FROM individual_loc ll JOIN location l ON l.location_ref = ll.location_ref"
        " WHERE ll.ind_loc_ref = 7");
    Run("SELECT lookup_full_desc FROM lookup WHERE lookup_ref = 1");
    Run("SELECT count(*) FROM individual_loc WHERE ind_loc_ref = 7 AND edit_link = 0");
    Run("SELECT individual_ref FROM individual_loc WHERE ind_loc_ref = 7");
    Run("SELECT lookup_full_desc FROM lookup WHERE lookup_ref = 1");
    Run("UPDATE location SET display_name = '1 Harbour View, " + town +
        ", NORTH YORKSHIRE',"
        " address1 = '1 Harbour View', address2 = null, address3 = null, town = '" +
        town +
        "',"
        " county = 'North Yorkshire', postcode = 'YO22 4DE', country = 'Country 1',"
        " country_ref = 1, region1 = null, region2 = null WHERE location_ref = 7");
    Run("UPDATE individual_loc SET main_location = NULL WHERE individual_ref = 7");
    Run("UPDATE individual_loc SET type = 21, differentiator = 'Home', main_location = 'Y',"
        " comments = 'Ring the bell' WHERE ind_loc_ref = 7");
  }

  Text StoredTown() {
    Run("SELECT town FROM location WHERE location_ref = 7");
    return FromUtf8(last_);
  }

 private:
  struct Close {
    void operator()(sqlite3* db) const { sqlite3_close(db); }
  };

  // Reads the first column of every row, as the library does.
  void Run(const std::string& sql) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v2(db_.get(), sql.c_str(), static_cast<int>(sql.size()), &statement, nullptr);
    int code = SQLITE_ROW;
    while ((code = sqlite3_step(statement)) == SQLITE_ROW) {
      const unsigned char* text = sqlite3_column_text(statement, 0);
      last_ = text == nullptr ? "" : reinterpret_cast<const char*>(text);
    }
    sqlite3_finalize(statement);
    if (code != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(db_.get()));
  }

  std::unique_ptr<sqlite3, Close> db_;
  std::string last_;
  size_t count_ = 0;
};

template <typename Side>
void Amend(benchmark::State& state, const std::shared_ptr<Side>& side) {
  side->Enter();
  for (auto _ : state) side->Amend();
}

}  // namespace

void RegisterAmmendLocation(const std::string& folder) {
  const auto ours = std::make_shared<Amender>(folder + "/members.db");
  const auto plain = std::make_shared<PlainSqlite>(folder + "/plain.db");
  for (int i = 0; i < 3; ++i) {
    ours->Amend();
    plain->Amend();
    if (ours->StoredTown() != plain->StoredTown()) {
      throw std::runtime_error("the two sides stored different towns");
    }
  }
  benchmark::RegisterBenchmark("AmmendLocation", Amend<Amender>, ours)->UseRealTime();
  benchmark::RegisterBenchmark("SQLite", Amend<PlainSqlite>, plain)->UseRealTime();
}

}  // namespace vellum250
