#include "platform/windows/ole_failures.h"

#include <new>

namespace vellum250::com {

namespace {

constexpr uint32_t kScriptErrors = 0x800A0000;

// Takes over the text.
Text TakeText(BSTR& text) {
  Text taken(View(text));
  SysFreeString(std::exchange(text, nullptr));
  return taken;
}

Text SystemWords(HRESULT result) {
  wchar_t words[512];
  const DWORD length =
      FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                     static_cast<DWORD>(result), 0, words, std::size(words), nullptr);
  TextView text = View(words, length);
  while (!text.empty() && text.back() <= u' ') text.remove_suffix(1);
  if (!text.empty()) return Text(text);
  static constexpr TextView kDigits = u"0123456789ABCDEF";
  Text number = u"Automation error 0x";
  for (int shift = 28; shift >= 0; shift -= 4) {
    number.push_back(kDigits[static_cast<uint32_t>(result) >> shift & 0xF]);
  }
  return number;
}

// What the automation interface says by a code of its own and scripts know by a number.
Failure FailureOf(HRESULT result, TextView detail) {
  switch (result) {
    case DISP_E_MEMBERNOTFOUND:
    case DISP_E_UNKNOWNNAME:
      return NoSuchMember(detail);
    case DISP_E_TYPEMISMATCH:
      return TypeMismatch(detail);
    case DISP_E_OVERFLOW:
      return OverflowFailure(detail);
    case DISP_E_BADPARAMCOUNT:
      return WrongNumberOfArguments(detail);
    case DISP_E_PARAMNOTOPTIONAL:
      return ArgumentNotOptional(detail);
    case DISP_E_BADINDEX:
      return SubscriptOutOfRange(detail);
    case E_OUTOFMEMORY:
      return OutOfMemory(detail);
    default:
      const Failure failure(ToNumber(result), kLibrarySource, SystemWords(result));
      return detail.empty() ? failure : WithDetail(failure, detail);
  }
}

void Tell(EXCEPINFO* exception, int32_t number, TextView source, TextView description) {
  if (exception == nullptr) return;
  const auto bstr = [](TextView text) {
    return SysAllocStringLen(reinterpret_cast<const wchar_t*>(text.data()),
                             static_cast<UINT>(text.size()));
  };
  *exception = {};
  exception->scode = ToHresult(number);
  exception->bstrSource = bstr(source);
  exception->bstrDescription = bstr(description);
}

}  // namespace

HRESULT ToHresult(int32_t number) {
  return number < 0 ? number : static_cast<HRESULT>(kScriptErrors + (number & 0xFFFF));
}

int32_t ToNumber(HRESULT result) {
  const auto bits = static_cast<uint32_t>(result);
  return (bits & 0xFFFF0000) == kScriptErrors ? static_cast<int32_t>(bits & 0xFFFF) : result;
}

HRESULT TellFailure(EXCEPINFO* exception) noexcept {
  try {
    throw;
  } catch (const Failure& failure) {
    Tell(exception, failure.Number(), failure.Source(), failure.Description());
  } catch (const std::bad_alloc&) {
    Tell(exception, 7, kLibrarySource, u"Out of memory");
  } catch (...) {
    const Failure failure = CurrentFailure();
    Tell(exception, failure.Number(), failure.Source(), failure.Description());
  }
  return DISP_E_EXCEPTION;
}

HRESULT CurrentHresult() noexcept {
  try {
    throw;
  } catch (const Failure& failure) {
    return ToHresult(failure.Number());
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

void RaiseCallFailure(HRESULT result, EXCEPINFO& exception, TextView member) {
  if (result != DISP_E_EXCEPTION) throw FailureOf(result, member);
  if (exception.pfnDeferredFillIn != nullptr) exception.pfnDeferredFillIn(&exception);
  Text source = TakeText(exception.bstrSource);
  Text description = TakeText(exception.bstrDescription);
  SysFreeString(exception.bstrHelpFile);
  int32_t number = exception.wCode;
  if (number == 0) number = FAILED(exception.scode) ? ToNumber(exception.scode) : DISP_E_EXCEPTION;
  if (description.empty()) description = FailureOf(ToHresult(number), member).Description();
  throw Failure(number, std::move(source), std::move(description));
}

void Check(HRESULT result) {
  if (FAILED(result)) throw FailureOf(result, {});
}

}  // namespace vellum250::com
