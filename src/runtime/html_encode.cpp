#include "runtime/html_encode.h"

#include <bit>

#include "platform/code_page.h"
#include "runtime/concat.h"

#ifdef __SSE2__
#include <immintrin.h>
#endif

namespace vellum250 {

namespace {

// Whether a character stays as it is without a look at the code page.
constexpr bool IsPlain(char16_t c) {
  return c >= 32 && c < 128 && c != u'"' && c != u'&' && c != u'<' && c != u'>';
}

// Takes the characters that are not plain, in order, and copies the runs between them in bulk.
class Encoder {
 public:
  Encoder(Text& out, TextView text) : out_(out), text_(text) {}

  void Encode(size_t position) {
    if (position < copied_) return;  // the second half of a pair
    out_.append(text_, copied_, position - copied_);
    copied_ = position + 1;
    const char16_t c = text_[position];
    switch (c) {
      case u'"':
        out_.append(u"&quot;");
        return;
      case u'&':
        out_.append(u"&amp;");
        return;
      case u'<':
        out_.append(u"&lt;");
        return;
      case u'>':
        out_.append(u"&gt;");
        return;
    }
    if (c >= 128 && IsMisreadSpace(position)) {
      out_.push_back(u' ');
      ++copied_;
      return;
    }
    const int16_t code = platform::CharacterCode(c);
    if (code >= 32 && code < 128) {
      out_.push_back(c);
    } else {
      Append(out_, u"&#", code, u";");
    }
  }
  void CopyRest() { out_.append(text_, copied_); }

  const char16_t* At(size_t position) const { return text_.data() + position; }
  size_t Length() const { return text_.size(); }

 private:
  bool IsMisreadSpace(size_t position) const {
    return position + 1 < text_.size() && text_[position] == platform::CharacterOfCode(194) &&
           text_[position + 1] == platform::CharacterOfCode(160);
  }

  Text& out_;
  const TextView text_;
  size_t copied_ = 0;  // how much of the text is in `out_`
};

// Each Scan looks at the text from `from` on, in blocks of its own width, and gives the position of
// the first character that it left to a narrower one.

void EncodeMarked(Encoder& encoder, size_t block, uint32_t marked) {
  for (; marked != 0; marked &= marked - 1) {
    encoder.Encode(block + static_cast<size_t>(std::countr_zero(marked)));
  }
}

#ifdef __SSE2__

// In both: packing with saturation makes 0 or 255 of every character beyond 255, so that a byte
// below 32 as a signed number stands for every character outside 32 to 127. `<` and `>` differ in
// one bit, and so do `"` and `&`.

[[gnu::target("avx2")]] size_t ScanAvx2(Encoder& encoder, size_t from) {
  constexpr size_t kWidth = 32;
  for (; from + kWidth <= encoder.Length(); from += kWidth) {
    const auto* block = reinterpret_cast<const __m256i*>(encoder.At(from));
    const __m256i packed =
        _mm256_packus_epi16(_mm256_loadu_si256(block), _mm256_loadu_si256(block + 1));
    // Packing works on the two halves of its operands by themselves.
    const __m256i bytes = _mm256_permute4x64_epi64(packed, 0b11011000);
    const __m256i special = _mm256_or_si256(
        _mm256_cmpgt_epi8(_mm256_set1_epi8(32), bytes),
        _mm256_or_si256(_mm256_cmpeq_epi8(_mm256_or_si256(bytes, _mm256_set1_epi8('<' ^ '>')),
                                          _mm256_set1_epi8('>')),
                        _mm256_cmpeq_epi8(_mm256_or_si256(bytes, _mm256_set1_epi8('"' ^ '&')),
                                          _mm256_set1_epi8('&'))));
    EncodeMarked(encoder, from, static_cast<uint32_t>(_mm256_movemask_epi8(special)));
  }
  return from;
}

size_t ScanSse2(Encoder& encoder, size_t from) {
  constexpr size_t kWidth = 16;
  for (; from + kWidth <= encoder.Length(); from += kWidth) {
    const auto* block = reinterpret_cast<const __m128i*>(encoder.At(from));
    const __m128i bytes = _mm_packus_epi16(_mm_loadu_si128(block), _mm_loadu_si128(block + 1));
    const __m128i special = _mm_or_si128(
        _mm_cmpgt_epi8(_mm_set1_epi8(32), bytes),
        _mm_or_si128(
            _mm_cmpeq_epi8(_mm_or_si128(bytes, _mm_set1_epi8('<' ^ '>')), _mm_set1_epi8('>')),
            _mm_cmpeq_epi8(_mm_or_si128(bytes, _mm_set1_epi8('"' ^ '&')), _mm_set1_epi8('&'))));
    EncodeMarked(encoder, from, static_cast<uint32_t>(_mm_movemask_epi8(special)));
  }
  return from;
}

#endif  // __SSE2__

void ScanScalar(Encoder& encoder, size_t from) {
  for (; from < encoder.Length(); ++from) {
    if (!IsPlain(*encoder.At(from))) encoder.Encode(from);
  }
}

}  // namespace

void AppendHtmlEncoded(Text& out, TextView text) {
  Encoder encoder(out, text);
  size_t done = 0;
#ifdef __SSE2__
  static const bool hasAvx2 = __builtin_cpu_supports("avx2");
  if (hasAvx2) done = ScanAvx2(encoder, done);
  done = ScanSse2(encoder, done);
#endif
  ScanScalar(encoder, done);
  encoder.CopyRest();
}

Text HtmlEncode(TextView text) {
  Text out;
  // Enough for one special character in twenty; beyond it the text grows as texts do.
  out.reserve(text.size() + text.size() / 4 + 8);
  AppendHtmlEncoded(out, text);
  return out;
}

}  // namespace vellum250
