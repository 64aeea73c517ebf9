// The page's own objects as the library calls them: the dictionaries it hands over.
#pragma once

#include <napi.h>

#include <span>
#include <vector>

#include "automation/object.h"

namespace vellum250::node {

class Environment;

// Keeps the page's object alive. Belongs to the thread of its environment; when that ends first, a
// call raises 91.
class HostObject : public Object {
 public:
  ~HostObject() override;

  // A dictionary that forwards to `value`: a Map, or any object with Count, Exists and Item. The
  // same one as long as the library holds it. No object for another value.
  static ObjectRef From(Environment& environment, napi_value value);

  // The page's object itself, in the current handle scope.
  napi_value Value() const;

  // The environment ends.
  void Detach();

 protected:
  HostObject(Environment& environment, napi_value value);

  // Raises 91 when the environment has ended.
  Environment& Living() const;
  // Keeps a further value of JavaScript alive, as long as this object and the environment live.
  napi_ref Hold(napi_value value);
  napi_value Held(napi_ref reference) const;
  // Calls a function of JavaScript on the page's object. Raises JavaScriptFailure.
  napi_value CallFunction(napi_value function, std::span<const napi_value> arguments) const;

 private:
  Environment* environment_;
  std::vector<napi_ref> held_;  // the page's object first
};

// What a page's object answered. Nothing at all is Empty: as a result, undefined is not an argument
// left out. Raises 13 with the member's name.
Variant Answer(Environment& environment, napi_value value, TextView member);

}  // namespace vellum250::node
