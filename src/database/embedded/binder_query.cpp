#include <algorithm>

#include "automation/locale.h"
#include "database/embedded/binder.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"
#include "database/embedded/parser.h"

namespace vellum250::database::embedded {
namespace {

constexpr size_t kMostColumns = 2000;  // of a SELECT, in SQLite

// One SELECT, bound but not yet put together: a UNION may still convert its columns.
struct BoundCore {
  bool distinct = false;
  std::vector<Typed> items;
  std::vector<Text> names;
  std::vector<int32_t> variables;
  std::string from;
  std::string where;
  std::string groupBy;
  std::string having;
  std::string orderBy;
  std::string limit;
  bool singleRow = false;

  std::string Sql(bool derived) const {
    std::string sql = distinct ? "SELECT DISTINCT " : "SELECT ";
    for (size_t i = 0; i < items.size(); ++i) {
      if (i > 0) sql += ", ";
      sql += Binder::Collated(items[i]);
      if (derived) sql += " AS c" + std::to_string(i + 1);
    }
    for (const auto& [word, part] : {std::pair{" FROM ", &from},
                                     {" WHERE ", &where},
                                     {" GROUP BY ", &groupBy},
                                     {" HAVING ", &having},
                                     {" ORDER BY ", &orderBy},
                                     {" LIMIT ", &limit}}) {
      if (!part->empty()) sql += word + *part;
    }
    return sql;
  }
};

}  // namespace

// Binds the parts of one query.
class QueryBinder {
 public:
  QueryBinder(Binder& binder, Scope* outer) : binder_(binder), outer_(outer) {}

  BoundQuery Bind(const Query& query, bool derived) {
    std::vector<BoundCore> cores;
    for (const SelectCore& core : query.cores) {
      cores.push_back(BindCore(core, query.cores.size() == 1 ? &query.orderBy : nullptr));
    }
    if (cores.size() > 1) UnifyColumns(cores, query.operators);
    BoundQuery bound;
    for (size_t i = 0; i < cores.size(); ++i) {
      if (i > 0) bound.sql += " " + ToUtf8(query.operators[i - 1]) + " ";
      // A LIMIT belongs to its own part, which SQLite takes only from a sub-query.
      const bool limited = cores.size() > 1 && !cores[i].limit.empty();
      bound.sql +=
          limited ? "SELECT * FROM (" + cores[i].Sql(derived) + ")" : cores[i].Sql(derived);
    }
    if (cores.size() > 1 && !query.orderBy.empty()) {
      bound.sql += " ORDER BY " + UnionOrder(query.orderBy, cores[0]);
    }
    for (size_t i = 0; i < cores[0].items.size(); ++i) {
      const Typed& item = cores[0].items[i];
      // An outer join gives NULL for any column.
      const SelectCore& core = query.cores[0];
      const bool single = cores.size() == 1 && core.from.size() == 1 && !core.from[0]->left;
      const bool nullable = cores.size() > 1 ||
                            !(item.neverNull || (single && item.column && !item.column->nullable));
      bound.columns.push_back({cores[0].names[i], item.type, item.column, nullable});
    }
    bound.variables = std::move(cores[0].variables);
    bound.singleRow = cores.size() == 1 && cores[0].singleRow;
    return bound;
  }

 private:
  BoundCore BindCore(const SelectCore& core, const std::vector<OrderItem>* orderBy) {
    Scope scope;
    scope.outer = outer_;
    BoundCore bound;
    bound.distinct = core.distinct;
    if (!core.into.empty() && !binder_.MayMakeTable()) {
      throw ServerFailure(156, u"Incorrect syntax near the keyword 'INTO'.", core.line);
    }
    bound.from = binder_.BindFrom(core.from, scope);
    if (core.where) bound.where = binder_.Condition(*core.where, scope);
    const bool grouped = BindGrouping(core, orderBy, scope, bound);
    scope.aggregatesAllowed = true;
    for (const SelectItem& item : core.items) BindItem(item, scope, bound);
    if (bound.items.size() > kMostColumns) {
      throw Unsupported(u"a SELECT of more than 2,000 columns", core.line);
    }
    for (const Typed& item : bound.items) {
      if (core.distinct && IsLongText(item.type)) throw NotDistinct(MessageName(item.type));
    }
    if (grouped) scope.grouping->failure = 8121;
    if (core.having) bound.having = binder_.Condition(*core.having, scope);
    if (grouped && core.groupBy.empty() && !HasAggregateItem(core)) {
      throw Unsupported(core.having ? u"HAVING without GROUP BY or an aggregate selected"
                                    : u"ORDER BY an aggregate without GROUP BY or one selected",
                        core.line);
    }
    bool one = grouped && core.groupBy.empty();
    if (core.top) {
      bound.limit = Top(*core.top);
      one = one || IsOne(*core.top);
    }
    bound.singleRow = one || core.from.empty();
    if (grouped) scope.grouping->failure = 8127;
    if (orderBy) bound.orderBy = Order(*orderBy, core, scope, bound);
    return bound;
  }

