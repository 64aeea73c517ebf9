// What a page tells the library once and every object of its thread then knows.
#pragma once

#include "automation/text.h"
#include "runtime/web_dictionary.h"

namespace vellum250 {

// One for each thread, as long as the thread lives. Objects neither own nor reset it: a page that
// relies on a value sets it.
struct ComponentContext {
  Text connectionString;
  bool sysDebug = false;     // trap failures and report them in LastError
  bool onErrorOnly = false;  // ... without the traces of calls that succeed
  Text remoteHostIp;
  int32_t textId = 0;
  WebDictionary showText;   // area + label + text id -> text
  WebDictionary webConfig;  // global_config -> setting

  // Whether methods write their trace into LastError.
  bool Traces() const { return sysDebug && !onErrorOnly; }

  static ComponentContext& Current();
};

}  // namespace vellum250
