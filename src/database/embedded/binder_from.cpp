// FROM: tables, views, derived tables and joins.
#include <algorithm>

#include "automation/locale.h"
#include "database/embedded/binder.h"
#include "database/embedded/failures.h"
#include "database/embedded/messages.h"
#include "database/embedded/parser.h"

namespace vellum250::database::embedded {
namespace {

constexpr int32_t kMaxViewDepth = 16;
constexpr int32_t kMaxSources = 256;  // those within views count

}  // namespace

void CheckColumnList(const std::vector<Text>& names, size_t columns, TextView object,
                     int32_t line) {
  if (names.empty() || names.size() == columns) return;
  const bool few = names.size() < columns;
  throw ServerFailure(few ? 8158 : 8159,
                      u"'" + Text(object) + u"' has " + (few ? u"more" : u"fewer") +
                          u" columns than were specified in the column list.",
                      line);
}

ObjectPtr Binder::FindTable(TextView name, int32_t line) const {
  ObjectPtr object = input_.catalog.Find(name);
  if (!object || object->kind == ObjectKind::Procedure) throw AtLine(InvalidObject(name), line);
  return object;
}

BoundSource Binder::TableSource(const ObjectPtr& table, TextView alias) {
  BoundSource source;
  source.alias = Text(alias);
  source.sqlAlias = "t" + std::to_string(++aliases_);
  source.table = table;
  tables_.push_back(table);
  for (const ColumnInfo& column : table->columns) {
    source.columns.push_back(
        {column.name, column.type, source.sqlAlias + "." + QuotedName(column.name), &column});
  }
  return source;
}

namespace {

// FROM, source by source. Joins are written in the order they were bound in.
class FromBinder {
 public:
  FromBinder(Binder& binder, Scope& scope, int32_t& aliases, int32_t& views)
      : binder_(binder), scope_(scope), aliases_(aliases), views_(views) {}

  std::string Bind(const std::vector<SourcePtr>& from) {
    std::string sql;
    for (const SourcePtr& source : from) {
      if (!sql.empty()) {
        if (HasOuterRight(*source))
          throw Unsupported(u"RIGHT or FULL JOIN after a comma", source->line);
        sql += ", ";
      }
      scope_.firstVisible = scope_.sources.size();
      sql += BindSource(*source);
    }
    scope_.firstVisible = 0;
    return sql;
  }

 private:
  static bool HasOuterRight(const Source& source) {
    for (const Source* at = &source; at->left; at = at->left.get()) {
      if (at->join == JoinKind::Right || at->join == JoinKind::Full) return true;
    }
    return false;
  }

  std::string BindSource(const Source& source) {
    if (source.left) return BindJoin(source);
    if (aliases_ >= kMaxSources) {
      throw ServerFailure(106, u"Too many table names in the query. The maximum allowable is 256.",
                          source.line);
    }
    if (source.query)
      return Derived(source, *source.query, source.columnNames, source.alias, &scope_);
    ObjectPtr table = binder_.Input().catalog.FindSystemView(source.schema, source.name);
    const Text schema = ToLower(source.schema);
    const bool ordinary = schema.empty() || schema == u"dbo" || schema == u"tempdb";
    if (!table && (schema == u"information_schema" || schema == u"sys" ||
                   (ordinary && !binder_.Input().catalog.Find(source.name) &&
                    ToLower(source.name).starts_with(u"sys")))) {
      throw Unsupported(u"the server's table " + source.name, source.line);
    }
    if (!table && !ordinary) {
      throw AtLine(InvalidObject(source.schema + u"." + source.name), source.line);
    }
    if (!table) table = binder_.FindTable(source.name, source.line);
    const Text alias = source.alias.empty() ? source.name : source.alias;
    if (table->kind == ObjectKind::View) return View(source, *table, alias);
    BoundSource bound = binder_.TableSource(table, alias);
    std::string sql = table->sqlName + " AS " + bound.sqlAlias;
    Add(std::move(bound), source.line);
    return sql;
  }

