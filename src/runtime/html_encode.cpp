#include "runtime/html_encode.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>

#include "platform/code_page.h"

#ifdef __SSE2__
#include <immintrin.h>
#endif

namespace vellum250 {

namespace {

// Whether an ASCII character stays as it is.
constexpr auto kPlain = [] {
  std::array<bool, 128> plain{};
  for (char16_t c = 32; c < 128; ++c) {
    plain[c] = c != u'"' && c != u'&' && c != u'<' && c != u'>';
  }
  return plain;
}();

// Takes the characters that are not plain, in order, and copies the runs between them. Short pieces
// gather in a buffer first: appending each to the text by itself would take most of the time.
class Encoder {
 public:
  Encoder(Text& out, TextView text) : out_(out), text_(text) {}

  void Encode(size_t position) {
    if (position < copied_) return;  // the second half of a pair
    CopyRun(position);
    copied_ = position + 1;
    const char16_t c = text_[position];
    switch (c) {
      case u'"':
        Put(u"&quot;");
        return;
      case u'&':
        Put(u"&amp;");
        return;
      case u'<':
        Put(u"&lt;");
        return;
      case u'>':
        Put(u"&gt;");
        return;
    }
    if (c >= 128 && IsMisreadSpace(position)) {
      Put(u" ");
      ++copied_;
      return;
    }
    const int16_t code = platform::CharacterCode(c);
    if (code >= 32 && code < 128) {
      *end_++ = c;
    } else {
      Put(u"&#");
      end_ = std::ranges::copy(NumberText(code), end_).out;
      Put(u";");
    }
  }

  void Finish() {
    Flush();
    out_.append(text_, copied_);
  }

  const char16_t* At(size_t position) const { return text_.data() + position; }
  size_t Length() const { return text_.size(); }

 private:
  static constexpr size_t kLongestReplacement = 9;  // "&#-32768;", of a double-byte code page
  static constexpr size_t kLongestRun = 64;
  static constexpr size_t kStride = 8;

  // Copies what stands before `position` and makes room for a replacement.
  void CopyRun(size_t position) {
    const size_t length = position - copied_;
    const char16_t* run = At(copied_);
    if (static_cast<size_t>(std::end(buffer_) - end_) <
        kLongestRun + kStride + kLongestReplacement) {
      Flush();
    }
    if (length > kLongestRun) {
      Flush();
      out_.append(run, length);
    } else if (text_.size() - copied_ >= kLongestRun + kStride) {
      // Whole strides; what is copied too much is overwritten.
      for (size_t i = 0; i < length; i += kStride) {
        std::memcpy(end_ + i, run + i, kStride * sizeof(char16_t));
      }
      end_ += length;
    } else {
      end_ = std::copy_n(run, length, end_);
    }
  }

  void Flush() {
    if (end_ == buffer_) return;
    out_.append(buffer_, end_);
    end_ = buffer_;
  }

  template <size_t size>
  void Put(const char16_t (&piece)[size]) {
    end_ = std::copy_n(piece, size - 1, end_);
  }

  bool IsMisreadSpace(size_t position) const {
    return position + 1 < text_.size() && text_[position] == platform::CharacterOfCode(194) &&
           text_[position + 1] == platform::CharacterOfCode(160);
  }

