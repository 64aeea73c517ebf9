// Failures on their way to a script engine and back.
#pragma once

#include "automation/failure.h"
#include "platform/windows/ole.h"

namespace vellum250::com {

// A run-time error's HRESULT (0x800A0000 + number), or the HRESULT itself when `number` is one.
HRESULT ToHresult(int32_t number);
// The other way round.
int32_t ToNumber(HRESULT result);

// Runs inside a catch block: tells what was thrown by `exception` (may be null) and returns
// DISP_E_EXCEPTION.
HRESULT TellFailure(EXCEPINFO* exception) noexcept;
// The same for an interface that has no place for words: the number alone.
HRESULT CurrentHresult() noexcept;

// What every call of a host runs in: no C++ exception gets out. `body` returns an HRESULT.
template <typename Body>
HRESULT Guarded(EXCEPINFO* exception, Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    return TellFailure(exception);
  }
}
template <typename Body>
HRESULT Guarded(Body&& body) noexcept {
  try {
    return body();
  } catch (...) {
    return CurrentHresult();
  }
}

// Raises what a call of the host's object ended with; `result` is a failure. Takes over the texts
// of `exception`. `member` is what was called.
[[noreturn]] void RaiseCallFailure(HRESULT result, EXCEPINFO& exception, TextView member);

// Raises `result` when it is a failure, with the system's words for it.
void Check(HRESULT result);

}  // namespace vellum250::com
