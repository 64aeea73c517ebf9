#include "runtime/web_dictionary.h"

#include "automation/conversion.h"

namespace vellum250 {

namespace {

// A page finds its mistake only when it is told where that is.
bool AskWhether(Object& object, TextView member, Arguments arguments) {
  const Variant answer = object.Invoke(member, InvokeKind::Method | InvokeKind::Get, arguments);
  try {
    return ToBoolean(answer);
  } catch (const Failure& failure) {
    throw WithDetail(failure, Text(member) + u" of the page's dictionary");
  }
}

}  // namespace

bool WebDictionary::HasEntries() const {
  if (lookup_ != nullptr) return lookup_->Count() != 0;
  if (!object_) return false;
  // The page may replace the dictionary while its own code runs.
  const ObjectRef object = object_;
  return AskWhether(*object, u"Count", {});
}

const Variant* WebDictionary::Find(TextView key, Variant& storage) const {
  if (lookup_ != nullptr) return lookup_->Find(key);
  if (!object_) return nullptr;
  const ObjectRef object = object_;
  Variant argument(key);
  if (!AskWhether(*object, u"Exists", Arguments(&argument, 1))) return nullptr;
  argument = key;
  storage = object->Invoke(u"Item", InvokeKind::Method | InvokeKind::Get, Arguments(&argument, 1));
  return &storage;
}

}  // namespace vellum250
