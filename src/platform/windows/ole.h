// The few owners that Windows automation needs: counted interfaces, BSTRs and VARIANTs.
#pragma once

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <ole2.h>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <new>
#include <span>
#include <utility>

#include "automation/text.h"
#include "platform/windows/wide.h"

namespace vellum250::com {

// Both are UTF-16 code units; Windows only names them differently.
inline TextView View(const wchar_t* text, size_t length) {
  return {reinterpret_cast<const char16_t*>(text), length};
}
// A null BSTR is the empty text.
inline TextView View(BSTR text) { return View(text, SysStringLen(text)); }
using platform::Wide;

// A new BSTR. Raises std::bad_alloc, also for a text that is longer than one can be.
inline BSTR MakeBstr(TextView text) {
  if (text.size() > INT32_MAX / sizeof(char16_t)) throw std::bad_alloc();
  const BSTR made = SysAllocStringLen(reinterpret_cast<const wchar_t*>(text.data()),
                                      static_cast<UINT>(text.size()));
  if (made == nullptr) throw std::bad_alloc();
  return made;
}

// An owned BSTR.
class Bstr {
 public:
  Bstr() = default;
  explicit Bstr(TextView text) : text_(MakeBstr(text)) {}
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  ~Bstr() { SysFreeString(text_); }
  // Where a function returns one; this holds none before.
  BSTR* Out() { return &text_; }
  BSTR get() const { return text_; }

 private:
  BSTR text_ = nullptr;
};

// A counted interface pointer, possibly none.
template <typename T>
class ComPtr {
 public:
  ComPtr() = default;
  explicit ComPtr(T* pointer) : pointer_(pointer) {
    if (pointer_ != nullptr) pointer_->AddRef();
  }
  ComPtr(const ComPtr& other) : ComPtr(other.pointer_) {}
  ComPtr(ComPtr&& other) noexcept : pointer_(std::exchange(other.pointer_, nullptr)) {}
  ~ComPtr() {
    if (pointer_ != nullptr) pointer_->Release();
  }
  ComPtr& operator=(ComPtr other) noexcept {
    std::swap(pointer_, other.pointer_);
    return *this;
  }

  // Takes over a reference that the caller owns.
  static ComPtr Adopt(T* pointer) {
    ComPtr adopted;
    adopted.pointer_ = pointer;
    return adopted;
  }
  // Where a function returns a reference; this holds none before.
  T** Out() { return &pointer_; }
  void** OutVoid() { return reinterpret_cast<void**>(&pointer_); }
  // Gives the reference away.
  T* Detach() { return std::exchange(pointer_, nullptr); }

  T* get() const { return pointer_; }
  T* operator->() const { return pointer_; }
  T& operator*() const { return *pointer_; }
  explicit operator bool() const { return pointer_ != nullptr; }

 private:
  T* pointer_ = nullptr;
};

// Empty to begin with, cleared at the end.
struct OwnedVariant : VARIANT {
  OwnedVariant() : VARIANT{} {}
  OwnedVariant(const OwnedVariant&) = delete;
  OwnedVariant& operator=(const OwnedVariant&) = delete;
  ~OwnedVariant() { VariantClear(this); }
};

// A fixed number of elements: up to `Few` lie in the array itself.
template <typename T, size_t Few>
class SmallArray {
 public:
  // Every element is made from `initial`.
  template <typename... Initial>
  explicit SmallArray(size_t count, const Initial&... initial)
      : elements_(count <= Few ? reinterpret_cast<T*>(few_)
                               : static_cast<T*>(::operator new(count * sizeof(T)))) {
    for (; count_ < count; ++count_) new (elements_ + count_) T(initial...);
  }
  SmallArray(const SmallArray&) = delete;
  SmallArray& operator=(const SmallArray&) = delete;
  ~SmallArray() {
    std::destroy_n(elements_, count_);
    if (elements_ != reinterpret_cast<T*>(few_)) ::operator delete(elements_);
  }

  T& operator[](size_t index) { return elements_[index]; }
  T* data() { return elements_; }
  size_t size() const { return count_; }
  operator std::span<T>() { return {elements_, count_}; }

 private:
  alignas(T) std::byte few_[Few * sizeof(T)];
  T* elements_;
  size_t count_ = 0;
};

}  // namespace vellum250::com
