// `open(connectionString)`: a database for pages, through the library's own providers.
#pragma once

#include <napi.h>

namespace vellum250::node {

// The class of open connections; only OpenConnection makes one.
Napi::Function DefineConnectionClass(Napi::Env env);

// `open(connectionString)`.
napi_value OpenConnection(napi_env env, napi_callback_info info);

}  // namespace vellum250::node
