#include "failures.h"

#include "database/connection.h"
#include "environment.h"
#include "values.h"

namespace vellum250::node {

namespace {

constexpr int32_t kAutomationError = 440;

// The property of a thrown value, or nullopt when it has none of that type or reading it throws
// as well.
std::optional<Variant> Property(napi_env env, napi_value object, const char* name,
                                VariantType type) {
  napi_value property = nullptr;
  if (napi_get_named_property(env, object, name, &property) != napi_ok) {
    napi_value ignored = nullptr;
    napi_get_and_clear_last_exception(env, &ignored);
    return std::nullopt;
  }
  napi_valuetype found = napi_undefined;
  napi_typeof(env, property, &found);
  if (found == napi_string && type == VariantType::Text) return ReadText(env, property);
  if (found == napi_number && type == VariantType::Int32) {
    Variant number = ReadNumber(env, property);
    if (number.Is(VariantType::Int32)) return number;
  }
  return std::nullopt;
}

// What a page threw that is no object: its text.
Text Words(napi_env env, napi_value thrown) {
  napi_value text = nullptr;
  if (thrown == nullptr || napi_coerce_to_string(env, thrown, &text) != napi_ok) {
    napi_value ignored = nullptr;
    napi_get_and_clear_last_exception(env, &ignored);
    return {};
  }
  return ReadText(env, text);
}

void Set(napi_env env, napi_value object, const char* name, napi_value value) {
  Check(env, napi_set_named_property(env, object, name, value));
}

napi_value MakeError(napi_env env, const Failure& failure) {
  napi_value error = nullptr;
  const napi_value description = MakeText(env, failure.Description());
  Check(env, napi_create_error(env, nullptr, description, &error));
  Set(env, error, "number", Napi::Number::New(env, failure.Number()));
  Set(env, error, "source", MakeText(env, failure.Source()));
  Set(env, error, "description", description);
  if (const auto* database = dynamic_cast<const database::DatabaseFailure*>(&failure)) {
    Set(env, error, "nativeNumber", Napi::Number::New(env, database->NativeNumber()));
    Set(env, error, "line", Napi::Number::New(env, database->Line()));
  }
  if (const auto* script = dynamic_cast<const JavaScriptFailure*>(&failure)) {
    if (const Napi::Value cause = script->Cause(); !cause.IsEmpty()) {
      Set(env, error, "cause", cause);
    }
  }
  return error;
}

void Throw(napi_env env, const Failure& failure) noexcept {
  try {
    Check(env, napi_throw(env, MakeError(env, failure)));
  } catch (...) {
    // No memory for an error object, or the environment is being ended: the words alone, if that.
    napi_throw_error(env, nullptr, failure.what());
  }
}

}  // namespace

JavaScriptFailure::JavaScriptFailure(int32_t number, Text source, Text description,
                                     std::shared_ptr<Napi::ObjectReference> cause)
    : Failure(number, std::move(source), std::move(description)), cause_(std::move(cause)) {}

JavaScriptFailure JavaScriptFailure::TakePending(napi_env env) {
  napi_value thrown = nullptr;
  napi_get_and_clear_last_exception(env, &thrown);
  const Napi::Value value(env, thrown);

  std::optional<Variant> number, source, words;
  std::shared_ptr<Napi::ObjectReference> cause;
  if (thrown != nullptr && value.IsObject()) {
    number = Property(env, thrown, "number", VariantType::Int32);
    source = Property(env, thrown, "source", VariantType::Text);
    words = Property(env, thrown, "message", VariantType::Text);
    cause = std::make_shared<Napi::ObjectReference>(Napi::Persistent(value.As<Napi::Object>()));
  } else {
    words = Variant(Words(env, thrown));
  }
  Text description = words ? words->As<Text>() : Text();
  if (description.empty()) description = u"Automation error: a JavaScript exception without words";
  return JavaScriptFailure(number ? number->As<int32_t>() : kAutomationError,
                           source ? source->As<Text>() : Text(u"JavaScript"),
                           std::move(description), std::move(cause));
}

void Check(napi_env env, napi_status status) {
  if (status != napi_ok) throw Napi::Error::New(env);
}

void ThrowToJavaScript(napi_env env) noexcept {
  try {
    throw;
  } catch (const Napi::Error& error) {
    // What the page's own code threw while its values were read.
    error.ThrowAsJavaScriptException();
  } catch (const Failure& failure) {
    Throw(env, failure);
  } catch (...) {
    Throw(env, CurrentFailure());
  }
}

}  // namespace vellum250::node
