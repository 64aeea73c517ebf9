// SQL Server's messages, one maker each, named after what happened. Type names are those of
// MessageName, values and names as the user wrote them. The line is added where it is known
// (failures.h, AtLine).
#pragma once

#include "database/connection.h"

namespace vellum250::database::embedded {

// Statements and names.
DatabaseFailure SyntaxNear(TextView token);                                    // 102
DatabaseFailure SyntaxNearKeyword(TextView keyword);                           // 156
DatabaseFailure AggregateInWhere();                                            // 147
DatabaseFailure ParameterNotSupplied(TextView procedure, TextView parameter);  // 201
DatabaseFailure InvalidColumn(TextView column);                                // 207
DatabaseFailure InvalidObject(TextView object);                                // 208
// 8120 in the select list, 8121 in HAVING, 8127 in ORDER BY: `number` is one of them.
DatabaseFailure NotGrouped(TextView column, int32_t number);
DatabaseFailure AlreadyAnObject(TextView object);            // 2714
DatabaseFailure NoSuchType(TextView type);                   // 2715
DatabaseFailure NotASystemType(TextView type);               // 243
DatabaseFailure NoSuchProcedure(TextView procedure);         // 2812
DatabaseFailure CannotDrop(TextView kind, TextView object);  // 3701

// Types that do not go together.
DatabaseFailure TypeClash(TextView from, TextView to);                                    // 206
DatabaseFailure ImplicitNotAllowed(TextView from, TextView to);                           // 257
DatabaseFailure NotComparable();                                                          // 306
DatabaseFailure NotDistinct(TextView type);                                               // 421
DatabaseFailure NotInUnion(TextView type);                                                // 5335
DatabaseFailure TypesIncompatible(TextView left, TextView right, TextView operation);     // 402
DatabaseFailure ExplicitNotAllowed(TextView from, TextView to);                           // 529
DatabaseFailure InvalidArgumentType(TextView type, int32_t argument, TextView function);  // 8116
DatabaseFailure InvalidOperandType(TextView type, TextView operation);                    // 8117
DatabaseFailure LengthTooLarge(int32_t length, TextView type, int32_t maximum);           // 131
DatabaseFailure InvalidLength(int32_t length);                                            // 1001
DatabaseFailure WidthNotAllowed(TextView type);                                           // 2716
DatabaseFailure PrecisionTooLarge(int32_t precision);                                     // 2750
DatabaseFailure ScaleAbovePrecision(int32_t scale, int32_t precision);                    // 2751
// 4127 of COALESCE, 4151 of NULLIF, 8133 of CASE: `number` is one of them.
DatabaseFailure OnlyNulls(int32_t number);

// Values that do not become what they should.
DatabaseFailure WholeNumberOverflow(TextView type, int64_t value);              // 220
DatabaseFailure FloatOverflow(TextView type, double value);                     // 232
DatabaseFailure MoneyTextTooLong(TextView type);                                // 234
DatabaseFailure InvalidMoneyText();                                             // 235
DatabaseFailure MoneyOverflow();                                                // 236
DatabaseFailure InvalidDateText();                                              // 241
DatabaseFailure DateTextOutOfRange(TextView from, TextView to);                 // 242
DatabaseFailure SmallTextOverflow(TextView from, TextView value, TextView to);  // 244
DatabaseFailure InvalidText(TextView from, TextView value, TextView to);        // 245
DatabaseFailure TextOverflow(TextView from, TextView value);                    // 248
DatabaseFailure InvalidStyle(int32_t style, TextView from);                     // 281
DatabaseFailure InvalidSmallDateText();                                         // 295
DatabaseFailure InvalidNumberText(TextView from, TextView to);                  // 8114
DatabaseFailure ExpressionOverflow(TextView to);                                // 8115
DatabaseFailure ConversionOverflow(TextView from, TextView to);                 // 8115
DatabaseFailure InvalidGuidText();                                              // 8169
DatabaseFailure GuidTextTooLong();                                              // 8170

// Values that functions refuse.
DatabaseFailure UnknownDatePart(TextView name, TextView function);                  // 155
DatabaseFailure DateAddOverflow(TextView type);                                     // 517
DatabaseFailure DateDiffOverflow();                                                 // 535
DatabaseFailure InvalidRightLength();                                               // 536
DatabaseFailure InvalidLeftLength();                                                // 537
DatabaseFailure PartNotSupported(TextView part, TextView function, TextView type);  // 9810
DatabaseFailure DividedByZero();                                                    // 8134
DatabaseFailure InvalidFloatOperation();                                            // 3623
DatabaseFailure InvalidEscape(TextView escape);                                     // 506

// Rows that a table refuses.
DatabaseFailure NullNotAllowed(TextView column, TextView table, TextView statement);  // 515
DatabaseFailure IdentityInsertOff(TextView table);                                    // 544
DatabaseFailure ConstraintConflict(TextView statement, TextView kind, TextView constraint,
                                   TextView table, TextView column);               // 547
DatabaseFailure DuplicateIndexKey(TextView table, TextView index);                 // 2601
DatabaseFailure DuplicateKey(TextView kind, TextView constraint, TextView table);  // 2627
DatabaseFailure TextTruncated(TextView table, TextView column, TextView kept);     // 2628

}  // namespace vellum250::database::embedded
