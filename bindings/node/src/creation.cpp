#include "creation.h"

#include "server/factory.h"

namespace vellum250::node {

ObjectRef Create(TextView name) { return server::CreateObject(name); }

}  // namespace vellum250::node
