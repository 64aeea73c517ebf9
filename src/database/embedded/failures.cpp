#include "database/embedded/failures.h"

#include <algorithm>
#include <iterator>

namespace vellum250::database::embedded {
namespace {

// The automation layer's "cannot convert" (DB_E_CANTCONVERTVALUE as SQL Server's provider uses it).
constexpr int32_t kConversionFailure = static_cast<int32_t>(0x80040E07);

int32_t ClassOf(int32_t message) {
  switch (message) {
    case 515:
    case 547:
    case 2601:
    case 2627:
      return kConstraintFailure;
    case 220:
    case 232:
    case 234:
    case 235:
    case 236:
    case 241:
    case 242:
    case 244:
    case 245:
    case 248:
    case 281:
    case 295:
    case 8114:
    case 8115:
    case 8169:
    case 8170:
      return kConversionFailure;
    default:
      return message == 0 ? kUnspecifiedFailure : kSyntaxFailure;
  }
}

}  // namespace

DatabaseFailure ServerFailure(int32_t message, Text description, int32_t line) {
  return DatabaseFailure(ClassOf(message), kLibrarySource, std::move(description), message, line);
}

DatabaseFailure Unsupported(TextView construct, int32_t line) {
  return DatabaseFailure(kSyntaxFailure, kLibrarySource,
                         u"not supported by the embedded database: " + Text(construct), 0, line);
}

DatabaseFailure NestedTooDeeply(int32_t line) {
  return ServerFailure(191,
                       u"Some part of your SQL statement is nested too deeply. Rewrite the query "
                       u"or break it up into smaller queries.",
                       line);
}

DatabaseFailure AtLine(const DatabaseFailure& failure, int32_t line) {
  if (failure.Line() != 0 || line == 0) return failure;
  return DatabaseFailure(failure.Number(), failure.Source(), failure.Description(),
                         failure.NativeNumber(), line);
}

bool EndsStatementOnly(int32_t message) {
  static constexpr int32_t kMessages[] = {201,  220,  512,  515,  544,  547,  2601, 2627, 2628,
                                          2812, 3701, 3902, 3903, 8115, 8134, 8144, 8145, 50000};
  return std::binary_search(std::begin(kMessages), std::end(kMessages), message);
}

}  // namespace vellum250::database::embedded
