#include "database/embedded/program.h"

#include <algorithm>

#include "database/embedded/failures.h"

namespace vellum250::database::embedded {
namespace {

constexpr size_t kMostPrograms = 256;
constexpr size_t kLongestShape = size_t{32} * 1024;

bool OnlyReads(const Statement& statement) {
  if (const auto* select = std::get_if<SelectStatement>(&statement.node)) {
    return select->query->cores[0].into.empty();
  }
  if (const auto* block = std::get_if<BlockStatement>(&statement.node)) {
    return std::ranges::all_of(block->body, [](const StatementPtr& s) { return OnlyReads(*s); });
  }
  return std::holds_alternative<SetVariableStatement>(statement.node) ||
         std::holds_alternative<SetOptionStatement>(statement.node);
}

}  // namespace

Program::Program(TextView batch, Scanned scanned, std::vector<std::optional<TypeInfo>> markers)
    : tree_(ParseBatch(batch, scanned)),
      literals_(std::move(scanned.literals)),
      markers_(std::move(markers)) {
  for (const int32_t index : tree_.pinned) Pin(index, literals_);
  onlyReads_ = std::ranges::all_of(tree_.statements,
                                   [](const StatementPtr& s) { return embedded::OnlyReads(*s); });
}

const CreateProcedureStatement* Program::Procedure() const {
  return tree_.statements.empty()
             ? nullptr
             : std::get_if<CreateProcedureStatement>(&tree_.statements.front()->node);
}

void Program::Pin(int32_t literal, const std::vector<TypedValue>& literals) {
  pinned_.emplace_back(literal, literals[static_cast<size_t>(literal)].value);
}

bool Program::Serves(const std::vector<TypedValue>& literals) const {
  return std::ranges::all_of(pinned_, [&](const auto& pin) {
    return literals[static_cast<size_t>(pin.first)].value == pin.second;
  });
}

std::shared_ptr<Program> ProgramCache::Get(TextView batch, Scanned& scanned,
                                           const std::vector<TypedValue>& markers) {
  Text shape = std::move(scanned.shape);
  std::vector<std::optional<TypeInfo>> types;
  for (const TypedValue& marker : markers) {
    if (IsNull(marker.value)) {
      types.push_back(std::nullopt);
      shape += u'-';
      continue;
    }
    TypeInfo type = marker.type;
    // Another run's text may be longer.
    if (IsText(type)) type.length = LengthClass(type);
    if (type.type == SqlType::Int) type.precision = 0;
    types.push_back(type);
    const int64_t code = Encode(type);
    for (int shift = 0; shift < 64; shift += 16) shape += static_cast<char16_t>(code >> shift);
  }
  ++clock_;
  const auto found = entries_.find(shape);
  if (found != entries_.end()) {
    for (Entry& entry : found->second) {
      if (!entry.program->Serves(scanned.literals)) continue;
      entry.lastUse = clock_;
      return entry.program;
    }
  }
  auto program = std::make_shared<Program>(
      batch, Scanned{std::move(scanned.tokens), scanned.literals, scanned.markers, {}},
      std::move(types));
  const bool small = shape.size() <= kLongestShape && scanned.literals.size() <= kMostKeptLiterals;
  if (program->Cacheable() && small) {
    if (count_ >= kMostPrograms) MakeRoom();
    entries_[std::move(shape)].push_back({program, clock_});
    ++count_;
  }
  return program;
}

// Forgets the older half.
void ProgramCache::MakeRoom() {
  std::vector<uint64_t> uses;
  for (const auto& [shape, programs] : entries_) {
    for (const Entry& entry : programs) uses.push_back(entry.lastUse);
  }
  std::ranges::nth_element(uses, uses.begin() + static_cast<ptrdiff_t>(uses.size() / 2));
  const uint64_t oldest = uses[uses.size() / 2];
  count_ = 0;
  for (auto at = entries_.begin(); at != entries_.end();) {
    std::erase_if(at->second, [&](const Entry& entry) { return entry.lastUse < oldest; });
    count_ += at->second.size();
    at = at->second.empty() ? entries_.erase(at) : std::next(at);
  }
}

}  // namespace vellum250::database::embedded
