#include "database/embedded/functions.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <new>

#include "automation/locale.h"
#include "database/embedded/collation.h"
#include "database/embedded/convert.h"
#include "database/embedded/dates.h"
#include "database/embedded/decimals.h"
#include "database/embedded/failures.h"
#include "database/embedded/like.h"
#include "database/embedded/messages.h"
#include "database/embedded/texts.h"

namespace vellum250::database::embedded {
namespace {

// One call from SQLite: its arguments, and the result.
class Call {
 public:
  Call(sqlite3_context* context, int count, sqlite3_value** values)
      : context_(context), count_(count), values_(values) {}

  int Count() const { return count_; }
  bool IsNull(int index) const { return sqlite3_value_type(values_[index]) == SQLITE_NULL; }
  bool AnyNull() const {
    return std::any_of(values_, values_ + count_, [](sqlite3_value* value) {
      return sqlite3_value_type(value) == SQLITE_NULL;
    });
  }
  int64_t Integer(int index) const { return sqlite3_value_int64(values_[index]); }
  int64_t Integer(int index, int64_t absent) const {
    return index < count_ ? Integer(index) : absent;
  }
  double Double(int index) const { return sqlite3_value_double(values_[index]); }
  TypeInfo Type(int index) const { return Decode(Integer(index)); }
  // Holds while the call lasts.
  std::string_view Text(int index) const {
    const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(values_[index]));
    if (text == nullptr) return {};
    return {text, static_cast<size_t>(sqlite3_value_bytes(values_[index]))};
  }
  ValueRef Argument(int index) const {
    switch (sqlite3_value_type(values_[index])) {
      case SQLITE_NULL:
        return {};
      case SQLITE_INTEGER:
        return Integer(index);
      case SQLITE_FLOAT:
        return Double(index);
      default:
        return Text(index);
    }
  }

  // The result; NULL when none is given.
  void Return(int64_t value) const { sqlite3_result_int64(context_, value); }
  void Return(double value) const { sqlite3_result_double(context_, value); }
  void Return(std::string_view value) const {
    sqlite3_result_text64(context_, value.data() ? value.data() : "", value.size(),
                          SQLITE_TRANSIENT, SQLITE_UTF8);
  }
  void Return(const std::string& value) const { Return(std::string_view(value)); }
  void Return(const Value& value) const {
    if (const auto* integer = std::get_if<int64_t>(&value)) return Return(*integer);
    if (const auto* number = std::get_if<double>(&value)) return Return(*number);
    if (const auto* text = std::get_if<std::string>(&value)) return Return(*text);
  }
  template <typename T>
  void Return(const std::optional<T>& value) const {
    if (value) Return(*value);
  }
  void ReturnArgument(int index) const { sqlite3_result_value(context_, values_[index]); }

