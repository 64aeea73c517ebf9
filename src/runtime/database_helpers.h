// Statements in one line. Each opens the thread's connection, runs one batch and closes it again.
//
// A connection string that is not empty replaces the thread's remembered one; an empty one means
// the remembered one. All raise the DatabaseFailure of a connection that cannot be opened, and,
// but for InsertAndGetIdentity, that of the statement.
#pragma once

#include "automation/variant.h"

namespace vellum250 {

// Remembers a connection string that is not empty.
void RememberConnection(TextView connectionString);
// The thread's connection string.
Text GetConnectionString();

void ExecuteSql(TextView sql, TextView connectionString = {});

// The first field of the first row as text without surrounding blanks; boolean false when there is
// no row or that text is empty. NULL is an empty text.
Variant GetScalar(TextView sql, TextView connectionString = {});
// The same, an empty text in place of false.
Text GetScalarText(TextView sql, TextView connectionString = {});
// The same as a number, 0 in place of false. Raises 13 for a text that is none, 6 for a number
// beyond 32 bits.
int32_t GetScalarNumber(TextView sql, TextView connectionString = {});

// Runs an INSERT and gives the identity value of the new row; boolean false when it failed,
// whatever the reason.
Variant InsertAndGetIdentity(TextView sql, TextView connectionString = {});

// Every "'" doubled. The enclosing quotes are the caller's.
Text SqlQuote(TextView text);

}  // namespace vellum250
