// The automation objects of others that the library itself creates and calls: by name, as a script
// does.
#pragma once

#include <span>

#include "platform/windows/ole.h"

namespace vellum250::com {

// Belongs to the thread that made it.
class LateBound {
 public:
  // A new object of a class, such as u"Scripting.FileSystemObject". Raises 429 when there is none.
  explicit LateBound(const char16_t* progId);
  // An object that a call gave; raises 91 for none.
  explicit LateBound(ComPtr<IDispatch> object);

  // `kind` is one of DISPATCH_METHOD, DISPATCH_PROPERTYGET and DISPATCH_PROPERTYPUT; `arguments`,
  // the last one first, stay the caller's. `answer` is empty before. Raises what the object does,
  // 438 for a member that it has not.
  void Call(const char16_t* member, WORD kind, std::span<VARIANT> arguments, VARIANT& answer) const;

 private:
  ComPtr<IDispatch> object_;
};

}  // namespace vellum250::com
