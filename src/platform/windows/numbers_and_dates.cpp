// Numbers and dates as text by the automation run time, in the user's locale.
#include <windows.h>
#include <oleauto.h>

#include <memory>
#include <new>

#include "automation/failure.h"
#include "automation/locale.h"
#include "platform/windows/wide.h"

namespace vellum250 {

namespace {

struct FreeBstr {
  void operator()(OLECHAR* text) const { SysFreeString(text); }
};

// What a VarBstrFrom... function gives for a value.
template <typename Convert, typename Value>
Text Written(Convert convert, Value value) {
  BSTR written = nullptr;
  const HRESULT result = convert(value, LOCALE_USER_DEFAULT, 0, &written);
  if (result == E_OUTOFMEMORY) throw std::bad_alloc();
  if (FAILED(result)) throw InvalidProcedureCall();
  const std::unique_ptr<OLECHAR, FreeBstr> owned(written);
  return Text(platform::FromWide(written), SysStringLen(written));
}

// What a Var...FromStr function reads in a text.
template <typename Convert>
std::optional<double> Read(Convert convert, TextView text) {
  if (text.find(u'\0') != TextView::npos) return std::nullopt;
  double value = 0;
  Text trimmed(TrimBlanks(text));
  if (FAILED(convert(platform::Wide(trimmed.data()), LOCALE_USER_DEFAULT, 0, &value))) {
    return std::nullopt;
  }
  return value;
}

}  // namespace

Text DoubleText(double number) { return Written(VarBstrFromR8, number); }

Text DateText(Date date) { return Written(VarBstrFromDate, date.days); }

std::optional<double> ParseDouble(TextView text) { return Read(VarR8FromStr, text); }

std::optional<Date> ParseDate(TextView text) {
  const auto days = Read(VarDateFromStr, text);
  if (!days) return std::nullopt;
  return Date{*days};
}

}  // namespace vellum250
