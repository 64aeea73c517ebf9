// Counted references to automation objects.
#pragma once

#include <concepts>
#include <utility>

namespace vellum250 {

class Object;
void Retain(Object* object) noexcept;
void Release(Object* object) noexcept;

// A counted reference to a T (an Object), possibly none. Not for sharing between threads.
template <typename T>
class Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}
  explicit Ref(T* object) : object_(object) { Retain(object_); }
  Ref(const Ref& other) : object_(other.object_) { Retain(object_); }
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <typename U>
  requires std::convertible_to<U*, T*> Ref(const Ref<U>& other)
      : Ref(static_cast<T*>(other.get())) {}
  ~Ref() { Release(object_); }
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  T* get() const { return object_; }
  T* operator->() const { return object_; }
  T& operator*() const { return *object_; }
  explicit operator bool() const { return object_ != nullptr; }
  // Identity, not equal content.
  bool operator==(const Ref& other) const { return object_ == other.object_; }

 private:
  T* object_ = nullptr;
};

using ObjectRef = Ref<Object>;

template <typename T, typename... Args>
Ref<T> MakeObject(Args&&... args) {
  return Ref<T>(new T(std::forward<Args>(args)...));
}

}  // namespace vellum250
