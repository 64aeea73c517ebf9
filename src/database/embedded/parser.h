// From tokens to the tree.
#pragma once

#include "database/embedded/syntax.h"
#include "database/embedded/tokens.h"

namespace vellum250::database::embedded {

// Trees higher than this are refused (message 191), so that no later stage runs out of stack.
inline constexpr int32_t kMaxNesting = 200;

// Raises a DatabaseFailure (102, 156 ...) with the line. `batch` is the text that was scanned.
SyntaxTree ParseBatch(TextView batch, const Scanned& scanned);

// Behind SET QUOTED_IDENTIFIER OFF what stands in double quotes is a text: refused.
void RefuseQuotedTexts(TextView batch, const Scanned& scanned);

// One expression or condition on its own, as defaults and checks are stored.
ExpressionPtr ParseExpression(TextView text, const Scanned& scanned);

}  // namespace vellum250::database::embedded
