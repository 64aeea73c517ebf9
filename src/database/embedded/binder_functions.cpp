#include <algorithm>

#include "automation/locale.h"
#include "database/embedded/binder.h"
#include "database/embedded/convert.h"
#include "database/embedded/dates.h"
#include "database/embedded/decimals.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"

namespace vellum250::database::embedded {
namespace {

enum class Result : uint8_t {
  Int,
  Length,  // bigint for max
  Char,
  NChar,
  VarChar,  // nvarchar when an argument is national, max when one is
  Cut,      // the same, and the function does not keep to its length
  NVarChar,
  Float,
  LikeFirst,  // a text as the first one
  Numeric,    // NumericResult
  Guid,
};

// The function v_NAME called with its arguments converted: T a value as text, but not one of the
// types text and ntext; A any text; O a text only, no number or date; I int; F float; * as it is.
struct Rule {
  TextView name;
  size_t least;
  std::string_view arguments;
  Result result;
  bool code = false;  // the first argument's type follows the arguments
};
constexpr Rule kRules[] = {{u"len", 1, "T", Result::Length},
                           {u"datalength", 1, "*", Result::Length, true},
                           {u"ascii", 1, "T", Result::Int},
                           {u"unicode", 1, "T", Result::Int},
                           {u"left", 2, "TI", Result::LikeFirst},
                           {u"right", 2, "TI", Result::LikeFirst},
                           {u"substring", 3, "OII", Result::LikeFirst},
                           {u"charindex", 2, "TAI", Result::Length},
                           {u"patindex", 2, "TA", Result::Int},
                           {u"replace", 3, "TTT", Result::Cut},
                           {u"stuff", 4, "TIIT", Result::Cut},
                           {u"ltrim", 1, "T", Result::LikeFirst},
                           {u"rtrim", 1, "T", Result::LikeFirst},
                           {u"upper", 1, "T", Result::LikeFirst},
                           {u"lower", 1, "T", Result::LikeFirst},
                           {u"reverse", 1, "T", Result::LikeFirst},
                           {u"str", 1, "FII", Result::VarChar},
                           {u"space", 1, "I", Result::VarChar},
                           {u"replicate", 2, "TI", Result::VarChar, true},
                           {u"char", 1, "I", Result::Char},
                           {u"nchar", 1, "I", Result::NChar},
                           {u"quotename", 1, "TT", Result::NVarChar},
                           {u"isdate", 1, "T", Result::Int},
                           {u"isnumeric", 1, "*", Result::Int, true},
                           {u"abs", 1, "*", Result::Numeric, true},
                           {u"sign", 1, "*", Result::Numeric, true},
                           {u"floor", 1, "*", Result::Numeric, true},
                           {u"ceiling", 1, "*", Result::Numeric, true},
                           {u"round", 2, "*II", Result::Numeric, true},
                           {u"power", 2, "*F", Result::Numeric, true},
                           {u"sqrt", 1, "F", Result::Float},
                           {u"newid", 0, "", Result::Guid}};

DatabaseFailure WrongArguments(const Expression& e, size_t least, size_t most) {
  const Text function = u"The " + ToLower(e.name) + u" function requires " + NumberText(least);
  if (least == most) return ServerFailure(174, function + u" argument(s).", e.line);
  return ServerFailure(189, function + u" to " + NumberText(most) + u" arguments.", e.line);
}

DatabaseFailure WrongArguments(const Expression& e, size_t count) {
  return WrongArguments(e, count, count);
}

// The longest text that some are made into: max when one of them is, national likewise.
TypeInfo TextResult(const std::vector<Typed>& arguments) {
  const bool national = std::ranges::any_of(arguments, IsNational, &Typed::type);
  TypeInfo type = national ? NVarChar(4000) : VarChar(8000);
  for (const Typed& argument : arguments) {
    if (argument.type.length == -1) type.length = -1;
  }
  return type;
}

TypeInfo ResultOf(const Rule& rule, const std::vector<Typed>& arguments) {
  switch (rule.result) {
    case Result::Int:
      return kInt;
    case Result::Length: {
      const Typed& measured = arguments[rule.name == u"charindex" ? 1 : 0];
      return measured.type.length == -1 && !IsLongText(measured.type) ? kBigInt : kInt;
    }
    case Result::Float:
      return kFloat;
    case Result::Char:
      return {SqlType::Char, 1, 0, 0};
    case Result::NChar:
      return {SqlType::NChar, 1, 0, 0};
    case Result::NVarChar:
      return NVarChar(4000);
    case Result::VarChar:
    case Result::Cut:
      return TextResult(arguments);
    case Result::Numeric:
      return NumericResult(rule.name, arguments[0].type);
    case Result::Guid:
      return {SqlType::UniqueIdentifier, 0, 0, 0};
    default:
      break;
  }
  const TypeInfo first = arguments[0].type;
  return IsNational(first) ? NVarChar(first.length) : VarChar(first.length);
}

std::string CallOf(const std::string& function, const std::vector<Typed>& arguments) {
  std::string sql = function + "(";
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (i > 0) sql += ", ";
    sql += arguments[i].sql;
  }
  return sql;
}

constexpr TextView kAggregates[] = {u"avg",   u"count",  u"count_big", u"max", u"min",
                                    u"stdev", u"stdevp", u"sum",       u"var", u"varp"};

}  // namespace

