// SQL Server's messages, named after what happened, each called with its pieces. Type names are
// those of MessageName, values and names as the user wrote them. The line is added where it is
// known (failures.h, AtLine).
#pragma once

#include <initializer_list>

#include "database/connection.h"

namespace vellum250::database::embedded {

// A message's number, and its text with a % for each argument in turn: a text or a whole number.
struct Message {
  int32_t number;
  TextView text;

  template <typename... Arguments>
  DatabaseFailure operator()(const Arguments&... arguments) const {
    return Filled({Piece(arguments)...});
  }

 private:
  static Text Piece(TextView text) { return Text(text); }
  static Text Piece(int64_t number);
  DatabaseFailure Filled(std::initializer_list<Text> pieces) const;
};

// Statements and names.
inline constexpr Message SyntaxNear{102, u"Incorrect syntax near '%'."};
inline constexpr Message SyntaxNearKeyword{156, u"Incorrect syntax near the keyword '%'."};
inline constexpr Message NegativeTop{127, u"A TOP N or FETCH rowcount value may not be negative."};
inline constexpr Message TopIsNoInteger{
    1060,
    u"The number of rows provided for a TOP or FETCH clauses row count parameter must be an "
    u"integer."};
inline constexpr Message AmbiguousColumn{209, u"Ambiguous column name '%'."};
inline constexpr Message AggregateInAggregate{
    130,
    u"Cannot perform an aggregate function on an expression containing an aggregate or a "
    u"subquery."};
inline constexpr Message AggregateInGrouping{
    144,
    u"Cannot use an aggregate or a subquery in an expression used for the group by list of a GROUP "
    u"BY clause."};
inline constexpr Message AggregateInOn{
    1015,
    u"An aggregate cannot appear in an ON clause unless it is in a subquery contained in a HAVING "
    u"clause or select list, and the column being aggregated is an outer reference."};
inline constexpr Message AggregateInWhere{
    147,
    u"An aggregate may not appear in the WHERE clause unless it is in a subquery contained in a "
    u"HAVING clause or a select list, and the column being aggregated is an outer reference."};
inline constexpr Message ParameterNotSupplied{
    201, u"Procedure or function '%' expects parameter '%', which was not supplied."};
inline constexpr Message InvalidColumn{207, u"Invalid column name '%'."};
inline constexpr Message InvalidObject{208, u"Invalid object name '%'."};
// 8120 in the select list, 8121 in HAVING, 8127 in ORDER BY: `number` is one of them.
DatabaseFailure NotGrouped(TextView column, int32_t number);
inline constexpr Message AlreadyAnObject{2714,
                                         u"There is already an object named '%' in the database."};
inline constexpr Message NoSuchType{2715, u"Cannot find data type %."};
inline constexpr Message NotASystemType{243, u"Type % is not a defined system type."};
inline constexpr Message CannotFind{
    1088,
    u"Cannot find the object \"%\" because it does not exist or you do not have permissions."};
inline constexpr Message NoSuchProcedure{2812, u"Could not find stored procedure '%'."};
inline constexpr Message CannotDrop{
    3701, u"Cannot drop the % '%', because it does not exist or you do not have permission."};

// Types that do not go together.
inline constexpr Message TypeClash{206, u"Operand type clash: % is incompatible with %"};
inline constexpr Message ImplicitNotAllowed{
    257,
    u"Implicit conversion from data type % to % is not allowed. Use the CONVERT function to run "
    u"this query."};
inline constexpr Message NotComparable{306,
                                       u"The text, ntext, and image data types cannot be compared "
                                       u"or sorted, except when using IS NULL or LIKE operator."};
inline constexpr Message NotDistinct{
    421, u"The % data type cannot be selected as DISTINCT because it is not comparable."};
inline constexpr Message NotInUnion{5335,
                                    u"The data type % cannot be used as an operand to the UNION, "
                                    u"INTERSECT or EXCEPT operators because it is not comparable."};
inline constexpr Message TypesIncompatible{
    402, u"The data types % and % are incompatible in the % operator."};
inline constexpr Message ExplicitNotAllowed{
    529, u"Explicit conversion from data type % to % is not allowed."};
inline constexpr Message InvalidArgumentType{
    8116, u"Argument data type % is invalid for argument % of % function."};
inline constexpr Message InvalidOperandType{8117,
                                            u"Operand data type % is invalid for % operator."};
inline constexpr Message LengthTooLarge{
    131, u"The size (%) given to the type '%' exceeds the maximum allowed for any data type (%)."};
inline constexpr Message InvalidLength{1001, u"Length or precision specification % is invalid."};
inline constexpr Message WidthNotAllowed{
    2716, u"Column, parameter, or variable: Cannot specify a column width on data type %."};
inline constexpr Message PrecisionTooLarge{2750,
                                           u"Column or parameter: Specified column precision % is "
                                           u"greater than the maximum precision of 38."};
inline constexpr Message ScaleAbovePrecision{
    2751,
    u"Column or parameter: Specified column scale % is greater than the specified precision of %."};
inline constexpr Message CoalesceOfNulls{4127,
                                         u"At least one of the arguments to COALESCE must be an "
                                         u"expression that is not the NULL constant."};
inline constexpr Message NullIfOfNull{
    4151,
    u"The type of the first argument to NULLIF cannot be the NULL constant because the type of the "
    u"first argument has to be known."};
inline constexpr Message CaseOfNulls{
    8133,
    u"At least one of the result expressions in a CASE specification must be an expression other "
    u"than the NULL constant."};

// Values that do not become what they should.
inline constexpr Message WholeNumberOverflow{
    220, u"Arithmetic overflow error for data type %, value = %."};
DatabaseFailure FloatOverflow(TextView type, double value);  // 232
inline constexpr Message MoneyTextTooLong{
    234, u"There is insufficient result space to convert a money value to %."};
inline constexpr Message InvalidMoneyText{
    235, u"Cannot convert a char value to money. The char value has incorrect syntax."};
inline constexpr Message MoneyOverflow{
    236, u"The conversion from char data type to money resulted in a money overflow error."};
inline constexpr Message InvalidDateText{
    241, u"Conversion failed when converting date and/or time from character string."};
inline constexpr Message DateTextOutOfRange{
    242, u"The conversion of a % data type to a % data type resulted in an out-of-range value."};
DatabaseFailure SmallTextOverflow(TextView from, TextView value, TextView to);  // 244
inline constexpr Message InvalidText{
    245, u"Conversion failed when converting the % value '%' to data type %."};
inline constexpr Message TextOverflow{
    248, u"The conversion of the % value '%' overflowed an int column."};
inline constexpr Message InvalidStyle{
    281, u"% is not a valid style number when converting from % to a character string."};
inline constexpr Message InvalidSmallDateText{
    295, u"Conversion failed when converting character string to smalldatetime data type."};
inline constexpr Message InvalidNumberText{8114, u"Error converting data type % to %."};
inline constexpr Message ExpressionOverflow{
    8115, u"Arithmetic overflow error converting expression to data type %."};
inline constexpr Message ConversionOverflow{
    8115, u"Arithmetic overflow error converting % to data type %."};
inline constexpr Message InvalidGuidText{
    8169, u"Conversion failed when converting from a character string to uniqueidentifier."};
inline constexpr Message GuidTextTooLong{
    8170, u"Insufficient result space to convert uniqueidentifier value to char."};

// Values that functions refuse.
inline constexpr Message UnknownDatePart{155, u"'%' is not a recognized % option."};
inline constexpr Message DateAddOverflow{517,
                                         u"Adding a value to a '%' column caused an overflow."};
inline constexpr Message DateDiffOverflow{
    535,
    u"The datediff function resulted in an overflow. The number of dateparts separating two "
    u"date/time instances is too large. Try to use datediff with a less precise datepart."};
inline constexpr Message InvalidRightLength{
    536, u"Invalid length parameter passed to the RIGHT function."};
inline constexpr Message InvalidLeftLength{
    537, u"Invalid length parameter passed to the LEFT or SUBSTRING function."};
inline constexpr Message PartNotSupported{
    9810, u"The datepart % is not supported by date function % for data type %."};
inline constexpr Message DividedByZero{8134, u"Divide by zero error encountered."};
inline constexpr Message InvalidFloatOperation{3623,
                                               u"An invalid floating point operation occurred."};
inline constexpr Message InvalidEscape{
    506, u"The invalid escape character \"%\" was specified in a LIKE predicate."};

// Rows that a table refuses.
inline constexpr Message NullNotAllowed{515,
                                        u"Cannot insert the value NULL into column '%', table '%'; "
                                        u"column does not allow nulls. % fails."};
inline constexpr Message IdentityInsertOff{544,
                                           u"Cannot insert explicit value for identity column in "
                                           u"table '%' when IDENTITY_INSERT is set to OFF."};
DatabaseFailure ConstraintConflict(TextView statement, TextView kind, TextView constraint,
                                   TextView table, TextView column);  // 547
inline constexpr Message DuplicateIndexKey{
    2601, u"Cannot insert duplicate key row in object '%' with unique index '%'."};
inline constexpr Message DuplicateKey{
    2627, u"Violation of % constraint '%'. Cannot insert duplicate key in object '%'."};
inline constexpr Message TextTruncated{
    2628,
    u"String or binary data would be truncated in table '%', column '%'. Truncated value: '%'."};

}  // namespace vellum250::database::embedded
