// Last stage: running a program, statement by statement.
#pragma once

#include <forward_list>
#include <string>

#include "database/connection.h"
#include "database/embedded/session.h"

namespace vellum250::database::embedded {

// Runs one batch or procedure call to its end or to the failure that ends it. What it gives goes
// to a Batch; statements behind a failure that ends only its statement run, but give nothing more.
class Runner {
 public:
  Runner(Session& session, Batch& batch) : session_(session), batch_(batch) {}

  void RunBatch(TextView sql, std::span<const Variant> parameters);
  // Gives the return value; `values` are the arguments in order and become what they are at the
  // end.
  int32_t CallProcedure(TextView name, std::vector<TypedValue>& values);

 private:
  // The variables and literals of a batch or procedure while it runs.
  struct Frame {
    Program& program;
    const std::vector<TypedValue>& literals;
    const std::vector<TypedValue>& markers;
    std::vector<Value> variables;
    Value scopeIdentity;
    int32_t returnValue = 0;
  };
  // Leave ends the procedure at a failure, Abort the batch.
  enum class Flow : uint8_t { Next, Return, Leave, Abort };
  // Prepares if need be and binds; the statement is reset when the result goes.
  class Execution;

  // Runs a single query whose plan is kept without looking at the catalogue first. False, and
  // nothing given, when the batch is another or the plan was no longer right.
  bool RunAtOnce(Frame& frame);
  Flow RunBlock(const Block& block, Frame& frame);
  Flow RunStatement(const Statement& statement, Frame& frame);
  // Without a handler for failures.
  Flow Run(const Statement& statement, Frame& frame);
  Flow Failed(const DatabaseFailure& failure, int32_t line);
  // Binds everything whose tables are there, so that a misspelt column runs nothing. False behind a
  // statement that changes what there is.
  bool BindAhead(const Block& block, Frame& frame);
  bool BindAhead(const Statement& statement, Frame& frame);

  void RunSelectInto(const Query& query, Frame& frame);
  void RunQuery(Plan& plan, Frame& frame);
  // The rows from the one where the execution stands.
  void TakeRows(Plan& plan, Execution& execution, bool hasRow);
  void RunAssign(Plan& plan, Frame& frame);
  void RunChange(Plan& plan, Frame& frame);
  void RunSelect(const SelectStatement& select, Frame& frame);
  Plan& SelectPlan(const SelectStatement& select, Frame& frame);
  Plan& ChangePlan(const Statement& statement, Frame& frame);
  Plan& ValuePlan(const Expression& expression, Frame& frame, std::optional<TypeInfo> type);
  Plan& ConditionPlan(const IfStatement& branch, Frame& frame);
  static TypeInfo TypeOf(int32_t variable, const Frame& frame) {
    return frame.program.Variables()[static_cast<size_t>(variable)].type;
  }
  static void Store(int32_t variable, ValueRef value, TypeInfo from, Frame& frame);
  void SetVariable(int32_t variable, const Expression& expression, Frame& frame);
  Flow RunIf(const IfStatement& branch, Frame& frame);
  Flow RunExecute(const ExecuteStatement& execute, Frame& frame);
  void RunTransaction(const TransactionStatement& transaction);
  void RunSetOption(const SetOptionStatement& set);
  void RunIdentityInsert(const IdentityInsertStatement& identity);
  void RunRaiseError(const RaiseErrorStatement& raise, Frame& frame);
  void RunSchemaChange(const Statement& statement, Frame& frame);

  // The arguments of EXEC, by the procedure's order.
  struct Arguments {
    std::vector<TypedValue> values;
    std::vector<const ExecuteStatement::Argument*> sources;  // nullptr where none was given
  };
  Arguments Evaluate(const ExecuteStatement& execute, const CreateProcedureStatement& procedure,
                     Frame& frame);
  std::shared_ptr<Program> ProcedureNamed(TextView name);  // 2812
  // Where it was not left, `values` become what they are at the end.
  Flow RunProcedure(Program& program, std::vector<TypedValue>& values,
                    const std::vector<bool>& given, int32_t& returnValue);
  void DropTemporaryTables(int64_t lastKept);

  TypedValue Evaluate(const Expression& expression, Frame& frame,
                      std::optional<TypeInfo> type = std::nullopt);
  // The value itself where it stays as it is while the statement runs, or one that is put in
  // `kept`.
  const Value& SlotValue(const Slot& slot, Frame& frame, std::forward_list<Value>& kept);
  Value SystemSlot(SystemValue which, const Frame& frame);
  BindInput InputOf(Frame& frame);
  template <typename Bind>
  Plan& PlanOf(const void* node, Frame& frame, Bind bind) {
    binding_ = true;
    Plan& plan = frame.program.PlanOf(node, session_.Objects(), frame.literals, bind);
    binding_ = false;
    return plan;
  }
  bool Gathers() const { return !batch_.failure.has_value(); }

  Session& session_;
  Batch& batch_;
  int32_t depth_ = 0;
  bool binding_ = false;  // also when it failed
  std::string moment_;    // getdate() of the statement that runs, once asked for
};

// Why a table refused a row, in the server's words.
DatabaseFailure RowFailure(const ConstraintViolation& violation, const Plan& plan,
                           const Catalog& catalog);

}  // namespace vellum250::database::embedded