  std::string BindJoin(const Source& source) {
    static constexpr const char* kWords[] = {" JOIN ", " LEFT JOIN ", " RIGHT JOIN ", " FULL JOIN ",
                                             " CROSS JOIN "};
    std::string sql = BindSource(*source.left);
    sql += kWords[static_cast<size_t>(source.join)];
    const std::string right = BindSource(*source.right);
    sql += source.right->left ? "(" + right + ")" : right;
    if (source.on) {
      scope_.noAggregates = &AggregateInOn;
      sql += " ON " + binder_.Condition(*source.on, scope_);
      scope_.noAggregates = &AggregateInWhere;
    }
    return sql;
  }

  void Add(BoundSource bound, int32_t line) {
    for (const BoundSource& other : scope_.sources) {
      if (EqualsIgnoreAsciiCase(other.alias, bound.alias)) {
        throw ServerFailure(1013,
                            u"The objects \"" + bound.alias + u"\" and \"" + other.alias +
                                u"\" in the FROM clause have the same exposed names. Use "
                                u"correlation names to distinguish them.",
                            line);
      }
    }
    scope_.sources.push_back(std::move(bound));
  }

  std::string Derived(const Source& source, const Query& query, const std::vector<Text>& names,
                      TextView alias, Scope* outer) {
    // A derived table does not see its neighbours, only what is outside of the whole query.
    BoundQuery bound = binder_.BindQuery(query, outer ? outer->outer : nullptr, true);
    if (!bound.variables.empty()) throw Unsupported(u"a variable set by a sub-query", source.line);
    CheckColumnList(names, bound.columns.size(), alias, source.line);
    BoundSource result;
    result.alias = Text(alias);
    result.sqlAlias = "t" + std::to_string(++aliases_);
    for (size_t i = 0; i < bound.columns.size(); ++i) {
      const Text& name = names.empty() ? bound.columns[i].name : names[i];
      if (name.empty()) {
        throw ServerFailure(8155,
                            u"No column name was specified for column " + NumberText(i + 1) +
                                u" of '" + Text(alias) + u"'.",
                            source.line);
      }
      if (std::ranges::any_of(result.columns, [&](const BoundColumn& column) {
            return EqualsIgnoreAsciiCase(column.name, name);
          })) {
        throw ServerFailure(
            8156,
            u"The column '" + name + u"' was specified multiple times for '" + Text(alias) + u"'.",
            source.line);
      }
      result.columns.push_back(
          {name, bound.columns[i].type, result.sqlAlias + ".c" + std::to_string(i + 1)});
    }
    std::string sql = "(" + bound.sql + ") AS " + result.sqlAlias;
    Add(std::move(result), source.line);
    return sql;
  }

  std::string View(const Source& source, const ObjectInfo& view, TextView alias) {
    if (++views_ > kMaxViewDepth) throw NestedTooDeeply(source.line);
    const Scanned scanned = Scan(view.definition);
    const SyntaxTree tree = ParseBatch(view.definition, scanned);
    const auto& create = std::get<CreateViewStatement>(tree.statements[0]->node);
    std::vector<Text> names;
    for (const ColumnInfo& column : view.columns) names.push_back(column.name);
    const auto* outer = binder_.SwapViewLiterals(&scanned.literals);
    std::string sql = Derived(source, *create.query, names, alias, nullptr);
    binder_.SwapViewLiterals(outer);
    --views_;
    return sql;
  }

  Binder& binder_;
  Scope& scope_;
  int32_t& aliases_;
  int32_t& views_;
};

}  // namespace

std::string Binder::BindFrom(const std::vector<SourcePtr>& from, Scope& scope) {
  return FromBinder(*this, scope, aliases_, views_).Bind(from);
}

}  // namespace vellum250::database::embedded
