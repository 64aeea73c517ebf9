#include "database/embedded/messages.h"

#include <cstdio>

#include "database/embedded/failures.h"

namespace vellum250::database::embedded {

Text Message::Piece(int64_t number) { return NumberText(number); }

DatabaseFailure Message::Filled(std::initializer_list<Text> pieces) const {
  Text filled;
  const Text* piece = pieces.begin();
  for (const char16_t c : text) {
    if (c == u'%' && piece != pieces.end()) {
      filled.append(*piece++);
    } else {
      filled.push_back(c);
    }
  }
  return ServerFailure(number, std::move(filled));
}

DatabaseFailure NotGrouped(TextView column, int32_t number) {
  const Message message{
      number,
      u"Column '%' is invalid in the % because it is not contained in either an aggregate function "
      u"or the GROUP BY clause."};
  return message(column, number == 8120   ? u"select list"
                         : number == 8121 ? u"HAVING clause"
                                          : u"ORDER BY clause");
}

DatabaseFailure FloatOverflow(TextView type, double value) {
  constexpr Message kMessage{232, u"Arithmetic overflow error for type %, value = %."};
  char digits[400];
  std::snprintf(digits, sizeof digits, "%f", value);
  return kMessage(type, FromUtf8(digits));
}

DatabaseFailure SmallTextOverflow(TextView from, TextView value, TextView to) {
  constexpr Message kMessage{244,
                             u"The conversion of the % value '%' overflowed an % column. Use a "
                             u"larger integer column."};
  return kMessage(from, value, to == u"tinyint" ? u"INT1" : u"INT2");
}

DatabaseFailure ConstraintConflict(TextView statement, TextView kind, TextView constraint,
                                   TextView table, TextView column) {
  constexpr Message kMessage{547,
                             u"The % statement conflicted with the % constraint \"%\". The "
                             u"conflict occurred in database \"vellum250\", table \"%\"%."};
  return kMessage(statement, kind, constraint, table,
                  column.empty() ? Text() : u", column '" + Text(column) + u"'");
}

}  // namespace vellum250::database::embedded
