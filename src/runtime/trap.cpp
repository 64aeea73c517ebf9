#include "runtime/trap.h"

#include "runtime/concat.h"

namespace vellum250 {

void ReportFailure(CallReport report, const Failure& failure, const Step& step, TextView steps) {
  report.lastError = Concat(u"Description: ", failure.Description(), u"<br>Source: ",
                            failure.Source(), u"<br>Step: ", step.Number(), steps);
  // Only a provider's failure (an HRESULT) is a statement's; a conversion's is not.
  if (failure.Number() < 0 && !step.Statement().empty()) report.lastSql = step.Statement();
}

Text FailureTrace(const std::optional<Failure>& failure) {
  return failure ? Concat(failure->Number(), u": ", failure->Description()) : u"0: ";
}

}  // namespace vellum250
