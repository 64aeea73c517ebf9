#include "database/embedded/schema.h"

#include <algorithm>
#include <optional>

#include "automation/locale.h"
#include "database/embedded/decimals.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"
#include "database/embedded/plan.h"
#include "database/embedded/transaction.h"

namespace vellum250::database::embedded {
namespace {

constexpr size_t kMostColumns = 1024;  // of a table

// A transaction that sees what other connections changed, and leaves the catalogue reloaded.
class SchemaChange {
 public:
  SchemaChange(Database& database, Catalog& catalog) : transaction_(database), catalog_(catalog) {
    catalog.Refresh();
  }
  void Commit() {
    transaction_.Commit();
    catalog_.Reload();
  }

 private:
  Transaction transaction_;
  Catalog& catalog_;
};

// What SQLite knows an index by: there its name is taken for all tables, and for tables too.
std::string IndexName(const ObjectInfo& table, const Text& index) {
  return QuotedName(table.name + u"." + index);
}

bool HasConstraint(const ObjectInfo& object, TextView name) {
  return std::ranges::any_of(object.constraints, [&](const ConstraintInfo& constraint) {
    return constraint.kind != ConstraintKind::UniqueIndex &&
           EqualsIgnoreAsciiCase(constraint.name, name);
  });
}

// Whether an object or a constraint has the name: they share one set of names, the temporary ones
// another.
bool IsTaken(const Catalog& catalog, TextView name, bool temporary) {
  return catalog.Find(name) || std::ranges::any_of(catalog.Objects(), [&](const auto& entry) {
           return entry.second->temporary == temporary && HasConstraint(*entry.second, name);
         });
}

void RequireNew(const Catalog& catalog, TextView name) {
  if (IsTaken(catalog, name, name.starts_with(u'#')) || catalog.FindSystemView({}, name)) {
    throw AlreadyAnObject(name);
  }
  const Text lower = ToLower(name);
  if (lower.starts_with(u"sqlite_") || lower.starts_with(u"vellum250_")) {
    throw Unsupported(u"an object named " + Text(name));
  }
}

ObjectPtr RequireTable(const Catalog& catalog, TextView name) {
  ObjectPtr table = catalog.Find(name);
  if (!table || table->kind != ObjectKind::Table) throw InvalidObject(name);
  return table;
}

const char* StorageOf(TypeInfo type) {
  switch (ClassOf(type.type)) {
    case TypeClass::Float:
      return "REAL";
    case TypeClass::Text:
    case TypeClass::DateTime:
    case TypeClass::Guid:
      return "TEXT";
    default:
      return "INTEGER";
  }
}

// "a", "b" as SQLite takes them, each through `write`.
template <typename Write>
std::string List(const std::vector<Text>& names, Write write) {
  std::string sql;
  for (const Text& name : names) {
    if (!sql.empty()) sql += ", ";
    sql += write(name);
  }
  return sql;
}

std::string QuotedList(const std::vector<Text>& names) {
  return List(names, [](const Text& name) { return QuotedName(name); });
}

class TableMaker {
 public:
  TableMaker(Database& database, Catalog& catalog, const CreateTableStatement& statement)
      : database_(database), catalog_(catalog), statement_(statement) {}

  void Make() {
    table_.name = statement_.table;
    table_.temporary = statement_.table.starts_with(u'#');
    if (table_.temporary) catalog_.PrepareTemporary();
    SchemaChange change(database_, catalog_);
    RequireNew(catalog_, statement_.table);
    table_.sqlName = table_.Schema() + QuotedName(table_.name);
    for (const ColumnDefinition& column : statement_.columns) AddColumn(column);
    for (const ConstraintDefinition& constraint : statement_.constraints) Prepare(constraint);
    database_.Execute(Sql());
    for (const ConstraintInfo& constraint : table_.constraints) {
      if (constraint.kind == ConstraintKind::PrimaryKey ||
          constraint.kind == ConstraintKind::Unique) {
        MakeUnique(constraint);
      }
    }
    SeedIdentity();
    catalog_.Add(table_);
    change.Commit();
  }

