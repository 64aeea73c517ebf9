#include "database/embedded/run.h"

#include <algorithm>

#include "automation/locale.h"
#include "database/embedded/convert.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"
#include "database/embedded/schema.h"
#include "database/embedded/transaction.h"

namespace vellum250::database::embedded {
namespace {

Column ColumnOf(const ResultColumn& column) {
  Column result;
  result.name = column.name;
  result.type = column.type.type;
  result.length = column.type.length;
  if (column.type.type == SqlType::Decimal) {
    result.precision = column.type.precision;
    result.scale = column.type.scale;
  }
  return result;
}

// A conversion or binding failure ends the batch and undoes the open transaction.
bool UndoesTransaction(int32_t message) {
  static constexpr int32_t kMessages[] = {241, 242, 244, 245, 248, 295, 8114, 8169, 8170};
  return std::ranges::binary_search(kMessages, message);
}

bool ChangesSchema(const Statement& statement) {
  return std::holds_alternative<CreateTableStatement>(statement.node) ||
         std::holds_alternative<DropStatement>(statement.node);
}

// SELECT @a = 1, @b = @a + 1: one SET after the other.
bool OnlyAssigns(const Query& query) {
  const SelectCore& core = query.cores[0];
  return query.cores.size() == 1 && core.from.empty() && !core.where && !core.top &&
         std::ranges::all_of(core.items,
                             [](const SelectItem& item) { return !item.variable.empty(); });
}

}  // namespace

// One run of a plan: its statement is reset when this goes, and the values it was bound to with it.
class Runner::Execution {
 public:
  Execution(Runner& runner, Plan& plan, Frame& frame)
      : database_(runner.session_.Db()), prepared_(plan.prepared) {
    if (!prepared_) {
      plan.prepared = database_.Prepare(plan.sql);
    }
    // The statement keeps pointing at the texts: none may move.
    values_.reserve(plan.slots.size());
    for (const Slot& slot : plan.slots) {
      values_.push_back(runner.SlotValue(slot, frame));
      prepared_.Bind(static_cast<int>(values_.size()), values_.back());
    }
  }
  ~Execution() { prepared_.Reset(); }
  Execution(const Execution&) = delete;
  Execution& operator=(const Execution&) = delete;

  bool Step() { return prepared_.Step(database_); }
  ValueRef Column(size_t index) const { return prepared_.Column(static_cast<int>(index)); }

 private:
  Database& database_;
  Prepared& prepared_;
  std::vector<Value> values_;
};

// While it lives the file is read at one moment, if the batch only reads.
class Runner::Reading {
 public:
  Reading(Session& session, bool onlyReads)
      : session_(session), open_(onlyReads && session.BeginReading()) {}
  ~Reading() {
    if (open_) session_.EndReading();
  }
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;

