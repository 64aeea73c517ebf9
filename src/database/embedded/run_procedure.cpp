// EXEC and calls of stored procedures.
#include <algorithm>

#include "database/embedded/convert.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"
#include "database/embedded/run.h"

namespace vellum250::database::embedded {
namespace {

constexpr int32_t kMaxCalls = 32;

}  // namespace

Runner::Arguments Runner::Evaluate(const ExecuteStatement& execute,
                                   const CreateProcedureStatement& procedure, Frame& frame) {
  const auto& parameters = procedure.parameters;
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
    if (index >= parameters.size()) {
      throw ServerFailure(
          8144, u"Procedure or function " + procedure.name + u" has too many arguments specified.");
    }
    if (argument.output && !parameters[index].output) {
      throw ServerFailure(8162, u"The formal parameter \"" + parameters[index].name +
                                    u"\" was not declared as an OUTPUT parameter, but the actual "
                                    u"parameter passed in requested output.");
    }
    if (!argument.value) continue;
    arguments.values[index] = Evaluate(*argument.value, frame);
    arguments.sources[index] = &argument;
  }
  return arguments;
}

void Runner::RunExecute(const ExecuteStatement& execute, Frame& frame) {
  const std::shared_ptr<Program> program = session_.Procedure(execute.procedure);
  if (!program) throw NoSuchProcedure(execute.procedure);
  Arguments arguments = Evaluate(execute, *program->Procedure(), frame);
  std::vector<bool> given;
  for (const auto* source : arguments.sources) given.push_back(source != nullptr);
  const int32_t returned = RunProcedure(*program, arguments.values, given);
  const auto store = [&](TextView name, ValueRef value, TypeInfo from) {
    TypeInfo type;
    Value& variable = VariableOf(name, frame, type);
    variable = Convert(value, from, type);
  };
  if (!execute.returnVariable.empty()) store(execute.returnVariable, int64_t{returned}, kInt);
  for (size_t i = 0; i < arguments.sources.size(); ++i) {
    const auto* source = arguments.sources[i];
    if (source == nullptr || !source->output) continue;
    if (source->value->kind != ExpressionKind::Variable) {
      throw ServerFailure(179,
                          u"Cannot use the OUTPUT option when passing a constant to a stored "
                          u"procedure.");
    }
    store(source->value->name, arguments.values[i].value, arguments.values[i].type);
  }
}

int32_t Runner::RunProcedure(Program& program, std::vector<TypedValue>& values,
                             const std::vector<bool>& given) {
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
      if (failure.NativeNumber() != 245) throw;
      throw InvalidNumberText(MessageName(values[i].type), MessageName(parameter.type));
    }
  }
  if (depth_ >= kMaxCalls) {
    throw ServerFailure(217,
                        u"Maximum stored procedure, function, trigger, or view nesting level "
                        u"exceeded (limit 32).");
  }
  const bool noCount = session_.State().noCount;
  ++depth_;
  const Flow flow = RunBlock(procedure.body, frame);
  --depth_;
  session_.State().noCount = noCount;
  if (flow == Flow::Abort) throw *batch_.failure;
  for (size_t i = 0; i < procedure.parameters.size(); ++i) {
    values[i] = {std::move(frame.variables[i]), procedure.parameters[i].type};
  }
  return frame.returnValue;
}

int32_t Runner::CallProcedure(TextView name, std::vector<TypedValue>& values) {
  session_.BeginBatch();
  session_.Settle();
  session_.Objects().Refresh();
  const std::shared_ptr<Program> program = session_.Procedure(name);
  if (!program) throw NoSuchProcedure(name);
  const size_t count = program->Procedure()->parameters.size();
  if (values.size() > count) {
    throw ServerFailure(
        8144, u"Procedure or function " + Text(name) + u" has too many arguments specified.");
  }
  std::vector<bool> given(count, false);
  std::fill_n(given.begin(), values.size(), true);
  values.resize(count);
  return RunProcedure(*program, values, given);
}

}  // namespace vellum250::database::embedded