  static void MakeUniqueIndex(Database& database, const ObjectInfo& table, TextView name,
                              const std::vector<Text>& columns) {
    const std::string schema = table.Schema();
    database.Execute("CREATE UNIQUE INDEX " + schema + IndexName(table, Text(name)) + " ON " +
                     QuotedName(table.name) + " (" + QuotedList(columns) + ")");
    // NULL equals NULL here, which an SQLite index does not think.
    std::string someNull;
    for (const Text& column : columns) {
      if (!table.Find(column)->nullable) continue;
      someNull += (someNull.empty() ? "" : " OR ") + QuotedName(column) + " IS NULL";
    }
    if (someNull.empty()) return;
    const std::string keys = List(columns, [&](const Text& column) {
      const bool text = IsText(table.Find(column)->type);
      return "ifnull(" + QuotedName(column) + ", x'')" + (text ? " COLLATE TSQL" : "");
    });
    database.Execute("CREATE UNIQUE INDEX " + schema + IndexName(table, Text(name) + u" NULL") +
                     " ON " + QuotedName(table.name) + " (" + keys + ") WHERE " + someNull);
  }

 private:
  void AddColumn(const ColumnDefinition& definition) {
    if (table_.Find(definition.name)) {
      throw ServerFailure(2705,
                          u"Column names in each table must be unique. Column name '" +
                              definition.name + u"' in table '" + table_.name +
                              u"' is specified more than once.",
                          definition.line);
    }
    if (table_.columns.size() == kMostColumns) {
      throw ServerFailure(1702,
                          u"CREATE TABLE failed because column '" + definition.name +
                              u"' in table '" + table_.name +
                              u"' exceeds the maximum of 1024 columns.",
                          definition.line);
    }
    ColumnInfo column;
    column.name = definition.name;
    column.type = definition.type;
    column.nullable = definition.nullable.value_or(!definition.identity);
    column.identity = definition.identity;
    column.seed = definition.seed;
    column.increment = definition.increment;
    column.defaultText = definition.defaultText;
    if (column.identity) {
      if (table_.Identity()) {
        throw ServerFailure(2744,
                            u"Multiple identity columns specified for table '" + table_.name +
                                u"'. Only one identity column per table is allowed.",
                            definition.line);
      }
      const bool whole =
          ClassOf(column.type.type) == TypeClass::Whole && column.type.type != SqlType::Bit;
      if (!whole) throw Unsupported(u"an identity column of this type", definition.line);
      column.nullable = false;
    }
    if (column.identity && definition.nullable.value_or(false)) {
      throw ServerFailure(8147,
                          u"Could not create IDENTITY attribute on nullable column '" +
                              column.name + u"', table '" + table_.name + u"'.",
                          definition.line);
    }
    table_.columns.push_back(std::move(column));
  }

  void Prepare(const ConstraintDefinition& definition) {
    ConstraintInfo constraint;
    constraint.kind = definition.kind;
    constraint.columns = definition.columns;
    constraint.parent = definition.parent;
    constraint.parentColumns = definition.parentColumns;
    constraint.name = definition.name.empty() ? GeneratedName(definition) : definition.name;
    RequireNewName(constraint.name, definition.line);
    for (const Text& name : constraint.columns) RequireKeyColumn(name, definition);
    if (constraint.kind == ConstraintKind::PrimaryKey) {
      if (table_.PrimaryKey()) {
        throw ServerFailure(
            8110, u"Cannot add multiple PRIMARY KEY constraints to table '" + table_.name + u"'.",
            definition.line);
      }
      for (size_t i = 0; i < table_.columns.size(); ++i) {
        ColumnInfo& column = table_.columns[i];
        if (std::ranges::none_of(constraint.columns, [&](const Text& name) {
              return EqualsIgnoreAsciiCase(name, column.name);
            })) {
          continue;
        }
        if (statement_.columns[i].nullable.value_or(false)) {
          throw ServerFailure(
              8111,
              u"Cannot define PRIMARY KEY constraint on nullable column in table '" + table_.name +
                  u"'.",
              definition.line);
        }
        column.nullable = false;
      }
    }
    if (constraint.kind == ConstraintKind::Check)
      checks_.push_back({constraint.name, definition.check});
    if (constraint.kind == ConstraintKind::ForeignKey) PrepareForeignKey(constraint, definition);
    table_.constraints.push_back(std::move(constraint));
  }

  void RequireNewName(const Text& name, int32_t line) const {
    const bool taken = HasConstraint(table_, name) || IsTaken(catalog_, name, table_.temporary);
    if (taken) throw AtLine(AlreadyAnObject(name), line);
  }

