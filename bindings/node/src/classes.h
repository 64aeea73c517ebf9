// Objects of the library as JavaScript objects: one JavaScript class for each published table, its
// prototype made once with the published members in their published case.
#pragma once

#include <napi.h>

#include <vector>

#include "automation/class_table.h"

namespace vellum250::node {

class Environment;

// What stands behind one JavaScript object; owned by it.
struct Wrapper {
  ObjectRef object;
  Environment* environment;  // nullptr once the environment has ended or another wrapper took over
  napi_ref self = nullptr;   // weak
};

// A member of the table with what its JavaScript function needs; no name is looked up in a call.
struct MemberBinding {
  Environment& environment;
  const ClassTable& table;
  const MemberInfo& member;
};

class ClassBinding {
 public:
  ClassBinding(Environment& environment, const ClassTable& table);

  Napi::Object NewWrapper(const ObjectRef& object);

 private:
  Environment& environment_;
  std::vector<MemberBinding> members_;
  Napi::FunctionReference class_;
};

// The JavaScript object of `object`: the same one as long as it lives. Raises 13 for an object
// without a published interface.
napi_value Wrap(Environment& environment, const ObjectRef& object);

// The object behind a value that Wrap made, no object for any other value.
ObjectRef Unwrap(napi_env env, napi_value value);

// The class of by-reference arguments: `value` goes in and holds the changed value afterwards.
Napi::Function DefineRefClass(Napi::Env env);

}  // namespace vellum250::node
