// A keyed dictionary that the page hands over.
#pragma once

#include "automation/keyed_lookup.h"
#include "automation/object.h"

namespace vellum250 {

// Until a page hands one over there is none, which is the same as one without entries. An object
// must offer `Count`, `Exists(key)` and `Item(key)`; whatever it raises reaches the caller.
class WebDictionary {
 public:
  WebDictionary() = default;
  explicit WebDictionary(ObjectRef object)
      : object_(std::move(object)), lookup_(dynamic_cast<const KeyedLookup*>(object_.get())) {}

  bool HasEntries() const;

  // The value of a key, or nullptr when it is absent. Valid until the next question to the
  // dictionary or change of it; `storage` takes the value when the dictionary keeps none.
  const Variant* Find(TextView key, Variant& storage) const;

 private:
  ObjectRef object_;
  const KeyedLookup* lookup_ = nullptr;  // `object_`, when it offers that
};

}  // namespace vellum250
