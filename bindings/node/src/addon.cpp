// What the addon offers: `createObject`, `ref` and `open`.

#include <napi.h>

#include <memory>

#include "classes.h"
#include "connection.h"
#include "creation.h"
#include "environment.h"
#include "failures.h"
#include "values.h"

namespace vellum250::node {

namespace {

napi_value CreateObject(napi_env env, napi_callback_info info) {
  return Guarded(env, [&] {
    const Text name = RequireText(env, FirstArgument(env, info), u"name");
    return Wrap(Environment::Of(env), Create(name));
  });
}

napi_value MakeRef(napi_env env, napi_callback_info info) {
  return Guarded(env, [&]() -> napi_value {
    return Environment::Of(env).refClass.New({FirstArgument(env, info)});
  });
}

// Once in every environment that loads the addon: the main thread and each worker.
Napi::Object Load(Napi::Env env, Napi::Object exports) {
  auto environment = std::make_unique<Environment>(env);
  environment->refClass = Napi::Persistent(DefineRefClass(env));
  environment->connectionClass = Napi::Persistent(DefineConnectionClass(env));
  env.SetInstanceData(environment.release());

  static constexpr napi_property_descriptor kExports[] = {
      {"createObject", nullptr, CreateObject, nullptr, nullptr, nullptr, napi_enumerable, nullptr},
      {"ref", nullptr, MakeRef, nullptr, nullptr, nullptr, napi_enumerable, nullptr},
      {"open", nullptr, OpenConnection, nullptr, nullptr, nullptr, napi_enumerable, nullptr}};
  Check(env, napi_define_properties(env, exports, std::size(kExports), kExports));
  return exports;
}

}  // namespace

NODE_API_MODULE(vellum250, Load)

}  // namespace vellum250::node
