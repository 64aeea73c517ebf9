// By PCRE2 in code units of 16 bits, which need not be whole characters.
#include "platform/pattern.h"

#define PCRE2_CODE_UNIT_WIDTH 16
#include <pcre2.h>

#include <chrono>
#include <memory>
#include <new>

#include "automation/failure.h"
#include "platform/portable/pattern_translation.h"

namespace vellum250::platform {

namespace {

using Clock = std::chrono::steady_clock;

// What one pattern may take on one text: steps from any one position, memory, and time for all.
constexpr uint32_t kMostSteps = 10'000'000;
constexpr uint32_t kMostKibibytes = 512 * 1024;
constexpr std::chrono::seconds kLongest{5};

struct Free {
  void operator()(pcre2_code* code) const { pcre2_code_free(code); }
  void operator()(pcre2_match_data* data) const { pcre2_match_data_free(data); }
  void operator()(pcre2_match_context* context) const { pcre2_match_context_free(context); }
};
template <typename T>
using Owned = std::unique_ptr<T, Free>;

// `made` by a function that gives null when there is no memory.
template <typename T>
Owned<T> Own(T* made) {
  if (made == nullptr) throw std::bad_alloc();
  return Owned<T>(made);
}

PCRE2_SPTR Units(const Text& text) { return reinterpret_cast<PCRE2_SPTR>(text.data()); }

// A failure for what PCRE2 calls by a number.
Failure TooMuch(int error) {
  PCRE2_UCHAR words[256] = {};
  pcre2_get_error_message(error, words, std::size(words));
  return OutOfMemory(u"regular expression: " + Text(reinterpret_cast<const char16_t*>(words)));
}

Owned<pcre2_code> Compile(TextView pattern) {
  // `InTime` is asked at each position where a match may begin, as at each group.
  const Text translated = u"(?C)(?:" + TranslatedPattern(pattern) + u")";
  int error = 0;
  size_t at = 0;
  // A reference to a group that has not matched yet matches nothing.
  pcre2_code* code = pcre2_compile(Units(translated), translated.size(), PCRE2_MATCH_UNSET_BACKREF,
                                   &error, &at, nullptr);
  if (code == nullptr) throw TooMuch(error);
  return Owned<pcre2_code>(code);
}

int InTime(pcre2_callout_block*, void* end) {
  return Clock::now() < *static_cast<const Clock::time_point*>(end) ? 0 : PCRE2_ERROR_MATCHLIMIT;
}

}  // namespace

std::vector<PatternMatch> FindMatches(TextView pattern, TextView subject) {
  const auto code = Compile(pattern);
  const Text text = WithoutCase(subject);
  Clock::time_point end = Clock::now() + kLongest;
  const auto context = Own(pcre2_match_context_create(nullptr));
  pcre2_set_match_limit(context.get(), kMostSteps);
  pcre2_set_heap_limit(context.get(), kMostKibibytes);
  pcre2_set_callout(context.get(), InTime, &end);
  const auto data = Own(pcre2_match_data_create(1, nullptr));

  std::vector<PatternMatch> found;
  for (size_t start = 0; start <= text.size();) {
    const int result =
        pcre2_match(code.get(), Units(text), text.size(), start, 0, data.get(), context.get());
    if (result == PCRE2_ERROR_NOMATCH) break;
    if (result < 0) throw TooMuch(result);
    const size_t* ends = pcre2_get_ovector_pointer(data.get());
    found.push_back({ends[0], ends[1] - ends[0]});
    start = ends[1] + (ends[0] == ends[1] ? 1 : 0);
  }
  return found;
}

}  // namespace vellum250::platform
