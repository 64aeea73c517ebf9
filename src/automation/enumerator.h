// What walks a collection from one end to the other: the answer of its standard enumerator.
#pragma once

#include <optional>

#include "automation/object.h"

namespace vellum250 {

// A host makes of it whatever its language's loop wants.
class Enumerator : public Object {
 public:
  // The next element, nothing at the end.
  virtual std::optional<Variant> Next() = 0;
  // Back to the first element.
  virtual void Reset() = 0;
  // Another one that stands at the same place.
  virtual Ref<Enumerator> Clone() const = 0;

  // It has no members of its own: 438.
  Variant Invoke(TextView member, InvokeKind kind, Arguments arguments) override;
};

}  // namespace vellum250
