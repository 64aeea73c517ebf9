// Creation by name: the one table of published classes.
#pragma once

#include <span>

#include "automation/class_table.h"

namespace vellum250::server {

struct PublishedClass {
  const ClassTable& (*table)();
  ObjectRef (*create)();
};

// In the order of the external interface.
std::span<const PublishedClass> PublishedClasses();

// A new object of the class ("vellum250.address"; without regard to case). Raises 429 with the
// name for one that is not published.
ObjectRef CreateObject(TextView name);

}  // namespace vellum250::server
