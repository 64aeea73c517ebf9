// What the database holds: tables, views and procedures by name.
//
// The catalogue is kept in SQLite tables of the file itself (vellum250_...), and of the temporary
// database for tables whose name begins with #. PRAGMA user_version holds the format of the file
// and counts the changes, so that a connection notices what another one changed.
#pragma once

#include <map>
#include <memory>
#include <vector>

#include "database/embedded/sqlite.h"
#include "database/embedded/syntax.h"

namespace vellum250::database::embedded {

// SQLite's constraint that keeps an identity within its column's type.
inline constexpr std::string_view kIdentityCheck = "vellum250_identity";

struct ColumnInfo {
  Text name;
  TypeInfo type;
  bool nullable = true;
  bool identity = false;
  int64_t seed = 1;
  int64_t increment = 1;
  Text defaultText;  // T-SQL; "" when there is none
};

struct ConstraintInfo {
  ConstraintKind kind = ConstraintKind::Check;
  Text name;
  std::vector<Text> columns;
  Text parent;  // of a foreign key
  std::vector<Text> parentColumns;

  // A key, or a unique index.
  bool IsUnique() const { return kind <= ConstraintKind::UniqueIndex; }
};

struct ObjectInfo {
  int64_t id = 0;
  Text name;
  ObjectKind kind = ObjectKind::Table;
  bool temporary = false;
  Text definition;  // of a view or procedure: its CREATE statement
  std::vector<ColumnInfo> columns;
  std::vector<ConstraintInfo> constraints;
  std::string sqlName;  // quoted, with the schema

  // SQLite's, with the dot.
  std::string Schema() const { return temporary ? "temp." : "main."; }
  const ColumnInfo* Find(TextView column) const;
  const ColumnInfo* Identity() const;
  const ConstraintInfo* PrimaryKey() const;
};
using ObjectPtr = std::shared_ptr<const ObjectInfo>;

class Catalog {
 public:
  // Makes the catalogue's tables in a new file.
  explicit Catalog(Database& database);

  // While it lives the file is read at one moment, and the catalogue is that of this moment: what
  // another connection changed is read again first.
  class Look {
   public:
    explicit Look(Catalog& catalog);
    ~Look() { catalog_.version_.Reset(); }
    Look(const Look&) = delete;
    Look& operator=(const Look&) = delete;

   private:
    Catalog& catalog_;
  };
  void Refresh() { const Look look(*this); }
  // Whether nobody has written to the file since the last look, as the last statement found it.
  // When true the catalogue was right for that statement.
  bool IsCurrent() const { return DataVersion() == dataVersion_; }
  // Reads everything again: after a change of this connection, or its roll-back.
  void Reload();
  // Counts the reloads; what was bound under another number is void.
  uint64_t Generation() const { return generation_; }

  // A table, view or procedure, without regard to case; nullptr when there is none.
  ObjectPtr Find(TextView name) const;
  // One of the server's own views: information_schema.columns ... nullptr when unknown.
  ObjectPtr FindSystemView(TextView schema, TextView name) const;
  const std::map<Text, ObjectPtr>& Objects() const { return objects_; }

  // Writes an object, its columns and constraints; the caller holds a transaction and reloads.
  void Add(const ObjectInfo& object);
  void AddConstraint(const ObjectInfo& object, const ConstraintInfo& constraint);
  void RemoveConstraint(const ObjectInfo& object, TextView constraint);
  void Remove(const ObjectInfo& object);
  // Makes the tables of the temporary catalogue; once.
  void PrepareTemporary();
  void DropTemporary();
  // The id of the temporary table made last, of those there are; 0 without any.
  int64_t LastTemporary() const { return lastTemporary_; }

 private:
  int64_t Version();
  void Load(const std::string& schema);
  void CreateTables(const std::string& schema);
  void CountChange(bool temporary);
  uint32_t DataVersion() const;

  Database& database_;
  Prepared version_;
  int64_t loadedVersion_ = -1;
  uint32_t dataVersion_ = 0;
  uint64_t generation_ = 0;
  bool hasTemporary_ = false;
  int64_t lastTemporary_ = 0;
  std::map<Text, ObjectPtr> objects_;  // by name in lower case
};

}  // namespace vellum250::database::embedded