  static bool HasAggregateItem(const SelectCore& core) {
    return std::ranges::any_of(
        core.items, [](const SelectItem& item) { return item.value && HasAggregate(*item.value); });
  }

  // True when the rows are grouped, by GROUP BY or by an aggregate alone.
  bool BindGrouping(const SelectCore& core, const std::vector<OrderItem>* orderBy, Scope& scope,
                    BoundCore& bound) {
    bool grouped = !core.groupBy.empty() || core.having || HasAggregateItem(core);
    if (orderBy) {
      for (const OrderItem& item : *orderBy) grouped = grouped || HasAggregate(*item.value);
    }
    if (!grouped) return false;
    Grouping grouping;
    grouping.expressions = &core.groupBy;
    for (const ExpressionPtr& expression : core.groupBy) {
      if (expression->kind == ExpressionKind::Literal) {
        throw ServerFailure(164,
                            u"Each GROUP BY expression must contain at least one column that is "
                            u"not an outer reference.",
                            expression->line);
      }
      scope.noAggregates = &AggregateInGrouping;
      const Typed value = binder_.Bind(*expression, scope);
      scope.noAggregates = &AggregateInWhere;
      if (IsLongText(value.type)) throw NotComparable();
      if (!bound.groupBy.empty()) bound.groupBy += ", ";
      bound.groupBy += Binder::Collated(value);
      bool known = false;
      if (expression->kind == ExpressionKind::Column) {
        grouping.columns.push_back(binder_.FindColumn(*expression, scope, known));
      }
    }
    scope.grouping = std::move(grouping);
    return true;
  }

  void BindItem(const SelectItem& item, Scope& scope, BoundCore& bound) {
    if (!item.value) return BindStar(item, scope, bound);
    if (IsCondition(*item.value)) {
      throw ServerFailure(102, u"Incorrect syntax: a condition stands where a value is expected.",
                          item.value->line);
    }
    Typed value = binder_.Bind(*item.value, scope);
    Text name = item.alias;
    if (name.empty() && item.value->kind == ExpressionKind::Column) {
      name = ColumnName(*item.value, scope);
    }
    bound.items.push_back(std::move(value));
    bound.names.push_back(std::move(name));
    if (item.variable != kNoVariable) bound.variables.push_back(item.variable);
  }

  // A column is named as its table has it.
  Text ColumnName(const Expression& column, Scope& scope) {
    bool known = false;
    for (Scope* at = &scope; at != nullptr; at = at->outer) {
      if (const BoundColumn* found = binder_.FindColumn(column, *at, known)) return found->name;
    }
    return column.name;
  }

  void BindStar(const SelectItem& item, Scope& scope, BoundCore& bound) {
    bool found = false;
    for (const BoundSource& source : scope.sources) {
      if (!item.qualifier.empty() && !EqualsIgnoreAsciiCase(item.qualifier, source.alias)) continue;
      found = true;
      for (const BoundColumn& column : source.columns) {
        if (scope.grouping && std::ranges::count(scope.grouping->columns, &column) == 0) {
          throw NotGrouped(source.alias + u"." + column.name, scope.grouping->failure);
        }
        bound.items.push_back(column.Value());
        bound.names.push_back(column.name);
      }
    }
    if (found) return;
    if (item.qualifier.empty()) {
      throw ServerFailure(263, u"Must specify table to select from.");
    }
    throw ServerFailure(107, u"The column prefix '" + item.qualifier +
                                 u"' does not match with a table name or alias name used in the "
                                 u"query.");
  }

  // No column is in reach of it.
  std::string Top(const Expression& top) {
    Scope scope;
    Typed value = binder_.Bind(top, scope);
    if (value.isNull || ClassOf(value.type.type) != TypeClass::Whole) {
      throw AtLine(TopIsNoInteger(), top.line);
    }
    return top.kind == ExpressionKind::Literal ? value.sql : "v_top(" + value.sql + ")";
  }

  bool IsOne(const Expression& top) {
    return top.kind == ExpressionKind::Literal && binder_.LiteralOf(top).value == Value(int64_t{1});
  }

