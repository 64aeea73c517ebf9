#include "environment.h"

#include "classes.h"
#include "host_object.h"

namespace vellum250::node {

namespace {

Napi::FunctionReference Keep(Napi::Value function) {
  return Napi::Persistent(function.As<Napi::Function>());
}

Napi::Object PrototypeOf(Napi::Env env, const char* className) {
  return env.Global().Get(className).As<Napi::Object>().Get("prototype").As<Napi::Object>();
}

constexpr char kCompareMap[] = R"js('use strict';
(() => {
  const get = Function.prototype.call.bind(Map.prototype.get);
  const { get: sizeOf } = Object.getOwnPropertyDescriptor(Map.prototype, 'size');
  const size = Function.prototype.call.bind(sizeOf);
  const { is } = Object;
  return function (list, first, count) {
    const end = Math.min(2 * (first + count), list.length);
    for (let i = 2 * first; i < end; i += 2) {
      if (!is(get(this, list[i]), list[i + 1])) return ~size(this);
    }
    return size(this);
  };
})();
)js";

}  // namespace

BuiltIns::BuiltIns(Napi::Env env) {
  const Napi::Object map = PrototypeOf(env, "Map");
  mapGet = Keep(map.Get("get"));
  mapHas = Keep(map.Get("has"));
  const Napi::Object object = env.Global().Get("Object").As<Napi::Object>();
  const Napi::Value size = object.Get("getOwnPropertyDescriptor")
                               .As<Napi::Function>()
                               .Call({map, Napi::String::New(env, "size")});
  mapSize = Keep(size.As<Napi::Object>().Get("get"));
  compareMap = Keep(env.RunScript(kCompareMap));
  setPrototypeOf = Keep(object.Get("setPrototypeOf"));
  proxy = Keep(env.Global().Get("Proxy"));

  date = Keep(env.Global().Get("Date"));
  const Napi::Object dates = PrototypeOf(env, "Date");
  static constexpr const char* kGetters[] = {"getFullYear",    "getMonth",   "getDate",
                                             "getHours",       "getMinutes", "getSeconds",
                                             "getMilliseconds"};
  for (size_t i = 0; i < std::size(kGetters); ++i) dateParts[i] = Keep(dates.Get(kGetters[i]));
}

Environment::Environment(Napi::Env env) : env_(env), builtIns_(env) {}

Environment::~Environment() {
  for (const auto& [object, wrapper] : wrappers) wrapper->environment = nullptr;
  for (HostObject* object : hostObjects) object->Detach();
}

ClassBinding& Environment::BindingOf(const ClassTable& table) {
  std::unique_ptr<ClassBinding>& binding = bindings_[&table];
  if (!binding) binding = std::make_unique<ClassBinding>(*this, table);
  return *binding;
}

}  // namespace vellum250::node