 private:
  Session& session_;
  bool open_;
};

void Runner::RunBatch(TextView sql, std::span<const Variant> parameters) {
  session_.BeginBatch();
  try {
    session_.Settle();
    Scanned scanned = Scan(sql);
    if (parameters.size() > static_cast<size_t>(scanned.markers)) {
      throw ServerFailure(8144, u"There are more values than ? markers.");
    }
    std::vector<TypedValue> markers;
    for (const Variant& parameter : parameters) markers.push_back(FromVariant(parameter));
    const std::shared_ptr<Program> program = session_.Programs().Get(sql, scanned, markers);
    const Reading reading(session_, program->OnlyReads());
    session_.Objects().Refresh();
    Frame frame{*program, scanned.literals,
                markers,  std::vector<Value>(program->Variables().size()),
                {},       0};
    BindAhead(program->Tree().statements, frame);
    RunBlock(program->Tree().statements, frame);
  } catch (const DatabaseFailure& failure) {
    Failed(failure, 0);
  }
}

void Runner::BindAhead(const Block& block, Frame& frame) {
  for (const StatementPtr& statement : block) {
    try {
      if (const auto* select = std::get_if<SelectStatement>(&statement->node)) {
        if (OnlyAssigns(*select->query)) continue;
        if (!select->query->cores[0].into.empty()) return;
        PlanOf(select, frame,
               [&](const BindInput& input) { return BindSelect(input, *select->query); });
      } else if (std::holds_alternative<InsertStatement>(statement->node) ||
                 std::holds_alternative<UpdateStatement>(statement->node) ||
                 std::holds_alternative<DeleteStatement>(statement->node)) {
        ChangePlan(*statement, frame);
      } else if (const auto* inner = std::get_if<BlockStatement>(&statement->node)) {
        BindAhead(inner->body, frame);
      } else if (ChangesSchema(*statement)) {
        return;
      }
    } catch (const DatabaseFailure& failure) {
      // A table may yet be made by a statement before.
      if (failure.NativeNumber() != 208) throw AtLine(failure, statement->line);
    }
  }
}

Runner::Flow Runner::RunBlock(const Block& block, Frame& frame) {
  for (const StatementPtr& statement : block) {
    const Flow flow = RunStatement(*statement, frame);
    if (flow != Flow::Next) return flow;
  }
  return Flow::Next;
}

Runner::Flow Runner::RunStatement(const Statement& statement, Frame& frame) {
  try {
    session_.BeginStatement();
    return Run(statement, frame);
  } catch (const DatabaseFailure& failure) {
    return Failed(failure, statement.line);
  } catch (const ConstraintViolation& violation) {
    return Failed(DatabaseFailure(kConstraintFailure, kLibrarySource, FromUtf8(violation.message)),
                  statement.line);
  }
}

Runner::Flow Runner::Failed(const DatabaseFailure& failure, int32_t line) {
  SessionState& state = session_.State();
  state.error = failure.NativeNumber();
  state.rowCount = 0;
  // Those of the file, after some of which SQLite has rolled back by itself. The batch ends with
  // them, so that they count more than a refused row before.
  const bool ofFile = failure.Number() == kUnspecifiedFailure;
  const bool lost = state.transactionCount > 0 && !session_.Db().InTransaction();
  if (!batch_.failure || ofFile || failure.Number() == kTimeoutFailure) {
    batch_.failure = AtLine(failure, line);
  }
  if (ofFile || lost || UndoesTransaction(failure.NativeNumber())) session_.EndTransactions();
  return EndsStatementOnly(failure.NativeNumber()) ? Flow::Next : Flow::Abort;
}

Runner::Flow Runner::Run(const Statement& statement, Frame& frame) {
  if (const auto* select = std::get_if<SelectStatement>(&statement.node)) {
    if (!select->query->cores[0].into.empty()) {
      RunSelectInto(*select->query, frame);
    } else if (OnlyAssigns(*select->query)) {
      for (const SelectItem& item : select->query->cores[0].items) {
        SetVariable(item.variable, *item.value, frame);
      }
      session_.State().rowCount = 1;
    } else {
      RunSelect(*select, frame);
    }
  } else if (std::holds_alternative<InsertStatement>(statement.node) ||
             std::holds_alternative<UpdateStatement>(statement.node) ||
             std::holds_alternative<DeleteStatement>(statement.node)) {
    RunChange(ChangePlan(statement, frame), frame);
  } else if (const auto* declare = std::get_if<DeclareStatement>(&statement.node)) {
    RunDeclare(*declare, frame);
  } else if (const auto* set = std::get_if<SetVariableStatement>(&statement.node)) {
    SetVariable(set->variable, *set->value, frame);
  } else if (const auto* option = std::get_if<SetOptionStatement>(&statement.node)) {
    if (option->option == SessionOption::NoCount) session_.State().noCount = option->on;
  } else if (const auto* identity = std::get_if<IdentityInsertStatement>(&statement.node)) {
    RunIdentityInsert(*identity);
  } else if (const auto* branch = std::get_if<IfStatement>(&statement.node)) {
    return RunIf(*branch, frame);
  } else if (const auto* block = std::get_if<BlockStatement>(&statement.node)) {
    return RunBlock(block->body, frame);
  } else if (const auto* result = std::get_if<ReturnStatement>(&statement.node)) {
    if (result->value) {
      const Value value = Evaluate(*result->value, frame, kInt).value;
      frame.returnValue = static_cast<int32_t>(ValueRef(value).Integer());
    }
    return Flow::Return;
  } else if (const auto* print = std::get_if<PrintStatement>(&statement.node)) {
    Evaluate(*print->value, frame);  // for its failures; nobody listens
  } else if (const auto* raise = std::get_if<RaiseErrorStatement>(&statement.node)) {
    RunRaiseError(*raise, frame);
  } else if (const auto* transaction = std::get_if<TransactionStatement>(&statement.node)) {
    RunTransaction(transaction->verb);
  } else if (const auto* execute = std::get_if<ExecuteStatement>(&statement.node)) {
    RunExecute(*execute, frame);
  } else {
    RunSchemaChange(statement, frame);
  }
  session_.State().error = 0;
  return Flow::Next;
}

void Runner::RunSchemaChange(const Statement& statement, Frame& frame) {
  Database& database = session_.Db();
  Catalog& catalog = session_.Objects();
  if (session_.State().transactionCount > 0) session_.State().schemaChanged = true;
  if (const auto* table = std::get_if<CreateTableStatement>(&statement.node)) {
    CreateTable(database, catalog, *table);
  } else if (const auto* index = std::get_if<CreateIndexStatement>(&statement.node)) {
    CreateIndex(database, catalog, *index);
  } else if (const auto* view = std::get_if<CreateViewStatement>(&statement.node)) {
    CreateView(database, catalog, *view, frame.literals);
  } else if (const auto* procedure = std::get_if<CreateProcedureStatement>(&statement.node)) {
    CreateProcedure(database, catalog, *procedure);
  } else if (const auto* drop = std::get_if<DropStatement>(&statement.node)) {
    Drop(database, catalog, *drop);
  }
}

Value Runner::SlotValue(const Slot& slot, Frame& frame) {
  const SessionState& state = session_.State();
  const Value* value = &slot.constant;
  Value system;
  switch (slot.kind) {
    case Slot::Kind::Literal:
      value = &frame.literals[static_cast<size_t>(slot.index)].value;
      break;
    case Slot::Kind::Marker:
      value = &frame.markers[static_cast<size_t>(slot.index)].value;
      break;
    case Slot::Kind::Variable:
      value = &frame.variables[static_cast<size_t>(slot.index)];
      break;
    case Slot::Kind::Constant:
      break;
    case Slot::Kind::System:
      value = &system;
      switch (static_cast<SystemValue>(slot.index)) {
        case SystemValue::Now:
          system = CurrentMoment();
          break;
        case SystemValue::RowCount:
          system = state.rowCount;
          break;
        case SystemValue::Identity:
          system = state.identity;
          break;
        case SystemValue::ScopeIdentity:
          system = frame.scopeIdentity;
          break;
        case SystemValue::TransactionCount:
          system = int64_t{state.transactionCount};
          break;
        case SystemValue::Error:
          system = int64_t{state.error};
          break;
      }
      break;
  }
  switch (slot.conversion) {
    case Slot::Conversion::None:
      return *value;
    case Slot::Conversion::Convert:
      return Convert(*value, slot.from, slot.to);
    default:
      return Assign(*value, slot.from, slot.to, slot.column, slot.table);
  }
}

TypedValue Runner::Evaluate(const Expression& expression, Frame& frame,
                            std::optional<TypeInfo> type) {
  Plan& plan = PlanOf(&expression, frame,
                      [&](const BindInput& input) { return BindValue(input, expression, type); });
  Execution execution(*this, plan, frame);
  execution.Step();
  return {execution.Column(0).Copy(), plan.columns[0].type};
}

void Runner::RunSelect(const SelectStatement& select, Frame& frame) {
  Plan& plan = PlanOf(&select, frame,
                      [&](const BindInput& input) { return BindSelect(input, *select.query); });
  if (plan.kind == Plan::Kind::Assign) {
    RunAssign(plan, frame);
  } else {
    RunQuery(plan, frame);
  }
}

// A table with the columns of the query, then its rows.
void Runner::RunSelectInto(const Query& query, Frame& frame) {
  Catalog& catalog = session_.Objects();
  const uint64_t generation = catalog.Generation();
  if (session_.State().transactionCount > 0) session_.State().schemaChanged = true;
  try {
    if (query.cores[0].into.starts_with(u'#')) catalog.PrepareTemporary();
    Transaction transaction(session_.Db());
    CreateTableStatement table;
    table.table = query.cores[0].into;
    std::vector<int32_t> pinned;
    const std::vector<std::optional<TypeInfo>> markers;
    const auto input = [&] {
      return BindInput{catalog, frame.literals, markers, frame.program.Variables(), pinned};
    };
    for (const ResultColumn& column : BindSelectInto(input(), query)) {
      ColumnDefinition& definition = table.columns.emplace_back();
      definition.name = column.name;
      definition.type = column.type;
    }
    CreateTable(session_.Db(), catalog, table);
    Plan plan = BindInsertInto(input(), table.table, query);
    RunChange(plan, frame);
    transaction.Commit();
  } catch (...) {
    if (catalog.Generation() != generation) catalog.Reload();
    throw;
  }
}

void Runner::RunQuery(Plan& plan, Frame& frame) {
  Execution execution(*this, plan, frame);
  std::vector<Variant> values;
  int64_t rows = 0;
  while (execution.Step()) {
    ++rows;
    for (size_t i = 0; i < plan.columns.size(); ++i) {
      values.push_back(ToVariant(execution.Column(i), plan.columns[i].type));
    }
  }
  session_.State().rowCount = rows;
  if (!Gathers()) return;
  std::vector<Column> columns;
  for (const ResultColumn& column : plan.columns) columns.push_back(ColumnOf(column));
  batch_.results.emplace_back(std::move(columns), std::move(values));
}

void Runner::RunAssign(Plan& plan, Frame& frame) {
  Execution execution(*this, plan, frame);
  int64_t rows = 0;
  while (execution.Step()) {
    if (++rows > 1 && plan.readsTargets) {
      throw Unsupported(u"a variable that gathers the rows of a SELECT");
    }
    for (size_t i = 0; i < plan.targets.size(); ++i) {
      const Target& target = plan.targets[i];
      frame.variables[static_cast<size_t>(target.variable)] =
          Convert(execution.Column(i), target.from, target.to);
    }
  }
  session_.State().rowCount = rows;
}

Plan& Runner::ChangePlan(const Statement& statement, Frame& frame) {
  return PlanOf(&statement, frame, [&](const BindInput& input) {
    if (const auto* insert = std::get_if<InsertStatement>(&statement.node)) {
      return BindInsert(input, *insert);
    }
    if (const auto* update = std::get_if<UpdateStatement>(&statement.node)) {
      return BindUpdate(input, *update);
    }
    return BindDelete(input, std::get<DeleteStatement>(statement.node));
  });
}

void Runner::RunChange(Plan& plan, Frame& frame) {
  SessionState& state = session_.State();
  const ColumnInfo* identity = plan.kind == Plan::Kind::Insert ? plan.table->Identity() : nullptr;
  if (identity) {
    const bool allowed = EqualsIgnoreAsciiCase(state.identityInsert, plan.table->name);
    if (plan.givesIdentity && !allowed) throw IdentityInsertOff(plan.table->name);
    if (!plan.givesIdentity && allowed) {
      throw ServerFailure(545, u"Explicit value must be specified for identity column in table '" +
                                   plan.table->name + u"' when IDENTITY_INSERT is set to ON.");
    }
  }
  try {
    Execution execution(*this, plan, frame);
    execution.Step();
  } catch (const ConstraintViolation& violation) {
    const DatabaseFailure failure = RowFailure(violation, plan, session_.Objects());
    if (identity && !plan.givesIdentity) session_.UseUpKey(*plan.table);
    throw failure;
  }
  state.rowCount = session_.Db().Changes();
  if (plan.kind == Plan::Kind::Insert) {
    if (identity == nullptr) {
      state.identity = Value();
    } else if (state.rowCount > 0) {
      const int64_t key = sqlite3_last_insert_rowid(session_.Db().Get());
      state.identity = key;
      frame.scopeIdentity = key;
      if (state.transactionCount > 0 && !plan.table->temporary) {
        int64_t& given = state.keysGiven[ToUtf8(plan.table->name)];
        given = std::max(given, key);
      }
    }
  }
  if (!state.noCount && Gathers()) batch_.rowCounts.push_back(state.rowCount);
}

Value& Runner::VariableOf(TextView name, Frame& frame, TypeInfo& type) {
  const auto& variables = frame.program.Variables();
  const auto found = std::ranges::find_if(
      variables, [&](const VariableInfo& info) { return EqualsIgnoreAsciiCase(info.name, name); });
  if (found == variables.end()) {
    throw ServerFailure(137, u"Must declare the scalar variable \"" + Text(name) + u"\".");
  }
  type = found->type;
  return frame.variables[static_cast<size_t>(found - variables.begin())];
}

void Runner::SetVariable(TextView name, const Expression& expression, Frame& frame) {
  TypeInfo type;
  Value& variable = VariableOf(name, frame, type);
  variable = Evaluate(expression, frame, type).value;
}

void Runner::RunDeclare(const DeclareStatement& declare, Frame& frame) {
  for (const auto& variable : declare.variables) {
    if (variable.value) SetVariable(variable.name, *variable.value, frame);
  }
}

Runner::Flow Runner::RunIf(const IfStatement& branch, Frame& frame) {
  bool holds = false;
  {
    Plan& plan = PlanOf(&branch, frame, [&](const BindInput& input) {
      return BindCondition(input, *branch.condition);
    });
    Execution execution(*this, plan, frame);
    holds = execution.Step();
  }
  if (holds) return RunStatement(*branch.then, frame);
  return branch.otherwise ? RunStatement(*branch.otherwise, frame) : Flow::Next;
}

void Runner::RunTransaction(TransactionVerb verb) {
  switch (verb) {
    case TransactionVerb::Begin:
      return session_.BeginTransaction();
    case TransactionVerb::Commit:
      return session_.CommitTransaction();
    default:
      return session_.RollbackTransaction();
  }
}

void Runner::RunIdentityInsert(const IdentityInsertStatement& identity) {
  const ObjectPtr table = session_.Objects().Find(identity.table);
  if (!table || table->kind != ObjectKind::Table) throw InvalidObject(identity.table);
  if (table->Identity() == nullptr) {
    throw ServerFailure(8106, u"Table '" + table->name +
                                  u"' does not have the identity property. Cannot perform SET "
                                  u"operation.");
  }
  Text& current = session_.State().identityInsert;
  if (!identity.on) {
    if (EqualsIgnoreAsciiCase(current, table->name)) current.clear();
    return;
  }
  if (!current.empty() && !EqualsIgnoreAsciiCase(current, table->name)) {
    throw ServerFailure(8107, u"IDENTITY_INSERT is already ON for table '" + current +
                                  u"'. Cannot perform SET operation for table '" + table->name +
                                  u"'.");
  }
  current = table->name;
}

void Runner::RunRaiseError(const RaiseErrorStatement& raise, Frame& frame) {
  if (raise.arguments.size() < 2) throw ServerFailure(102, u"Incorrect syntax near ')'.");
  const TypedValue message = Evaluate(*raise.arguments[0], frame);
  const Value severity = Evaluate(*raise.arguments[1], frame, kInt).value;
  if (!IsText(message.type)) throw Unsupported(u"RAISERROR of a message number");
  if (raise.arguments.size() > 3) throw Unsupported(u"RAISERROR with arguments");
  if (ValueRef(severity).Integer() <= 10) return;
  throw ServerFailure(50000, FromUtf8(ValueRef(message.value).Text()));
}

}  // namespace vellum250::database::embedded
