// A keyed dictionary that the page hands over: the host's own object, or the library's Dictionary.
#pragma once

#include "automation/dictionary.h"

namespace vellum250 {

// Until a page hands one over there is none, which is the same as one without entries. An object
// must offer `Count`, `Exists(key)` and `Item(key)`; whatever it raises reaches the caller.
class WebDictionary {
 public:
  WebDictionary() = default;
  explicit WebDictionary(ObjectRef object)
      : object_(std::move(object)), own_(dynamic_cast<const Dictionary*>(object_.get())) {}

  bool HasEntries() const;

  // The value of a key, or nullptr when it is absent. The library's own dictionary gives its own
  // value, valid until its next change; `storage` takes that of a host's.
  const Variant* Find(TextView key, Variant& storage) const;

 private:
  ObjectRef object_;
  const Dictionary* own_ = nullptr;  // `object_`, when it is the library's
};

}  // namespace vellum250
