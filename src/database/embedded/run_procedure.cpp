// EXEC and calls of stored procedures.
#include <algorithm>

#include "automation/locale.h"
#include "database/embedded/convert.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"
#include "database/embedded/run.h"
#include "database/embedded/schema.h"

namespace vellum250::database::embedded {
namespace {

constexpr int32_t kMaxCalls = 32;

DatabaseFailure TooManyArguments(TextView procedure) {
  return ServerFailure(
      8144, u"Procedure or function " + Text(procedure) + u" has too many arguments specified.");
}

}  // namespace

Runner::Arguments Runner::Evaluate(const ExecuteStatement& execute,
                                   const CreateProcedureStatement& procedure, Frame& frame) {
  const auto& parameters = procedure.parameters;
  if (parameters.empty() && !execute.arguments.empty()) {
    throw ServerFailure(
        8146, u"Procedure " + procedure.name + u" has no parameters and arguments were supplied.");
  }
  Arguments arguments;
  arguments.values.resize(parameters.size());
  arguments.sources.resize(parameters.size());
  size_t position = 0;
  for (const ExecuteStatement::Argument& argument : execute.arguments) {
    size_t index = position++;
    if (!argument.name.empty()) {
      const auto found = std::ranges::find_if(parameters, [&](const ParameterDefinition& p) {
        return EqualsIgnoreAsciiCase(p.name, argument.name);
      });
      if (found == parameters.end()) {
        throw ServerFailure(
            8145, argument.name + u" is not a parameter for procedure " + procedure.name + u".");
      }
      index = static_cast<size_t>(found - parameters.begin());
    }
    if (index >= parameters.size()) throw TooManyArguments(procedure.name);
    const ParameterDefinition& parameter = parameters[index];
    if (arguments.sources[index] != nullptr) {
      throw ServerFailure(8143,
                          u"Parameter '" + parameter.name + u"' was supplied multiple times.");
    }
    if (argument.output && !parameter.output) {
      throw ServerFailure(8162, u"The formal parameter \"" + parameter.name +
                                    u"\" was not declared as an OUTPUT parameter, but the actual "
                                    u"parameter passed in requested output.");
    }
    if (!argument.value) continue;
    if (argument.output && argument.value->kind != ExpressionKind::Variable) {
      throw ServerFailure(179,
                          u"Cannot use the OUTPUT option when passing a constant to a stored "
                          u"procedure.");
    }
    arguments.values[index] = Evaluate(*argument.value, frame);
    arguments.sources[index] = &argument;
  }
  return arguments;
}

std::shared_ptr<Program> Runner::ProcedureNamed(TextView name) {
  std::shared_ptr<Program> program = session_.Procedure(name);
  if (program) return program;
  const Text lower = ToLower(name);
  if (lower.starts_with(u"sp_") || lower.starts_with(u"xp_")) {
    throw Unsupported(u"procedure " + Text(name));
  }
  throw NoSuchProcedure(name);
}

Runner::Flow Runner::RunExecute(const ExecuteStatement& execute, Frame& frame) {
  const std::shared_ptr<Program> program = ProcedureNamed(execute.procedure);
  Arguments arguments = Evaluate(execute, *program->Procedure(), frame);
  std::vector<bool> given;
  for (const auto* source : arguments.sources) given.push_back(source != nullptr);
  int32_t returned = 0;
  const Flow flow = RunProcedure(*program, arguments.values, given, returned);
  if (flow == Flow::Leave) return Flow::Next;
  if (flow == Flow::Abort) return flow;
  if (execute.returnVariable != kNoVariable) {
    Store(execute.returnVariable, int64_t{returned}, kInt, frame);
  }
  for (size_t i = 0; i < arguments.sources.size(); ++i) {
    const auto* source = arguments.sources[i];
    if (source == nullptr || !source->output) continue;
    Store(source->value->index, arguments.values[i].value, arguments.values[i].type, frame);
  }
  return Flow::Next;
}

Runner::Flow Runner::RunProcedure(Program& program, std::vector<TypedValue>& values,
                                  const std::vector<bool>& given, int32_t& returnValue) {
  const CreateProcedureStatement& procedure = *program.Procedure();
  const std::vector<TypedValue> noMarkers;
  Frame frame{program,   program.Literals(),
              noMarkers, std::vector<Value>(program.Variables().size()),
              {},        0};
  for (size_t i = 0; i < procedure.parameters.size(); ++i) {
    const ParameterDefinition& parameter = procedure.parameters[i];
    if (!given[i]) {
      if (!parameter.defaultValue) throw ParameterNotSupplied(procedure.name, parameter.name);
      values[i] = Evaluate(*parameter.defaultValue, frame);
    }
    try {
      frame.variables[i] = Convert(values[i].value, values[i].type, parameter.type);
    } catch (const DatabaseFailure& failure) {
      if (failure.Number() != kConversionFailure) throw;
      throw InvalidNumberText(MessageName(values[i].type), MessageName(parameter.type));
    }
  }
  if (depth_ >= kMaxCalls) {
    throw ServerFailure(217,
                        u"Maximum stored procedure, function, trigger, or view nesting level "
                        u"exceeded (limit 32).");
  }
  SessionState& state = session_.State();
  const bool noCount = state.noCount;
  const bool xactAbort = state.xactAbort;
  const int32_t transactions = state.transactionCount;
  const int64_t lastTemporary = session_.Objects().LastTemporary();
  ++depth_;
  const Flow flow = RunBlock(procedure.body, frame);
  --depth_;
  state.noCount = noCount;
  state.xactAbort = xactAbort;
  DropTemporaryTables(lastTemporary);
  if (flow == Flow::Abort) return flow;
  if (state.transactionCount != transactions) {
    const auto number = [](int32_t count) { return NumberText(int64_t{count}); };
    Failed(ServerFailure(266,
                         u"Transaction count after EXECUTE indicates a mismatching number of BEGIN "
                         u"and COMMIT statements. Previous count = " +
                             number(transactions) + u", current count = " +
                             number(state.transactionCount) + u"."),
           0);
  }
  if (flow == Flow::Leave) return flow;
  for (size_t i = 0; i < procedure.parameters.size(); ++i) {
    values[i] = {std::move(frame.variables[i]), procedure.parameters[i].type};
  }
  returnValue = frame.returnValue;
  return Flow::Next;
}

// A procedure's temporary tables go with it.
void Runner::DropTemporaryTables(int64_t lastKept) {
  Catalog& catalog = session_.Objects();
  if (catalog.LastTemporary() <= lastKept) return;
  DropStatement drop;
  for (const auto& [name, object] : catalog.Objects()) {
    if (object->temporary && object->id > lastKept) drop.names.push_back(object->name);
  }
  if (session_.State().transactionCount > 0) session_.State().schemaChanged = true;
  Drop(session_.Db(), catalog, drop);
}

int32_t Runner::CallProcedure(TextView name, std::vector<TypedValue>& values) {
  session_.BeginBatch();
  session_.Settle();
  session_.Objects().Refresh();
  const std::shared_ptr<Program> program = ProcedureNamed(name);
  const size_t count = program->Procedure()->parameters.size();
  if (values.size() > count) throw TooManyArguments(name);
  std::vector<bool> given(count, false);
  std::fill_n(given.begin(), values.size(), true);
  values.resize(count);
  int32_t returnValue = 0;
  RunProcedure(*program, values, given, returnValue);
  return returnValue;
}

}  // namespace vellum250::database::embedded
