#include <new>

#include "database/embedded/failures.h"
#include "database/embedded/messages.h"
#include "database/embedded/run.h"

namespace vellum250::database::embedded {
namespace {

TextView VerbOf(Plan::Kind kind) {
  return kind == Plan::Kind::Insert   ? u"INSERT"
         : kind == Plan::Kind::Update ? u"UPDATE"
                                      : u"DELETE";
}

// The part of SQLite's message behind ": ", missing when there was no memory for it.
Text DetailOf(const ConstraintViolation& violation) {
  const size_t colon = violation.message.find(": ");
  if (colon == std::string::npos) throw std::bad_alloc();
  return FromUtf8(std::string_view(violation.message).substr(colon + 2));
}

// "member.member_no, member.grade" -> the names of the columns.
std::vector<Text> ColumnsOf(Text detail, const Text& table) {
  std::vector<Text> columns;
  const Text prefix = table + u".";
  while (!detail.empty()) {
    const size_t end = std::min(detail.find(u", " + prefix), detail.size());
    Text name = detail.substr(0, end);
    if (name.starts_with(prefix)) name.erase(0, prefix.size());
    columns.push_back(std::move(name));
    detail.erase(0, std::min(end + 2, detail.size()));
  }
  return columns;
}

const ConstraintInfo* FindKey(const ObjectInfo& table, const Text& detail) {
  Text index;
  if (detail.starts_with(u"index '")) {
    index = detail.substr(7, detail.size() - 8);
    // Behind the table's name and a point.
    index.erase(0, table.name.size() + 1);
    if (index.ends_with(u" NULL")) index.resize(index.size() - 5);
  }
  const std::vector<Text> columns = ColumnsOf(detail, table.name);
  for (const ConstraintInfo& constraint : table.constraints) {
    if (!constraint.IsUnique()) continue;
    if (index.empty() ? std::ranges::equal(constraint.columns, columns, EqualsIgnoreAsciiCase)
                      : EqualsIgnoreAsciiCase(constraint.name, index)) {
      return &constraint;
    }
  }
  return nullptr;
}

DatabaseFailure KeyFailure(const Text& detail, const ObjectInfo& table) {
  const ConstraintInfo* key = FindKey(table, detail);
  const Text object = u"dbo." + table.name;
  if (key && key->kind == ConstraintKind::UniqueIndex) {
    return DuplicateIndexKey(object, key->name);
  }
  const bool primary = key && key->kind == ConstraintKind::PrimaryKey;
  return DuplicateKey(primary ? u"PRIMARY KEY" : u"UNIQUE KEY",
                      key ? TextView(key->name) : TextView(), object);
}

// SQLite does not say which key it was. When only one is possible, it is named.
DatabaseFailure ReferenceFailure(const Plan& plan, const Catalog& catalog) {
  const TextView verb = VerbOf(plan.kind);
  const ObjectInfo& table = *plan.table;
  std::vector<std::pair<const ObjectInfo*, const ConstraintInfo*>> candidates;
  for (const auto& [name, object] : catalog.Objects()) {
    for (const ConstraintInfo& constraint : object->constraints) {
      if (constraint.kind != ConstraintKind::ForeignKey) continue;
      const bool parent = EqualsIgnoreAsciiCase(constraint.parent, table.name);
      const bool child = object->id == table.id;
      if ((parent && plan.kind != Plan::Kind::Insert) ||
          (child && plan.kind != Plan::Kind::Delete)) {
        candidates.emplace_back(object.get(), &constraint);
      }
    }
  }
  if (candidates.size() != 1) {
    const bool deletes = plan.kind == Plan::Kind::Delete;
    return ServerFailure(547, u"The " + Text(verb) + u" statement conflicted with a " +
                                  (deletes ? u"REFERENCE" : u"FOREIGN KEY") +
                                  u" constraint of table \"dbo." + table.name + u"\".");
  }
  const auto& [object, constraint] = candidates[0];
  const bool child = object->id == table.id;
  const Text other = u"dbo." + (child ? constraint->parent : object->name);
  return ConstraintConflict(verb, child ? u"FOREIGN KEY" : u"REFERENCE", constraint->name, other,
                            (child ? constraint->parentColumns : constraint->columns)[0]);
}

}  // namespace

DatabaseFailure RowFailure(const ConstraintViolation& violation, const Plan& plan,
                           const Catalog& catalog) {
  const ObjectInfo& table = *plan.table;
  switch (violation.code) {
    case SQLITE_CONSTRAINT_NOTNULL:
      return NullNotAllowed(ColumnsOf(DetailOf(violation), table.name)[0], u"dbo." + table.name,
                            VerbOf(plan.kind));
    case SQLITE_CONSTRAINT_UNIQUE:
    case SQLITE_CONSTRAINT_PRIMARYKEY:
    case SQLITE_CONSTRAINT_ROWID:
      return KeyFailure(DetailOf(violation), table);
    case SQLITE_CONSTRAINT_CHECK:
      if (DetailOf(violation) == FromUtf8(kIdentityCheck)) {
        return ConversionOverflow(u"IDENTITY", MessageName(table.Identity()->type));
      }
      return ConstraintConflict(VerbOf(plan.kind), u"CHECK", DetailOf(violation),
                                u"dbo." + table.name, {});
    case SQLITE_CONSTRAINT_FOREIGNKEY:
      return ReferenceFailure(plan, catalog);
    default:
      return DatabaseFailure(kConstraintFailure, kLibrarySource, FromUtf8(violation.message));
  }
}

}  // namespace vellum250::database::embedded
