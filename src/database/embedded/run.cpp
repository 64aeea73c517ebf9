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

Recordset::ColumnsPtr ColumnsOf(const std::vector<ResultColumn>& columns) {
  auto result = std::make_shared<std::vector<Column>>();
  for (const ResultColumn& column : columns) {
    const TypeInfo& type = column.type;
    const bool decimal = type.type == SqlType::Decimal;
    result->push_back({column.name, type.type, decimal ? type.precision : 0,
                       decimal ? type.scale : 0, type.length});
  }
  return result;
}

// The number of RAISERROR's failures.
constexpr int32_t kRaised = 50000;

bool IsChange(const Statement& statement) {
  return std::holds_alternative<InsertStatement>(statement.node) ||
         std::holds_alternative<UpdateStatement>(statement.node) ||
         std::holds_alternative<DeleteStatement>(statement.node);
}

// A client holds its results in memory.
constexpr size_t kMostResultBytes = 500'000'000;

size_t SizeOf(const Variant& value) {
  const Text* text = value.If<Text>();
  return sizeof value + (text != nullptr ? text->size() * sizeof(char16_t) : 0);
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
                             [](const SelectItem& item) { return item.variable != kNoVariable; });
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
    runner.moment_.clear();
    // The statement keeps pointing at the texts: none may move.
    int position = 0;
    for (const Slot& slot : plan.slots) {
      prepared_.Bind(++position, runner.SlotValue(slot, frame, kept_));
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
  std::forward_list<Value> kept_;
};

void Runner::RunBatch(TextView sql, std::span<const Variant> parameters) {
  session_.BeginBatch();
  try {
    session_.Settle();
    Scanned scanned = Scan(sql);
    if (session_.State().quotedTexts) RefuseQuotedTexts(sql, scanned);
    if (parameters.size() > static_cast<size_t>(scanned.markers)) {
      throw ServerFailure(8144, u"There are more values than ? markers.");
    }
    std::vector<TypedValue> markers;
    for (const Variant& parameter : parameters) markers.push_back(FromVariant(parameter));
    const std::shared_ptr<Program> program = session_.Programs().Get(sql, scanned, markers);
    Frame frame{*program, scanned.literals,
                markers,  std::vector<Value>(program->Variables().size()),
                {},       0};
    if (RunAtOnce(frame)) return;
    std::optional<Catalog::Look> look(std::in_place, session_.Objects());
    if (!program->OnlyReads()) look.reset();
    BindAhead(program->Tree().statements, frame);
    binding_ = false;
    RunBlock(program->Tree().statements, frame);
  } catch (const DatabaseFailure& failure) {
    Failed(failure, 0);
  }
}

bool Runner::RunAtOnce(Frame& frame) {
  const Block& batch = frame.program.Tree().statements;
  if (batch.size() != 1) return false;
  const auto* select = std::get_if<SelectStatement>(&batch[0]->node);
  const Catalog& catalog = session_.Objects();
  Plan* plan = select ? frame.program.KeptPlan(select, catalog) : nullptr;
  if (plan == nullptr || plan->kind != Plan::Kind::Rows || !plan->prepared) return false;
  std::optional<Execution> execution;
  try {
    execution.emplace(*this, *plan, frame);
    const bool hasRow = execution->Step();
    if (!catalog.IsCurrent()) return false;
    TakeRows(*plan, *execution, hasRow);
    session_.State().error = 0;
  } catch (const DatabaseFailure& failure) {
    // Values are bound before the file is looked at. Time is over whatever the catalogue is.
    const bool sure = execution && catalog.IsCurrent();
    execution.reset();
    if (!sure && failure.Number() != kTimeoutFailure) return false;
    Failed(failure, batch[0]->line);
  }
  return true;
}

bool Runner::BindAhead(const Block& block, Frame& frame) {
  return std::ranges::all_of(
      block, [&](const StatementPtr& statement) { return BindAhead(*statement, frame); });
}

bool Runner::BindAhead(const Statement& statement, Frame& frame) {
  try {
    if (const auto* select = std::get_if<SelectStatement>(&statement.node)) {
      if (!select->query->cores[0].into.empty()) return false;
      if (!OnlyAssigns(*select->query)) SelectPlan(*select, frame);
    } else if (IsChange(statement)) {
      ChangePlan(statement, frame);
    } else if (const auto* set = std::get_if<SetVariableStatement>(&statement.node)) {
      ValuePlan(*set->value, frame, TypeOf(set->variable, frame));
    } else if (const auto* inner = std::get_if<BlockStatement>(&statement.node)) {
      return BindAhead(inner->body, frame);
    } else if (const auto* branch = std::get_if<IfStatement>(&statement.node)) {
      ConditionPlan(*branch, frame);
      return BindAhead(*branch->then, frame) &&
             (!branch->otherwise || BindAhead(*branch->otherwise, frame));
    } else {
      return !ChangesSchema(statement);
    }
  } catch (const DatabaseFailure& failure) {
    // A table may yet be made by a statement before.
    if (failure.NativeNumber() != 208) throw AtLine(failure, statement.line);
  }
  return true;
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
  const bool unbound = std::exchange(binding_, false);
  const bool raised = failure.NativeNumber() == kRaised;
  Ends ends = EffectOf(failure.NativeNumber());
  if (state.xactAbort && !raised) ends = Ends::Transaction;
  if (ofFile || lost || ends == Ends::Transaction) session_.EndTransactions();
  if (ends != Ends::Statement) return Flow::Abort;
  return unbound ? Flow::Leave : Flow::Next;
}

