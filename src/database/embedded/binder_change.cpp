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
    plan.sql = "INSERT INTO " + table_->sqlName + " (";
    std::string separator;
    for (const ColumnInfo* column : given_) {
      plan.sql += separator + QuotedName(column->name);
      separator = ", ";
    }
    for (const ColumnInfo* column : filled_) {
      plan.sql += separator + QuotedName(column->name);
      separator = ", ";
    }
    plan.sql += ") " + source;
    if (given_.empty() && filled_.empty()) {
      plan.sql = "INSERT INTO " + table_->sqlName + " DEFAULT VALUES";
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
        throw ServerFailure(264, u"The column name '" + name +
                                     u"' is specified more than once in the SET clause or column "
                                     u"list of an INSERT.");
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

  std::string FromRows() {
    std::string sql = "VALUES ";
    const size_t rows = insert_.defaultValues ? 1 : insert_.rows.size();
    Scope scope;
    for (size_t i = 0; i < rows; ++i) {
      if (i > 0) sql += ", ";
      sql += "(";
      std::string separator;
      if (!insert_.defaultValues) {
        if (insert_.rows[i].size() != insert_.rows[0].size()) {
          throw ServerFailure(10709,
                              u"The number of columns for each row in a table value constructor "
                              u"must be the same.");
        }
        CheckCount(insert_.rows[i].size());
        for (size_t j = 0; j < given_.size(); ++j) {
          const Expression* value = insert_.rows[i][j].get();
          sql += separator +
                 (value ? Stored(binder_.Bind(*value, scope), *given_[j]) : Default(*given_[j]));
          separator = ", ";
        }
      }
      for (const ColumnInfo* column : filled_) {
        sql += separator + Default(*column);
        separator = ", ";
      }
      sql += ")";
    }
    return sql;
  }

  std::string FromQuery() {
    const BoundQuery query = binder_.BindQuery(*query_, nullptr, true);
    CheckCount(query.columns.size());
    std::string sql = "SELECT ";
    std::string separator;
    for (size_t i = 0; i < given_.size(); ++i) {
      Typed value;
      value.sql = "c" + std::to_string(i + 1);
      value.type = query.columns[i].type;
      value.form = Typed::Form::Column;
      sql += separator + Stored(std::move(value), *given_[i]);
      separator = ", ";
    }
    for (const ColumnInfo* column : filled_) {
      sql += separator + Default(*column);
      separator = ", ";
    }
    return sql + " FROM (" + query.sql + ") WHERE true";
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

struct JoinedTarget {
  std::string from;
  ObjectPtr table;
  std::string sqlAlias;
};

// FROM with the changed table in it; when it is not there, it is joined to the rest.
JoinedTarget BindTarget(Binder& binder, const std::vector<SourcePtr>& from, TextView name,
                        Scope& scope) {
  JoinedTarget target;
  target.from = binder.BindFrom(from, scope);
  const BoundSource* source = TargetSource(scope, name, from[0]->line);
  if (source == nullptr) {
    const ObjectPtr table = TableToChange(binder, name);
    BoundSource added = binder.TableSource(table, name);
    target.from += ", " + table->sqlName + " AS " + added.sqlAlias;
    scope.sources.push_back(std::move(added));
    source = &scope.sources.back();
  }
  if (!source->table || source->table->kind != ObjectKind::Table || source->table->id == 0) {
    throw Unsupported(u"changing rows of anything but a table", from[0]->line);
  }
  target.table = source->table;
  target.sqlAlias = source->sqlAlias;
  return target;
}

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
  Binder binder(input);
  Scope scope;
  Plan plan;
  plan.kind = Plan::Kind::Update;
  JoinedTarget target;
  if (update.from.empty()) {
    target.table = TableToChange(binder, update.table);
    BoundSource source = binder.TableSource(target.table, update.table);
    target.sqlAlias = source.sqlAlias;
    scope.sources.push_back(std::move(source));
  } else {
    target = BindTarget(binder, update.from, update.table, scope);
  }
  plan.table = target.table;
  // With FROM the new values come from a sub-query that also tells the row.
  std::string set;
  std::string values;
  std::vector<const ColumnInfo*> columns;
  for (const Assignment& assignment : update.assignments) {
    const ColumnInfo& column = RequireColumn(*plan.table, assignment.column, assignment.line);
    if (column.identity) {
      throw ServerFailure(8102, u"Cannot update identity column '" + column.name + u"'.",
                          assignment.line);
    }
    if (std::ranges::count(columns, &column) > 0) {
      throw ServerFailure(264,
                          u"The column name '" + column.name +
                              u"' is specified more than once in the SET clause or column list of "
                              u"an INSERT.",
                          assignment.line);
    }
    columns.push_back(&column);
    try {
      const std::string value =
          assignment.value
              ? binder.Assign(binder.Bind(*assignment.value, scope), column, FullName(*plan.table))
                    .sql
              : DefaultOf(binder, column, *plan.table);
      const std::string name = "v" + std::to_string(columns.size());
      if (!set.empty()) set += ", ";
      set += QuotedName(column.name) + " = " + (update.from.empty() ? value : "s." + name);
      values.append(", ").append(value).append(" AS ").append(name);
    } catch (const DatabaseFailure& failure) {
      throw AtLine(failure, assignment.line);
    }
  }
  const std::string where = update.where ? " WHERE " + binder.Condition(*update.where, scope) : "";
  if (update.from.empty()) {
    plan.sql = "UPDATE " + plan.table->sqlName + " AS " + target.sqlAlias + " SET " + set + where;
  } else {
    plan.sql = "UPDATE " + plan.table->sqlName + " AS u SET " + set + " FROM (SELECT " +
               target.sqlAlias + ".rowid AS r" + values + " FROM " + target.from + where +
               ") AS s WHERE u.rowid = s.r";
  }
  plan.slots = binder.TakeSlots();
  return plan;
}

Plan BindDelete(const BindInput& input, const DeleteStatement& statement) {
  Binder binder(input);
  Scope scope;
  Plan plan;
  plan.kind = Plan::Kind::Delete;
  JoinedTarget target;
  if (statement.from.empty()) {
    target.table = TableToChange(binder, statement.table);
    BoundSource source = binder.TableSource(target.table, statement.table);
    target.sqlAlias = source.sqlAlias;
    scope.sources.push_back(std::move(source));
  } else {
    target = BindTarget(binder, statement.from, statement.table, scope);
  }
  plan.table = target.table;
  const std::string where =
      statement.where ? " WHERE " + binder.Condition(*statement.where, scope) : "";
  if (statement.from.empty()) {
    plan.sql = "DELETE FROM " + plan.table->sqlName + " AS " + target.sqlAlias + where;
  } else {
    plan.sql = "DELETE FROM " + plan.table->sqlName + " WHERE rowid IN (SELECT " + target.sqlAlias +
               ".rowid FROM " + target.from + where + ")";
  }
  plan.slots = binder.TakeSlots();
  return plan;
}

}  // namespace vellum250::database::embedded
