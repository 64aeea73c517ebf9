// The script engine's own regular expressions.
#include "platform/pattern.h"

#include "automation/failure.h"
#include "platform/windows/late_bound.h"
#include "platform/windows/ole_failures.h"

namespace vellum250::platform {

namespace {

using com::LateBound;

void Put(const LateBound& object, const char16_t* property, VARIANT value) {
  com::OwnedVariant none;
  object.Call(property, DISPATCH_PROPERTYPUT, {&value, 1}, none);
}

VARIANT True() {
  VARIANT value;
  V_VT(&value) = VT_BOOL;
  V_BOOL(&value) = VARIANT_TRUE;
  return value;
}

// The text stays the caller's.
VARIANT Lent(const com::Bstr& text) {
  VARIANT value;
  V_VT(&value) = VT_BSTR;
  V_BSTR(&value) = text.get();
  return value;
}

int32_t Number(const LateBound& object, const char16_t* property) {
  com::OwnedVariant value;
  object.Call(property, DISPATCH_PROPERTYGET, {}, value);
  com::Check(VariantChangeType(&value, &value, 0, VT_I4));
  return V_I4(&value);
}

LateBound ObjectOf(const LateBound& object, const char16_t* member, VARIANT argument) {
  com::OwnedVariant answer;
  object.Call(member, DISPATCH_METHOD | DISPATCH_PROPERTYGET, {&argument, 1}, answer);
  com::Check(VariantChangeType(&answer, &answer, 0, VT_DISPATCH));
  return LateBound(com::ComPtr<IDispatch>(V_DISPATCH(&answer)));
}

}  // namespace

std::vector<PatternMatch> FindMatches(TextView pattern, TextView subject) {
  const LateBound expression(u"VBScript.RegExp");
  const com::Bstr patternText(pattern);
  const com::Bstr subjectText(subject);
  Put(expression, u"IgnoreCase", True());
  Put(expression, u"Global", True());
  try {
    Put(expression, u"Pattern", Lent(patternText));
    const LateBound matches = ObjectOf(expression, u"Execute", Lent(subjectText));
    std::vector<PatternMatch> found(static_cast<size_t>(Number(matches, u"Count")));
    VARIANT index;
    V_VT(&index) = VT_I4;
    V_I4(&index) = 0;
    for (PatternMatch& match : found) {
      const LateBound item = ObjectOf(matches, u"Item", index);
      match = {static_cast<size_t>(Number(item, u"FirstIndex")),
               static_cast<size_t>(Number(item, u"Length"))};
      ++V_I4(&index);
    }
    return found;
  } catch (const Failure& failure) {
    // What an engine without words of its own says.
    if (failure.Number() == E_FAIL) throw PatternSyntaxError();
    throw;
  }
}

}  // namespace vellum250::platform