  void RequireKeyColumn(const Text& name, const ConstraintDefinition& definition) const {
    if (const ColumnInfo* column = table_.Find(name)) {
      if (!IsLongText(column->type)) return;
      throw ServerFailure(
          1919,
          u"Column '" + name + u"' in table '" + table_.name +
              u"' is of a type that is invalid for use as a key column in an index.",
          definition.line);
    }
    throw ServerFailure(1911,
                        u"Column name '" + name + u"' does not exist in the target table or view.",
                        definition.line);
  }

  void PrepareForeignKey(ConstraintInfo& constraint, const ConstraintDefinition& definition) {
    if (table_.temporary) {
      foreignKeys_.emplace_back();  // the server ignores them as well
      return;
    }
    const bool toItself = EqualsIgnoreAsciiCase(constraint.parent, table_.name);
    const ObjectPtr found = toItself ? nullptr : catalog_.Find(constraint.parent);
    if (!toItself && (!found || found->kind != ObjectKind::Table)) {
      throw ServerFailure(1767,
                          u"Foreign key '" + constraint.name + u"' references invalid table '" +
                              constraint.parent + u"'.",
                          definition.line);
    }
    const ObjectInfo& parent = toItself ? table_ : *found;
    constraint.parent = parent.name;
    if (constraint.parentColumns.empty() && parent.PrimaryKey()) {
      constraint.parentColumns = parent.PrimaryKey()->columns;
    }
    if (!IsKey(parent, constraint.parentColumns) ||
        constraint.parentColumns.size() != constraint.columns.size()) {
      throw ServerFailure(1776,
                          u"There are no primary or candidate keys in the referenced table '" +
                              parent.name +
                              u"' that match the referencing column list in the "
                              u"foreign key '" +
                              constraint.name + u"'.",
                          definition.line);
    }
    for (size_t i = 0; i < constraint.columns.size(); ++i) {
      const ColumnInfo& from = *table_.Find(constraint.columns[i]);
      const ColumnInfo& to = *parent.Find(constraint.parentColumns[i]);
      // A sysname is an nvarchar.
      if (MessageName(from.type) == MessageName(to.type)) continue;
      throw ServerFailure(1778,
                          u"Column '" + parent.name + u"." + to.name +
                              u"' is not the same data type as referencing column '" + table_.name +
                              u"." + from.name + u"' in foreign key '" + constraint.name + u"'.",
                          definition.line);
    }
    std::string sql = "CONSTRAINT " + QuotedName(constraint.name) + " FOREIGN KEY (" +
                      QuotedList(constraint.columns) + ") REFERENCES " + QuotedName(parent.name) +
                      " (" + QuotedList(constraint.parentColumns) + ")";
    if (!definition.onDelete.empty()) sql += " ON DELETE " + ToUtf8(definition.onDelete);
    if (!definition.onUpdate.empty()) sql += " ON UPDATE " + ToUtf8(definition.onUpdate);
    foreignKeys_.push_back(std::move(sql));
  }

  static bool IsKey(const ObjectInfo& parent, const std::vector<Text>& columns) {
    for (const ConstraintInfo& key : parent.constraints) {
      if (!key.IsUnique() || key.columns.size() != columns.size()) continue;
      if (std::ranges::equal(key.columns, columns, EqualsIgnoreAsciiCase)) return true;
    }
    return false;
  }

  // As the server does: the kind, the table, the column, and something that makes it unique.
  Text GeneratedName(const ConstraintDefinition& definition) const {
    static constexpr TextView kPrefixes[] = {u"PK", u"UQ", u"UQ", u"CK", u"FK"};
    Text name =
        Text(kPrefixes[static_cast<size_t>(definition.kind)]) + u"__" + table_.name.substr(0, 24);
    if (!definition.columns.empty()) name += u"__" + definition.columns[0].substr(0, 24);
    return name + u"__" + NumberText(static_cast<int64_t>(table_.constraints.size() + 1));
  }

  std::string Sql() const {
    std::string sql = "CREATE TABLE " + table_.sqlName + " (";
    std::string separator;
    for (const ColumnInfo& column : table_.columns) {
      sql += separator + QuotedName(column.name) + " " + StorageOf(column.type);
      if (column.identity) {
        // The row's own number, which is never given twice.
        sql += " PRIMARY KEY AUTOINCREMENT";
        const IntegerRange range = RangeOf(column.type.type);
        sql.append(" CONSTRAINT ").append(kIdentityCheck).append(" CHECK (");
        sql.append(QuotedName(column.name)).append(" BETWEEN ");
        sql.append(std::to_string(range.least)).append(" AND ");
        sql.append(std::to_string(range.most)).append(")");
      } else {
        if (IsText(column.type)) sql += " COLLATE TSQL";
        if (!column.nullable) sql += " NOT NULL";
      }
      separator = ", ";
    }
    for (const auto& [name, condition] : checks_) {
      sql += ", CONSTRAINT " + QuotedName(name) + " CHECK (" +
             BindCheck(catalog_, table_, condition) + ")";
    }
    for (const std::string& key : foreignKeys_) {
      if (!key.empty()) sql += ", " + key;
    }
    return sql + ")";
  }