bool IsAggregate(TextView function) {
  return std::ranges::any_of(kAggregates,
                             [&](TextView name) { return EqualsIgnoreAsciiCase(name, function); });
}

bool HasAggregate(const Expression& e) {
  if (e.kind == ExpressionKind::Call && IsAggregate(e.name)) return true;
  return std::ranges::any_of(e.arguments, [](const ExpressionPtr& a) { return HasAggregate(*a); });
}

Typed Binder::BindCall(const Expression& e, Scope& scope) {
  using Member = Typed (Binder::*)(const Expression&, Scope&);
  static constexpr std::pair<TextView, Member> kOwn[] = {
      {u"isnull", &Binder::BindIsNull},
      {u"coalesce", &Binder::BindCoalesce},
      {u"nullif", &Binder::BindNullIf},
      {u"dateadd", &Binder::BindDatePart},
      {u"datediff", &Binder::BindDatePart},
      {u"datepart", &Binder::BindDatePart},
      {u"datename", &Binder::BindDatePart},
      {u"day", &Binder::BindDatePart},
      {u"month", &Binder::BindDatePart},
      {u"year", &Binder::BindDatePart},
      {u"object_id", &Binder::BindObjectId},
      {u"ident_current", &Binder::BindObjectId},
      {u"objectproperty", &Binder::BindObjectProperty}};
  struct SystemFunction {
    TextView name;
    SystemValue value;
    TypeInfo type;
  };
  static constexpr SystemFunction kSystem[] = {
      {u"getdate", SystemValue::Now, kDateTime},
      {u"current_timestamp", SystemValue::Now, kDateTime},
      {u"scope_identity", SystemValue::ScopeIdentity, DecimalType(38, 0)}};
  struct TextFunction {
    TextView name;
    const char* value;
  };
  static constexpr TextFunction kTexts[] = {{u"db_name", "vellum250"}, {u"user_name", "dbo"},
                                            {u"suser_sname", "dbo"},   {u"current_user", "dbo"},
                                            {u"user", "dbo"},          {u"host_name", "localhost"}};
  if (IsAggregate(e.name)) return BindAggregate(e, scope);
  const auto named = [&](const auto& entry) { return EqualsIgnoreAsciiCase(entry.name, e.name); };
  for (const auto& [name, member] : kOwn) {
    if (EqualsIgnoreAsciiCase(name, e.name)) return (this->*member)(e, scope);
  }
  if (const auto* system = std::ranges::find_if(kSystem, named); system != std::end(kSystem)) {
    if (!e.arguments.empty()) throw WrongArguments(e, 0);
    Slot slot;
    slot.kind = Slot::Kind::System;
    slot.index = static_cast<int32_t>(system->value);
    return SlotValue(std::move(slot), system->type);
  }
  if (const auto* text = std::ranges::find_if(kTexts, named);
      text != std::end(kTexts) && e.arguments.empty()) {
    Slot slot;
    slot.kind = Slot::Kind::Constant;
    slot.constant = std::string(text->value);
    return SlotValue(std::move(slot), NVarChar(128));
  }
  return BindRuled(e, scope);
}

