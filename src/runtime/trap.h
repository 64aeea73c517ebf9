// How methods report: one trap for failures, shared by all record, form and merge methods.
//
//   int32_t locationRef = 0;
//   return Trapped(report, u" of 6", locationRef, [&](Step& step) {
//     ...
//     step.Next();
//     ExecuteSql(step.Running(Concat(u"UPDATE ...")));
//   });
//
// While SysDebug is off the body runs bare and its failure reaches the page. While it is on the
// failure is written into LastError, the statement it arose from into LastSql, and the method
// returns what it had so far.
#pragma once

#include <optional>
#include <utility>

#include "automation/failure.h"
#include "runtime/component_context.h"

namespace vellum250 {

// The two members of an object in which a page finds what happened.
struct CallReport {
  Text& lastSql;
  Text& lastError;
};

// The step that a method has reached; 1 at its entry.
class Step {
 public:
  void Next() { ++number_; }
  void Reach(int32_t number) { number_ = number; }
  int32_t Number() const { return number_; }

  // Keeps the statement that is about to run, for LastSql.
  const Text& Running(Text statement) { return statement_ = std::move(statement); }
  const Text& Statement() const { return statement_; }

 private:
  int32_t number_ = 1;
  Text statement_;
};

// Writes "Description: ...<br>Source: ...<br>Step: ..." and the statement, if there is one.
// `steps` follows the number of the step.
void ReportFailure(CallReport report, const Failure& failure, const Step& step, TextView steps);

// The number, ": " and the description; "0: " without a failure.
Text FailureTrace(const std::optional<Failure>& failure);

// Runs `body(step)`; gives the failure that was trapped.
template <typename Body>
std::optional<Failure> Trap(CallReport report, TextView steps, Body&& body) {
  Step step;
  if (!ComponentContext::Current().sysDebug) {
    body(step);
    return std::nullopt;
  }
  try {
    body(step);
    return std::nullopt;
  } catch (...) {
    Failure failure = CurrentFailure();
    ReportFailure(report, failure, step, steps);
    return failure;
  }
}

// The same for a method that is done after its body; gives `result` as the body left it.
template <typename Result, typename Body>
Result Trapped(CallReport report, TextView steps, Result& result, Body&& body) {
  Trap(report, steps, std::forward<Body>(body));
  return std::move(result);
}

}  // namespace vellum250