 private:
  sqlite3_context* context_;
  int count_;
  sqlite3_value** values_;
};

// Runs `body`; a failure is kept for whoever steps the statement.
template <typename Body>
void Guard(sqlite3_context* context, Body body) {
  try {
    body();
  } catch (DatabaseFailure& failure) {
    static_cast<FunctionContext*>(sqlite3_user_data(context))->failure = std::move(failure);
    sqlite3_result_error(context, "failure of a function", -1);
  } catch (...) {
    sqlite3_result_error_nomem(context);
  }
}

// ---- Conversions and arithmetic -----------------------------------------------------------------

void ConvertCall(const Call& call) {
  const TypeInfo from = call.Type(1);
  const TypeInfo to = call.Type(2);
  const auto style = static_cast<int32_t>(call.Integer(3, 0));
  if (style == 0 && IsSameValue(from, to)) return call.ReturnArgument(0);
  call.Return(Convert(call.Argument(0), from, to, style));
}

void AssignCall(const Call& call) {
  const TypeInfo from = call.Type(1);
  const TypeInfo to = call.Type(2);
  // Text of few bytes has few characters.
  const bool fits = IsText(from) && IsText(to) && !IsPadded(to) &&
                    (IsNational(to) || !IsNational(from)) &&
                    call.Text(0).size() <= static_cast<size_t>(to.length);
  if (fits || IsSameValue(from, to)) return call.ReturnArgument(0);
  call.Return(Assign(call.Argument(0), from, to, FromUtf8(call.Text(3)), FromUtf8(call.Text(4))));
}

template <Operator op>
void OperatorCall(const Call& call) {
  const TypeInfo result = call.Type(2);
  const TypeInfo left = call.Count() == 5 ? call.Type(3) : result;
  const TypeInfo right = call.Count() == 5 ? call.Type(4) : result;
  call.Return(Arithmetic(op, call.Argument(0), left, call.Argument(1), right, result));
}

void NegateCall(const Call& call) { call.Return(Negate(call.Argument(0), call.Type(1))); }

// ---- Texts --------------------------------------------------------------------------------------

void LeftCall(const Call& call) {
  if (call.Integer(1) < 0) throw InvalidLeftLength();
  call.Return(Slice(call.Text(0), 0, call.Integer(1)).View());
}

void RightCall(const Call& call) {
  const int64_t count = call.Integer(1);
  if (count < 0) throw InvalidRightLength();
  const int64_t length = Utf16Length(call.Text(0));
  call.Return(Slice(call.Text(0), length - std::min(count, length), count).View());
}

void SubstringCall(const Call& call) {
  if (call.Integer(2) < 0) throw InvalidLeftLength();
  constexpr int64_t kFar = int64_t{1} << 40;
  const int64_t start = std::clamp(call.Integer(1), -kFar, kFar);
  call.Return(Slice(call.Text(0), start - 1, std::min(call.Integer(2), kFar)).View());
}

// The bytes of a text are never fewer than its units.
void CutCall(const Call& call) {
  const std::string_view text = call.Text(0);
  if (static_cast<int64_t>(text.size()) <= call.Integer(1)) return call.ReturnArgument(0);
  call.Return(Slice(text, 0, call.Integer(1)).View());
}

void StuffCall(const Call& call) {
  for (int i = 0; i < 3; ++i) {
    if (call.IsNull(i)) return;
  }
  call.Return(Stuff(call.Text(0), call.Integer(1), call.Integer(2), call.Text(3)));
}

template <bool blanksCount>
void LikeCall(const Call& call) {
  std::optional<char16_t> escape;
  if (call.Count() == 3) {
    Units units(call.Text(2));
    if (!units.AtEnd()) escape = units.Next();
    if (!escape || !units.AtEnd()) throw InvalidEscape(FromUtf8(call.Text(2)));
  }
  call.Return(int64_t{Like(call.Text(0), call.Text(1), escape, blanksCount)});
}

// ---- Dates --------------------------------------------------------------------------------------

DatePart PartArgument(const Call& call) {
  const auto part = FindDatePart(call.Text(0));
  if (!part) throw UnknownDatePart(FromUtf8(call.Text(0)), u"datepart");
  return *part;
}

void DateAddCall(const Call& call) {
  call.Return(
      DateAdd(PartArgument(call), call.Integer(1), StoredMoment(call.Text(2)), call.Type(3).type));
}

void DateDiffCall(const Call& call) {
  call.Return(int64_t{
      DateDiff(PartArgument(call), StoredMoment(call.Text(1)), StoredMoment(call.Text(2)))});
}

void DatePartCall(const Call& call) {
  call.Return(int64_t{DatePartOf(PartArgument(call), StoredMoment(call.Text(1)))});
}

void DateNameCall(const Call& call) {
  call.Return(DateName(PartArgument(call), StoredMoment(call.Text(1))));
}

void IsDateCall(const Call& call) {
  bool isDate = false;
  if (!call.IsNull(0)) {
    const ParsedDate parsed = ParseDateText(call.Text(0), 0);
    const bool isBlank = TrimLeadingBlanks(call.Text(0)).empty();
    isDate = !isBlank && parsed.error == DateError::None &&
             Store(parsed.moment, SqlType::DateTime).has_value();
  }
  call.Return(int64_t{isDate});
}

// ---- Numbers ------------------------------------------------------------------------------------

template <Value (*function)(ValueRef, TypeInfo)>
void NumericCall(const Call& call) {
  call.Return(function(call.Argument(0), call.Type(1)));
}

void RoundCall(const Call& call) {
  const bool truncate = call.Count() == 4 && call.Integer(2) != 0;
  call.Return(Round(call.Argument(0), call.Integer(1), call.Type(call.Count() - 1), truncate));
}

void SqrtCall(const Call& call) {
  if (call.Double(0) < 0) throw InvalidFloatOperation();
  call.Return(std::sqrt(call.Double(0)));
}

void IsNumericCall(const Call& call) {
  const TypeInfo type = call.Type(1);
  const bool isText = IsText(type);
  call.Return(int64_t{!call.IsNull(0) && (isText ? IsNumeric(call.Text(0)) : IsNumber(type))});
}

void NewIdCall(const Call& call) {
  unsigned char bytes[16];
  sqlite3_randomness(sizeof bytes, bytes);
  // A random identifier (RFC 4122, version 4).
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);
  std::string text;
  for (size_t i = 0; i < sizeof bytes; ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text.push_back('-');
    text.push_back("0123456789ABCDEF"[bytes[i] >> 4]);
    text.push_back("0123456789ABCDEF"[bytes[i] & 0x0F]);
  }
  call.Return(text);
}