Typed Binder::BindRuled(const Expression& e, Scope& scope) {
  const auto* found = std::ranges::find_if(
      kRules, [&](const Rule& entry) { return EqualsIgnoreAsciiCase(entry.name, e.name); });
  if (found == std::end(kRules)) throw Unsupported(u"function " + e.name, e.line);
  const Rule& rule = *found;
  std::vector<Typed> arguments;
  for (const ExpressionPtr& argument : e.arguments) arguments.push_back(Bind(*argument, scope));
  if (arguments.size() < rule.least || arguments.size() > rule.arguments.size()) {
    throw WrongArguments(e, rule.least, rule.arguments.size());
  }
  for (size_t i = 0; i < arguments.size(); ++i) {
    Typed& argument = arguments[i];
    const char wanted = rule.arguments[i];
    if ((wanted == 'T' && IsLongText(argument.type)) || (wanted == 'O' && !IsText(argument.type))) {
      throw InvalidArgumentType(argument.isNull ? u"NULL" : MessageName(argument.type),
                                static_cast<int32_t>(i + 1), rule.name);
    }
    if (wanted == 'I') {
      argument = Convert(std::move(argument), kInt);
    } else if (wanted == 'F') {
      argument = Convert(std::move(argument), kFloat);
    } else if (wanted != '*') {
      argument = Convert(argument, argument.isNull ? VarChar(1) : AsText(argument.type));
    }
  }
  TypeInfo type = ResultOf(rule, arguments);
  std::string sql = CallOf("v_" + ToUtf8(rule.name), arguments);
  if (rule.code) sql += ", " + CodeOf(arguments[0].type);
  // left, right and substring: no longer than they say.
  if (exactLengths_ && rule.result == Result::LikeFirst && arguments.size() > 1 &&
      e.arguments.back()->kind == ExpressionKind::Literal) {
    const int64_t count = ValueRef(LiteralOf(*e.arguments.back()).value).Integer();
    if (count > 0 && (type.length == -1 || count < type.length)) {
      type.length = static_cast<int32_t>(count);
    }
  }
  Typed result = Called(sql + ")", type);
  return rule.result == Result::Cut && type.length != -1 ? Cut(std::move(result)) : result;
}

Typed Binder::BindAggregate(const Expression& e, Scope& scope) {
  if (scope.insideAggregate > 0) throw AtLine(AggregateInAggregate(), e.line);
  if (!scope.aggregatesAllowed) throw AtLine((*scope.noAggregates)(), e.line);
  if (e.arguments.size() != 1) throw WrongArguments(e, 1);
  const Text name = ToLower(e.name);
  const bool counts = name == u"count" || name == u"count_big";
  const TypeInfo countType = name == u"count" ? kInt : kBigInt;
  const std::string distinct = e.distinct ? "DISTINCT " : "";
  if (e.arguments[0]->kind == ExpressionKind::Star) {
    if (!counts) throw AtLine(SyntaxNear(u"*"), e.line);
    return Called("count(*)", countType);
  }
  const int32_t own = scope.columnsFound;
  const int32_t all = columnsFound_;
  ++scope.insideAggregate;
  Typed value = Bind(*e.arguments[0], scope);
  --scope.insideAggregate;
  if (columnsFound_ != all && scope.columnsFound == own) {
    throw Unsupported(u"an aggregate over columns of an outer query", e.line);
  }
  if (value.isNull) throw InvalidOperandType(u"NULL", name);
  if (counts && IsLongText(value.type)) {
    throw InvalidOperandType(MessageName(value.type), name);
  }
  if (counts) return Called("count(" + distinct + Collated(value) + ")", countType);
  if (name == u"min" || name == u"max") {
    if (value.type.type == SqlType::Bit || IsLongText(value.type)) {
      throw InvalidOperandType(MessageName(value.type), name);
    }
    return Called(ToUtf8(name) + "(" + Collated(value) + ")", value.type);
  }
  if (name == u"sum" || name == u"avg") {
    const TypeInfo argument = value.type;
    const TypeInfo result = name == u"sum" ? SumType(argument) : AverageType(argument);
    value = Convert(std::move(value), result);
    const char* function = name == u"sum" ? SumFunction(argument) : AverageFunction(argument);
    return Called(std::string(function) + "(" + distinct + value.sql + ")", result);
  }
  throw Unsupported(u"function " + e.name, e.line);
}

