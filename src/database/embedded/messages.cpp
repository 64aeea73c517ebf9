#include "database/embedded/messages.h"

#include <cstdio>

#include "database/embedded/failures.h"

namespace vellum250::database::embedded {
namespace {

// The message with its text put together from pieces.
template <typename... Pieces>
DatabaseFailure Say(int32_t message, const Pieces&... pieces) {
  Text text;
  (text.append(TextView(pieces)), ...);
  return ServerFailure(message, std::move(text));
}

}  // namespace

DatabaseFailure SyntaxNear(TextView token) {
  return Say(102, u"Incorrect syntax near '", token, u"'.");
}
DatabaseFailure SyntaxNearKeyword(TextView keyword) {
  return Say(156, u"Incorrect syntax near the keyword '", keyword, u"'.");
}
DatabaseFailure AggregateInWhere() {
  return Say(
      147,
      u"An aggregate may not appear in the WHERE clause unless it is in a subquery contained "
      u"in a HAVING clause or a select list, and the column being aggregated is an outer "
      u"reference.");
}
DatabaseFailure ParameterNotSupplied(TextView procedure, TextView parameter) {
  return Say(201, u"Procedure or function '", procedure, u"' expects parameter '", parameter,
             u"', which was not supplied.");
}
DatabaseFailure InvalidColumn(TextView column) {
  return Say(207, u"Invalid column name '", column, u"'.");
}
DatabaseFailure InvalidObject(TextView object) {
  return Say(208, u"Invalid object name '", object, u"'.");
}
DatabaseFailure NotGrouped(TextView column, int32_t number) {
  return Say(number, u"Column '", column, u"' is invalid in the ",
             number == 8120   ? u"select list"
             : number == 8121 ? u"HAVING clause"
                              : u"ORDER BY clause",
             u" because it is not contained in either an aggregate function or the GROUP BY "
             u"clause.");
}
DatabaseFailure AlreadyAnObject(TextView object) {
  return Say(2714, u"There is already an object named '", object, u"' in the database.");
}
DatabaseFailure NoSuchType(TextView type) {
  return Say(2715, u"Cannot find data type ", type, u".");
}
DatabaseFailure NotASystemType(TextView type) {
  return Say(243, u"Type ", type, u" is not a defined system type.");
}
DatabaseFailure NoSuchProcedure(TextView procedure) {
  return Say(2812, u"Could not find stored procedure '", procedure, u"'.");
}
DatabaseFailure CannotDrop(TextView kind, TextView object) {
  return Say(3701, u"Cannot drop the ", kind, u" '", object,
             u"', because it does not exist or you do not have permission.");
}

DatabaseFailure TypeClash(TextView from, TextView to) {
  return Say(206, u"Operand type clash: ", from, u" is incompatible with ", to);
}
DatabaseFailure ImplicitNotAllowed(TextView from, TextView to) {
  return Say(257, u"Implicit conversion from data type ", from, u" to ", to,
             u" is not allowed. Use the CONVERT function to run this query.");
}
DatabaseFailure NotComparable() {
  return Say(306,
             u"The text, ntext, and image data types cannot be compared or sorted, except when "
             u"using IS NULL or LIKE operator.");
}
DatabaseFailure NotDistinct(TextView type) {
  return Say(421, u"The ", type,
             u" data type cannot be selected as DISTINCT because it is not comparable.");
}
DatabaseFailure NotInUnion(TextView type) {
  return Say(5335, u"The data type ", type,
             u" cannot be used as an operand to the UNION, INTERSECT or EXCEPT operators because "
             u"it is not comparable.");
}
DatabaseFailure TypesIncompatible(TextView left, TextView right, TextView operation) {
  return Say(402, u"The data types ", left, u" and ", right, u" are incompatible in the ",
             operation, u" operator.");
}
DatabaseFailure ExplicitNotAllowed(TextView from, TextView to) {
  return Say(529, u"Explicit conversion from data type ", from, u" to ", to, u" is not allowed.");
}
DatabaseFailure InvalidArgumentType(TextView type, int32_t argument, TextView function) {
  return Say(8116, u"Argument data type ", type, u" is invalid for argument ", NumberText(argument),
             u" of ", function, u" function.");
}
DatabaseFailure InvalidOperandType(TextView type, TextView operation) {
  return Say(8117, u"Operand data type ", type, u" is invalid for ", operation, u" operator.");
}
DatabaseFailure LengthTooLarge(int32_t length, TextView type, int32_t maximum) {
  return Say(131, u"The size (", NumberText(length), u") given to the type '", type,
             u"' exceeds the maximum allowed for any data type (", NumberText(maximum), u").");
}
DatabaseFailure InvalidLength(int32_t length) {
  return Say(1001, u"Length or precision specification ", NumberText(length), u" is invalid.");
}
DatabaseFailure WidthNotAllowed(TextView type) {
  return Say(2716, u"Column, parameter, or variable: Cannot specify a column width on data type ",
             type, u".");
}
DatabaseFailure PrecisionTooLarge(int32_t precision) {
  return Say(2750, u"Column or parameter: Specified column precision ", NumberText(precision),
             u" is greater than the maximum precision of 38.");
}
DatabaseFailure ScaleAbovePrecision(int32_t scale, int32_t precision) {
  return Say(2751, u"Column or parameter: Specified column scale ", NumberText(scale),
             u" is greater than the specified precision of ", NumberText(precision), u".");
}
DatabaseFailure OnlyNulls(int32_t number) {
  switch (number) {
    case 4127:
      return Say(number,
                 u"At least one of the arguments to COALESCE must be an expression that is not "
                 u"the NULL constant.");
    case 4151:
      return Say(number,
                 u"The type of the first argument to NULLIF cannot be the NULL constant because "
                 u"the type of the first argument has to be known.");
    default:
      return Say(number,
                 u"At least one of the result expressions in a CASE specification must be an "
                 u"expression other than the NULL constant.");
  }
}

DatabaseFailure WholeNumberOverflow(TextView type, int64_t value) {
  return Say(220, u"Arithmetic overflow error for data type ", type, u", value = ",
             NumberText(value), u".");
}
DatabaseFailure FloatOverflow(TextView type, double value) {
  char digits[400];
  std::snprintf(digits, sizeof digits, "%f", value);
  return Say(232, u"Arithmetic overflow error for type ", type, u", value = ", FromUtf8(digits),
             u".");
}
DatabaseFailure MoneyTextTooLong(TextView type) {
  return Say(234, u"There is insufficient result space to convert a money value to ", type, u".");
}
DatabaseFailure InvalidMoneyText() {
  return Say(235, u"Cannot convert a char value to money. The char value has incorrect syntax.");
}
DatabaseFailure MoneyOverflow() {
  return Say(236,
             u"The conversion from char data type to money resulted in a money overflow error.");
}
DatabaseFailure InvalidDateText() {
  return Say(241, u"Conversion failed when converting date and/or time from character string.");
}
DatabaseFailure DateTextOutOfRange(TextView from, TextView to) {
  return Say(242, u"The conversion of a ", from, u" data type to a ", to,
             u" data type resulted in an out-of-range value.");
}
DatabaseFailure SmallTextOverflow(TextView from, TextView value, TextView to) {
  return Say(244, u"The conversion of the ", from, u" value '", value, u"' overflowed an ",
             to == u"tinyint" ? u"INT1" : u"INT2", u" column. Use a larger integer column.");
}
DatabaseFailure InvalidText(TextView from, TextView value, TextView to) {
  return Say(245, u"Conversion failed when converting the ", from, u" value '", value,
             u"' to data type ", to, u".");
}
DatabaseFailure TextOverflow(TextView from, TextView value) {
  return Say(248, u"The conversion of the ", from, u" value '", value,
             u"' overflowed an int column.");
}
DatabaseFailure InvalidStyle(int32_t style, TextView from) {
  return Say(281, NumberText(style), u" is not a valid style number when converting from ", from,
             u" to a character string.");
}
DatabaseFailure InvalidSmallDateText() {
  return Say(295,
             u"Conversion failed when converting character string to smalldatetime data type.");
}
DatabaseFailure InvalidNumberText(TextView from, TextView to) {
  return Say(8114, u"Error converting data type ", from, u" to ", to, u".");
}
DatabaseFailure ExpressionOverflow(TextView to) {
  return Say(8115, u"Arithmetic overflow error converting expression to data type ", to, u".");
}
DatabaseFailure ConversionOverflow(TextView from, TextView to) {
  return Say(8115, u"Arithmetic overflow error converting ", from, u" to data type ", to, u".");
}
DatabaseFailure InvalidGuidText() {
  return Say(8169,
             u"Conversion failed when converting from a character string to uniqueidentifier.");
}
DatabaseFailure GuidTextTooLong() {
  return Say(8170, u"Insufficient result space to convert uniqueidentifier value to char.");
}

DatabaseFailure UnknownDatePart(TextView name, TextView function) {
  return Say(155, u"'", name, u"' is not a recognized ", function, u" option.");
}
DatabaseFailure DateAddOverflow(TextView type) {
  return Say(517, u"Adding a value to a '", type, u"' column caused an overflow.");
}
DatabaseFailure DateDiffOverflow() {
  return Say(535,
             u"The datediff function resulted in an overflow. The number of dateparts separating "
             u"two date/time instances is too large. Try to use datediff with a less precise "
             u"datepart.");
}
DatabaseFailure InvalidRightLength() {
  return Say(536, u"Invalid length parameter passed to the RIGHT function.");
}
DatabaseFailure InvalidLeftLength() {
  return Say(537, u"Invalid length parameter passed to the LEFT or SUBSTRING function.");
}
DatabaseFailure PartNotSupported(TextView part, TextView function, TextView type) {
  return Say(9810, u"The datepart ", part, u" is not supported by date function ", function,
             u" for data type ", type, u".");
}
DatabaseFailure DividedByZero() { return Say(8134, u"Divide by zero error encountered."); }
DatabaseFailure InvalidFloatOperation() {
  return Say(3623, u"An invalid floating point operation occurred.");
}
DatabaseFailure InvalidEscape(TextView escape) {
  return Say(506, u"The invalid escape character \"", escape,
             u"\" was specified in a LIKE predicate.");
}

DatabaseFailure NullNotAllowed(TextView column, TextView table, TextView statement) {
  return Say(515, u"Cannot insert the value NULL into column '", column, u"', table '", table,
             u"'; column does not allow nulls. ", statement, u" fails.");
}
DatabaseFailure IdentityInsertOff(TextView table) {
  return Say(544, u"Cannot insert explicit value for identity column in table '", table,
             u"' when IDENTITY_INSERT is set to OFF.");
}
DatabaseFailure ConstraintConflict(TextView statement, TextView kind, TextView constraint,
                                   TextView table, TextView column) {
  return Say(547, u"The ", statement, u" statement conflicted with the ", kind, u" constraint \"",
             constraint, u"\". The conflict occurred in table \"", table, u"\"",
             column.empty() ? Text() : u", column '" + Text(column) + u"'", u".");
}
DatabaseFailure DuplicateIndexKey(TextView table, TextView index) {
  return Say(2601, u"Cannot insert duplicate key row in object '", table, u"' with unique index '",
             index, u"'.");
}
DatabaseFailure DuplicateKey(TextView kind, TextView constraint, TextView table) {
  return Say(2627, u"Violation of ", kind, u" constraint '", constraint,
             u"'. Cannot insert duplicate key in object '", table, u"'.");
}
DatabaseFailure TextTruncated(TextView table, TextView column, TextView kept) {
  return Say(2628, u"String or binary data would be truncated in table '", table, u"', column '",
             column, u"'. Truncated value: '", kept, u"'.");
}

}  // namespace vellum250::database::embedded