// How many rows TOP asks for.
void TopCall(const Call& call) {
  if (call.IsNull(0)) throw TopIsNoInteger();
  if (call.Integer(0) < 0) throw NegativeTop();
  call.Return(call.Integer(0));
}

// ---- The table ----------------------------------------------------------------------------------

constexpr int kPure = SQLITE_DETERMINISTIC;
constexpr int kChanging = 0;
enum class Nulls : uint8_t { PassOn, Seen };

template <auto function, Nulls nulls>
void Invoke(sqlite3_context* context, int count, sqlite3_value** values) {
  Guard(context, [&] {
    const Call call(context, count, values);
    if (nulls == Nulls::Seen || !call.AnyNull()) function(call);
  });
}

struct Entry {
  const char* name;
  int fewest;  // arguments
  int most;
  int purity;
  void (*function)(sqlite3_context*, int, sqlite3_value**);
};

using Calling = void (*)(const Call&);
template <Calling function, Nulls nulls = Nulls::PassOn>
constexpr Entry Function(const char* name, int fewest, int most, int purity = kPure) {
  return {name, fewest, most, purity, &Invoke<function, nulls>};
}

constexpr Entry kFunctions[] = {
    Function<ConvertCall>("v_convert", 3, 4),
    Function<AssignCall>("v_assign", 5, 5),
    Function<CutCall>("v_cut", 2, 2),
    Function<OperatorCall<Operator::Add>>("v_add", 3, 5),
    Function<OperatorCall<Operator::Subtract>>("v_sub", 3, 5),
    Function<OperatorCall<Operator::Multiply>>("v_mul", 3, 5),
    Function<OperatorCall<Operator::Divide>>("v_div", 3, 5),
    Function<OperatorCall<Operator::Modulo>>("v_mod", 3, 5),
    Function<NegateCall>("v_neg", 2, 2),
    Function<TopCall, Nulls::Seen>("v_top", 1, 1),

    Function<[](const Call& call) { call.Return(Utf16Length(TrimTrailingBlanks(call.Text(0)))); }>(
        "v_len", 1, 1),
    Function<[](const Call& call) { call.Return(DataLength(call.Argument(0), call.Type(1))); }>(
        "v_datalength", 2, 2),
    Function<[](const Call& call) { call.Return(Ascii(call.Text(0))); }>("v_ascii", 1, 1),
    Function<[](const Call& call) { call.Return(Unicode(call.Text(0))); }>("v_unicode", 1, 1),
    Function<LeftCall>("v_left", 2, 2),
    Function<RightCall>("v_right", 2, 2),
    Function<SubstringCall>("v_substring", 3, 3),
    Function<[](const Call& call) {
      call.Return(CharIndex(call.Text(0), call.Text(1), call.Integer(2, 1)));
    }>("v_charindex", 2, 3),
    Function<[](const Call& call) { call.Return(PatIndex(call.Text(0), call.Text(1))); }>(
        "v_patindex", 2, 2),
    Function<[](const Call& call) {
      call.Return(Replace(call.Text(0), call.Text(1), call.Text(2)));
    }>("v_replace", 3, 3),
    Function<StuffCall, Nulls::Seen>("v_stuff", 4, 4),
    Function<[](const Call& call) { call.Return(TrimLeadingBlanks(call.Text(0))); }>("v_ltrim", 1,
                                                                                     1),
    Function<[](const Call& call) { call.Return(TrimTrailingBlanks(call.Text(0))); }>("v_rtrim", 1,
                                                                                      1),
    Function<[](const Call& call) { call.Return(Upper(call.Text(0))); }>("v_upper", 1, 1),
    Function<[](const Call& call) { call.Return(Lower(call.Text(0))); }>("v_lower", 1, 1),
    Function<[](const Call& call) { call.Return(Reverse(call.Text(0))); }>("v_reverse", 1, 1),
    Function<[](const Call& call) {
      call.Return(Str(call.Double(0), call.Integer(1, 10), call.Integer(2, 0)));
    }>("v_str", 1, 3),
    Function<[](const Call& call) { call.Return(Replicate(" ", call.Integer(0), VarChar(8000))); }>(
        "v_space", 1, 1),
    Function<[](const Call& call) {
      call.Return(Replicate(call.Text(0), call.Integer(1), call.Type(2)));
    }>("v_replicate", 3, 3),
    Function<[](const Call& call) { call.Return(Char(call.Integer(0))); }>("v_char", 1, 1),
    Function<[](const Call& call) { call.Return(NChar(call.Integer(0))); }>("v_nchar", 1, 1),
    Function<[](const Call& call) {
      call.Return(QuoteName(call.Text(0), call.Count() == 2 ? call.Text(1) : "["));
    }>("v_quotename", 1, 2),
    Function<LikeCall<false>>("v_like", 2, 3),
    Function<LikeCall<true>>("v_nlike", 2, 3),

    Function<DateAddCall>("v_dateadd", 4, 4),
    Function<DateDiffCall>("v_datediff", 3, 3),
    Function<DatePartCall>("v_datepart", 2, 2),
    Function<DateNameCall>("v_datename", 2, 2),
    Function<IsDateCall, Nulls::Seen>("v_isdate", 1, 1),

    Function<NumericCall<Abs>>("v_abs", 2, 2),
    Function<NumericCall<Sign>>("v_sign", 2, 2),
    Function<NumericCall<Floor>>("v_floor", 2, 2),
    Function<NumericCall<Ceiling>>("v_ceiling", 2, 2),
    Function<RoundCall>("v_round", 3, 4),
    Function<[](const Call& call) {
      call.Return(Power(call.Argument(0), call.Double(1), call.Type(2)));
    }>("v_power", 3, 3),
    Function<SqrtCall>("v_sqrt", 1, 1),
    Function<IsNumericCall, Nulls::Seen>("v_isnumeric", 2, 2),
    Function<NewIdCall>("v_newid", 0, 0, kChanging),
};

