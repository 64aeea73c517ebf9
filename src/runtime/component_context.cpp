#include "runtime/component_context.h"

namespace vellum250 {

ComponentContext& ComponentContext::Current() {
  thread_local ComponentContext context;
  return context;
}

}  // namespace vellum250
