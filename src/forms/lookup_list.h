// Select lists of rows of the table lookup.
#pragma once

#include "automation/variant.h"
#include "runtime/trap.h"

namespace vellum250::forms {

struct LookupListRequest {
  // Lookup references with commas between.
  TextView types;
  int32_t selected = 0;
  TextView id = u"LocType";
  // Only rows whose code begins with the prefix, or all but these. An empty prefix keeps all.
  bool keepsPrefix = false;
  TextView codePrefix = {};
};

// The whole select element, or Empty when there is no row. Traces. While SysDebug is on a failure
// is reported and the result is Empty. Raises 5 for `types` that are no list and for a quote in
// `codePrefix`, and what the database raises.
Variant AddressDropDownList(CallReport report, const LookupListRequest& request);

}  // namespace vellum250::forms
