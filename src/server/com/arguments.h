// The arguments of one call, from the script engine's order into the interface's and back.
#pragma once

#include "automation/class_table.h"
#include "platform/windows/ole.h"

namespace vellum250::com {

class CallArguments {
 public:
  // `given` and `member` outlive this. Raises 450 for a named argument that is none of the member's
  // or given twice, and the failure of a conversion with the parameter's name.
  CallArguments(const MemberInfo& member, const DISPPARAMS& given);

  Arguments Values() { return values_; }

  // By-reference arguments that the member changed. Raises 13 and 6, with the parameter's name,
  // for a typed variable that cannot take the value; the others are written all the same.
  void WriteBack();

 private:
  // The one of `given.rgvarg[i]`.
  size_t IndexOf(size_t i) const;
  bool IsTextReference(size_t index) const;
  Text NameOf(size_t index) const;

  const MemberInfo& member_;
  const DISPPARAMS& given_;
  SmallArray<Variant, 32> values_;
};

}  // namespace vellum250::com