// The result has the type of the first value, and so has the second.
Typed Binder::BindIsNull(const Expression& e, Scope& scope) {
  if (e.arguments.size() != 2) throw WrongArguments(e, 2);
  // The first value's length counts: literals inside show theirs.
  const bool outer = std::exchange(exactLengths_, e.arguments[0]->kind != ExpressionKind::Column);
  Typed first = Bind(*e.arguments[0], scope);
  exactLengths_ = outer;
  Typed second = Bind(*e.arguments[1], scope);
  if (first.isNull) return second;
  const TypeInfo type = first.type;
  second = ConvertWhenUsed(std::move(second), type);
  Typed value = Called("ifnull(" + first.sql + ", " + second.sql + ")", type);
  value.neverNull = e.arguments[1]->kind == ExpressionKind::Literal;
  return value;
}

Typed Binder::BindCoalesce(const Expression& e, Scope& scope) {
  if (e.arguments.size() < 2) throw WrongArguments(e, 2);
  std::vector<Typed> arguments;
  for (const ExpressionPtr& argument : e.arguments) arguments.push_back(Bind(*argument, scope));
  if (std::ranges::all_of(arguments, &Typed::isNull)) throw AtLine(CoalesceOfNulls(), e.line);
  std::vector<Typed*> all;
  all.reserve(arguments.size());
  for (Typed& argument : arguments) all.push_back(&argument);
  const TypeInfo type = Unify(all);
  return Called(CallOf("coalesce", arguments) + ")", type);
}

Typed Binder::BindNullIf(const Expression& e, Scope& scope) {
  if (e.arguments.size() != 2) throw WrongArguments(e, 2);
  Typed value = Bind(*e.arguments[0], scope);
  if (value.isNull) throw AtLine(NullIfOfNull(), e.line);
  const std::string equal =
      Comparison(Bind(*e.arguments[0], scope), Operation::Equal, Bind(*e.arguments[1], scope));
  return Called("CASE WHEN " + equal + " THEN NULL ELSE " + value.sql + " END", value.type);
}

// dateadd, datediff, datepart, datename, and day, month, year.
Typed Binder::BindDatePart(const Expression& e, Scope& scope) {
  const Text name = ToLower(e.name);
  const auto date = [&](size_t index) {
    Typed value = Bind(*e.arguments[index], scope);
    return value.isNull || IsDate(value.type) ? value : Convert(std::move(value), kDateTime);
  };
  if (name == u"day" || name == u"month" || name == u"year") {
    if (e.arguments.size() != 1) throw WrongArguments(e, 1);
    return Called("v_datepart('" + ToUtf8(name) + "', " + date(0).sql + ")", kInt);
  }
  const size_t count = name == u"dateadd" || name == u"datediff" ? 3 : 2;
  if (e.arguments.size() != count) throw WrongArguments(e, count);
  const Expression& part = *e.arguments[0];
  if (part.kind == ExpressionKind::Literal) {
    throw ServerFailure(1023, u"Invalid parameter 1 specified for " + name + u".", e.line);
  }
  if (part.kind != ExpressionKind::Column || !FindDatePart(ToUtf8(part.name))) {
    throw AtLine(UnknownDatePart(part.name, name), e.line);
  }
  std::string sql = "v_" + ToUtf8(name) + "('" + ToUtf8(part.name) + "', ";
  if (name == u"dateadd") {
    const Typed number = Convert(Bind(*e.arguments[1], scope), kInt);
    const Typed from = date(2);
    const TypeInfo type = from.isNull ? kDateTime : from.type;
    return Called(sql + number.sql + ", " + from.sql + ", " + CodeOf(type) + ")", type);
  }
  sql += date(1).sql;
  if (name == u"datediff") sql += ", " + date(2).sql;
  return Called(sql + ")", name == u"datename" ? NVarChar(30) : kInt);
}

