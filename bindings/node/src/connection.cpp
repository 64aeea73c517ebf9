#include "connection.h"

#include <memory>
#include <unordered_set>
#include <vector>

#include "database/connection.h"
#include "environment.h"
#include "failures.h"
#include "values.h"

namespace vellum250::node {

namespace {

using DatabaseConnection = std::unique_ptr<database::Connection>;

// As the automation database layer says it.
constexpr int32_t kObjectClosed = 3704;

class Connection : public Napi::ObjectWrap<Connection> {
 public:
  explicit Connection(const Napi::CallbackInfo& info) : ObjectWrap(info) {
    if (info.Length() == 1 && info[0].IsExternal()) {
      connection_ = std::move(*info[0].As<Napi::External<DatabaseConnection>>().Data());
    }
  }

  // query(sql, parameters): the rows of the first result as objects.
  Napi::Value Query(const Napi::CallbackInfo& info) {
    return InGuard(info, [&] {
      const std::vector<Variant> parameters = Parameters(info);
      const database::Recordset rows = Open().Execute(Sql(info), parameters);
      return RowObjects(info.Env(), rows);
    });
  }

  // batch(sql, parameters): everything that the statements gave.
  Napi::Value RunBatch(const Napi::CallbackInfo& info) {
    return InGuard(info, [&]() -> napi_value {
      const std::vector<Variant> parameters = Parameters(info);
      const database::Batch batch = Open().Run(Sql(info), parameters);
      if (batch.failure) throw *batch.failure;
      return BatchObject(info.Env(), batch);
    });
  }

  Napi::Value Close(const Napi::CallbackInfo& info) {
    return InGuard(info, [&]() -> napi_value {
      connection_.reset();
      return info.Env().Undefined();
    });
  }

 private:
  template <typename Body>
  static Napi::Value InGuard(const Napi::CallbackInfo& info, Body&& body) {
    return Napi::Value(info.Env(), Guarded(info.Env(), std::forward<Body>(body)));
  }

  database::Connection& Open() {
    if (!connection_) {
      throw Failure(kObjectClosed, kLibrarySource,
                    u"Operation is not allowed when the object is closed: the connection");
    }
    return *connection_;
  }

  static Text Sql(const Napi::CallbackInfo& info) {
    return RequireText(info.Env(), info[0], u"sql");
  }

  static std::vector<Variant> Parameters(const Napi::CallbackInfo& info) {
    std::vector<Variant> parameters;
    if (info[1].IsUndefined()) return parameters;
    if (!info[1].IsArray()) throw TypeMismatch(u"parameters is no array");
    const auto given = info[1].As<Napi::Array>();
    for (uint32_t i = 0; i < given.Length(); ++i) {
      const Text name = u"parameter " + NumberText(i + 1);
      try {
        parameters.push_back(ToVariant(Environment::Of(info.Env()), given.Get(i)));
      } catch (const Failure& failure) {
        throw WithDetail(failure, name);
      }
      const Variant& value = parameters.back();
      if (value.IsMissing() || value.Is(VariantType::Object)) throw TypeMismatch(name);
    }
    return parameters;
  }

  static napi_value RowObjects(Napi::Env env, const database::Recordset& rows);
  static napi_value RowArrays(Napi::Env env, const database::Recordset& rows);
  static napi_value BatchObject(Napi::Env env, const database::Batch& batch);

  DatabaseConnection connection_;
};

// The names under which a row's columns stand: a column without name by its 1-based position; of
// several with one name the first, as in the library, the others an empty value.
std::vector<Napi::Value> ColumnKeys(Napi::Env env, const database::Recordset& rows) {
  std::vector<Napi::Value> keys;
  std::unordered_set<Text> seen;
  for (const database::Column& column : rows.Columns()) {
    const Text name = column.name.empty() ? NumberText(keys.size() + 1) : column.name;
    keys.push_back(seen.insert(name).second ? Napi::Value(env, MakeText(env, name))
                                            : Napi::Value());
  }
  return keys;
}

napi_value Connection::RowObjects(Napi::Env env, const database::Recordset& rows) {
  Environment& environment = Environment::Of(env);
  const std::vector<Napi::Value> keys = ColumnKeys(env, rows);
  Napi::Array result = Napi::Array::New(env, rows.RowCount());
  std::vector<napi_property_descriptor> properties;
  for (size_t row = 0; row < rows.RowCount(); ++row) {
    const Napi::HandleScope scope(env);
    // Defined, not assigned: no column name ("__proto__") means anything but itself.
    properties.clear();
    for (size_t i = 0; i < keys.size(); ++i) {
      if (keys[i].IsEmpty()) continue;
      properties.push_back({nullptr, keys[i], nullptr, nullptr, nullptr,
                            ToJavaScript(environment, rows.At(row, i)), napi_default_jsproperty,
                            nullptr});
    }
    const Napi::Object object = Napi::Object::New(env);
    Check(env, napi_define_properties(env, object, properties.size(), properties.data()));
    result.Set(static_cast<uint32_t>(row), object);
  }
  return result;
}

napi_value Connection::RowArrays(Napi::Env env, const database::Recordset& rows) {
  Environment& environment = Environment::Of(env);
  const size_t columnCount = rows.Columns().size();
  Napi::Array result = Napi::Array::New(env, rows.RowCount());
  for (size_t row = 0; row < rows.RowCount(); ++row) {
    const Napi::HandleScope scope(env);
    Napi::Array values = Napi::Array::New(env, columnCount);
    for (size_t i = 0; i < columnCount; ++i) {
      values.Set(static_cast<uint32_t>(i), ToJavaScript(environment, rows.At(row, i)));
    }
    result.Set(static_cast<uint32_t>(row), values);
  }
  return result;
}

napi_value Connection::BatchObject(Napi::Env env, const database::Batch& batch) {
  Napi::Array results = Napi::Array::New(env);
  for (const database::Recordset& rows : batch.results) {
    Napi::Array columns = Napi::Array::New(env);
    for (const database::Column& column : rows.Columns()) {
      Napi::Object description = Napi::Object::New(env);
      description.Set("name", MakeText(env, column.name));
      description.Set("type", MakeText(env, database::SqlTypeName(column.type)));
      columns.Set(columns.Length(), description);
    }
    Napi::Object result = Napi::Object::New(env);
    result.Set("columns", columns);
    result.Set("rows", RowArrays(env, rows));
    results.Set(results.Length(), result);
  }
  Napi::Array counts = Napi::Array::New(env);
  for (const int64_t count : batch.rowCounts) {
    counts.Set(counts.Length(), Napi::Number::New(env, static_cast<double>(count)));
  }
  Napi::Object object = Napi::Object::New(env);
  object.Set("results", results);
  object.Set("rowCounts", counts);
  return object;
}

}  // namespace

Napi::Function DefineConnectionClass(Napi::Env env) {
  return Connection::DefineClass(env, "Connection",
                                 {Connection::InstanceMethod<&Connection::Query>("query"),
                                  Connection::InstanceMethod<&Connection::RunBatch>("batch"),
                                  Connection::InstanceMethod<&Connection::Close>("close")});
}

napi_value OpenConnection(napi_env env, napi_callback_info info) {
  return Guarded(env, [&]() -> napi_value {
    DatabaseConnection connection =
        database::Connection::Open(RequireText(env, FirstArgument(env, info), u"connectionString"));
    return Environment::Of(env).connectionClass.New(
        {Napi::External<DatabaseConnection>::New(env, &connection)});
  });
}

}  // namespace vellum250::node
