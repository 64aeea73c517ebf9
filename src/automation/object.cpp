#include "automation/object.h"

#include "automation/enumerator.h"

namespace vellum250 {

void Retain(Object* object) noexcept {
  if (object != nullptr) ++object->references_;
}

void Release(Object* object) noexcept {
  if (object != nullptr && --object->references_ == 0) delete object;
}

Variant Enumerator::Invoke(TextView member, InvokeKind, Arguments) {
  throw NoSuchMember(Text(member) + u" of an enumerator");
}

}  // namespace vellum250