Runner::Flow Runner::Run(const Statement& statement, Frame& frame) {
  if (const auto* select = std::get_if<SelectStatement>(&statement.node)) {
    if (!select->query->cores[0].into.empty()) {
      RunSelectInto(*select->query, frame);
    } else if (OnlyAssigns(*select->query)) {
      for (const SelectItem& item : select->query->cores[0].items) {
        SetVariable(item.variable, *item.value, frame);
      }
    } else {
      RunSelect(*select, frame);
    }
  } else if (IsChange(statement)) {
    RunChange(ChangePlan(statement, frame), frame);
  } else if (const auto* set = std::get_if<SetVariableStatement>(&statement.node)) {
    SetVariable(set->variable, *set->value, frame);
  } else if (const auto* option = std::get_if<SetOptionStatement>(&statement.node)) {
    RunSetOption(*option);
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
    session_.State().rowCount = 0;
  } else if (const auto* raise = std::get_if<RaiseErrorStatement>(&statement.node)) {
    RunRaiseError(*raise, frame);
  } else if (const auto* transaction = std::get_if<TransactionStatement>(&statement.node)) {
    RunTransaction(*transaction);
  } else if (const auto* execute = std::get_if<ExecuteStatement>(&statement.node)) {
    return RunExecute(*execute, frame);
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
    const std::vector<TypedValue> noMarkers;
    Program program(procedure->definition, Scan(procedure->definition), {});
    Frame body{program, program.Literals(), noMarkers, {}, {}, 0};
    BindAhead(program.Procedure()->body, body);
    CreateProcedure(database, catalog, *procedure);
  } else if (const auto* drop = std::get_if<DropStatement>(&statement.node)) {
    Drop(database, catalog, *drop);
  }
}

Value Runner::SystemSlot(SystemValue which, const Frame& frame) {
  const SessionState& state = session_.State();
  switch (which) {
    case SystemValue::Now:
      if (moment_.empty()) moment_ = CurrentMoment();
      return moment_;
    case SystemValue::RowCount:
      return state.rowCount;
    case SystemValue::Identity:
      return state.identity;
    case SystemValue::ScopeIdentity:
      return frame.scopeIdentity;
    case SystemValue::TransactionCount:
      return int64_t{state.transactionCount};
    default:
      return int64_t{state.error};
  }
}

const Value& Runner::SlotValue(const Slot& slot, Frame& frame, std::forward_list<Value>& kept) {
  const auto index = static_cast<size_t>(slot.index);
  const Value* value = &slot.constant;
  if (slot.kind == Slot::Kind::Literal) {
    value = &frame.literals[index].value;
  } else if (slot.kind == Slot::Kind::Marker) {
    value = &frame.markers[index].value;
  } else if (slot.kind == Slot::Kind::Variable) {
    value = &kept.emplace_front(frame.variables[index]);
  } else if (slot.kind == Slot::Kind::System) {
    value = &kept.emplace_front(SystemSlot(static_cast<SystemValue>(slot.index), frame));
  }
  switch (slot.conversion) {
    case Slot::Conversion::None:
      return *value;
    case Slot::Conversion::Convert:
      return kept.emplace_front(Convert(*value, slot.from, slot.to));
    default:
      return kept.emplace_front(Assign(*value, slot.from, slot.to, slot.column, slot.table));
  }
}

TypedValue Runner::Evaluate(const Expression& expression, Frame& frame,
                            std::optional<TypeInfo> type) {
  Plan& plan = ValuePlan(expression, frame, type);
  Execution execution(*this, plan, frame);
  execution.Step();
  return {execution.Column(0).Copy(), plan.columns[0].type};
}

Plan& Runner::ValuePlan(const Expression& expression, Frame& frame, std::optional<TypeInfo> type) {
  return PlanOf(&expression, frame,
                [&](const BindInput& input) { return BindValue(input, expression, type); });
}

Plan& Runner::ConditionPlan(const IfStatement& branch, Frame& frame) {
  return PlanOf(&branch, frame,
                [&](const BindInput& input) { return BindCondition(input, *branch.condition); });
}

void Runner::RunSelect(const SelectStatement& select, Frame& frame) {
  Plan& plan = SelectPlan(select, frame);
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
    std::vector<int32_t> pinned;
    const std::vector<std::optional<TypeInfo>> markers;
    const auto input = [&] {
      return BindInput{catalog, frame.literals, markers, frame.program.Variables(), pinned};
    };
    binding_ = true;
    const CreateTableStatement table = BindSelectInto(input(), query);
    CreateTable(session_.Db(), catalog, table);
    Plan plan = BindInsertInto(input(), table, query);
    binding_ = false;
    plan.makesTable = true;
    RunChange(plan, frame);
    transaction.Commit();
  } catch (...) {
    if (catalog.Generation() != generation) catalog.Reload();
    throw;
  }
}

