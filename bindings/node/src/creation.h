// Where the objects come from.
#pragma once

#include "automation/object.h"

namespace vellum250::node {

// A new object of a published class. Raises 429 for an unknown name.
ObjectRef Create(TextView name);

}  // namespace vellum250::node
