#include "platform/temporary_name.h"

#include "platform/windows/late_bound.h"
#include "platform/windows/ole_failures.h"

namespace vellum250::platform {

Text TemporaryName() {
  const com::LateBound files(u"Scripting.FileSystemObject");
  com::OwnedVariant name;
  files.Call(u"GetTempName", DISPATCH_METHOD, {}, name);
  com::Check(VariantChangeType(&name, &name, 0, VT_BSTR));
  return Text(com::View(V_BSTR(&name)));
}

}  // namespace vellum250::platform
