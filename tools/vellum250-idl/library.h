// What the tool writes about: the published classes with their identities.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "automation/class_table.h"

namespace vellum250::idltool {

// A published class. Ids are in the registry's form, in braces.
struct Class {
  const ClassTable* table;  // never null
  std::string classId;
  std::string interfaceId;

  // The name that scripts create it by: "vellum250.address".
  std::string ProgId() const { return ToUtf8(table->Name()); }
  // Without the library: "address".
  std::string Name() const { return ProgId().substr(ProgId().find('.') + 1); }
};

struct Library {
  std::string name;  // "vellum250"; its module is <name>.dll
  std::string id;
  std::string interfaceVersion;  // of the type library: "1.0"
  std::string version;           // of the component: "1.2.3"
  std::vector<Class> classes;    // in the order of the interface
};

// The library as it is published. Raises 5 for a class without ids.
Library PublishedLibrary();

// The interface description, as widl and its like compile it. Needs no other type library.
std::string WriteIdl(const Library& library);

// The assembly manifest by which a program uses the classes without registration; `architecture` is
// that of the module, as manifests name it: "amd64" or "x86".
std::string WriteManifest(const Library& library, std::string_view architecture);

// The reference of the interface, in Markdown.
std::string WriteReference(const Library& library);

}  // namespace vellum250::idltool
