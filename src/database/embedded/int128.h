// Whole numbers of 128 bits: the compiler's, or where it has none (32-bit processors) ours.
#pragma once

#include <compare>
#include <concepts>
#include <cstdint>

namespace vellum250::database::embedded {

// Two's complement; what does not fit wraps, a division by zero is undefined.
class WideInteger {
 public:
  constexpr WideInteger() = default;
  template <std::signed_integral Integer>
  constexpr WideInteger(Integer value)
      : high_(value < 0 ? ~uint64_t{0} : 0), low_(static_cast<uint64_t>(value)) {}
  // `value` lies within 128 bits; its fraction is cut.
  constexpr explicit WideInteger(long double value) {
    constexpr long double kLimb = 18446744073709551616.0L;  // 2^64
    const long double size = value < 0 ? -value : value;
    high_ = static_cast<uint64_t>(size / kLimb);
    low_ = static_cast<uint64_t>(size - static_cast<long double>(high_) * kLimb);
    if (value < 0) *this = -*this;
  }

  constexpr explicit operator int64_t() const { return static_cast<int64_t>(low_); }
  constexpr explicit operator uint64_t() const { return low_; }

  constexpr bool operator==(const WideInteger&) const = default;
  constexpr std::strong_ordering operator<=>(const WideInteger& other) const {
    const auto order = static_cast<int64_t>(high_) <=> static_cast<int64_t>(other.high_);
    return std::is_neq(order) ? order : low_ <=> other.low_;
  }

  constexpr WideInteger operator-() const { return {~high_ + (low_ == 0 ? 1u : 0u), ~low_ + 1}; }
  friend constexpr WideInteger operator+(WideInteger a, WideInteger b) {
    const uint64_t low = a.low_ + b.low_;
    return {a.high_ + b.high_ + (low < a.low_ ? 1u : 0u), low};
  }
  friend constexpr WideInteger operator-(WideInteger a, WideInteger b) { return a + -b; }
  friend constexpr WideInteger operator*(WideInteger a, WideInteger b) {
    WideInteger product = ProductOfLimbs(a.low_, b.low_);
    product.high_ += a.high_ * b.low_ + a.low_ * b.high_;
    return product;
  }
  // Cut towards zero; the rest has the sign of `a`.
  friend constexpr WideInteger operator/(WideInteger a, WideInteger b) {
    WideInteger rest;
    const WideInteger quotient = Divided(a.Size(), b.Size(), rest);
    return a.IsNegative() == b.IsNegative() ? quotient : -quotient;
  }
  friend constexpr WideInteger operator%(WideInteger a, WideInteger b) {
    WideInteger rest;
    Divided(a.Size(), b.Size(), rest);
    return a.IsNegative() ? -rest : rest;
  }
  // By 0 to 127 bits.
  friend constexpr WideInteger operator<<(WideInteger a, int bits) {
    if (bits == 0) return a;
    if (bits >= 64) return {a.low_ << (bits - 64), 0};
    return {a.high_ << bits | a.low_ >> (64 - bits), a.low_ << bits};
  }
  constexpr WideInteger& operator*=(WideInteger other) { return *this = *this * other; }

 private:
  constexpr WideInteger(uint64_t high, uint64_t low) : high_(high), low_(low) {}
  constexpr bool IsNegative() const { return high_ >> 63 != 0; }
  constexpr WideInteger Size() const { return IsNegative() ? -*this : *this; }

  static constexpr WideInteger ProductOfLimbs(uint64_t a, uint64_t b) {
    constexpr uint64_t kHalf = 0xFFFFFFFF;
    const uint64_t low = (a & kHalf) * (b & kHalf);
    const uint64_t middle = (a >> 32) * (b & kHalf) + (low >> 32);
    const uint64_t other = (a & kHalf) * (b >> 32) + (middle & kHalf);
    return {(a >> 32) * (b >> 32) + (middle >> 32) + (other >> 32), other << 32 | (low & kHalf)};
  }

  // Of two numbers without sign; bit by bit where they do not fit the processor.
  static constexpr WideInteger Divided(WideInteger a, WideInteger b, WideInteger& rest) {
    if (a.high_ == 0 && b.high_ == 0) {
      rest = {0, a.low_ % b.low_};
      return {0, a.low_ / b.low_};
    }
    WideInteger quotient;
    for (int bit = 127; bit >= 0; --bit) {
      // Below 2^127, which is the most that `b` can be: no bit is lost.
      rest = rest << 1;
      rest.low_ |= (bit >= 64 ? a.high_ : a.low_) >> (bit % 64) & 1;
      if (rest.high_ < b.high_ || (rest.high_ == b.high_ && rest.low_ < b.low_)) continue;
      rest = rest - b;
      (bit >= 64 ? quotient.high_ : quotient.low_) |= uint64_t{1} << (bit % 64);
    }
    return quotient;
  }

  uint64_t high_ = 0;
  uint64_t low_ = 0;
};

#ifdef __SIZEOF_INT128__
__extension__ using Int128 = __int128;
#else
using Int128 = WideInteger;
#endif

}  // namespace vellum250::database::embedded
