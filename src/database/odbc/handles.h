// Owners of ODBC's handles, and what the rest of the room shares.
//
// Only the wide calls of ODBC are used: text is UTF-16 on both sides.
#pragma once

#ifdef _WIN32
#include <windows.h>
#endif
#include <sql.h>
#include <sqlext.h>

#include <utility>

#include "automation/text.h"

namespace vellum250::database::odbc {

static_assert(sizeof(SQLWCHAR) == sizeof(char16_t));
inline SQLWCHAR* Wide(char16_t* text) { return reinterpret_cast<SQLWCHAR*>(text); }
// For texts that ODBC reads only, though it does not say so.
inline SQLWCHAR* Wide(const char16_t* text) { return Wide(const_cast<char16_t*>(text)); }

// What a call has written into a buffer. Not by the length it tells: behind a driver with narrow
// entry points that counts bytes.
inline TextView UpToZero(TextView buffer) { return buffer.substr(0, buffer.find(u'\0')); }

// ODBC passes numbers as pointers.
inline SQLPOINTER AttributeValue(SQLULEN value) {
  return reinterpret_cast<SQLPOINTER>(value);  // NOLINT(performance-no-int-to-ptr)
}

// An allocated handle, freed at the end; none when the allocation failed.
template <SQLSMALLINT kType>
class Handle {
 public:
  explicit Handle(SQLHANDLE parent) {
    if (!SQL_SUCCEEDED(SQLAllocHandle(kType, parent, &handle_))) handle_ = nullptr;
  }
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Handle() {
    if (handle_ != nullptr) SQLFreeHandle(kType, handle_);
  }

  SQLHANDLE get() const { return handle_; }
  // Leaves it allocated for ever.
  void Forget() { handle_ = nullptr; }
  explicit operator bool() const { return handle_ != nullptr; }

 private:
  SQLHANDLE handle_ = nullptr;
};

// The one environment of the process. Raises a DatabaseFailure when the driver manager gives none.
SQLHANDLE Environment();

}  // namespace vellum250::database::odbc
