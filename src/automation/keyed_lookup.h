// What the library asks of a dictionary for every label and setting. An object may offer it beside
// `Invoke`, so that neither the question nor the answer is wrapped and copied.
#pragma once

#include <cstdint>

#include "automation/variant.h"

namespace vellum250 {

class KeyedLookup {
 public:
  virtual int32_t Count() const = 0;
  // The value of exactly this key, or nullptr. Valid until the next question or change.
  virtual const Variant* Find(TextView key) const = 0;

 protected:
  ~KeyedLookup() = default;
};

}  // namespace vellum250
