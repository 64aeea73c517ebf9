#include "runtime/web_dictionary.h"

#include "automation/conversion.h"

namespace vellum250 {

bool WebDictionary::HasEntries() const {
  if (lookup_ != nullptr) return lookup_->Count() != 0;
  if (!object_) return false;
  // The page may replace the dictionary while its own code runs.
  const ObjectRef object = object_;
  return ToBoolean(object->Invoke(u"Count", InvokeKind::Method | InvokeKind::Get, {}));
}

const Variant* WebDictionary::Find(TextView key, Variant& storage) const {
  if (lookup_ != nullptr) return lookup_->Find(key);
  if (!object_) return nullptr;
  const ObjectRef object = object_;
  const auto call = [&](TextView member) {
    Variant argument(key);
    return object->Invoke(member, InvokeKind::Method | InvokeKind::Get, Arguments(&argument, 1));
  };
  if (!ToBoolean(call(u"Exists"))) return nullptr;
  storage = call(u"Item");
  return &storage;
}

}  // namespace vellum250
