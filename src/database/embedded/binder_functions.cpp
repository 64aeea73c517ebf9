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

// Text is a value as text, but not one of the types text and ntext; AnyText is any; OnlyText is no
// number or date.
enum class Argument : uint8_t { None, Text, AnyText, OnlyText, Int, Float, Any };
enum class Result : uint8_t { Int, Char, NChar, VarChar, NVarChar, Float, LikeFirst, Guid };

// A function that is its arguments converted, a call, and a type.
struct Rule {
  TextView name;
  const char* call;
  uint8_t least;
  Argument arguments[4];
  Result result;
  bool code = false;  // the first argument's type follows the arguments
};

constexpr Argument kNone = Argument::None;
constexpr Rule kRules[] = {
    {u"len", "v_len", 1, {Argument::Text, kNone}, Result::Int},
    {u"datalength", "v_datalength", 1, {Argument::Any, kNone}, Result::Int, true},
    {u"ascii", "v_ascii", 1, {Argument::Text, kNone}, Result::Int},
    {u"unicode", "v_unicode", 1, {Argument::Text, kNone}, Result::Int},
    {u"left", "v_left", 2, {Argument::Text, Argument::Int, kNone}, Result::LikeFirst},
    {u"right", "v_right", 2, {Argument::Text, Argument::Int, kNone}, Result::LikeFirst},
    {u"substring",
     "v_substring",
     3,
     {Argument::OnlyText, Argument::Int, Argument::Int, kNone},
     Result::LikeFirst},
    {u"charindex",
     "v_charindex",
     2,
     {Argument::Text, Argument::AnyText, Argument::Int, kNone},
     Result::Int},
    {u"patindex", "v_patindex", 2, {Argument::Text, Argument::AnyText, kNone}, Result::Int},
    {u"replace",
     "v_replace",
     3,
     {Argument::Text, Argument::Text, Argument::Text, kNone},
     Result::VarChar},
    {u"stuff",
     "v_stuff",
     4,
     {Argument::Text, Argument::Int, Argument::Int, Argument::Text},
     Result::VarChar},
    {u"ltrim", "v_ltrim", 1, {Argument::Text, kNone}, Result::LikeFirst},
    {u"rtrim", "v_rtrim", 1, {Argument::Text, kNone}, Result::LikeFirst},
    {u"upper", "v_upper", 1, {Argument::Text, kNone}, Result::LikeFirst},
    {u"lower", "v_lower", 1, {Argument::Text, kNone}, Result::LikeFirst},
    {u"reverse", "v_reverse", 1, {Argument::Text, kNone}, Result::LikeFirst},
    {u"str", "v_str", 1, {Argument::Float, Argument::Int, Argument::Int, kNone}, Result::VarChar},
    {u"space", "v_space", 1, {Argument::Int, kNone}, Result::VarChar},
    {u"replicate", "v_replicate", 2, {Argument::Text, Argument::Int, kNone}, Result::VarChar, true},
    {u"char", "v_char", 1, {Argument::Int, kNone}, Result::Char},
    {u"nchar", "v_nchar", 1, {Argument::Int, kNone}, Result::NChar},
    {u"quotename", "v_quotename", 1, {Argument::Text, Argument::Text, kNone}, Result::NVarChar},
    {u"isdate", "v_isdate", 1, {Argument::Text, kNone}, Result::Int},
    {u"isnumeric", "v_isnumeric", 1, {Argument::Any, kNone}, Result::Int, true},
    {u"sqrt", "v_sqrt", 1, {Argument::Float, kNone}, Result::Float},
    {u"newid", "v_newid", 0, {kNone}, Result::Guid}};

// A numeric function: the result follows the first argument, and its code is passed.
struct NumericRule {
  TextView name;
  const char* call;
  NumericFunction function;
  uint8_t least;
  uint8_t most;
};
constexpr NumericRule kNumericRules[] = {{u"abs", "v_abs", NumericFunction::Abs, 1, 1},
                                         {u"sign", "v_sign", NumericFunction::Sign, 1, 1},
                                         {u"floor", "v_floor", NumericFunction::Floor, 1, 1},
                                         {u"ceiling", "v_ceiling", NumericFunction::Ceiling, 1, 1},
                                         {u"round", "v_round", NumericFunction::Round, 2, 3},
                                         {u"power", "v_power", NumericFunction::Power, 2, 2}};

size_t MostArguments(const Rule& rule) {
  size_t count = 0;
  while (count < 4 && rule.arguments[count] != Argument::None) ++count;
  return count;
}

DatabaseFailure WrongArguments(const Expression& e, size_t count) {
  return ServerFailure(
      174,
      u"The " + ToLower(e.name) + u" function requires " + NumberText(count) + u" argument(s).",
      e.line);
}

TypeInfo TextResult(bool national) { return national ? NVarChar(4000) : VarChar(8000); }

TypeInfo ResultOf(Result result, const std::vector<Typed>& arguments) {
  const bool national =
      std::ranges::any_of(arguments, [](const Typed& a) { return IsNational(a.type); });
  switch (result) {
    case Result::Int:
      return kInt;
    case Result::Float:
      return kFloat;
    case Result::Char:
      return {SqlType::Char, 1, 0, 0};
    case Result::NChar:
      return {SqlType::NChar, 1, 0, 0};
    case Result::NVarChar:
      return NVarChar(4000);
    case Result::VarChar:
      return TextResult(national);
    case Result::Guid:
      return {SqlType::UniqueIdentifier, 0, 0, 0};
    default:
      break;
  }
  const TypeInfo first = arguments[0].type;
  return IsNational(first) ? NVarChar(first.length) : VarChar(first.length);
}

