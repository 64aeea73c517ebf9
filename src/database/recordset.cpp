#include "database/recordset.h"

#include "automation/failure.h"

namespace vellum250::database {

TextView SqlTypeName(SqlType type) {
  static constexpr TextView kNames[] = {u"bit",    u"tinyint",   u"smallint", u"int",
                                        u"bigint", u"decimal",   u"money",    u"smallmoney",
                                        u"float",  u"real",      u"datetime", u"smalldatetime",
                                        u"date",   u"char",      u"varchar",  u"text",
                                        u"nchar",  u"nvarchar",  u"ntext",    u"uniqueidentifier",
                                        u"binary", u"varbinary", u"image",    u"sysname"};
  return kNames[static_cast<size_t>(type)];
}

Recordset::Recordset() : Recordset(std::vector<Column>(), {}) {}

Recordset::Recordset(std::vector<Column> columns, std::vector<Variant> values)
    : Recordset(std::make_shared<const std::vector<Column>>(std::move(columns)),
                std::move(values)) {}

Recordset::Recordset(ColumnsPtr columns, std::vector<Variant> values)
    : columns_(std::move(columns)), values_(std::move(values)) {}

const Variant& Recordset::Field(size_t index) const {
  if (index >= columns_->size()) {
    throw Failure(3265, kLibrarySource, u"Item cannot be found: column " + NumberText(index));
  }
  if (Eof()) {
    throw Failure(3021, kLibrarySource,
                  u"There is no current record: column " + (*columns_)[index].name);
  }
  return At(row_, index);
}

const Variant& Recordset::Field(TextView name) const {
  for (size_t i = 0; i < columns_->size(); ++i) {
    if (EqualsIgnoreAsciiCase((*columns_)[i].name, name)) return Field(i);
  }
  throw Failure(3265, kLibrarySource, u"Item cannot be found: column " + Text(name));
}

}  // namespace vellum250::database
