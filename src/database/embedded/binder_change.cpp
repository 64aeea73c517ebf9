// INSERT, UPDATE and DELETE.
#include <algorithm>

#include "automation/locale.h"
#include "database/embedded/binder.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"
#include "database/embedded/parser.h"

namespace vellum250::database::embedded {
namespace {

ObjectPtr TableToChange(const Binder& binder, TextView name) {
  ObjectPtr table = binder.FindTable(name, 0);
  if (table->kind == ObjectKind::View) throw Unsupported(u"changing rows through a view");
  return table;
}

const ColumnInfo& RequireColumn(const ObjectInfo& table, TextView column, int32_t line = 0) {
  const ColumnInfo* info = table.Find(column);
  if (info == nullptr) throw AtLine(InvalidColumn(column), line);
  return *info;
}

DatabaseFailure NamedTwice(const Text& column, int32_t line) {
  return ServerFailure(264,
                       u"The column name '" + column +
                           u"' is specified more than once in the SET clause or column list of an "
                           u"INSERT.",
                       line);
}

Text FullName(const ObjectInfo& table) { return u"dbo." + table.name; }

std::string DefaultOf(Binder& binder, const ColumnInfo& column, const ObjectInfo& table) {
  if (column.defaultText.empty()) return "NULL";
  const Scanned scanned = Scan(column.defaultText);
  const ExpressionPtr expression = ParseExpression(column.defaultText, scanned);
  const auto* outer = binder.SwapViewLiterals(&scanned.literals);
  Scope scope;
  std::string sql = binder.Assign(binder.Bind(*expression, scope), column, FullName(table)).sql;
  binder.SwapViewLiterals(outer);
  return sql;
}

class InsertBinder {
 public:
  // `query` instead of rows, or nullptr.
  InsertBinder(const BindInput& input, const InsertStatement& insert, const Query* query)
      : binder_(input),
        insert_(insert),
        query_(query),
        table_(TableToChange(binder_, insert.table)) {}

  Plan Bind() {
    if (query_ && !query_->cores[0].into.empty()) binder_.AllowMakingTable();
    ChooseColumns();
    Plan plan;
    plan.kind = Plan::Kind::Insert;
    plan.table = table_;
    plan.givesIdentity =
        std::ranges::any_of(given_, [](const ColumnInfo* c) { return c->identity; });
    const std::string source = query_ ? FromQuery() : FromRows();
    plan.sql = "INSERT INTO " + table_->sqlName;
    if (given_.empty() && filled_.empty()) {
      plan.sql += " DEFAULT VALUES";
    } else {
      const auto name = [](const ColumnInfo& column) { return QuotedName(column.name); };
      plan.sql += " (" + List([&](size_t i) { return name(*given_[i]); }, name) + ") " + source;
    }
    plan.slots = binder_.TakeSlots();
    return plan;
  }

 private:
  // The columns that the statement gives values for, and those that their defaults fill.
  void ChooseColumns() {
    if (insert_.columns.empty() && !insert_.defaultValues) {
      for (const ColumnInfo& column : table_->columns) {
        if (!column.identity) given_.push_back(&column);
      }
    }
    for (const Text& name : insert_.columns) {
      const ColumnInfo& column = RequireColumn(*table_, name);
      if (std::ranges::count(given_, &column) > 0) {
        throw NamedTwice(name, 0);
      }
      given_.push_back(&column);
    }
    for (const ColumnInfo& column : table_->columns) {
      if (std::ranges::count(given_, &column) > 0) continue;
      const bool counted = column.identity && column.increment != 1;
      if (counted || (!column.identity && !column.defaultText.empty())) filled_.push_back(&column);
    }
  }