// 1 or 0 for what an object is, NULL when there is none.
Typed Binder::BindObjectProperty(const Expression& e, Scope& scope) {
  static constexpr std::pair<TextView, const char*> kProperties[] = {
      {u"IsUserTable", "0"}, {u"IsTable", "0"}, {u"IsView", "1"}, {u"IsProcedure", "2"}};
  if (e.arguments.size() != 2) throw WrongArguments(e, 2);
  const Typed id = Convert(Bind(*e.arguments[0], scope), kInt);
  if (e.arguments[1]->kind == ExpressionKind::Literal) {
    const TypedValue literal = LiteralOf(*e.arguments[1]);
    const auto* text = std::get_if<std::string>(&literal.value);
    for (const auto& [property, kind] : kProperties) {
      if (!text || !EqualsIgnoreAsciiCase(FromUtf8(*text), property)) continue;
      return Called(std::string("(SELECT kind = ") + kind +
                        " FROM main.vellum250_object WHERE id = " + id.sql + ")",
                    kInt);
    }
  }
  throw Unsupported(u"OBJECTPROPERTY of this kind", e.line);
}

// Known before the statement runs: the name is a constant.
Typed Binder::BindObjectId(const Expression& e, Scope&) {
  const bool identity = EqualsIgnoreAsciiCase(e.name, u"ident_current");
  if (e.arguments.empty() || e.arguments.size() > 2 ||
      e.arguments[0]->kind != ExpressionKind::Literal) {
    throw Unsupported(e.name + u" of anything but a constant", e.line);
  }
  const TypedValue literal = LiteralOf(*e.arguments[0]);
  const auto* text = std::get_if<std::string>(&literal.value);
  Text name = text ? FromUtf8(*text) : Text();
  std::erase_if(name, [](char16_t c) { return c == u'[' || c == u']'; });
  name.erase(0, name.rfind(u'.') + 1);
  ObjectPtr object = input_.catalog.Find(name);
  if (!identity) {
    if (object && e.arguments.size() == 2) {
      const TypedValue kind = LiteralOf(*e.arguments[1]);
      static constexpr TextView kKinds[] = {u"U", u"V", u"P"};
      const auto* wanted = std::get_if<std::string>(&kind.value);
      if (!wanted ||
          !EqualsIgnoreAsciiCase(FromUtf8(*wanted), kKinds[static_cast<size_t>(object->kind)])) {
        object = nullptr;
      }
    }
    Slot slot;
    slot.kind = Slot::Kind::Constant;
    if (object) slot.constant = object->id;
    return SlotValue(std::move(slot), kInt);
  }
  const ColumnInfo* column = object ? object->Identity() : nullptr;
  if (column == nullptr) return Called("NULL", DecimalType(38, 0));
  Slot slot;
  slot.kind = Slot::Kind::Constant;
  slot.constant = ToUtf8(object->name);
  return Called("(SELECT max(seq, " + std::to_string(column->seed) + ") FROM " +
                    (object->temporary ? "temp" : "main") + ".sqlite_sequence WHERE name = " +
                    SlotValue(std::move(slot), NVarChar(128)).sql + ")",
                DecimalType(38, 0));
}

}  // namespace vellum250::database::embedded