// ---- Aggregates ---------------------------------------------------------------------------------

enum class Summand : uint8_t { Int, BigInt, Decimal, Float };

struct Total {
  int64_t exact;
  double inexact;
  int64_t count;
};

[[noreturn]] void RaiseTotal(Summand summand) {
  if (summand == Summand::Decimal) throw Unsupported(u"a decimal of more than 18 digits");
  throw ExpressionOverflow(summand == Summand::Int ? u"int" : u"bigint");
}

template <Summand summand>
void Step(sqlite3_context* context, int, sqlite3_value** values) {
  Guard(context, [&] {
    if (sqlite3_value_type(values[0]) == SQLITE_NULL) return;
    auto* total = static_cast<Total*>(sqlite3_aggregate_context(context, sizeof(Total)));
    if (total == nullptr) throw std::bad_alloc();
    ++total->count;
    if (summand == Summand::Float) {
      total->inexact += sqlite3_value_double(values[0]);
    } else if (__builtin_add_overflow(total->exact, sqlite3_value_int64(values[0]),
                                      &total->exact)) {
      RaiseTotal(summand);
    }
  });
}

template <Summand summand, bool average>
void Finish(sqlite3_context* context) {
  Guard(context, [&] {
    const auto* total = static_cast<Total*>(sqlite3_aggregate_context(context, 0));
    if (total == nullptr) return;  // no row with a value: NULL
    if (summand == Summand::Float) {
      const double count = average ? static_cast<double>(total->count) : 1.0;
      return sqlite3_result_double(context, total->inexact / count);
    }
    if (summand == Summand::Int && total->exact != static_cast<int32_t>(total->exact)) {
      RaiseTotal(summand);
    }
    sqlite3_result_int64(context, average ? total->exact / total->count : total->exact);
  });
}

