// What the conversions take from the machine: letter case, and numbers and dates as the user's
// locale writes them. Declared here because values need it, implemented in platform/.
#pragma once

#include <optional>

#include "automation/text.h"
#include "automation/variant.h"

namespace vellum250 {

// Simple case mapping, code unit by code unit: the length never changes.
Text ToUpper(TextView text);
Text ToLower(TextView text);

// As CStr writes a Double: up to 15 significant digits, exponent form from 1E+15.
Text DoubleText(double number);
// As CStr writes a date: date, time or both, whichever is not zero. The portable side writes
// dd/mm/yyyy hh:nn:ss.
Text DateText(Date date);

// Numbers and dates in the forms a user types. Surrounding blanks are allowed; nothing else may
// follow. nullopt when the text is none.
std::optional<double> ParseDouble(TextView text);
std::optional<Date> ParseDate(TextView text);

// The local time, whole milliseconds.
Date Now();

// Calendar of the proleptic Gregorian kind. Month 1-12, day 1-31.
struct CivilTime {
  int year = 1899;
  int month = 12;
  int day = 30;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int millisecond = 0;
  bool operator==(const CivilTime&) const = default;
};
Date FromCivil(const CivilTime& time);
CivilTime ToCivil(Date date);
int DaysInMonth(int year, int month);

}  // namespace vellum250