  // Raises when a row has another number of values than columns.
  void CheckCount(size_t values) const {
    if (values == given_.size()) return;
    if (insert_.columns.empty() && values == table_->columns.size()) {
      throw ServerFailure(8101, u"An explicit value for the identity column in table '" +
                                    table_->name +
                                    u"' can only be specified when a column list is used and "
                                    u"IDENTITY_INSERT is ON.");
    }
    if (insert_.columns.empty()) {
      throw ServerFailure(213,
                          u"Column name or number of supplied values does not match table "
                          u"definition.");
    }
    const bool few = values < given_.size();
    const Text what = few ? u"more columns in the INSERT statement than values specified in the "
                          : u"fewer columns in the INSERT statement than values specified in the ";
    const Text verb = query_ ? u"SELECT list. The number of SELECT values"
                             : u"VALUES clause. The number of values in the VALUES clause";
    throw ServerFailure(query_ ? (few ? 120 : 121) : (few ? 109 : 110),
                        u"There are " + what + verb +
                            u" must match the number of columns specified in the INSERT "
                            u"statement.");
  }

  // One text for each given column, then one for each that is filled.
  template <typename Given, typename Filled>
  std::string List(Given given, Filled filled) {
    std::string sql;
    for (size_t i = 0; i < given_.size() + filled_.size(); ++i) {
      if (i > 0) sql += ", ";
      sql += i < given_.size() ? given(i) : filled(*filled_[i - given_.size()]);
    }
    return sql;
  }

  template <typename Given>
  std::string Values(Given given) {
    return List(given, [&](const ColumnInfo& column) { return Default(column); });
  }

  std::string FromRows() {
    Scope scope;
    if (insert_.defaultValues) return "VALUES (" + Values([](size_t) { return ""; }) + ")";
    std::string sql;
    for (const auto& row : insert_.rows) {
      if (row.size() != insert_.rows[0].size()) {
        throw ServerFailure(10709,
                            u"The number of columns for each row in a table value constructor must "
                            u"be the same.");
      }
      CheckCount(row.size());
      sql += sql.empty() ? "VALUES (" : ", (";
      sql += Values([&](size_t i) {
        return row[i] ? Stored(binder_.Bind(*row[i], scope), *given_[i]) : Default(*given_[i]);
      });
      sql += ")";
    }
    return sql;
  }

  std::string FromQuery() {
    const BoundQuery query = binder_.BindQuery(*query_, nullptr, true);
    CheckCount(query.columns.size());
    const std::string values = Values([&](size_t i) {
      Typed value = Called("c" + std::to_string(i + 1), query.columns[i].type);
      value.form = Typed::Form::Column;
      return Stored(std::move(value), *given_[i]);
    });
    return "SELECT " + values + " FROM (" + query.sql + ") WHERE true";
  }

  std::string Stored(Typed value, const ColumnInfo& column) {
    return binder_.Assign(std::move(value), column, FullName(*table_)).sql;
  }

  std::string Default(const ColumnInfo& column) {
    if (column.identity) {
      return "v_identity(" + std::to_string(table_->temporary ? 1 : 0) + ", '" +
             ToUtf8(ReplaceAll(table_->name, u"'", u"''")) + "', " +
             std::to_string(column.increment) + ")";
    }
    return DefaultOf(binder_, column, *table_);
  }

  Binder binder_;
  const InsertStatement& insert_;
  const Query* query_;
  ObjectPtr table_;
  std::vector<const ColumnInfo*> given_;
  std::vector<const ColumnInfo*> filled_;
};

// The source that a statement changes: its name may be an alias of FROM.
const BoundSource* TargetSource(const Scope& scope, TextView name, int32_t line) {
  const BoundSource* found = nullptr;
  for (const BoundSource& source : scope.sources) {
    if (EqualsIgnoreAsciiCase(source.alias, name)) return &source;
    if (source.table && EqualsIgnoreAsciiCase(source.table->name, name)) {
      if (found) {
        throw ServerFailure(8154, u"The table '" + Text(name) + u"' is ambiguous.", line);
      }
      found = &source;
    }
  }
  return found;
}

// What UPDATE and DELETE share while they are bound.
struct Change {
  Binder binder;
  Scope scope;
  std::string from;  // with the changed table in it
  std::string where;
  std::string sqlAlias;
  Plan plan;

