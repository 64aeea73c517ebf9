// What the addon keeps for one JavaScript environment: the main thread's or a worker's. It is the
// addon's instance data and ends with the environment.
#pragma once

#include <napi.h>

#include <cstdint>
#include <memory>
#include <unordered_map>
#include <unordered_set>

#include "automation/class_table.h"

namespace vellum250::node {

class ClassBinding;
class HostObject;
struct Wrapper;

// Built-in functions of JavaScript, taken when the addon is loaded: what a page puts into their
// place later is not called.
struct BuiltIns {
  explicit BuiltIns(Napi::Env env);

  Napi::FunctionReference mapGet;
  Napi::FunctionReference mapHas;
  Napi::FunctionReference mapSize;
  // Called on a map with a list [key, item, key, item ...], the first entry and a number of
  // entries: the map's size when it still holds those items under those keys, otherwise ~size.
  Napi::FunctionReference compareMap;
  Napi::FunctionReference date;
  Napi::FunctionReference dateParts[7];  // year, month (0-11), day, hour, minute, second, ms
  Napi::FunctionReference proxy;
  Napi::FunctionReference setPrototypeOf;
};

class Environment {
 public:
  explicit Environment(Napi::Env env);
  ~Environment();
  Environment(const Environment&) = delete;
  Environment& operator=(const Environment&) = delete;

  static Environment& Of(napi_env env) { return *Napi::Env(env).GetInstanceData<Environment>(); }

  Napi::Env Env() const { return env_; }
  const BuiltIns& Functions() const { return builtIns_; }

  // Changes whenever JavaScript code of the page may have run. What was read from a page's object
  // holds good until then.
  uint64_t Epoch() const { return epoch_; }
  void PageRan() { ++epoch_; }

  // The class behind the published table, made at its first use.
  ClassBinding& BindingOf(const ClassTable& table);

  Napi::FunctionReference refClass;         // of `ref(value)`
  Napi::FunctionReference connectionClass;  // of `open(connectionString)`

  // Living wrappers by what they wrap, and the page's objects that the library holds: both are
  // told when the environment ends before they do.
  std::unordered_map<const Object*, Wrapper*> wrappers;
  std::unordered_set<HostObject*> hostObjects;

 private:
  Napi::Env env_;
  BuiltIns builtIns_;
  uint64_t epoch_ = 1;
  std::unordered_map<const ClassTable*, std::unique_ptr<ClassBinding>> bindings_;
};

}  // namespace vellum250::node