struct Aggregate {
  const char* sum;
  const char* average;
  void (*step)(sqlite3_context*, int, sqlite3_value**);
  void (*finishSum)(sqlite3_context*);
  void (*finishAverage)(sqlite3_context*);
};
template <Summand summand>
constexpr Aggregate AggregateOf(const char* sum, const char* average) {
  return {sum, average, &Step<summand>, &Finish<summand, false>, &Finish<summand, true>};
}
// In the order of Summand.
constexpr Aggregate kAggregates[] = {
    AggregateOf<Summand::Int>("v_sum_int", "v_avg_int"),
    AggregateOf<Summand::BigInt>("v_sum_bigint", "v_avg_bigint"),
    AggregateOf<Summand::Decimal>("v_sum_decimal", "v_avg_decimal"),
    AggregateOf<Summand::Float>("v_sum_float", "v_avg_float"),
};

const Aggregate& AggregateFor(TypeInfo argument) {
  const TypeInfo type = SumType(argument);
  const Summand summand = type.type == SqlType::Int       ? Summand::Int
                          : type.type == SqlType::Decimal ? Summand::Decimal
                          : type.type == SqlType::Float   ? Summand::Float
                                                          : Summand::BigInt;
  return kAggregates[static_cast<size_t>(summand)];
}

int Collate(void*, int leftSize, const void* left, int rightSize, const void* right) {
  return Compare({static_cast<const char*>(left), static_cast<size_t>(leftSize)},
                 {static_cast<const char*>(right), static_cast<size_t>(rightSize)});
}

void Check(int code) {
  if (code != SQLITE_OK) throw OutOfMemory(u"registering the functions of the database");
}

}  // namespace

std::string CurrentMoment() {
  const CivilTime time = ToCivil(Now());
  const int32_t seconds = (time.hour * 60 + time.minute) * 60 + time.second;
  const int32_t day = DayOf({time.year, time.month, time.day});
  return Store(MomentAt(day, seconds * 1000 + time.millisecond), SqlType::DateTime)
      .value_or("9999-12-31 23:59:59.997");
}

void RegisterFunctions(sqlite3* database, FunctionContext& context) {
  // Its table is made now: a collation has no way to tell that there is no memory for it.
  FoldBeyondAscii(u'\u00C0');
  for (const Entry& entry : kFunctions) {
    for (int count = entry.fewest; count <= entry.most; ++count) {
      Check(sqlite3_create_function_v2(database, entry.name, count, SQLITE_UTF8 | entry.purity,
                                       &context, entry.function, nullptr, nullptr, nullptr));
    }
  }
  for (const Aggregate& entry : kAggregates) {
    Check(sqlite3_create_function_v2(database, entry.sum, 1, SQLITE_UTF8, &context, nullptr,
                                     entry.step, entry.finishSum, nullptr));
    Check(sqlite3_create_function_v2(database, entry.average, 1, SQLITE_UTF8, &context, nullptr,
                                     entry.step, entry.finishAverage, nullptr));
  }
  Check(sqlite3_create_collation_v2(database, "TSQL", SQLITE_UTF8, nullptr, &Collate, nullptr));
}

const char* SumFunction(TypeInfo argument) { return AggregateFor(argument).sum; }
const char* AverageFunction(TypeInfo argument) { return AggregateFor(argument).average; }

}  // namespace vellum250::database::embedded
