// The embedded database against SQLite itself, on the same file in the same process: the peer keeps
// its connection open and its statements prepared, and binds, steps and reads.

#include <benchmark/benchmark.h>
#include <sqlite3.h>

#include <functional>
#include <memory>
#include <stdexcept>
#include <vector>

#include "automation/conversion.h"
#include "database/connection.h"
#include "database/embedded/session.h"
#include "runtime/database_helpers.h"
#include "texts.h"

namespace vellum250 {
namespace {

// SQLite with a statement kept.
class Plain {
 public:
  Plain(const std::string& file, const std::string& sql) {
    sqlite3* handle = nullptr;
    sqlite3_open_v2(file.c_str(), &handle, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    db_.reset(handle);
    // The tables' columns compare as T-SQL does.
    database::embedded::RegisterFunctions(handle, context_);
    sqlite3_exec(handle, "PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON", nullptr, nullptr,
                 nullptr);
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v3(handle, sql.c_str(), -1, SQLITE_PREPARE_PERSISTENT, &statement, nullptr);
    statement_.reset(statement);
    if (statement == nullptr) throw std::runtime_error(sqlite3_errmsg(handle));
  }

  sqlite3* Db() const { return db_.get(); }
  sqlite3_stmt* Get() const { return statement_.get(); }

  void Bind(int position, std::string_view text) {
    sqlite3_bind_text(Get(), position, text.data(), static_cast<int>(text.size()), SQLITE_STATIC);
  }
  bool Step() {
    const int code = sqlite3_step(Get());
    if (code == SQLITE_ROW) return true;
    sqlite3_reset(Get());
    if (code != SQLITE_DONE) throw std::runtime_error(sqlite3_errmsg(Db()));
    return false;
  }
  std::string_view Text(int column) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(Get(), column));
    return text == nullptr
               ? std::string_view()
               : std::string_view(text, static_cast<size_t>(sqlite3_column_bytes(Get(), column)));
  }

