#include "server/factory.h"

#include "server/address.h"

namespace vellum250::server {

namespace {

template <typename Class>
constexpr PublishedClass kPublished{&Class::Table, [] { return ObjectRef(MakeObject<Class>()); }};

constexpr PublishedClass kPublishedClasses[] = {
    kPublished<address>,
};

}  // namespace

std::span<const PublishedClass> PublishedClasses() { return kPublishedClasses; }

ObjectRef CreateObject(TextView name) {
  for (const PublishedClass& published : PublishedClasses()) {
    if (EqualsIgnoreAsciiCase(published.table().Name(), name)) return published.create();
  }
  throw CannotCreateObject(Text(name));
}

}  // namespace vellum250::server
