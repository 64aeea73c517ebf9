// The one exception that crosses rooms, and the run-time failures of the script language.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

#include "automation/text.h"

namespace vellum250 {

// A failure in words. `Number` is either a run-time error of the script language (1 to 65535; a
// COM host adds 0x800A0000) or a whole HRESULT (negative as an int32_t). `Description` is never
// empty and holds no password.
class Failure : public std::exception {
 public:
  Failure(int32_t number, Text source, Text description);

  int32_t Number() const noexcept { return number_; }
  const Text& Source() const noexcept { return source_; }
  const Text& Description() const noexcept { return description_; }
  // The description in UTF-8.
  const char* what() const noexcept override { return what_.c_str(); }

 private:
  int32_t number_;
  Text source_;
  Text description_;
  std::string what_;
};

// What `Failure::Source` says when the failure arose in the library itself.
inline constexpr char16_t kLibrarySource[] = u"vellum250";

// Makers of the run-time failures. `detail`, when given, follows the standard words after ": ".
Failure InvalidProcedureCall(TextView detail = {});    // 5
Failure OverflowFailure(TextView detail = {});         // 6
Failure OutOfMemory(TextView detail = {});             // 7
Failure SubscriptOutOfRange(TextView detail = {});     // 9
Failure TypeMismatch(TextView detail = {});            // 13
Failure ObjectNotSet(TextView detail = {});            // 91
Failure InvalidUseOfNull(TextView detail = {});        // 94
Failure ObjectRequired(TextView detail = {});          // 424
Failure CannotCreateObject(TextView detail = {});      // 429
Failure NoSuchMember(TextView detail = {});            // 438
Failure ArgumentNotOptional(TextView detail = {});     // 449
Failure WrongNumberOfArguments(TextView detail = {});  // 450
Failure KeyAlreadyAssociated(TextView detail = {});    // 457
Failure PatternSyntaxError(TextView detail = {});      // 5017

// The same failure with ": " and `detail` after its description.
Failure WithDetail(const Failure& failure, TextView detail);

// Runs inside a catch block: whatever was thrown, as a Failure (std::bad_alloc is 7, any other
// exception is 51, internal error, with its own words). For host boundaries.
Failure CurrentFailure() noexcept;

}  // namespace vellum250
