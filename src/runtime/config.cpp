#include "runtime/config.h"

#include "automation/conversion.h"
#include "runtime/component_context.h"
#include "runtime/concat.h"
#include "runtime/database_helpers.h"

namespace vellum250 {

namespace {

Variant Convert(const Variant& setting, ConfigValueType type) {
  switch (type) {
    case ConfigValueType::Integer:
      return ToInt16(setting);
    case ConfigValueType::Date:
      return ToDate(setting);
    case ConfigValueType::Boolean:
      return ToBoolean(setting);
    case ConfigValueType::Text: {
      // A setting that is not there is boolean false, whose text it is; callers rely on a setting
      // of that very text being empty as well.
      Text text = ToText(setting);
      return text == u"False" ? Variant(Text()) : Variant(std::move(text));
    }
  }
  return setting;
}

}  // namespace

Variant GetConfigSetting(TextView key, ConfigValueType type) {
  const WebDictionary& dictionary = ComponentContext::Current().webConfig;
  Variant storage;
  if (dictionary.HasEntries()) {
    if (const Variant* setting = dictionary.Find(key, storage)) {
      return Convert(setting->IsNull() ? Variant(Text()) : *setting, type);
    }
  }
  // The key stands in the statement as it is given: keys are the library's own.
  return Convert(
      GetScalar(Concat(u"SELECT setting FROM web_config WHERE global_config = '", key, u"'")),
      type);
}

}  // namespace vellum250
