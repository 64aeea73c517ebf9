#include "automation/failure.h"

#include <new>

namespace vellum250 {

Failure::Failure(int32_t number, Text source, Text description)
    : number_(number),
      source_(std::move(source)),
      description_(std::move(description)),
      what_(ToUtf8(description_)) {}

namespace {
Failure Make(int32_t number, TextView words, TextView detail) {
  Text description(words);
  if (!detail.empty()) description.append(u": ").append(detail);
  return Failure(number, kLibrarySource, std::move(description));
}
}  // namespace

Failure InvalidProcedureCall(TextView detail) {
  return Make(5, u"Invalid procedure call or argument", detail);
}
Failure OverflowFailure(TextView detail) { return Make(6, u"Overflow", detail); }
Failure OutOfMemory(TextView detail) { return Make(7, u"Out of memory", detail); }
Failure SubscriptOutOfRange(TextView detail) { return Make(9, u"Subscript out of range", detail); }
Failure TypeMismatch(TextView detail) { return Make(13, u"Type mismatch", detail); }
Failure ObjectNotSet(TextView detail) { return Make(91, u"Object variable not set", detail); }
Failure InvalidUseOfNull(TextView detail) { return Make(94, u"Invalid use of Null", detail); }
Failure ObjectRequired(TextView detail) { return Make(424, u"Object required", detail); }
Failure CannotCreateObject(TextView detail) {
  return Make(429, u"The component cannot create the object", detail);
}
Failure NoSuchMember(TextView detail) {
  return Make(438, u"Object doesn't support this property or method", detail);
}
Failure ArgumentNotOptional(TextView detail) { return Make(449, u"Argument not optional", detail); }
Failure WrongNumberOfArguments(TextView detail) {
  return Make(450, u"Wrong number of arguments or invalid property assignment", detail);
}
Failure KeyAlreadyAssociated(TextView detail) {
  return Make(457, u"This key is already associated with an element of this collection", detail);
}
Failure PatternSyntaxError(TextView detail) {
  return Make(5017, u"Syntax error in regular expression", detail);
}

Failure WithDetail(const Failure& failure, TextView detail) {
  return Failure(failure.Number(), failure.Source(), failure.Description() + u": " + Text(detail));
}

Failure CurrentFailure() noexcept {
  try {
    throw;
  } catch (const Failure& failure) {
    return failure;
  } catch (const std::bad_alloc&) {
    return OutOfMemory();
  } catch (const std::exception& error) {
    return Make(51, u"Internal error", FromUtf8(error.what()));
  } catch (...) {
    return Make(51, u"Internal error", {});
  }
}

}  // namespace vellum250
