#include "database/embedded/failures.h"

#include <algorithm>

namespace vellum250::database::embedded {
namespace {

// Each in order.
constexpr int32_t kConstraintMessages[] = {515, 547, 2601, 2627};
constexpr int32_t kConversionMessages[] = {220, 232, 234, 235, 236,  241,  242,  244,
                                           245, 248, 281, 295, 8114, 8115, 8169, 8170};
constexpr int32_t kEndsTransaction[] = {241, 245, 295, 8114, 8169};
constexpr int32_t kEndsBatch[] = {0,    191,  217,  1702, 1767, 1776,
                                  2705, 2714, 2744, 8110, 8111, 8147};

template <size_t N>
bool IsOneOf(const int32_t (&messages)[N], int32_t message) {
  return std::ranges::binary_search(messages, message);
}

int32_t ClassOf(int32_t message) {
  if (IsOneOf(kConstraintMessages, message)) return kConstraintFailure;
  if (IsOneOf(kConversionMessages, message)) return kConversionFailure;
  return message == 0 ? kUnspecifiedFailure : kSyntaxFailure;
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
  if (IsOneOf(kEndsTransaction, message)) return Ends::Transaction;
  return IsOneOf(kEndsBatch, message) ? Ends::Batch : Ends::Statement;
}

}  // namespace vellum250::database::embedded
