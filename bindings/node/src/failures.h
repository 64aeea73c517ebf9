// Failures on their way to JavaScript, and JavaScript's exceptions on their way through the
// library.
#pragma once

#include <napi.h>

#include <memory>

#include "automation/failure.h"

namespace vellum250::node {

// An exception that a page's own object threw while the library called it. Keeps the number,
// source and words when it was a failure of this library, otherwise it is 440, automation error,
// with the exception's message.
class JavaScriptFailure : public Failure {
 public:
  // Takes the exception that is pending in `env`.
  static JavaScriptFailure TakePending(napi_env env);

  // What was thrown, or an empty value when it was no object.
  Napi::Value Cause() const { return cause_ ? cause_->Value() : Napi::Value(); }

 private:
  JavaScriptFailure(int32_t number, Text source, Text description,
                    std::shared_ptr<Napi::ObjectReference> cause);
  std::shared_ptr<Napi::ObjectReference> cause_;
};

// Raises what went wrong in a Node-API call, when something did.
void Check(napi_env env, napi_status status);

// Runs inside a catch block: makes what was thrown JavaScript's pending exception, an `Error` with
// `number`, `source` and `description`; `nativeNumber` and `line` when it came from a database,
// `cause` when a page's own object threw it.
void ThrowToJavaScript(napi_env env) noexcept;

// What every function called by JavaScript runs in: no C++ exception gets out.
template <typename Body>
napi_value Guarded(napi_env env, Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    ThrowToJavaScript(env);
    return nullptr;
  }
}

}  // namespace vellum250::node
