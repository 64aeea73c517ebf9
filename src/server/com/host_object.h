// The host's own objects as the library calls them: a page's dictionaries, and whatever else it
// hands over.
#pragma once

#include <utility>
#include <vector>

#include "automation/object.h"
#include "server/com/module.h"

namespace vellum250::com {

class Apartment;

// Keeps the host's object alive as long as the apartment that it belongs to; when that ends first,
// a call raises 91. Belongs to the thread that made it.
class HostObject final : public Object {
 public:
  explicit HostObject(ComPtr<IDispatch> dispatch);
  ~HostObject() override;

  // Arguments go out by value. Raises what the object does, 438 for a member that it has not.
  Variant Invoke(TextView member, InvokeKind kind, Arguments arguments) override;

  // The host's object itself; null when its apartment has ended. Not counted.
  IDispatch* Dispatch() const { return dispatch_.get(); }

  // The apartment ends.
  void Detach();

 private:
  DISPID IdOf(TextView member);

  ComPtr<IDispatch> dispatch_;
  Apartment* apartment_;
  // Those asked for until now: an object's ids stay the same while it lives.
  std::vector<std::pair<Text, DISPID>> ids_;
  LiveCount alive_{Live().hostObjects};
};

}  // namespace vellum250::com