 private:
  struct CloseDb {
    void operator()(sqlite3* db) const { sqlite3_close_v2(db); }
  };
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  database::embedded::FunctionContext context_;
  std::unique_ptr<sqlite3, CloseDb> db_;
  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

Text ConnectionStringOf(const std::string& file) {
  return u"Driver=Vellum250;Database=" + FromUtf8(file) + u";";
}

void Register(const std::string& name, std::function<void(int32_t)> body) {
  benchmark::RegisterBenchmark(name.c_str(), [body = std::move(body)](benchmark::State& state) {
    int32_t i = 0;
    for (auto _ : state) body(++i);
  })->UseRealTime();
}

template <typename T>
void DemandEqual(const std::string& what, const T& ours, const T& theirs) {
  if (!(ours == theirs)) throw std::runtime_error(what + ": the two sides gave different results");
}

// One value of the row that the number chooses.
void RegisterScalar(const std::string& name, const std::string& file, TextView sql,
                    const std::string& plainSql, int32_t rows) {
  const Text cs = ConnectionStringOf(file);
  const auto ours = [=](int32_t i) {
    return GetScalarText(Text(sql) + NumberText(i % rows + 1), cs);
  };
  const auto plain = std::make_shared<Plain>(file, plainSql);
  const auto theirs = [=, out = std::make_shared<std::string>()](int32_t i) -> std::string& {
    sqlite3_bind_int(plain->Get(), 1, i % rows + 1);
    out->clear();
    if (plain->Step()) *out = plain->Text(0);
    sqlite3_reset(plain->Get());
    return *out;
  };
  for (int32_t i = 0; i < rows; ++i) DemandEqual(name, ToUtf8(ours(i)), theirs(i));
  Register("GetScalar/" + name, [=](int32_t i) { benchmark::DoNotOptimize(ours(i)); });
  Register("SQLite/GetScalar/" + name, [=](int32_t i) { benchmark::DoNotOptimize(theirs(i)); });
}

struct Row {
  int32_t number = 0;
  Text name;
  double born = 0;  // days
  int64_t amount = 0;
  bool active = false;
  bool operator==(const Row&) const = default;
};

// 100 rows of five types, the dates as days.
void RegisterRows(const std::string& file) {
  const Text cs = ConnectionStringOf(file);
  const auto connection = std::shared_ptr(database::Connection::Open(cs));
  connection->Execute(
      u"IF NOT EXISTS (SELECT 1 FROM information_schema.tables WHERE table_name = 'hundred') "
      u"CREATE TABLE hundred (number int NOT NULL PRIMARY KEY, name varchar(60), born datetime, "
      u"amount money, active bit)");
  connection->Execute(u"DELETE FROM hundred");
  for (int32_t i = 1; i <= 100; ++i) {
    const Variant values[] = {i, u"Name and surname " + NumberText(i), Date{20000.25 + i},
                              Currency{i * 12345}, i % 3 == 0};
    connection->Execute(u"INSERT INTO hundred VALUES (?, ?, ?, ?, ?)", values);
  }
  const auto ours = [=] {
    return connection->Execute(u"SELECT number, name, born, amount, active FROM hundred");
  };
  const auto plain = std::make_shared<Plain>(
      file, "SELECT number, name, julianday(born) - 2415018.5, amount, active FROM hundred");
  const auto theirs = [=] {
    std::vector<Row> rows;
    while (plain->Step()) {
      sqlite3_stmt* at = plain->Get();
      rows.push_back({sqlite3_column_int(at, 0), FromUtf8(plain->Text(1)),
                      sqlite3_column_double(at, 2), sqlite3_column_int64(at, 3),
                      sqlite3_column_int(at, 4) != 0});
    }
    return rows;
  };
  std::vector<Row> read;
  for (auto rows = ours(); !rows.Eof(); rows.MoveNext()) {
    read.push_back({rows.Field(0).As<int32_t>(), rows.Field(1).As<Text>(),
                    rows.Field(2).As<Date>().days, rows.Field(3).As<Currency>().tenThousandths,
                    rows.Field(4).As<bool>()});
  }
  DemandEqual("100 rows", read, theirs());
  Register("Rows", [=](int32_t) { benchmark::DoNotOptimize(ours()); });
  Register("SQLite/Rows", [=](int32_t) { benchmark::DoNotOptimize(theirs()); });
}

// An address, and its key.
void RegisterInsert(const std::string& name, const std::string& file) {
  const Text cs = ConnectionStringOf(file);
  const auto ours = [=](int32_t i) {
    return InsertAndGetIdentity(
        u"INSERT INTO location (display_name, address1, town, postcode, country_ref) VALUES ('" +
            NumberText(i) + u" High Street, Whitby', '" + NumberText(i) +
            u" High Street', 'Whitby', 'YO22 4DE', 41)",
        cs);
  };
  const auto plain = std::make_shared<Plain>(
      file,
      "INSERT INTO location (display_name, address1, town, postcode, country_ref)"
      " VALUES (?1, ?2, ?3, ?4, ?5)");
  const auto theirs = [=](int32_t i) {
    const std::string street = std::to_string(i) + " High Street";
    const std::string display = street + ", Whitby";
    plain->Bind(1, display);
    plain->Bind(2, street);
    plain->Bind(3, "Whitby");
    plain->Bind(4, "YO22 4DE");
    sqlite3_bind_int(plain->Get(), 5, 41);
    plain->Step();
    return int64_t{sqlite3_last_insert_rowid(plain->Db())};
  };
  const auto first = ToInt32(ours(1));
  DemandEqual("the key", theirs(1), int64_t{first} + 1);
  const auto stored = [&](int32_t key) {
    auto rows = database::Connection::Open(cs)->Execute(
        u"SELECT display_name + address1 + town + postcode FROM location WHERE location_ref = " +
        NumberText(key));
    return ToText(rows.Field(0));
  };
  DemandEqual("the address", stored(first), stored(first + 1));
  Register("Insert/" + name, [=](int32_t i) { benchmark::DoNotOptimize(ours(i)); });
  Register("SQLite/Insert/" + name, [=](int32_t i) { benchmark::DoNotOptimize(theirs(i)); });
}

// The longest statement of the library, from its text to a prepared statement with nothing kept;
// against preparing the SQLite text that it becomes.
void RegisterTranslation(const std::string& file) {
  using namespace database::embedded;
  static constexpr TextView kSql =
      u"SELECT l.location_ref, isNull(ll.Differentiator, '') AS differentiator, "
      u"isNull(l.display_name, '') AS display_name, isNull(ll.main_location, '') AS "
      u"main_location, isNull(ll.type, '') AS type, isNull(l.address1, '') AS address1, "
      u"isNull(l.address2, '') AS address2, isNull(l.address3, '') AS address3, "
      u"isNull(l.town, '') AS town, isNull(l.county, '') AS county, isNull(l.postcode, '') AS "
      u"postcode, isNull(l.country, '') AS country, isNull(l.country_ref, 0) AS country_ref, "
      u"isNull(ll.comments, '') AS comments FROM individual_loc ll JOIN location l ON "
      u"l.location_ref = ll.location_ref WHERE ll.ind_loc_ref = 7";
  const auto session = std::make_shared<Session>(FromUtf8(file), false, TimeLimits());
  const auto translate = [=] {
    Scanned scanned = Scan(kSql);
    const auto program = ProgramCache().Get(kSql, scanned, {});
    const Statement& statement = *program->Tree().statements[0];
    const auto& select = std::get<SelectStatement>(statement.node);
    Plan& plan =
        program->PlanOf(&statement, session->Objects(), scanned.literals,
                        [&](const BindInput& input) { return BindSelect(input, *select.query); });
    plan.prepared = session->Db().Prepare(plan.sql);
    return plan.sql;
  };
  const std::string sql = translate();
  Register("Translate", [=](int32_t) { benchmark::DoNotOptimize(translate()); });
  Register("SQLite/Prepare",
           [=](int32_t) { benchmark::DoNotOptimize(session->Db().Prepare(sql)); });
}

}  // namespace

void RegisterDatabase(const std::string& folder, const std::string& memoryFolder) {
  const std::string file = folder + "/members.db";
  RegisterScalar("Lookup", file, u"SELECT lookup_full_desc FROM lookup WHERE lookup_ref = ",
                 "SELECT lookup_full_desc FROM lookup WHERE lookup_ref = ?1", 60);
  RegisterScalar("Count", file,
                 u"SELECT count(*) FROM individual_loc WHERE main_location = 'Y' and  "
                 u"individual_ref = ",
                 "SELECT count(*) FROM individual_loc WHERE main_location = 'Y' COLLATE NOCASE "
                 "AND individual_ref = ?1",
                 60);
  RegisterRows(file);
  RegisterTranslation(file);
  RegisterInsert("Disk", file);
  RegisterInsert("Memory", memoryFolder + "/members.db");
}

}  // namespace vellum250
