// Binding: names become columns with types, conversions become visible, and out comes SQLite text.
#pragma once

#include "database/embedded/messages.h"
#include "database/embedded/plan.h"

namespace vellum250::database::embedded {

// A bound value: SQLite text and its type.
struct Typed {
  std::string sql;
  std::string uncut;  // of a joined text that `sql` cuts at its type's length; else empty
  TypeInfo type;
  // What stands at the top of `sql`, for parentheses and collation.
  enum class Form : uint8_t { Atom, Column, Joined, Other };
  Form form = Form::Other;
  bool isNull = false;                 // the untyped NULL
  bool neverNull = false;              // isnull with a constant
  int32_t slot = -1;                   // `sql` is this parameter and nothing else
  const ColumnInfo* column = nullptr;  // of a table, as it stands
};

// A type as the functions of emitted SQL take it.
inline std::string CodeOf(TypeInfo type) { return std::to_string(Encode(type)); }

// A call, or anything else that needs no parentheses.
inline Typed Called(std::string sql, TypeInfo type) {
  Typed value;
  value.sql = std::move(sql);
  value.type = type;
  value.form = Typed::Form::Atom;
  return value;
}

struct BoundColumn {
  Text name;
  TypeInfo type;
  std::string sql;
  const ColumnInfo* column = nullptr;  // of a table

  Typed Value() const;
};

// A table, view or derived table in FROM, with the columns it shows.
struct BoundSource {
  Text alias;  // the name before the dot
  std::string sqlAlias;
  std::vector<BoundColumn> columns;
  ObjectPtr table;
};

// The columns that grouping leaves visible outside aggregates.
struct Grouping {
  const std::vector<ExpressionPtr>* expressions = nullptr;
  std::vector<const BoundColumn*> columns;
  int32_t failure = 8120;  // of a column that is none of them, by the clause that is bound
};

struct Scope {
  Scope* outer = nullptr;
  std::vector<BoundSource> sources;
  size_t firstVisible = 0;  // ON does not see what stands before a comma
  std::optional<Grouping> grouping;
  bool aggregatesAllowed = false;
  const Message* noAggregates = &AggregateInWhere;  // why not, by the clause that is bound
  int32_t insideAggregate = 0;
  int32_t columnsFound = 0;
};

struct BoundQuery {
  std::string sql;
  std::vector<ResultColumn> columns;
  std::vector<int32_t> variables;  // of SELECT @v = ...
  bool singleRow = false;          // never more than one row
};

class Binder {
 public:
  explicit Binder(const BindInput& input) : input_(input) {}

  std::vector<Slot> TakeSlots() { return std::move(slots_); }

  // binder_query.cpp
  // `derived` names the columns c1, c2 ... for an outer query.
  BoundQuery BindQuery(const Query& query, Scope* outer, bool derived);
  // binder_from.cpp
  // The text of a FROM clause without the word; its sources are added to the scope.
  std::string BindFrom(const std::vector<SourcePtr>& from, Scope& scope);
  BoundSource TableSource(const ObjectPtr& table, TextView alias);
  ObjectPtr FindTable(TextView name, int32_t line) const;

  // binder_expression.cpp
  Typed Bind(const Expression& expression, Scope& scope);
  // binder_condition.cpp
  std::string Condition(const Expression& condition, Scope& scope);
  // As an operand: in parentheses when it needs them.
  static std::string Operand(const Typed& value);
  // A text that carries the collation; others as they are.
  static std::string Collated(const Typed& value);
  Typed Convert(Typed value, TypeInfo to);  // as CONVERT without style
  // A text that may be no value of `to` fails in the rows that use it, not before.
  Typed ConvertWhenUsed(Typed value, TypeInfo to);
  Typed Assign(Typed value, const ColumnInfo& column, TextView table);
  // A text that may be longer than its type says, cut to that.
  static Typed Cut(Typed text);
  Typed SlotValue(Slot slot, TypeInfo type);
  std::string Comparison(Typed left, Operation operation, Typed right);
  // Whether two trees mean the same; pins the literals that were compared.
  bool Same(const Expression& left, const Expression& right);
  // Constants instead of parameters, for CHECK.
  void UseConstants() { constants_ = true; }
  // For SELECT ... INTO: literals show their lengths, as the table will keep them.
  void AllowMakingTable() {
    mayMakeTable_ = true;
    exactLengths_ = true;
  }
  bool MayMakeTable() const { return mayMakeTable_; }
  // Literals come from a view's or check's own text; nullptr for the batch's. Gives what was set.
  const std::vector<TypedValue>* SwapViewLiterals(const std::vector<TypedValue>* literals) {
    return std::exchange(viewLiterals_, literals);
  }

  const BindInput& Input() const { return input_; }

 private:
  friend class QueryBinder;

  // binder_expression.cpp
  Typed BindLiteral(const TypedValue& literal, int32_t index);
  Typed BindVariable(const Expression& expression);
  Typed BindSystemVariable(const Expression& expression);
  Typed BindColumn(const Expression& expression, Scope& scope);
  const BoundColumn* FindColumn(const Expression& expression, Scope& scope, bool& qualifierKnown);
  Typed BindUnary(const Expression& expression, Scope& scope);
  Typed BindBinary(const Expression& expression, Scope& scope);
  Typed BindCast(const Expression& expression, Scope& scope);
  Typed BindCase(const Expression& expression, Scope& scope);
  BoundQuery BindColumnQuery(const Expression& expression, Scope& scope);  // 116
  Typed BindSubquery(const Expression& expression, Scope& scope);
  // The values converted to the one type they meet in.
  TypeInfo Unify(const std::vector<Typed*>& values);
  std::string In(const Expression& expression, Scope& scope);
  std::string LikeCondition(const Expression& expression, Scope& scope);

  // binder_functions.cpp
  Typed BindCall(const Expression& expression, Scope& scope);
  Typed BindRuled(const Expression& expression, Scope& scope);
  Typed BindAggregate(const Expression& expression, Scope& scope);
  Typed BindIsNull(const Expression& expression, Scope& scope);
  Typed BindCoalesce(const Expression& expression, Scope& scope);
  Typed BindNullIf(const Expression& expression, Scope& scope);
  Typed BindDatePart(const Expression& expression, Scope& scope);
  Typed BindObjectId(const Expression& expression, Scope& scope);
  Typed BindObjectProperty(const Expression& expression, Scope& scope);

  TypedValue LiteralOf(const Expression& expression);  // pins it
  void Pin(int32_t literal);

  const BindInput& input_;
  std::vector<Slot> slots_;
  std::vector<ObjectPtr> tables_;  // bound values point at their columns
  int32_t aliases_ = 0;
  int32_t columnsFound_ = 0;  // in all scopes
  int32_t views_ = 0;         // depth of views in views
  bool constants_ = false;
  // Literals of a view's text, instead of the batch's.
  const std::vector<TypedValue>* viewLiterals_ = nullptr;
  bool exactLengths_ = false;
  bool mayMakeTable_ = false;
};

bool IsAggregate(TextView function);
// Whether an aggregate stands in it, outside sub-queries.
bool HasAggregate(const Expression& expression);

}  // namespace vellum250::database::embedded
