#include "database/embedded/decimals.h"
#include "database/embedded/types.h"
#include "stored_values.h"

namespace vellum250::database::embedded {
namespace {

// "decimal(9,2)", "varchar(3)", "varchar(max)", "int" ... "!402" for a failure.
template <typename Function>
std::string TypeShown(Function function) {
  try {
    const TypeInfo type = function();
    std::string name = ToUtf8(SqlTypeName(type.type));
    if (type.type == SqlType::Decimal) {
      name += "(" + std::to_string(type.precision) + "," + std::to_string(type.scale) + ")";
    } else if (IsText(type)) {
      name += type.length == -1 ? "(max)" : "(" + std::to_string(type.length) + ")";
    }
    return name;
  } catch (const DatabaseFailure& failure) {
    return failure.NativeNumber() == 0 ? "!unsupported"
                                       : "!" + std::to_string(failure.NativeNumber());
  }
}

TypeInfo Literal(int32_t digits) { return {SqlType::Int, 0, digits, 0}; }

TEST(TypeNames, AreReadWithTheirNumbers) {
  struct Case {
    const char16_t* name;
    int32_t first;
    int32_t second;
    const char* expected;
  };
  for (const Case& c : std::vector<Case>{{u"VarChar", 10, 0, "varchar(10)"},
                                         {u"varchar", 0, 0, "varchar(30)"},
                                         {u"nvarchar", -1, 0, "nvarchar(max)"},
                                         {u"nvarchar", 4001, 0, "!131"},
                                         {u"char", -1, 0, "!1001"},
                                         {u"character varying", 5, 0, "varchar(5)"},
                                         {u"text", 0, 0, "text(max)"},
                                         {u"text", 5, 0, "!2716"},
                                         {u"numeric", 0, 0, "decimal(18,0)"},
                                         {u"decimal", 9, 2, "decimal(9,2)"},
                                         {u"decimal", 39, 0, "!2750"},
                                         {u"decimal", 2, 3, "!2751"},
                                         {u"float", 24, 0, "real"},
                                         {u"float", 53, 0, "float"},
                                         {u"int", 4, 0, "!2716"},
                                         {u"integer", 0, 0, "int"},
                                         {u"varbinary", 8, 0, "!unsupported"},
                                         {u"datetime2", 0, 0, "!unsupported"},
                                         {u"strng", 0, 0, "!243"}}) {
    EXPECT_EQ(TypeShown([&] { return ParseType(c.name, c.first, c.second, 30); }), c.expected)
        << ToUtf8(c.name);
  }
}

TEST(TypeCodes, KeepEverything) {
  for (const char* written : {"bit", "decimal(38,38)", "varchar(8000)", "varchar", "char(1)",
                              "nvarchar", "date", "sysname"}) {
    EXPECT_EQ(Decode(Encode(T(written))), T(written)) << written;
    EXPECT_GE(Encode(T(written)), 0) << written;
  }
  EXPECT_EQ(Decode(Encode(Literal(3))), Literal(3));
}

struct Pair {
  TypeInfo left;
  TypeInfo right;
  const char* expected;
};

TEST(OperatorTypes, FollowPrecedencePrecisionAndScale) {
  struct Case {
    Operator op;
    TypeInfo left;
    TypeInfo right;
    const char* expected;
  };
  for (const Case& c : std::vector<Case>{
           {Operator::Add, T("tinyint"), T("tinyint"), "tinyint"},
           {Operator::Add, T("smallint"), T("int"), "int"},
           {Operator::Add, T("bit"), T("int"), "int"},
           {Operator::Add, T("bit"), T("bit"), "!8117"},
           {Operator::Add, T("varchar(5)"), T("int"), "int"},
           {Operator::Add, T("int"), T("datetime"), "datetime"},
           {Operator::Subtract, T("datetime"), T("datetime"), "datetime"},
           {Operator::Multiply, T("datetime"), T("int"), "!8117"},
           {Operator::Add, T("varchar(9)"), T("datetime"), "datetime"},
           {Operator::Add, T("date"), T("int"), "!206"},
           {Operator::Divide, Literal(1), T("decimal(2,1)"), "decimal(8,6)"},
           {Operator::Divide, T("int"), T("decimal(2,1)"), "decimal(17,6)"},
           {Operator::Divide, T("decimal(9,2)"), T("int"), "decimal(20,13)"},
           {Operator::Divide, T("decimal(38,2)"), T("int"), "decimal(38,6)"},
           {Operator::Multiply, T("decimal(9,2)"), T("decimal(2,1)"), "decimal(12,3)"},
           {Operator::Multiply, T("decimal(38,10)"), T("decimal(38,10)"), "decimal(38,6)"},
           {Operator::Add, T("decimal(9,2)"), T("decimal(5,4)"), "decimal(12,4)"},
           {Operator::Modulo, T("decimal(9,2)"), T("decimal(5,4)"), "decimal(5,4)"},
           {Operator::Multiply, T("money"), T("decimal(2,1)"), "decimal(22,5)"},
           {Operator::Multiply, T("money"), T("int"), "money"},
           {Operator::Multiply, T("money"), T("float"), "float"},
           {Operator::Modulo, T("float"), T("int"), "!402"},
           {Operator::Add, T("varchar(9)"), T("decimal(9,2)"), "decimal(10,2)"},
           {Operator::Add, T("varchar(5)"), T("nvarchar(7)"), "nvarchar(12)"},
           {Operator::Add, T("char(5)"), T("varchar(7)"), "varchar(12)"},
           {Operator::Add, T("varchar(8000)"), T("varchar(8000)"), "varchar(8000)"},
           {Operator::Add, T("varchar(5)"), T("varchar"), "varchar(max)"},
           {Operator::Add, T("text"), T("varchar(7)"), "!402"},
           {Operator::Subtract, T("varchar(5)"), T("varchar(7)"), "!8117"},
           {Operator::Add, T("text"), T("int"), "!206"},
       }) {
    EXPECT_EQ(TypeShown([&] { return ResultType(c.op, c.left, c.right); }), c.expected)
        << TypeShown([&] { return c.left; }) << " and " << TypeShown([&] { return c.right; });
  }
}

TEST(CommonTypes, AreTheStrongerOne) {
  for (const Pair& c : std::vector<Pair>{
           {Literal(1), T("decimal(2,1)"), "decimal(2,1)"},
           {T("int"), T("decimal(9,2)"), "decimal(12,2)"},
           {T("varchar(3)"), T("varchar(9)"), "varchar(9)"},
           {T("char(3)"), T("nvarchar(2)"), "nvarchar(3)"},
           {T("varchar(10)"), T("int"), "int"},
           {T("varchar(10)"), T("datetime"), "datetime"},
           {T("date"), T("datetime"), "datetime"},
           {T("bit"), T("int"), "int"},
           {T("money"), T("decimal(9,2)"), "decimal(19,4)"},
           {T("date"), T("int"), "!206"},
           {T("uniqueidentifier"), T("varchar(36)"), "uniqueidentifier"},
           {T("uniqueidentifier"), T("int"), "!206"},
       }) {
    EXPECT_EQ(TypeShown([&] { return CommonType(c.left, c.right); }), c.expected);
    EXPECT_EQ(TypeShown([&] { return CommonType(c.right, c.left); }), c.expected);
  }
  EXPECT_EQ(TypeShown([] { return ComparisonType(T("text"), T("varchar(3)"), u"equal to"); }),
            "!402");
}

TEST(AggregateTypes, AreWideEnough) {
  EXPECT_EQ(TypeShown([] { return SumType(T("tinyint")); }), "int");
  EXPECT_EQ(TypeShown([] { return SumType(T("decimal(9,2)")); }), "decimal(38,2)");
  EXPECT_EQ(TypeShown([] { return AverageType(T("decimal(9,2)")); }), "decimal(38,6)");
  EXPECT_EQ(TypeShown([] { return SumType(T("smallmoney")); }), "money");
  EXPECT_EQ(TypeShown([] { return SumType(T("varchar(3)")); }), "!8117");
  EXPECT_EQ(TypeShown([] { return AverageType(T("bit")); }), "!8117");
}

TEST(ImplicitConversions, AreRefusedAsSqlServerRefusesThem) {
  const auto check = [](const char* from, const char* to) {
    return Shown([&]() -> Value {
      CheckImplicit(T(from), T(to));
      return {};
    });
  };
  EXPECT_EQ(check("varchar(9)", "money"), "NULL");
  EXPECT_EQ(check("int", "datetime"), "NULL");
  EXPECT_EQ(check("datetime", "varchar(30)"), "NULL");
  EXPECT_EQ(check("datetime", "int"), "!257");
  EXPECT_EQ(check("money", "varchar(30)"), "!257");
  EXPECT_EQ(check("text", "int"), "!206");
  EXPECT_EQ(check("date", "int"), "!206");
}

struct Sum {
  Operator op;
  Value left;
  const char* leftType;
  Value right;
  const char* rightType;
  const char* expected;
};

TEST(Arithmetic, IsExactAndOverflows) {
  const Value largest = int64_t{2147483647};
  const auto w = [](int64_t value) { return Value(value); };
  for (const Sum& c : std::vector<Sum>{
           {Operator::Divide, w(7), "int", w(2), "int", "3"},
           {Operator::Divide, w(-7), "int", w(2), "int", "-3"},
           {Operator::Modulo, w(-7), "int", w(3), "int", "-1"},
           {Operator::Modulo, w(7), "int", w(-3), "int", "1"},
           {Operator::Add, largest, "int", w(1), "int", "!8115"},
           {Operator::Multiply, w(65536), "int", w(65536), "int", "!8115"},
           {Operator::Divide, w(std::numeric_limits<int64_t>::min()), "bigint", w(-1), "bigint",
            "!8115"},
           {Operator::Subtract, w(1), "tinyint", w(2), "tinyint", "!8115"},
           {Operator::Divide, w(1), "int", w(0), "int", "!8134"},
           {Operator::Modulo, w(1), "int", w(0), "int", "!8134"},
           {Operator::Divide, w(1), "int", w(0), "decimal(3,1)", "!8134"},
           {Operator::Divide, 1.0, "float", 0.0, "float", "!8134"},
           {Operator::Multiply, 1e200, "float", 1e200, "float", "!8115"},
           {Operator::Add, std::string("1"), "varchar(1)", w(2), "int", "3"},
           {Operator::Add, std::string("Total"), "varchar(9)", w(5), "int", "!245"},
           {Operator::Add, w(5), "int", std::string(), "varchar(1)", "5"},
           // decimal(8,6), as all digits behind the sixth are dropped
           {Operator::Divide, w(2), "int", w(30), "decimal(2,1)", "666666"},
           {Operator::Multiply, w(8000), "decimal(9,2)", w(11), "decimal(2,1)", "88000"},
           {Operator::Add, w(125), "decimal(3,2)", w(5), "decimal(2,1)", "175"},
           {Operator::Modulo, w(-55), "decimal(2,1)", w(2), "int", "-15"},
           {Operator::Add, w(std::numeric_limits<int64_t>::max()), "decimal(19,0)",
            w(std::numeric_limits<int64_t>::max()), "decimal(19,0)", "!unsupported"},
           {Operator::Divide, w(102500), "money", w(3), "int", "34166"},
           {Operator::Multiply, w(15), "money", w(15), "money", "0"},
           {Operator::Multiply, w(15000), "money", w(15000), "money", "22500"},
           {Operator::Add, std::string("2004-02-29 13:45:30.000"), "datetime", w(1), "int",
            "2004-03-01 13:45:30.000"},
           {Operator::Subtract, std::string("2004-02-29 13:45:30.000"), "datetime", w(15),
            "decimal(2,1)", "2004-02-28 01:45:30.000"},
           {Operator::Subtract, std::string("1753-01-01 00:00:00.000"), "datetime", w(1), "int",
            "!8115"},
           {Operator::Add, std::string("Joined "), "varchar(9)",
            std::string("2004-02-29 13:45:30.000"), "datetime", "!241"},
           {Operator::Add, std::string("a "), "varchar(2)", std::string(" b"), "varchar(2)",
            "a  b"},
           {Operator::Add, Value(), "varchar(2)", std::string("b"), "varchar(2)", "NULL"},
       }) {
    const TypeInfo left = T(c.leftType);
    const TypeInfo right = T(c.rightType);
    const TypeInfo result = ResultType(c.op, left, right);
    EXPECT_EQ(Shown([&] { return Arithmetic(c.op, c.left, left, c.right, right, result); }),
              c.expected)
        << Shown([&] { return c.left; }) << " and " << Shown([&] { return c.right; });
  }
  EXPECT_EQ(Shown([] { return Negate(int64_t{-2147483648}, kInt); }), "!8115");
  EXPECT_EQ(TypeShown([] { return NegatedType(T("tinyint")); }), "smallint");
}

TEST(NumericFunctions, KeepTheirType) {
  const auto w = [](int64_t value) { return Value(value); };
  const auto round = [](Value value, int64_t places, const char* type, bool truncate = false) {
    return Shown([&] { return Round(value, places, T(type), truncate); });
  };
  EXPECT_EQ(round(w(123456), 1, "decimal(6,3)"), "123500");
  EXPECT_EQ(round(w(-25), 0, "decimal(2,1)"), "-30");
  EXPECT_EQ(round(w(25), 0, "decimal(2,1)", true), "20");
  EXPECT_EQ(round(w(95), 0, "decimal(2,1)"), "!8115");
  EXPECT_EQ(round(w(1250), -2, "int"), "1300");
  EXPECT_EQ(round(w(49), -2, "int"), "0");
  EXPECT_EQ(round(w(49), -99, "int"), "0");
  EXPECT_EQ(round(w(2147483647), -1, "int"), "!8115");
  EXPECT_EQ(round(w(10250), 0, "money"), "10000");
  EXPECT_EQ(round(2.345, 2, "float"), "2.35");
  EXPECT_EQ(round(std::string("2.5"), 0, "varchar(9)"), "3");
  EXPECT_EQ(Shown([&] { return Floor(w(-27), T("decimal(2,1)")); }), "-3");
  EXPECT_EQ(Shown([&] { return Ceiling(w(21), T("decimal(2,1)")); }), "3");
  EXPECT_EQ(Shown([&] { return Ceiling(w(-10001), T("money")); }), "-10000");
  EXPECT_EQ(TypeShown([] { return NumericResult(u"floor", T("decimal(9,2)")); }), "decimal(9,0)");
  EXPECT_EQ(Shown([&] { return Abs(w(-2147483648), kInt); }), "!8115");
  EXPECT_EQ(Shown([&] { return Sign(w(-27), T("decimal(2,1)")); }), "-10");
  EXPECT_EQ(Shown([&] { return Power(w(2), 10, kInt); }), "1024");
  EXPECT_EQ(Shown([&] { return Power(w(2), 31, kInt); }), "!232");
  EXPECT_EQ(Shown([&] { return Power(w(25), 2, T("decimal(2,1)")); }), "63");
  EXPECT_EQ(Shown([&] { return Power(-1.0, 0.5, kFloat); }), "!3623");
  EXPECT_EQ(TypeShown([] { return NumericResult(u"abs", T("datetime")); }), "!8116");
}

}  // namespace
}  // namespace vellum250::database::embedded