  void MakeUnique(const ConstraintInfo& constraint) {
    // The identity column is SQLite's own key already.
    const ColumnInfo* identity = table_.Identity();
    if (identity && constraint.columns.size() == 1 &&
        EqualsIgnoreAsciiCase(constraint.columns[0], identity->name)) {
      return;
    }
    MakeUniqueIndex(database_, table_, constraint.name, constraint.columns);
  }

  void SeedIdentity() {
    const ColumnInfo* identity = table_.Identity();
    if (identity == nullptr) return;
    Prepared insert = database_.Prepare(
        "INSERT INTO " + table_.Schema() + "sqlite_sequence (name, seq) VALUES (?, ?)", false);
    const Value name = ToUtf8(table_.name);
    insert.Bind(1, name);
    insert.Bind(2, identity->seed - identity->increment);
    insert.Step(database_);
  }

  Database& database_;
  Catalog& catalog_;
  const CreateTableStatement& statement_;
  ObjectInfo table_;
  std::vector<std::pair<Text, Text>> checks_;
  std::vector<std::string> foreignKeys_;
};

void CheckDroppable(const Catalog& catalog, const ObjectInfo& table) {
  for (const auto& [name, other] : catalog.Objects()) {
    if (other->id == table.id && other->temporary == table.temporary) continue;
    for (const ConstraintInfo& constraint : other->constraints) {
      if (constraint.kind == ConstraintKind::ForeignKey &&
          EqualsIgnoreAsciiCase(constraint.parent, table.name)) {
        throw ServerFailure(3726, u"Could not drop object '" + table.name +
                                      u"' because it is referenced by a FOREIGN KEY constraint.");
      }
    }
  }
}

bool HasIndex(Database& database, const ObjectInfo& table, TextView index) {
  Prepared find = database.Prepare("SELECT 1 FROM " + table.Schema() +
                                       "sqlite_schema WHERE type = 'index' AND name = ?1 COLLATE "
                                       "NOCASE",
                                   false);
  const Value name = ToUtf8(table.name + u"." + Text(index));
  find.Bind(1, name);
  return find.Step(database);
}

void DropIndex(Database& database, Catalog& catalog, const DropStatement& statement) {
  for (const Text& name : statement.names) {
    SchemaChange change(database, catalog);
    const ObjectPtr table = RequireTable(catalog, statement.table);
    const std::string schema = table->Schema();
    if (!HasIndex(database, *table, name)) {
      if (statement.ifExists) continue;
      throw CannotDrop(u"index", statement.table + u"." + name);
    }
    for (const ConstraintInfo& constraint : table->constraints) {
      if (constraint.kind != ConstraintKind::UniqueIndex &&
          EqualsIgnoreAsciiCase(constraint.name, name)) {
        throw ServerFailure(3723, u"An explicit DROP INDEX is not allowed on index '" + name +
                                      u"'. It is being used for constraint enforcement.");
      }
    }
    database.Execute("DROP INDEX " + schema + IndexName(*table, name));
    database.Execute("DROP INDEX IF EXISTS " + schema + IndexName(*table, name + u" NULL"));
    catalog.RemoveConstraint(*table, name);
    change.Commit();
  }
}

}  // namespace

void CreateTable(Database& database, Catalog& catalog, const CreateTableStatement& statement) {
  TableMaker(database, catalog, statement).Make();
}

void CreateIndex(Database& database, Catalog& catalog, const CreateIndexStatement& statement) {
  SchemaChange change(database, catalog);
  const ObjectPtr table = catalog.Find(statement.table);
  if (!table || table->kind != ObjectKind::Table) throw CannotFind(statement.table);
  for (const Text& column : statement.columns) {
    if (!table->Find(column)) {
      throw ServerFailure(
          1911, u"Column name '" + column + u"' does not exist in the target table or view.");
    }
  }
  if (HasIndex(database, *table, statement.index)) {
    throw ServerFailure(1913, u"The operation failed because an index or statistics with name '" +
                                  statement.index + u"' already exists on table '" + table->name +
                                  u"'.");
  }
  try {
    if (statement.unique) {
      TableMaker::MakeUniqueIndex(database, *table, statement.index, statement.columns);
      ConstraintInfo constraint;
      constraint.kind = ConstraintKind::UniqueIndex;
      constraint.name = statement.index;
      constraint.columns = statement.columns;
      catalog.AddConstraint(*table, constraint);
    } else {
      std::string keys;
      for (size_t i = 0; i < statement.columns.size(); ++i) {
        if (i > 0) keys += ", ";
        keys += QuotedName(statement.columns[i]) + (statement.descending[i] ? " DESC" : "");
      }
      database.Execute("CREATE INDEX " + table->Schema() + IndexName(*table, statement.index) +
                       " ON " + QuotedName(table->name) + " (" + keys + ")");
    }
  } catch (const ConstraintViolation&) {
    throw ServerFailure(1505,
                        u"The CREATE UNIQUE INDEX statement terminated because a duplicate "
                        u"key was found for the object name 'dbo." +
                            table->name + u"' and the index name '" + statement.index + u"'.");
  }
  change.Commit();
}

void CreateView(Database& database, Catalog& catalog, const CreateViewStatement& statement,
                const std::vector<TypedValue>& literals) {
  SchemaChange change(database, catalog);
  RequireNew(catalog, statement.name);
  std::vector<int32_t> pinned;
  const Plan plan = BindSelect({catalog, literals, {}, {}, pinned}, *statement.query);
  ObjectInfo view;
  view.name = statement.name;
  view.kind = ObjectKind::View;
  view.definition = statement.definition;
  CheckColumnList(statement.columnNames, plan.columns.size(), view.name, 0);
  for (size_t i = 0; i < plan.columns.size(); ++i) {
    ColumnInfo column;
    column.name = statement.columnNames.empty() ? plan.columns[i].name : statement.columnNames[i];
    column.type = plan.columns[i].type;
    column.nullable = plan.columns[i].nullable;
    if (column.name.empty()) {
      throw ServerFailure(4511,
                          u"Create View or Function failed because no column name was "
                          u"specified for column " +
                              NumberText(static_cast<int64_t>(i + 1)) + u".");
    }
    if (view.Find(column.name)) {
      throw ServerFailure(4506,
                          u"Column names in each view or function must be unique. Column name '" +
                              column.name + u"' in view or function '" + view.name +
                              u"' is specified more than once.");
    }
    view.columns.push_back(std::move(column));
  }
  catalog.Add(view);
  change.Commit();
}

void CreateProcedure(Database& database, Catalog& catalog,
                     const CreateProcedureStatement& statement) {
  SchemaChange change(database, catalog);
  RequireNew(catalog, statement.name);
  ObjectInfo procedure;
  procedure.name = statement.name;
  procedure.kind = ObjectKind::Procedure;
  procedure.definition = statement.definition;
  catalog.Add(procedure);
  change.Commit();
}

void Drop(Database& database, Catalog& catalog, const DropStatement& statement) {
  if (statement.kind == ObjectKind::Index) return DropIndex(database, catalog, statement);
  static constexpr TextView kKinds[] = {u"table", u"view", u"procedure"};
  std::optional<DatabaseFailure> missing;  // the others go all the same
  for (const Text& name : statement.names) {
    SchemaChange change(database, catalog);
    const ObjectPtr object = catalog.Find(name);
    const Text kind(kKinds[static_cast<size_t>(statement.kind)]);
    if (!object) {
      if (statement.ifExists) continue;
      if (!missing) missing = CannotDrop(kind, name);
      continue;
    }
    if (object->kind != statement.kind) {
      const Text is(kKinds[static_cast<size_t>(object->kind)]);
      Text message = u"Cannot use DROP " + ToUpper(kind) + u" with '" + name + u"' because '";
      message.append(name).append(u"' is a ").append(is).append(u". Use DROP ");
      throw ServerFailure(3705, message.append(ToUpper(is)).append(u"."));
    }
    if (object->kind == ObjectKind::Table) {
      CheckDroppable(catalog, *object);
      database.Execute("DROP TABLE " + object->sqlName);
    }
    catalog.Remove(*object);
    change.Commit();
  }
  if (missing) throw *missing;
}

}  // namespace vellum250::database::embedded
