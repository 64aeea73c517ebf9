#include "server/class_ids.h"

namespace vellum250::server {

namespace {

constexpr ClassIds kClassIds[] = {
    {u"vellum250.address", u"{4a552eb8-6337-430f-a315-e3ea494041a9}",
     u"{176b79a6-8a11-4ff4-8bb0-b21bc1efc2b8}"},
};

}  // namespace

std::span<const ClassIds> AllClassIds() { return kClassIds; }

const ClassIds* FindClassIds(TextView name) {
  for (const ClassIds& ids : kClassIds) {
    if (EqualsIgnoreAsciiCase(ids.name, name)) return &ids;
  }
  return nullptr;
}

}  // namespace vellum250::server
