#include "host_object.h"

#include <vector>

#include "environment.h"
#include "failures.h"
#include "values.h"

namespace vellum250::node {

namespace {

// What a page's object answered. Nothing at all is Empty: as a result, undefined is not an
// argument left out.
Variant Answer(Environment& environment, napi_value value, TextView member) {
  try {
    Variant answer = ToVariant(environment, value);
    return answer.IsMissing() ? Variant() : answer;
  } catch (const Failure& failure) {
    throw WithDetail(failure, Text(member) + u" of the page's dictionary");
  }
}

// A JavaScript Map. Its own functions run no code of the page, so that what was read holds good
// until the page runs again; asking whether a key exists and then for its item is one look-up.
class MapDictionary final : public HostObject {
 public:
  MapDictionary(Environment& environment, napi_value value) : HostObject(environment, value) {}

  Variant Invoke(TextView member, InvokeKind, Arguments arguments) override {
    Environment& environment = Living();
    if (EqualsIgnoreAsciiCase(member, u"Count")) return Count(environment);
    const bool exists = EqualsIgnoreAsciiCase(member, u"Exists");
    if (!exists && !member.empty() && !EqualsIgnoreAsciiCase(member, u"Item")) {
      throw NoSuchMember(Text(member) + u" of a Map");
    }
    if (arguments.size() != 1) throw WrongNumberOfArguments(Text(member) + u" of a Map");
    LookUp(environment, arguments[0]);
    return exists ? Variant(found_) : item_;
  }

 private:
  int32_t Count(Environment& environment) {
    if (countEpoch_ != environment.Epoch()) {
      const Napi::HandleScope scope(environment.Env());
      const napi_value size = CallFunction(environment.Functions().mapSize.Value(), {});
      Check(environment.Env(), napi_get_value_int32(environment.Env(), size, &count_));
      countEpoch_ = environment.Epoch();
    }
    return count_;
  }

  void LookUp(Environment& environment, const Variant& key) {
    if (epoch_ == environment.Epoch() && key == key_) return;
    epoch_ = 0;
    const Napi::HandleScope scope(environment.Env());
    const napi_value name = ToJavaScript(environment, key);
    const napi_value item = CallFunction(environment.Functions().mapGet.Value(), {&name, 1});
    item_ = Answer(environment, item, u"Item");
    found_ = !item_.IsEmpty();
    if (!found_) {
      const napi_value has = CallFunction(environment.Functions().mapHas.Value(), {&name, 1});
      Check(environment.Env(), napi_get_value_bool(environment.Env(), has, &found_));
    }
    key_ = key;
    epoch_ = environment.Epoch();
  }

  uint64_t countEpoch_ = 0;
  int32_t count_ = 0;
  uint64_t epoch_ = 0;
  Variant key_;
  Variant item_;
  bool found_ = false;
};

// Any other object of the page: its members by the names the library asks for, as the object has
// them.
class ForwardingObject final : public HostObject {
 public:
  ForwardingObject(Environment& environment, napi_value value) : HostObject(environment, value) {}

  Variant Invoke(TextView member, InvokeKind kind, Arguments arguments) override {
    Environment& environment = Living();
    const napi_env env = environment.Env();
    const Napi::HandleScope scope(env);
    const TextView name = member.empty() ? TextView(u"Item") : member;
    if (!Includes(kind, InvokeKind::Method | InvokeKind::Get)) {
      throw NoSuchMember(Text(name) + u" of the page's dictionary cannot be assigned");
    }
    environment.PageRan();
    napi_value property = nullptr;
    if (napi_get_property(env, Value(), MakeText(env, name), &property) != napi_ok) {
      throw JavaScriptFailure::TakePending(env);
    }
    napi_valuetype type = napi_undefined;
    Check(env, napi_typeof(env, property, &type));
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

HostObject::HostObject(Environment& environment, napi_value value) : environment_(&environment) {
  Check(environment.Env(), napi_create_reference(environment.Env(), value, 1, &value_));
  environment.hostObjects.insert(this);
}

HostObject::~HostObject() {
  if (environment_ == nullptr) return;
  environment_->hostObjects.erase(this);
  napi_delete_reference(environment_->Env(), value_);
}

ObjectRef HostObject::From(Environment& environment, napi_value value) {
  if (IsMap(environment, value)) return MakeObject<MapDictionary>(environment, value);
  if (HasMembersOfDictionary(environment.Env(), value)) {
    return MakeObject<ForwardingObject>(environment, value);
  }
  return {};
}

napi_value HostObject::Value() const {
  const napi_env env = Living().Env();
  napi_value value = nullptr;
  Check(env, napi_get_reference_value(env, value_, &value));
  return value;
}

void HostObject::Detach() {
  napi_delete_reference(environment_->Env(), value_);
  environment_ = nullptr;
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
