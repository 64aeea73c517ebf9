// Every test runs in an apartment, as pages do.
#include <gtest/gtest.h>

#include "platform/windows/ole.h"

namespace {

class ApartmentEnvironment final : public testing::Environment {
 public:
  void SetUp() override { ASSERT_EQ(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED), S_OK); }
  void TearDown() override { CoUninitialize(); }
};

[[maybe_unused]] const testing::Environment* const environment =
    testing::AddGlobalTestEnvironment(new ApartmentEnvironment);

}  // namespace
