// The site's settings, from the page's dictionary or the table web_config.
#pragma once

#include "automation/variant.h"

namespace vellum250 {

// Any other number gives the setting as it was found.
enum class ConfigValueType : int16_t { Integer = 1, Date = 2, Text = 3, Boolean = 4 };

// A setting as an Int16, Date, Text or Boolean. One that is not there is 0, the zero date, an
// empty text or false. Raises 13 for a setting that does not convert, 6 for a number beyond 16
// bits, and what the database or the dictionary raises.
Variant GetConfigSetting(TextView key, ConfigValueType type);

inline int16_t ConfigInteger(TextView key) {
  return GetConfigSetting(key, ConfigValueType::Integer).As<int16_t>();
}
inline bool ConfigBoolean(TextView key) {
  return GetConfigSetting(key, ConfigValueType::Boolean).As<bool>();
}
inline Text ConfigText(TextView key) {
  return GetConfigSetting(key, ConfigValueType::Text).As<Text>();
}

}  // namespace vellum250
