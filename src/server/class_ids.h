// The identities under which Windows knows the library and its classes. Callers have them compiled
// in: one that was published never changes and is never used again.
#pragma once

#include <span>

#include "automation/text.h"

namespace vellum250::server {

// All ids are in the registry's form, "{xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx}", lower case.
inline constexpr TextView kLibraryId = u"{a314cdcb-bd68-4293-8f71-6c49b95d1ee4}";
inline constexpr int kLibraryMajorVersion = 1;
inline constexpr int kLibraryMinorVersion = 0;

struct ClassIds {
  TextView name;         // as scripts create it
  TextView classId;      // of the class
  TextView interfaceId;  // of its dispatch interface
};

// In the order of the external interface.
std::span<const ClassIds> AllClassIds();

// Without regard to case; nullptr for a class without ids.
const ClassIds* FindClassIds(TextView name);

}  // namespace vellum250::server
