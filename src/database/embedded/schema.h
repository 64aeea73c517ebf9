// Making and dropping tables, indexes, views and procedures.
#pragma once

#include "database/embedded/catalog.h"
#include "database/embedded/syntax.h"

namespace vellum250::database::embedded {

// Each is done whole or not at all, inside an open transaction too, and leaves the catalogue
// reloaded. Each raises a DatabaseFailure (2714, 3701, 1767 ...).
void CreateTable(Database& database, Catalog& catalog, const CreateTableStatement& statement);
void CreateIndex(Database& database, Catalog& catalog, const CreateIndexStatement& statement);
void CreateView(Database& database, Catalog& catalog, const CreateViewStatement& statement,
                const std::vector<TypedValue>& literals);
void CreateProcedure(Database& database, Catalog& catalog,
                     const CreateProcedureStatement& statement);
void Drop(Database& database, Catalog& catalog, const DropStatement& statement);

}  // namespace vellum250::database::embedded
