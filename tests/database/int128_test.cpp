#include "database/embedded/int128.h"

#include <gtest/gtest.h>

#include <random>

namespace vellum250::database::embedded {
namespace {

#ifdef __SIZEOF_INT128__

// The same number in both kinds, of any length.
struct Pair {
  WideInteger wide;
  Int128 native;
};

Pair AnyNumber(std::mt19937_64& random) {
  const auto high = static_cast<int64_t>(random());
  const auto low = static_cast<int64_t>(random());
  const int cut = static_cast<int>(random() % 64);
  if (random() % 2 == 0) return {WideInteger(low >> cut), Int128{low >> cut}};
  const Int128 native = Int128{high >> cut} * (Int128{1} << 64) + low;
  return {(WideInteger(high >> cut) << 64) + WideInteger(low), native};
}

bool Same(WideInteger wide, Int128 native) {
  return static_cast<uint64_t>(wide) == static_cast<uint64_t>(native) &&
         static_cast<int64_t>(wide / (WideInteger(1) << 64)) ==
             static_cast<int64_t>(native / (Int128{1} << 64));
}

TEST(WideInteger, CalculatesAsTheCompilersOwn) {
  std::mt19937_64 random(1);
  for (int i = 0; i < 50'000; ++i) {
    const auto [a, x] = AnyNumber(random);
    const auto [b, y] = AnyNumber(random);
    ASSERT_TRUE(Same(a, x)) << i;
    // The compiler's own must not overflow.
    const Int128 half = x / 2;
    ASSERT_TRUE(Same(a / 2 + b / 2, half + y / 2)) << i;
    ASSERT_TRUE(Same(a / 2 - b / 2, half - y / 2)) << i;
    const auto small = static_cast<int64_t>(y >> 64 == 0 || y >> 64 == -1 ? y : y >> 64);
    if (x / 4 >> 64 == 0 || x / 4 >> 64 == -1) {
      ASSERT_TRUE(Same(a / 4 * (small / 4), x / 4 * (small / 4))) << i;
    }
    ASSERT_EQ(a < b, x < y) << i;
    ASSERT_EQ(a == b, x == y) << i;
    if (y == 0) continue;
    ASSERT_TRUE(Same(a / b, x / y)) << i;
    ASSERT_TRUE(Same(a % b, x % y)) << i;
  }
}

TEST(WideInteger, ReadsLongDoubles) {
  for (const long double value : {0.0L, -1.9L, 1e18L, -1e19L, 123456789.5e25L, -9.9e37L}) {
    EXPECT_TRUE(Same(WideInteger(value), static_cast<Int128>(value))) << value;
  }
}

#endif

}  // namespace
}  // namespace vellum250::database::embedded
