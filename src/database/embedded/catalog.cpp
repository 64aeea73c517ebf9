#include "database/embedded/catalog.h"

#include "automation/locale.h"
#include "database/embedded/failures.h"
#include "database/embedded/transaction.h"

namespace vellum250::database::embedded {
namespace {

constexpr char16_t kListMark = 0x1F;

// PRAGMA user_version: the number of the file's format, then a count of the catalogue's changes.
constexpr int kChangeBits = 24;
constexpr int64_t kFormat = 0;

Text Joined(const std::vector<Text>& names) {
  Text text;
  for (const Text& name : names) {
    if (!text.empty()) text += kListMark;
    text += name;
  }
  return text;
}

std::vector<Text> Split(TextView text) {
  std::vector<Text> names;
  while (!text.empty()) {
    const size_t end = std::min(text.find(kListMark), text.size());
    names.emplace_back(text.substr(0, end));
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return names;
}

Text TextColumn(const Prepared& statement, int index) {
  return FromUtf8(statement.Column(index).Text());
}

// Binds all values, runs, and forgets the statement.
void Run(Database& database, const std::string& sql, const std::vector<Value>& values) {
  Prepared statement = database.Prepare(sql, false);
  int position = 0;
  for (const Value& value : values) statement.Bind(++position, value);
  statement.Step(database);
}

Value TextOrNull(TextView text) { return text.empty() ? Value() : Value(ToUtf8(text)); }

struct SystemView {
  TextView schema;
  TextView name;
  const char* rows;  // of SQLite, as a table
  std::vector<std::pair<TextView, TypeInfo>> columns;
};

constexpr const char* kColumnRows =
    "(SELECT 'vellum250' COLLATE TSQL AS TABLE_CATALOG, 'dbo' COLLATE TSQL AS TABLE_SCHEMA,"
    " o.name AS TABLE_NAME, c.name AS COLUMN_NAME, c.position AS ORDINAL_POSITION,"
    " c.default_text COLLATE TSQL AS COLUMN_DEFAULT,"
    " CASE c.nullable WHEN 0 THEN 'NO' ELSE 'YES' END COLLATE TSQL AS IS_NULLABLE,"
    " c.data_type AS DATA_TYPE, c.characters AS CHARACTER_MAXIMUM_LENGTH,"
    " CASE WHEN c.data_type LIKE 'n%' AND c.characters > 0 THEN min(c.characters * 2, 2147483646)"
    " ELSE c.characters END AS CHARACTER_OCTET_LENGTH,"
    " CASE c.data_type WHEN 'real' THEN 24 ELSE c.digits END AS NUMERIC_PRECISION,"
    " CASE WHEN c.data_type IN ('float', 'real') THEN 2 WHEN c.digits > 0 THEN 10 END"
    " AS NUMERIC_PRECISION_RADIX,"
    " CASE WHEN c.data_type NOT IN ('float', 'real') THEN c.scale END AS NUMERIC_SCALE,"
    " CASE c.data_type WHEN 'datetime' THEN 3 WHEN 'smalldatetime' THEN 0 WHEN 'date' THEN 0 END"
    " AS DATETIME_PRECISION"
    " FROM main.vellum250_object o JOIN main.vellum250_column c ON c.object_id = o.id)";
constexpr const char* kTableRows =
    "(SELECT 'vellum250' COLLATE TSQL AS TABLE_CATALOG, 'dbo' COLLATE TSQL AS TABLE_SCHEMA,"
    " name AS TABLE_NAME,"
    " CASE kind WHEN 0 THEN 'BASE TABLE' ELSE 'VIEW' END COLLATE TSQL AS TABLE_TYPE"
    " FROM main.vellum250_object WHERE kind IN (0, 1))";
constexpr const char* kObjectRows =
    "(SELECT name, id, id AS object_id, substr('U V P ', kind * 2 + 1, 2) COLLATE TSQL AS xtype,"
    " substr('U V P ', kind * 2 + 1, 2) COLLATE TSQL AS type FROM main.vellum250_object)";
constexpr const char* kObjectTables =
    "(SELECT name, id AS object_id, 'U ' COLLATE TSQL AS type FROM main.vellum250_object"
    " WHERE kind = 0)";

const std::vector<SystemView>& SystemViews() {
  static const TypeInfo name = NVarChar(128);
  static const TypeInfo tiny{SqlType::TinyInt, 0, 0, 0};
  static const TypeInfo small{SqlType::SmallInt, 0, 0, 0};
  static const TypeInfo kind{SqlType::Char, 2, 0, 0};
  static const std::vector<SystemView> views = {
      {u"information_schema",
       u"columns",
       kColumnRows,
       {{u"TABLE_CATALOG", name},
        {u"TABLE_SCHEMA", name},
        {u"TABLE_NAME", name},
        {u"COLUMN_NAME", name},
        {u"ORDINAL_POSITION", kInt},
        {u"COLUMN_DEFAULT", NVarChar(4000)},
        {u"IS_NULLABLE", VarChar(3)},
        {u"DATA_TYPE", name},
        {u"CHARACTER_MAXIMUM_LENGTH", kInt},
        {u"CHARACTER_OCTET_LENGTH", kInt},
        {u"NUMERIC_PRECISION", tiny},
        {u"NUMERIC_PRECISION_RADIX", small},
        {u"NUMERIC_SCALE", kInt},
        {u"DATETIME_PRECISION", small}}},
      {u"information_schema",
       u"tables",
       kTableRows,
       {{u"TABLE_CATALOG", name},
        {u"TABLE_SCHEMA", name},
        {u"TABLE_NAME", name},
        {u"TABLE_TYPE", VarChar(10)}}},
      {u"",
       u"sysobjects",
       kObjectRows,
       {{u"name", name}, {u"id", kInt}, {u"xtype", kind}, {u"type", kind}}},
      {u"sys", u"objects", kObjectRows, {{u"name", name}, {u"object_id", kInt}, {u"type", kind}}},
      {u"sys", u"tables", kObjectTables, {{u"name", name}, {u"object_id", kInt}, {u"type", kind}}}};
  return views;
}

}  // namespace

const ColumnInfo* ObjectInfo::Find(TextView column) const {
  for (const ColumnInfo& info : columns) {
    if (EqualsIgnoreAsciiCase(info.name, column)) return &info;
  }
  return nullptr;
}

const ColumnInfo* ObjectInfo::Identity() const {
  for (const ColumnInfo& info : columns) {
    if (info.identity) return &info;
  }
  return nullptr;
}

const ConstraintInfo* ObjectInfo::PrimaryKey() const {
  for (const ConstraintInfo& constraint : constraints) {
    if (constraint.kind == ConstraintKind::PrimaryKey) return &constraint;
  }
  return nullptr;
}

Catalog::Catalog(Database& database) : database_(database) {
  version_ = database.Prepare("PRAGMA user_version");
  if (Version() == 0) {
    Transaction transaction(database);
    // Another connection may have been first.
    if (Version() == 0) {
      CreateTables("main");
      CountChange(false);
    }
    transaction.Commit();
  }
  Refresh();
}

int64_t Catalog::Version() {
  const int64_t version = database_.Integer("PRAGMA user_version");
  if (version >> kChangeBits != kFormat) {
    database_.FailFile(u"the database file was made by a newer version of this library");
  }
  return version;
}

// A statement at one of its rows holds a transaction that reads.
Catalog::Look::Look(Catalog& catalog) : catalog_(catalog) {
  catalog.version_.Step(catalog.database_);
  try {
    if (catalog.version_.Column(0).Integer() != catalog.loadedVersion_) catalog.Reload();
    catalog.dataVersion_ = catalog.DataVersion();
  } catch (...) {
    catalog.version_.Reset();
    throw;
  }
}

uint32_t Catalog::DataVersion() const {
  uint32_t version = 0;
  sqlite3_file_control(database_.Get(), "main", SQLITE_FCNTL_DATA_VERSION, &version);
  return version;
}

void Catalog::Reload() {
  ++generation_;
  loadedVersion_ = -1;  // until everything is read
  objects_.clear();
  lastTemporary_ = 0;
  hasTemporary_ =
      database_.Integer(
          "SELECT count(*) FROM temp.sqlite_schema WHERE name = 'vellum250_object'") != 0;
  const int64_t version = Version();
  Load("main.");
  if (hasTemporary_) Load("temp.");
  loadedVersion_ = version;
}

void Catalog::CreateTables(const std::string& schema) {
  const std::string create = "CREATE TABLE " + schema + ".";
  database_.Execute(
      create +
      "vellum250_object (id INTEGER PRIMARY KEY AUTOINCREMENT,"
      " name TEXT COLLATE TSQL NOT NULL UNIQUE, kind INTEGER NOT NULL, definition TEXT);" +
      create +
      "vellum250_column (object_id INTEGER NOT NULL, position INTEGER NOT NULL,"
      " name TEXT COLLATE TSQL NOT NULL, type INTEGER NOT NULL, nullable INTEGER NOT NULL,"
      " seed INTEGER, increment INTEGER, default_text TEXT,"
      " data_type TEXT COLLATE TSQL NOT NULL, characters INTEGER, digits INTEGER, scale INTEGER,"
      " PRIMARY KEY (object_id, position));" +
      create +
      "vellum250_constraint (object_id INTEGER NOT NULL, name TEXT COLLATE TSQL NOT NULL UNIQUE,"
      " kind INTEGER NOT NULL, columns TEXT, parent TEXT, parent_columns TEXT)");
}

void Catalog::Load(const std::string& schema) {
  std::map<int64_t, ObjectInfo> loaded;
  const bool temporary = schema == "temp.";
  Prepared rows = database_.Prepare(
      "SELECT id, name, kind, definition FROM " + schema + "vellum250_object", false);
  while (rows.Step(database_)) {
    ObjectInfo& object = loaded[rows.Column(0).Integer()];
    object.id = rows.Column(0).Integer();
    object.name = TextColumn(rows, 1);
    object.kind = static_cast<ObjectKind>(rows.Column(2).Integer());
    object.definition = TextColumn(rows, 3);
    object.temporary = temporary;
    if (temporary) lastTemporary_ = std::max(lastTemporary_, object.id);
    object.sqlName = schema + QuotedName(object.name);
  }
  rows = database_.Prepare(
      "SELECT object_id, name, type, nullable, seed, increment, default_text FROM " + schema +
          "vellum250_column ORDER BY object_id, position",
      false);
  while (rows.Step(database_)) {
    ColumnInfo column;
    column.name = TextColumn(rows, 1);
    column.type = Decode(rows.Column(2).Integer());
    column.nullable = rows.Column(3).Integer() != 0;
    column.identity = !rows.Column(4).IsNull();
    column.seed = rows.Column(4).Integer();
    column.increment = rows.Column(5).Integer();
    column.defaultText = TextColumn(rows, 6);
    loaded[rows.Column(0).Integer()].columns.push_back(std::move(column));
  }
  rows = database_.Prepare("SELECT object_id, name, kind, columns, parent, parent_columns FROM " +
                               schema + "vellum250_constraint",
                           false);
  while (rows.Step(database_)) {
    ConstraintInfo constraint;
    constraint.name = TextColumn(rows, 1);
    constraint.kind = static_cast<ConstraintKind>(rows.Column(2).Integer());
    constraint.columns = Split(TextColumn(rows, 3));
    constraint.parent = TextColumn(rows, 4);
    constraint.parentColumns = Split(TextColumn(rows, 5));
    loaded[rows.Column(0).Integer()].constraints.push_back(std::move(constraint));
  }
  for (auto& [id, object] : loaded) {
    Text key = ToLower(object.name);
    objects_[std::move(key)] = std::make_shared<const ObjectInfo>(std::move(object));
  }
}

ObjectPtr Catalog::Find(TextView name) const {
  const auto found = objects_.find(ToLower(name));
  return found == objects_.end() ? nullptr : found->second;
}

ObjectPtr Catalog::FindSystemView(TextView schema, TextView name) const {
  for (const SystemView& view : SystemViews()) {
    if (!EqualsIgnoreAsciiCase(view.name, name)) continue;
    const bool anySchema = view.schema.empty() && (schema.empty() || schema == u"dbo");
    if (!anySchema && !EqualsIgnoreAsciiCase(view.schema, schema)) continue;
    auto object = std::make_shared<ObjectInfo>();
    object->name = Text(view.name);
    object->sqlName = view.rows;
    for (const auto& [column, type] : view.columns) {
      ColumnInfo& info = object->columns.emplace_back();
      info.name = Text(column);
      info.type = type;
    }
    return object;
  }
  return nullptr;
}

void Catalog::CountChange(bool temporary) {
  if (temporary) return;
  const int64_t changes = Version() % ((1 << kChangeBits) - 1) + 1;
  database_.Execute("PRAGMA user_version = " + std::to_string(kFormat << kChangeBits | changes));
}

void Catalog::Add(const ObjectInfo& object) {
  const std::string schema = object.Schema();
  Run(database_,
      "INSERT INTO " + schema + "vellum250_object (name, kind, definition) VALUES (?, ?, ?)",
      {ToUtf8(object.name), static_cast<int64_t>(object.kind), TextOrNull(object.definition)});
  const int64_t id = sqlite3_last_insert_rowid(database_.Get());
  int64_t position = 0;
  for (const ColumnInfo& column : object.columns) {
    const TypeInfo& type = column.type;
    const bool sized = IsText(type);
    const TypeInfo digits = IsNumber(type) ? AsDecimal(type) : TypeInfo{};
    const bool exact = digits.type == SqlType::Decimal && type.type != SqlType::Bit;
    const bool isFloat = type.type == SqlType::Float;
    Run(database_,
        "INSERT INTO " + schema +
            "vellum250_column (object_id, position, name, type, nullable, seed, increment,"
            " default_text, data_type, characters, digits, scale)"
            " VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)",
        {id, ++position, ToUtf8(column.name), Encode(type), int64_t{column.nullable},
         column.identity ? Value(column.seed) : Value(),
         column.identity ? Value(column.increment) : Value(), TextOrNull(column.defaultText),
         ToUtf8(SqlTypeName(type.type)),
         !sized              ? Value()
         : !IsLongText(type) ? Value(int64_t{type.length})
         : IsNational(type)  ? Value(int64_t{1073741823})
                             : Value(int64_t{2147483647}),
         isFloat ? Value(int64_t{53})
         : exact ? Value(int64_t{digits.precision})
                 : Value(),
         exact ? Value(int64_t{digits.scale}) : Value()});
  }
  ObjectInfo created = object;
  created.id = id;
  for (const ConstraintInfo& constraint : object.constraints) AddConstraint(created, constraint);
  CountChange(object.temporary);
}

void Catalog::AddConstraint(const ObjectInfo& object, const ConstraintInfo& constraint) {
  Run(database_,
      "INSERT INTO " + object.Schema() +
          "vellum250_constraint (object_id, name, kind, columns, parent, parent_columns)"
          " VALUES (?, ?, ?, ?, ?, ?)",
      {object.id, ToUtf8(constraint.name), static_cast<int64_t>(constraint.kind),
       TextOrNull(Joined(constraint.columns)), TextOrNull(constraint.parent),
       TextOrNull(Joined(constraint.parentColumns))});
  CountChange(object.temporary);
}

void Catalog::RemoveConstraint(const ObjectInfo& object, TextView constraint) {
  Run(database_,
      "DELETE FROM " + object.Schema() + "vellum250_constraint WHERE object_id = ? AND name = ?",
      {object.id, ToUtf8(constraint)});
  CountChange(object.temporary);
}

void Catalog::Remove(const ObjectInfo& object) {
  for (const char* table : {"vellum250_constraint WHERE object_id",
                            "vellum250_column WHERE object_id", "vellum250_object WHERE id"}) {
    Run(database_, "DELETE FROM " + object.Schema() + table + " = ?", {object.id});
  }
  CountChange(object.temporary);
}

void Catalog::PrepareTemporary() {
  if (hasTemporary_) return;
  Transaction transaction(database_);
  CreateTables("temp");
  transaction.Commit();
  hasTemporary_ = true;
}

void Catalog::DropTemporary() {
  if (!hasTemporary_) return;
  for (const auto& [name, object] : objects_) {
    if (object->temporary) database_.Execute("DROP TABLE " + object->sqlName);
  }
  for (const char* table : {"object", "column", "constraint"}) {
    database_.Execute(std::string("DROP TABLE temp.vellum250_") + table);
  }
  Reload();
}

}  // namespace vellum250::database::embedded
