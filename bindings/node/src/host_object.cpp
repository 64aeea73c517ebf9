#include "host_object.h"

#include "environment.h"
#include "failures.h"
#include "map_dictionary.h"
#include "values.h"

namespace vellum250::node {

namespace {

// An object of the page that is no Map: its members by the names the library asks for, as the
// object has them.
class ForwardingObject final : public HostObject {
 public:
  ForwardingObject(Environment& environment, napi_value value) : HostObject(environment, value) {}

  Variant Invoke(TextView member, InvokeKind kind, Arguments arguments) override {
    Environment& environment = Living();
    const napi_env env = environment.Env();
    const Napi::HandleScope scope(env);
    const TextView name = member.empty() ? TextView(u"Item") : member;
    if (member.empty() && arguments.empty()) throw NoSuchMember(u"a dictionary without a key");
    if (!Includes(kind, InvokeKind::Method | InvokeKind::Get)) {
      throw NoSuchMember(Text(name) + u" of the page's dictionary cannot be assigned");
    }
    environment.PageRan();
    napi_value property = nullptr;
    if (napi_get_property(env, Value(), MakeText(env, name), &property) != napi_ok) {
      throw JavaScriptFailure::TakePending(env);
    }
    const napi_valuetype type = TypeOf(env, property);
    if (type != napi_function) {
      if (type != napi_undefined && arguments.empty()) return Answer(environment, property, name);
      throw NoSuchMember(Text(name) + u" of the page's dictionary");
    }
    std::vector<napi_value> values;
    for (const Variant& argument : arguments) values.push_back(ToJavaScript(environment, argument));
    const napi_value result = CallFunction(property, values);
    environment.PageRan();
    return Answer(environment, result, name);
  }
};

bool IsMap(Environment& environment, napi_value value) {
  const napi_env env = environment.Env();
  napi_value size = nullptr;
  // The function answers for maps only, also for those of another realm.
  if (napi_call_function(env, value, environment.Functions().mapSize.Value(), 0, nullptr, &size) ==
      napi_ok) {
    return true;
  }
  Check(env, napi_get_and_clear_last_exception(env, &size));
  return false;
}

bool HasMembersOfDictionary(napi_env env, napi_value value) {
  for (const char* name : {"Count", "Exists", "Item"}) {
    bool has = false;
    Check(env, napi_has_named_property(env, value, name, &has));
    if (!has) return false;
  }
  return true;
}

}  // namespace

Variant Answer(Environment& environment, napi_value value, TextView member) {
  try {
    Variant answer = ToVariant(environment, value);
    return answer.IsMissing() ? Variant() : answer;
  } catch (const Failure& failure) {
    throw WithDetail(failure, Text(member) + u" of the page's dictionary");
  }
}

HostObject::HostObject(Environment& environment, napi_value value) : environment_(&environment) {
  Hold(value);
  environment.hostObjects.insert(this);
}

HostObject::~HostObject() {
  if (environment_ == nullptr) return;
  environment_->hostObjects.erase(this);
  Detach();
}

ObjectRef HostObject::From(Environment& environment, napi_value value) {
  for (HostObject* known : environment.hostObjects) {
    bool same = false;
    Check(environment.Env(), napi_strict_equals(environment.Env(), known->Value(), value, &same));
    if (same) return ObjectRef(known);
  }
  if (IsMap(environment, value)) return MakeObject<MapDictionary>(environment, value);
  if (HasMembersOfDictionary(environment.Env(), value)) {
    return MakeObject<ForwardingObject>(environment, value);
  }
  return {};
}

void HostObject::Detach() {
  for (napi_ref reference : held_) napi_delete_reference(environment_->Env(), reference);
  held_.clear();
  environment_ = nullptr;
}

napi_ref HostObject::Hold(napi_value value) {
  napi_ref reference = nullptr;
  Check(Living().Env(), napi_create_reference(Living().Env(), value, 1, &reference));
  held_.push_back(reference);
  return reference;
}

napi_value HostObject::Held(napi_ref reference) const {
  napi_value value = nullptr;
  Check(Living().Env(), napi_get_reference_value(Living().Env(), reference, &value));
  return value;
}

napi_value HostObject::Value() const {
  Living();
  return Held(held_.front());
}

Environment& HostObject::Living() const {
  if (environment_ == nullptr) {
    throw ObjectNotSet(u"the page that owned this dictionary has ended");
  }
  return *environment_;
}

napi_value HostObject::CallFunction(napi_value function,
                                    std::span<const napi_value> arguments) const {
  const napi_env env = Living().Env();
  napi_value result = nullptr;
  if (napi_call_function(env, Value(), function, arguments.size(), arguments.data(), &result) !=
      napi_ok) {
    throw JavaScriptFailure::TakePending(env);
  }
  return result;
}

}  // namespace vellum250::node
