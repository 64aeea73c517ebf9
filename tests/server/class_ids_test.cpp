#include "server/class_ids.h"

#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "server/factory.h"

namespace vellum250::server {
namespace {

TEST(ClassIds, EveryPublishedClassHasThem) {
  for (const PublishedClass& published : PublishedClasses()) {
    const Text& name = published.table().Name();
    const ClassIds* ids = FindClassIds(name);
    ASSERT_NE(ids, nullptr) << ToUtf8(name);
    EXPECT_EQ(ids->name, name) << "in the published case";
  }
}

TEST(ClassIds, AreWellFormedAndNoneIsUsedTwice) {
  const std::regex form("\\{[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}\\}");
  std::set<TextView> seen = {kLibraryId};
  EXPECT_TRUE(std::regex_match(ToUtf8(kLibraryId), form));
  for (const ClassIds& ids : AllClassIds()) {
    for (const TextView id : {ids.classId, ids.interfaceId}) {
      EXPECT_TRUE(std::regex_match(ToUtf8(id), form)) << ToUtf8(id);
      EXPECT_TRUE(seen.insert(id).second) << ToUtf8(id);
    }
  }
}

}  // namespace
}  // namespace vellum250::server