void Runner::RunQuery(Plan& plan, Frame& frame) {
  Execution execution(*this, plan, frame);
  TakeRows(plan, execution, execution.Step());
}

void Runner::TakeRows(Plan& plan, Execution& execution, bool hasRow) {
  std::vector<Variant> values;
  int64_t rows = 0;
  size_t bytes = 0;
  for (; hasRow; hasRow = execution.Step()) {
    ++rows;
    for (size_t i = 0; i < plan.columns.size(); ++i) {
      values.push_back(ToVariant(execution.Column(i), plan.columns[i].type));
      bytes += SizeOf(values.back());
    }
    if (bytes > kMostResultBytes) throw Unsupported(u"a result of more than 500,000,000 bytes");
  }
  session_.State().rowCount = rows;
  if (!Gathers()) return;
  if (!plan.resultColumns) plan.resultColumns = ColumnsOf(plan.columns);
  batch_.results.emplace_back(plan.resultColumns, std::move(values));
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
      Store(target.variable, execution.Column(i), target.from, frame);
    }
  }
  session_.State().rowCount = rows;
}

Plan& Runner::SelectPlan(const SelectStatement& select, Frame& frame) {
  return PlanOf(&select, frame,
                [&](const BindInput& input) { return BindSelect(input, *select.query); });
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
    const bool allowed = plan.makesTable
                             ? plan.givesIdentity
                             : EqualsIgnoreAsciiCase(state.identityInsert, plan.table->name);
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

void Runner::Store(int32_t variable, ValueRef value, TypeInfo from, Frame& frame) {
  frame.variables[static_cast<size_t>(variable)] = Convert(value, from, TypeOf(variable, frame));
}

void Runner::SetVariable(int32_t variable, const Expression& expression, Frame& frame) {
  frame.variables[static_cast<size_t>(variable)] =
      Evaluate(expression, frame, TypeOf(variable, frame)).value;
  session_.State().rowCount = 1;
}

Runner::Flow Runner::RunIf(const IfStatement& branch, Frame& frame) {
  bool holds = false;
  {
    Execution execution(*this, ConditionPlan(branch, frame), frame);
    holds = execution.Step();
  }
  session_.State().rowCount = 0;
  session_.State().error = 0;
  if (holds) return RunStatement(*branch.then, frame);
  return branch.otherwise ? RunStatement(*branch.otherwise, frame) : Flow::Next;
}

void Runner::RunTransaction(const TransactionStatement& transaction) {
  session_.State().rowCount = 0;
  switch (transaction.verb) {
    case TransactionVerb::Begin:
      return session_.BeginTransaction(transaction.name);
    case TransactionVerb::Commit:
      return session_.CommitTransaction();
    default:
      return session_.RollbackTransaction(transaction.name);
  }
}

void Runner::RunSetOption(const SetOptionStatement& set) {
  SessionState& state = session_.State();
  state.rowCount = 0;
  for (const SessionOption option : set.options) {
    if (option == SessionOption::NoCount) state.noCount = set.on;
    if (option == SessionOption::XactAbort) state.xactAbort = set.on;
    if (option == SessionOption::QuotedIdentifier) state.quotedTexts = !set.on;
  }
}

void Runner::RunIdentityInsert(const IdentityInsertStatement& identity) {
  const ObjectPtr table = session_.Objects().Find(identity.table);
  if (!table || table->kind != ObjectKind::Table) {
    throw CannotFind(identity.table);
  }
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
  const TypedValue message = Evaluate(*raise.arguments[0], frame);
  const Value severity = Evaluate(*raise.arguments[1], frame, kInt).value;
  if (!IsText(message.type)) throw Unsupported(u"RAISERROR of a message number");
  // %d and %s stand for the further arguments, %% for itself.
  Text text = FromUtf8(ValueRef(message.value).Text());
  size_t next = 3;
  for (size_t at = text.find(u'%'); at != Text::npos; at = text.find(u'%', at)) {
    const char16_t kind = at + 1 < text.size() ? text[at + 1] : u' ';
    if (kind == u'%') text.erase(at, 1);
    if (kind == u'%' || next == raise.arguments.size()) {
      ++at;
      continue;
    }
    if (kind != u'd' && kind != u's' && kind != u'i') throw Unsupported(u"RAISERROR with a width");
    const Value value = Evaluate(*raise.arguments[next++], frame, NVarChar(4000)).value;
    const Text shown = IsNull(value) ? u"(null)" : FromUtf8(ValueRef(value).Text());
    text.replace(at, 2, shown);
    at += shown.size();
  }
  session_.State().rowCount = 0;
  if (ValueRef(severity).Integer() > 10) throw ServerFailure(kRaised, text);
}

}  // namespace vellum250::database::embedded
