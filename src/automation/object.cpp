#include "automation/object.h"

namespace vellum250 {

void Retain(Object* object) noexcept {
  if (object != nullptr) ++object->references_;
}

void Release(Object* object) noexcept {
  if (object != nullptr && --object->references_ == 0) delete object;
}

}  // namespace vellum250
