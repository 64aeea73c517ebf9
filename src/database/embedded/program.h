// Batches and procedures ready to run, and the cache that keeps them.
#pragma once

#include <unordered_map>

#include "database/embedded/parser.h"
#include "database/embedded/plan.h"

namespace vellum250::database::embedded {

// A parsed batch or procedure with what has been bound of it so far. It serves every batch of its
// shape whose pinned literals have the same values.
class Program {
 public:
  // Raises what the parser does.
  Program(TextView batch, Scanned scanned, std::vector<std::optional<TypeInfo>> markers);

  const SyntaxTree& Tree() const { return tree_; }
  const std::vector<VariableInfo>& Variables() const { return tree_.variables; }
  // The literals of the text that it was made from.
  const std::vector<TypedValue>& Literals() const { return literals_; }
  bool Serves(const std::vector<TypedValue>& literals) const;
  // Whether it changes nothing that is stored: queries and variables only.
  bool OnlyReads() const { return onlyReads_; }
  bool Cacheable() const { return !tree_.definesObjects; }

  // The plan of a statement or expression, bound by `bind` when there is none or the catalogue has
  // changed since. `bind` takes a BindInput and gives a Plan.
  template <typename Bind>
  Plan& PlanOf(const void* node, const Catalog& catalog, const std::vector<TypedValue>& literals,
               Bind bind) {
    if (Plan* plan = KeptPlan(node, catalog)) return *plan;
    std::vector<int32_t> pinned;
    Plan plan = bind(BindInput{catalog, literals, markers_, tree_.variables, pinned});
    for (const int32_t index : pinned) Pin(index, literals);
    return plans_.emplace(node, std::move(plan)).first->second;
  }

  // nullptr when it is not bound, or was for another catalogue.
  Plan* KeptPlan(const void* node, const Catalog& catalog) {
    if (generation_ != catalog.Generation()) {
      plans_.clear();
      generation_ = catalog.Generation();
    }
    const auto found = plans_.find(node);
    return found == plans_.end() ? nullptr : &found->second;
  }

  // The procedure that the tree creates, when the program is one's text.
  const CreateProcedureStatement* Procedure() const;

 private:
  void Pin(int32_t literal, const std::vector<TypedValue>& literals);

  SyntaxTree tree_;
  std::vector<TypedValue> literals_;
  std::vector<std::optional<TypeInfo>> markers_;
  std::vector<std::pair<int32_t, Value>> pinned_;
  std::unordered_map<const void*, Plan> plans_;
  uint64_t generation_ = 0;
  bool onlyReads_ = false;
};

// The programs used last, by shape.
class ProgramCache {
 public:
  // The program for a batch: a kept one when its shape is known.
  std::shared_ptr<Program> Get(TextView batch, Scanned& scanned,
                               const std::vector<TypedValue>& markers);

 private:
  struct Entry {
    std::shared_ptr<Program> program;
    uint64_t lastUse = 0;
  };
  struct Hash {
    size_t operator()(const Text& shape) const {
      const auto* bytes = reinterpret_cast<const char*>(shape.data());
      return std::hash<std::string_view>()({bytes, shape.size() * sizeof(char16_t)});
    }
  };
  struct Same {
    bool operator()(const Text& a, const Text& b) const { return SameText(a, b); }
  };
  void MakeRoom();

  std::unordered_map<Text, std::vector<Entry>, Hash, Same> entries_;
  size_t count_ = 0;
  uint64_t clock_ = 0;
};

}  // namespace vellum250::database::embedded
