#include "platform/temporary_name.h"

#include <gtest/gtest.h>

#include <set>

namespace vellum250::platform {
namespace {

TEST(TemporaryName, IsThreeLettersFiveHexadecimalDigitsAndAnEnding) {
  std::set<Text> names;
  for (int i = 0; i < 50; ++i) {
    const Text name = TemporaryName();
    ASSERT_EQ(name.size(), 12U);
    EXPECT_EQ(name.substr(0, 3), u"rad");
    EXPECT_EQ(name.find_first_not_of(u"0123456789ABCDEF", 3), 8U) << ToUtf8(name);
    EXPECT_EQ(name.substr(8), u".tmp");
    names.insert(name);
  }
  EXPECT_EQ(names.size(), 50U);
}

}  // namespace
}  // namespace vellum250::platform
