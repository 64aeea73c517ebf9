#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <memory>
#include <thread>
#include <vector>

namespace vellum250::platform {
namespace {

int intact = 0;
constexpr char kMark = 'm';

struct Marked {
  std::array<char, 5000> bytes;
  Marked() { bytes.fill(kMark); }
  // What was freed too early is taken by others and written over.
  ~Marked() {
    std::vector<std::unique_ptr<char[]>> others;
    for (int i = 0; i < 200; ++i) {
      others.push_back(std::make_unique<char[]>(bytes.size() + 16));
    }
    if (std::ranges::count(bytes, kMark) == static_cast<std::ptrdiff_t>(bytes.size())) ++intact;
  }
};
thread_local Marked marked;

TEST(ThreadLocal, ObjectsAreWholeWhenTheirThreadEnds) {
  for (int i = 0; i < 3; ++i) {
    std::thread([] { marked.bytes[0] = kMark; }).join();
  }
  EXPECT_EQ(intact, 3);
}

}  // namespace
}  // namespace vellum250::platform