  Text& out_;
  const TextView text_;
  size_t copied_ = 0;  // how much of the text is in `out_` and `buffer_`
  char16_t buffer_[512];
  char16_t* end_ = buffer_;
};

// Each Scan looks at the text from `from` on, in blocks of its own width, and gives the position of
// the first character that it left to a narrower one.

#ifdef __SSE2__

void EncodeMarked(Encoder& encoder, size_t block, uint32_t marked) {
  for (; marked != 0; marked &= marked - 1) {
    encoder.Encode(block + static_cast<size_t>(std::countr_zero(marked)));
  }
}

// In both: packing with saturation makes 0 or 255 of every character beyond 255, so that a byte
// below 32 as a signed number stands for every character outside 32 to 127.

// 32 characters as bytes. Packing works on the two halves of its operands by themselves: the order
// is put right where it matters.
[[gnu::target("avx2")]] inline __m256i PackAvx2(const char16_t* text) {
  const auto* block = reinterpret_cast<const __m256i*>(text);
  return _mm256_packus_epi16(_mm256_loadu_si256(block), _mm256_loadu_si256(block + 1));
}

// The bytes that are special, as 255. `specials` has, for the lower half of a byte, the special
// character that ends in it.
[[gnu::target("avx2")]] inline __m256i SpecialAvx2(__m256i bytes, __m256i specials) {
  return _mm256_cmpeq_epi8(bytes, _mm256_shuffle_epi8(specials, bytes));
}

constexpr size_t kGroup = 128;
using GroupMarks = std::array<uint32_t, kGroup / 32>;

// The position of the next group of characters, from `from` on in steps of a group, that are not
// all plain, with a bit for each that is not; or that of the first group that is not complete.
// Plain text is the rule: one branch for a group. No calls, so that constants stay in registers.
[[gnu::target("avx2")]] size_t NextGroupAvx2(TextView text, size_t from, GroupMarks& marks) {
  const __m256i specials = _mm256_broadcastsi128_si256(
      _mm_setr_epi8(0, 0, '"', 0, 0, 0, '&', 0, 0, 0, 0, 0, '<', 0, '>', 0));
  const __m256i blank = _mm256_set1_epi8(32);
  for (; from + kGroup <= text.size(); from += kGroup) {
    const char16_t* group = text.data() + from;
    const __m256i a = PackAvx2(group);
    const __m256i b = PackAvx2(group + 32);
    const __m256i c = PackAvx2(group + 64);
    const __m256i d = PackAvx2(group + 96);
    const __m256i special =
        _mm256_or_si256(_mm256_or_si256(SpecialAvx2(a, specials), SpecialAvx2(b, specials)),
                        _mm256_or_si256(SpecialAvx2(c, specials), SpecialAvx2(d, specials)));
    const __m256i lowest = _mm256_min_epi8(_mm256_min_epi8(a, b), _mm256_min_epi8(c, d));
    const __m256i notPlain = _mm256_or_si256(special, _mm256_cmpgt_epi8(blank, lowest));
    if (!_mm256_testz_si256(notPlain, notPlain)) break;
  }
  if (from + kGroup > text.size()) return from;
  for (size_t i = 0; i < marks.size(); ++i) {
    const __m256i bytes = PackAvx2(text.data() + from + 32 * i);
    const __m256i notPlain =
        _mm256_or_si256(SpecialAvx2(bytes, specials), _mm256_cmpgt_epi8(blank, bytes));
    marks[i] =
        static_cast<uint32_t>(_mm256_movemask_epi8(_mm256_permute4x64_epi64(notPlain, 0b11011000)));
  }
  return from;
}

// How many characters at the start, in whole groups, are all plain: most texts are so to their end.
[[gnu::target("avx512bw")]] size_t PlainStartAvx512(TextView text) {
  const __m512i specials = _mm512_maskz_broadcast_i32x4(
      0xFFFF, _mm_setr_epi8(0, 0, '"', 0, 0, 0, '&', 0, 0, 0, 0, 0, '<', 0, '>', 0));
  const __m512i blank = _mm512_set1_epi8(32);
  size_t from = 0;
  for (; from + kGroup <= text.size(); from += kGroup) {
    const char16_t* group = text.data() + from;
    const __m512i a =
        _mm512_packus_epi16(_mm512_loadu_si512(group), _mm512_loadu_si512(group + 32));
    const __m512i b =
        _mm512_packus_epi16(_mm512_loadu_si512(group + 64), _mm512_loadu_si512(group + 96));
    const __mmask64 special = _mm512_cmpeq_epi8_mask(a, _mm512_shuffle_epi8(specials, a)) |
                              _mm512_cmpeq_epi8_mask(b, _mm512_shuffle_epi8(specials, b));
    if ((special | _mm512_cmpgt_epi8_mask(blank, _mm512_min_epi8(a, b))) != 0) break;
  }
  return from;
}

size_t ScanAvx2(Encoder& encoder, TextView text, size_t from) {
  GroupMarks marks;
  size_t group = NextGroupAvx2(text, from, marks);
  for (; group + kGroup <= text.size(); group = NextGroupAvx2(text, group + kGroup, marks)) {
    for (size_t i = 0; i < marks.size(); ++i) EncodeMarked(encoder, group + 32 * i, marks[i]);
  }
  return group;
}

constexpr size_t kBlock = 16;

// A bit for each of 16 characters that is not plain: eight at each place.
inline uint32_t BlockMarks(const char16_t* first, const char16_t* second) {
  const __m128i bytes = _mm_packus_epi16(_mm_loadu_si128(reinterpret_cast<const __m128i*>(first)),
                                         _mm_loadu_si128(reinterpret_cast<const __m128i*>(second)));
  // `<` and `>` differ in one bit, and so do `"` and `&`.
  const __m128i notPlain = _mm_or_si128(
      _mm_cmpgt_epi8(_mm_set1_epi8(32), bytes),
      _mm_or_si128(
          _mm_cmpeq_epi8(_mm_or_si128(bytes, _mm_set1_epi8('<' ^ '>')), _mm_set1_epi8('>')),
          _mm_cmpeq_epi8(_mm_or_si128(bytes, _mm_set1_epi8('"' ^ '&')), _mm_set1_epi8('&'))));
  return static_cast<uint32_t>(_mm_movemask_epi8(notPlain));
}

size_t ScanSse2(Encoder& encoder, size_t from) {
  const size_t length = encoder.Length();
  const auto marks = [&](size_t at) { return BlockMarks(encoder.At(at), encoder.At(at + 8)); };
  for (; from + kBlock <= length; from += kBlock) EncodeMarked(encoder, from, marks(from));
  if (from == length || length < kBlock / 2) return from;
  // The last characters are looked at in a block that reaches back over some that are done.
  if (length >= kBlock) {
    const size_t last = length - kBlock;
    EncodeMarked(encoder, from, marks(last) >> (from - last));
  } else {
    const size_t second = length - kBlock / 2;
    const uint32_t both = BlockMarks(encoder.At(0), encoder.At(second));
    EncodeMarked(encoder, 0, (both & 0xFF) | (both >> 8) << second);
  }
  return length;
}

#endif  // __SSE2__

void ScanScalar(Encoder& encoder, size_t from) {
  for (; from < encoder.Length(); ++from) {
    const char16_t c = *encoder.At(from);
    if (c >= kPlain.size() || !kPlain[c]) encoder.Encode(from);
  }
}

}  // namespace

void AppendHtmlEncoded(Text& out, TextView text) {
  Encoder encoder(out, text);
  size_t done = 0;
#ifdef __SSE2__
  static const bool hasAvx2 = __builtin_cpu_supports("avx2");
  static const bool hasAvx512 = __builtin_cpu_supports("avx512bw");
  if (hasAvx512) done = PlainStartAvx512(text);
  if (hasAvx2) done = ScanAvx2(encoder, text, done);
  done = ScanSse2(encoder, done);
#endif
  ScanScalar(encoder, done);
  encoder.Finish();
}

Text HtmlEncode(TextView text) {
  Text out;
  // Enough for one special character in twenty; beyond it the text grows as texts do.
  out.reserve(text.size() + text.size() / 4 + 8);
  AppendHtmlEncoded(out, text);
  return out;
}

}  // namespace vellum250