  // When FROM does not name the changed table, it is joined to the rest.
  Change(const BindInput& input, const ChangedRows& rows, Plan::Kind kind) : binder(input) {
    const int32_t line = rows.from.empty() ? 0 : rows.from[0]->line;
    from = binder.BindFrom(rows.from, scope);
    const BoundSource* source = rows.from.empty() ? nullptr : TargetSource(scope, rows.table, line);
    if (source == nullptr) {
      const ObjectPtr table = TableToChange(binder, rows.table);
      BoundSource added = binder.TableSource(table, rows.table);
      from += (from.empty() ? "" : ", ") + table->sqlName + " AS " + added.sqlAlias;
      scope.sources.push_back(std::move(added));
      source = &scope.sources.back();
    }
    if (!source->table || source->table->kind != ObjectKind::Table || source->table->id == 0) {
      throw Unsupported(u"changing rows of anything but a table", line);
    }
    plan.kind = kind;
    plan.table = source->table;
    sqlAlias = source->sqlAlias;
  }

  void BindWhere(const ChangedRows& rows) {
    if (rows.where) where = " WHERE " + binder.Condition(*rows.where, scope);
  }

  Plan Finish(std::string sql) {
    plan.sql = std::move(sql);
    plan.slots = binder.TakeSlots();
    return std::move(plan);
  }
};

}  // namespace

Plan BindInsert(const BindInput& input, const InsertStatement& insert) {
  return InsertBinder(input, insert, insert.query.get()).Bind();
}

Plan BindInsertInto(const BindInput& input, const CreateTableStatement& table, const Query& query) {
  InsertStatement insert;
  insert.table = table.table;
  for (const ColumnDefinition& column : table.columns) insert.columns.push_back(column.name);
  return InsertBinder(input, insert, &query).Bind();
}

Plan BindUpdate(const BindInput& input, const UpdateStatement& update) {
  Change change(input, update, Plan::Kind::Update);
  const ObjectInfo& table = *change.plan.table;
  const bool joined = !update.from.empty();
  // With FROM the new values come from a sub-query that also tells the row.
  std::string set;
  std::string values;
  std::vector<const ColumnInfo*> columns;
  for (const Assignment& assignment : update.assignments) {
    const ColumnInfo& column = RequireColumn(table, assignment.column, assignment.line);
    if (column.identity) {
      throw ServerFailure(8102, u"Cannot update identity column '" + column.name + u"'.",
                          assignment.line);
    }
    if (std::ranges::count(columns, &column) > 0) throw NamedTwice(column.name, assignment.line);
    columns.push_back(&column);
    if (assignment.value && HasAggregate(*assignment.value)) {
      throw ServerFailure(157,
                          u"An aggregate may not appear in the set list of an UPDATE statement.",
                          assignment.line);
    }
    try {
      Binder& binder = change.binder;
      const std::string value =
          assignment.value
              ? binder.Assign(binder.Bind(*assignment.value, change.scope), column, FullName(table))
                    .sql
              : DefaultOf(binder, column, table);
      const std::string name = "v" + std::to_string(columns.size());
      if (!set.empty()) set += ", ";
      set += QuotedName(column.name) + " = " + (joined ? "s." + name : value);
      values.append(", ").append(value).append(" AS ").append(name);
    } catch (const DatabaseFailure& failure) {
      throw AtLine(failure, assignment.line);
    }
  }
  change.BindWhere(update);
  if (!joined) return change.Finish("UPDATE " + change.from + " SET " + set + change.where);
  return change.Finish("UPDATE " + table.sqlName + " AS u SET " + set + " FROM (SELECT " +
                       change.sqlAlias + ".rowid AS r" + values + " FROM " + change.from +
                       change.where + ") AS s WHERE u.rowid = s.r");
}

Plan BindDelete(const BindInput& input, const DeleteStatement& statement) {
  Change change(input, statement, Plan::Kind::Delete);
  change.BindWhere(statement);
  if (statement.from.empty()) return change.Finish("DELETE FROM " + change.from + change.where);
  return change.Finish("DELETE FROM " + change.plan.table->sqlName + " WHERE rowid IN (SELECT " +
                       change.sqlAlias + ".rowid FROM " + change.from + change.where + ")");
}

}  // namespace vellum250::database::embedded
