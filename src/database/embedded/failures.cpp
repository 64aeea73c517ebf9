#include "database/embedded/failures.h"

namespace vellum250::database::embedded {
namespace {

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

Ends EffectOf(int32_t message) {
  switch (message) {
    case 241:
    case 245:
    case 295:
    case 8114:
    case 8169:
      return Ends::Transaction;
    case 0:
    case 191:
    case 217:
    case 1767:
    case 1776:
    case 2705:
    case 2714:
    case 2744:
    case 8110:
    case 8111:
    case 8147:
      return Ends::Batch;
    default:
      return Ends::Statement;
  }
}

}  // namespace vellum250::database::embedded