  // The position of the column that ORDER BY names by position or alias; 0 when it does not.
  size_t Position(const Expression& value, const BoundCore& bound) {
    if (value.kind == ExpressionKind::Literal) {
      const TypedValue literal = binder_.LiteralOf(value);
      const auto* position = std::get_if<int64_t>(&literal.value);
      if (position == nullptr || literal.type.type != SqlType::Int) {
        throw ServerFailure(408, u"A constant expression was encountered in the ORDER BY list.",
                            value.line);
      }
      if (*position < 1 || *position > static_cast<int64_t>(bound.items.size())) {
        throw ServerFailure(108,
                            u"The ORDER BY position number " + NumberText(*position) +
                                u" is out of range of the number of items in the select list.",
                            value.line);
      }
      return static_cast<size_t>(*position);
    }
    if (value.kind != ExpressionKind::Column || !value.qualifier.empty()) return 0;
    size_t position = 0;
    for (size_t i = 0; i < bound.names.size(); ++i) {
      if (!EqualsIgnoreAsciiCase(bound.names[i], value.name)) continue;
      if (position != 0) throw AtLine(AmbiguousColumn(value.name), value.line);
      position = i + 1;
    }
    return position;
  }

  std::string Order(const std::vector<OrderItem>& orderBy, const SelectCore& core, Scope& scope,
                    const BoundCore& bound) {
    std::string sql;
    for (const OrderItem& item : orderBy) {
      if (!sql.empty()) sql += ", ";
      TypeInfo type;
      if (const size_t position = Position(*item.value, bound)) {
        type = bound.items[position - 1].type;
        sql += std::to_string(position);
      } else {
        if (core.distinct) RequireSelected(*item.value, core);
        const Typed value = binder_.Bind(*item.value, scope);
        type = value.type;
        sql += Binder::Collated(value);
      }
      if (IsLongText(type)) throw NotComparable();
      if (item.descending) sql += " DESC";
    }
    return sql;
  }

  void RequireSelected(const Expression& value, const SelectCore& core) {
    for (const SelectItem& item : core.items) {
      if (!item.value || binder_.Same(*item.value, value)) return;
    }
    throw ServerFailure(145,
                        u"ORDER BY items must appear in the select list if SELECT DISTINCT is "
                        u"specified.",
                        value.line);
  }

  std::string UnionOrder(const std::vector<OrderItem>& orderBy, const BoundCore& first) {
    std::string sql;
    for (const OrderItem& item : orderBy) {
      const size_t position = Position(*item.value, first);
      if (position == 0) {
        throw ServerFailure(104,
                            u"ORDER BY items must appear in the select list if the statement "
                            u"contains a UNION, INTERSECT or EXCEPT operator.",
                            item.value->line);
      }
      if (!sql.empty()) sql += ", ";
      sql += std::to_string(position);
      if (item.descending) sql += " DESC";
    }
    return sql;
  }

  void UnifyColumns(std::vector<BoundCore>& cores, const std::vector<TextView>& operators) {
    for (const BoundCore& core : cores) {
      if (core.items.size() != cores[0].items.size()) {
        throw ServerFailure(205,
                            u"All queries combined using a UNION, INTERSECT or EXCEPT operator "
                            u"must have an equal number of expressions in their target lists.");
      }
      if (!core.variables.empty()) throw Unsupported(u"a variable set by a UNION");
    }
    for (size_t i = 0; i < cores[0].items.size(); ++i) {
      std::vector<Typed*> column;
      column.reserve(cores.size());
      for (BoundCore& core : cores) column.push_back(&core.items[i]);
      binder_.Unify(column);
      const bool compares =
          std::ranges::any_of(operators, [](TextView word) { return word != u"UNION ALL"; });
      const TypeInfo type = column[0]->type;
      if (compares && IsLongText(type)) throw NotInUnion(MessageName(type));
    }
  }

