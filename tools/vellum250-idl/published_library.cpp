#include "server/class_ids.h"
#include "server/factory.h"
#include "vellum250-idl/library.h"

namespace vellum250::idltool {

Library PublishedLibrary() {
  Library library{ToUtf8(kLibrarySource),
                  ToUtf8(server::kLibraryId),
                  std::to_string(server::kLibraryMajorVersion) + '.' +
                      std::to_string(server::kLibraryMinorVersion),
                  VELLUM250_VERSION,
                  {}};
  for (const server::PublishedClass& published : server::PublishedClasses()) {
    const ClassTable& table = published.table();
    const server::ClassIds* ids = server::FindClassIds(table.Name());
    if (ids == nullptr) throw InvalidProcedureCall(table.Name() + u" has no class ids");
    library.classes.push_back({&table, ToUtf8(ids->classId), ToUtf8(ids->interfaceId)});
  }
  return library;
}

}  // namespace vellum250::idltool
