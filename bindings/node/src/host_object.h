// The page's own objects as the library calls them: the dictionaries it hands over.
#pragma once

#include <napi.h>

#include "automation/object.h"

namespace vellum250::node {

class Environment;

// Keeps the page's object alive. Belongs to the thread of its environment; when that ends first, a
// call raises 91.
class HostObject : public Object {
 public:
  ~HostObject() override;

  // A dictionary that forwards to `value`: a Map, or any object with Count, Exists and Item.
  // nullptr for another object.
  static ObjectRef From(Environment& environment, napi_value value);

  // The page's object itself, in the current handle scope.
  napi_value Value() const;

  // The environment ends.
  void Detach();

 protected:
  HostObject(Environment& environment, napi_value value);

  // Raises 91 when the environment has ended.
  Environment& Living() const;
  // Calls a function of JavaScript on the page's object. Raises JavaScriptFailure.
  napi_value CallFunction(napi_value function, std::span<const napi_value> arguments) const;

 private:
  Environment* environment_;
  napi_ref value_ = nullptr;
};

}  // namespace vellum250::node