  Binder& binder_;
  Scope* outer_;
};

BoundQuery Binder::BindQuery(const Query& query, Scope* outer, bool derived) {
  if (constants_) {
    throw ServerFailure(1046,
                        u"Subqueries are not allowed in this context. Only scalar expressions are "
                        u"allowed.",
                        query.cores[0].line);
  }
  if (outer && (outer->insideAggregate > 0 || outer->noAggregates == &AggregateInGrouping)) {
    throw AtLine(outer->insideAggregate > 0 ? AggregateInAggregate() : AggregateInGrouping(),
                 query.cores[0].line);
  }
  return QueryBinder(*this, outer).Bind(query, derived);
}

namespace {

bool ReadsVariable(const Expression& e, int32_t variable) {
  if (e.kind == ExpressionKind::Variable && e.index == variable) return true;
  return std::ranges::any_of(e.arguments, [&](const ExpressionPtr& argument) {
    return ReadsVariable(*argument, variable);
  });
}

// The server sets variables column by column within a row; SQLite gives the row at once.
void RefuseReadingWhatARowSets(const SelectCore& core) {
  for (size_t i = 0; i < core.items.size(); ++i) {
    for (size_t j = 0; j < i; ++j) {
      if (core.items[i].value && ReadsVariable(*core.items[i].value, core.items[j].variable)) {
        throw Unsupported(u"a variable read by the SELECT that sets it", core.line);
      }
    }
  }
}

}  // namespace

Plan BindSelect(const BindInput& input, const Query& query) {
  Binder binder(input);
  BoundQuery bound = binder.BindQuery(query, nullptr, false);
  Plan plan;
  plan.sql = std::move(bound.sql);
  plan.slots = binder.TakeSlots();
  if (bound.variables.empty()) {
    plan.columns = std::move(bound.columns);
    return plan;
  }
  if (bound.variables.size() != bound.columns.size()) {
    throw ServerFailure(141,
                        u"A SELECT statement that assigns a value to a variable must not be "
                        u"combined with data-retrieval operations.",
                        query.cores[0].line);
  }
  plan.kind = Plan::Kind::Assign;
  RefuseReadingWhatARowSets(query.cores[0]);
  for (size_t i = 0; i < bound.variables.size(); ++i) {
    const int32_t variable = bound.variables[i];
    CheckImplicit(bound.columns[i].type, input.variables[static_cast<size_t>(variable)].type);
    plan.targets.push_back({variable, bound.columns[i].type});
  }
  for (const Slot& slot : plan.slots) {
    if (slot.kind != Slot::Kind::Variable) continue;
    for (const Target& target : plan.targets) {
      plan.readsTargets = plan.readsTargets || target.variable == slot.index;
    }
  }
  return plan;
}

CreateTableStatement BindSelectInto(const BindInput& input, const Query& query) {
  Binder binder(input);
  binder.AllowMakingTable();
  const BoundQuery bound = binder.BindQuery(query, nullptr, false);
  const SelectCore& core = query.cores[0];
  // Only the columns of a single table bring more than their types with them.
  const bool single = query.cores.size() == 1 && core.from.size() == 1 && !core.from[0]->left;
  CreateTableStatement table;
  table.table = core.into;
  for (const ResultColumn& column : bound.columns) {
    if (column.name.empty()) {
      throw ServerFailure(1038, u"An object or column name is missing or empty.", core.line);
    }
    ColumnDefinition& definition = table.columns.emplace_back();
    definition.name = column.name;
    definition.type = column.type;
    // A whole number's digits say nothing about a column.
    if (column.type.type != SqlType::Decimal) definition.type.precision = 0;
    definition.nullable = column.nullable;
    if (!single || column.column == nullptr) continue;
    const ColumnInfo& origin = *column.column;
    definition.identity = origin.identity && core.groupBy.empty() &&
                          std::ranges::count(bound.columns, &origin, &ResultColumn::column) == 1;
    definition.seed = origin.seed;
    definition.increment = origin.increment;
  }
  return table;
}

Plan BindValue(const BindInput& input, const Expression& value, std::optional<TypeInfo> type) {
  Binder binder(input);
  Scope scope;
  Typed bound = binder.Bind(value, scope);
  if (type) bound = binder.Convert(std::move(bound), *type);
  Plan plan;
  plan.sql = "SELECT " + bound.sql;
  plan.columns.push_back({Text(), bound.type});
  plan.slots = binder.TakeSlots();
  return plan;
}

Plan BindCondition(const BindInput& input, const Expression& condition) {
  Binder binder(input);
  Scope scope;
  Plan plan;
  plan.sql = "SELECT 1 WHERE " + binder.Condition(condition, scope);
  plan.slots = binder.TakeSlots();
  return plan;
}

std::string BindCheck(const Catalog& catalog, const ObjectInfo& table, TextView check) {
  const Scanned scanned = Scan(check);
  const ExpressionPtr condition = ParseExpression(check, scanned);
  std::vector<int32_t> pinned;
  const std::vector<TypedValue> none;
  const BindInput input{catalog, none, {}, {}, pinned};
  Binder binder(input);
  binder.UseConstants();
  binder.SwapViewLiterals(&scanned.literals);
  Scope scope;
  BoundSource source;
  source.alias = table.name;
  for (const ColumnInfo& column : table.columns) {
    source.columns.push_back({column.name, column.type, QuotedName(column.name)});
  }
  scope.sources.push_back(std::move(source));
  return binder.Condition(*condition, scope);
}

}  // namespace vellum250::database::embedded