std::string CallOf(const char* function, const std::vector<Typed>& arguments) {
  std::string sql = std::string(function) + "(";
  for (size_t i = 0; i < arguments.size(); ++i) {
    if (i > 0) sql += ", ";
    sql += arguments[i].sql;
  }
  return sql;
}

std::string CodeOf(TypeInfo type) { return std::to_string(Encode(type)); }

Typed Called(std::string sql, TypeInfo type) {
  Typed value;
  value.sql = std::move(sql);
  value.type = type;
  value.form = Typed::Form::Atom;
  return value;
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
  std::vector<Typed> arguments;
  const auto* numeric = std::ranges::find_if(kNumericRules, named);
  const auto* rule = std::ranges::find_if(kRules, named);
  if (numeric == std::end(kNumericRules) && rule == std::end(kRules)) {
    throw Unsupported(u"function " + e.name, e.line);
  }
  for (const ExpressionPtr& argument : e.arguments) arguments.push_back(Bind(*argument, scope));
  if (numeric != std::end(kNumericRules)) {
    if (arguments.size() < numeric->least || arguments.size() > numeric->most) {
      throw WrongArguments(e, numeric->least);
    }
    Typed& first = arguments[0];
    if (first.isNull) first.type = kInt;
    const TypeInfo type = NumericResult(numeric->function, first.type);
    const bool isPower = numeric->function == NumericFunction::Power;
    for (size_t i = 1; i < arguments.size(); ++i) {
      arguments[i] = Convert(std::move(arguments[i]), isPower ? kFloat : kInt);
    }
    Typed code;
    code.sql = CodeOf(first.type);
    arguments.insert(arguments.begin() + (numeric->least == 2 ? 2 : 1), std::move(code));
    return Called(CallOf(numeric->call, arguments) + ")", type);
  }
  if (arguments.size() < rule->least || arguments.size() > MostArguments(*rule)) {
    throw WrongArguments(e, rule->least);
  }
  for (size_t i = 0; i < arguments.size(); ++i) {
    const Argument wanted = rule->arguments[i];
    const TypeInfo given = arguments[i].type;
    if ((wanted == Argument::Text && IsLongText(given)) ||
        (wanted == Argument::OnlyText && !IsText(given))) {
      throw InvalidArgumentType(arguments[i].isNull ? u"NULL" : MessageName(given),
                                static_cast<int32_t>(i + 1), ToLower(e.name));
    }
    switch (wanted) {
      case Argument::Text:
      case Argument::OnlyText:
      case Argument::AnyText:
        arguments[i] =
            Convert(arguments[i], arguments[i].isNull ? VarChar(1) : AsText(arguments[i].type));
        break;
      case Argument::Int:
        arguments[i] = Convert(std::move(arguments[i]), kInt);
        break;
      case Argument::Float:
        arguments[i] = Convert(std::move(arguments[i]), kFloat);
        break;
      default:
        break;
    }
  }
  std::string sql = CallOf(rule->call, arguments);
  if (rule->code) sql += ", " + CodeOf(arguments[0].type);
  TypeInfo type = ResultOf(rule->result, arguments);
  // left, right and substring: no longer than they say.
  if (exactLengths_ && rule->result == Result::LikeFirst && arguments.size() > 1 &&
      e.arguments.back()->kind == ExpressionKind::Literal) {
    const int64_t count = ValueRef(LiteralOf(*e.arguments.back()).value).Integer();
    if (count > 0 && (type.length == -1 || count < type.length)) {
      type.length = static_cast<int32_t>(count);
    }
  }
  return Called(sql + ")", type);
}

DatabaseFailure Binder::AggregateFailure(const Expression& e, const Scope& scope) const {
  if (scope.insideAggregate > 0) {
    return ServerFailure(130,
                         u"Cannot perform an aggregate function on an expression containing an "
                         u"aggregate or a subquery.",
                         e.line);
  }
  return AtLine(AggregateInWhere(), e.line);
}

Typed Binder::BindAggregate(const Expression& e, Scope& scope) {
  if (!scope.aggregatesAllowed || scope.insideAggregate > 0) throw AggregateFailure(e, scope);
  if (e.arguments.size() != 1) throw WrongArguments(e, 1);
  const Text name = ToLower(e.name);
  const bool counts = name == u"count" || name == u"count_big";
  const TypeInfo countType = name == u"count" ? kInt : kBigInt;
  const std::string distinct = e.distinct ? "DISTINCT " : "";
  if (e.arguments[0]->kind == ExpressionKind::Star) {
    if (!counts) throw AtLine(SyntaxNear(u"*"), e.line);
    return Called("count(*)", countType);
  }
  ++scope.insideAggregate;
  Typed value = Bind(*e.arguments[0], scope);
  --scope.insideAggregate;
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
  return Called("ifnull(" + first.sql + ", " + second.sql + ")", type);
}

Typed Binder::BindCoalesce(const Expression& e, Scope& scope) {
  if (e.arguments.size() < 2) throw WrongArguments(e, 2);
  std::vector<Typed> arguments;
  for (const ExpressionPtr& argument : e.arguments) arguments.push_back(Bind(*argument, scope));
  if (std::ranges::all_of(arguments, &Typed::isNull)) throw AtLine(OnlyNulls(4127), e.line);
  std::vector<Typed*> all;
  all.reserve(arguments.size());
  for (Typed& argument : arguments) all.push_back(&argument);
  const TypeInfo type = Unify(all);
  return Called(CallOf("coalesce", arguments) + ")", type);
}

Typed Binder::BindNullIf(const Expression& e, Scope& scope) {
  if (e.arguments.size() != 2) throw WrongArguments(e, 2);
  Typed value = Bind(*e.arguments[0], scope);
  if (value.isNull) throw AtLine(OnlyNulls(4151), e.line);
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
