// The late-bound object: what a script can call.
#pragma once

#include <cstdint>
#include <span>

#include "automation/failure.h"
#include "automation/object_ref.h"
#include "automation/text.h"
#include "automation/variant.h"

namespace vellum250 {

class ClassTable;

// What a call asks for. Values are those of the automation interface and combine: a script that
// uses a call's result asks for Method and Get at once.
enum class InvokeKind : uint8_t { Method = 1, Get = 2, Put = 4, PutRef = 8 };
constexpr InvokeKind operator|(InvokeKind a, InvokeKind b) {
  return static_cast<InvokeKind>(static_cast<uint8_t>(a) | static_cast<uint8_t>(b));
}
constexpr bool Includes(InvokeKind kinds, InvokeKind kind) {
  return (static_cast<uint8_t>(kinds) & static_cast<uint8_t>(kind)) != 0;
}

// Arguments in interface order. One left out is Missing or stands beyond the end. The callee
// writes by-reference parameters back into them; the host decides whether its caller sees that.
using Arguments = std::span<Variant>;

// Reference-counted; starts with a count of 0 and belongs to one thread.
class Object {
 public:
  Object() = default;
  Object(const Object&) = delete;
  Object& operator=(const Object&) = delete;
  virtual ~Object() = default;

  // Calls a member by name without regard to case. An empty name is the default member. Put takes
  // the new value as its last argument. Raises 438 for an unknown member, and what the member
  // raises.
  virtual Variant Invoke(TextView member, InvokeKind kind, Arguments arguments) = 0;

  // The published interface, or nullptr for an object of the host.
  virtual const ClassTable* Class() const { return nullptr; }

  // A host's own side of this object while one lives: the object has one identity there. Belongs
  // to the host; nobody else touches it.
  void* hostSide = nullptr;

 private:
  friend void Retain(Object* object) noexcept;
  friend void Release(Object* object) noexcept;
  int32_t references_ = 0;
};

}  // namespace vellum250
