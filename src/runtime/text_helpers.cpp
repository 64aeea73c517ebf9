#include "runtime/text_helpers.h"

#include <algorithm>

#include "automation/failure.h"

namespace vellum250 {

bool IsValidEmailAddress(TextView address) {
  const size_t at = address.find(u'@');
  if (at == TextView::npos || at == 0) return false;
  const size_t lastDot = address.rfind(u'.');
  if (lastDot == TextView::npos || lastDot < at) return false;
  const size_t ending = address.size() - lastDot - 1;
  return ending == 2 || ending == 3;
}

Text DigitsOnly(TextView text) {
  Text digits;
  std::ranges::copy_if(text, std::back_inserter(digits),
                       [](char16_t c) { return c >= u'0' && c <= u'9'; });
  return digits;
}

Text PadLeft(TextView text, TextView pad, int16_t length) {
  const size_t wanted = length < 0 ? 0 : static_cast<size_t>(length);
  if (text.size() < wanted && pad.empty()) throw InvalidProcedureCall(u"the pad is empty");
  Text out;
  while (out.size() + text.size() < wanted) out.append(pad);
  return out.append(text);
}

Text RepeatToLength(TextView model, TextView unit) {
  if (unit.empty()) throw InvalidProcedureCall(u"the unit to repeat is empty");
  Text out(unit);
  while (out.size() <= model.size()) out.append(unit);
  return out;
}

}  // namespace vellum250
