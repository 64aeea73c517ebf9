#include "platform/message_box.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <vector>

#ifdef _WIN32
#include "platform/windows/ole.h"
#endif

namespace vellum250::platform {
namespace {

#ifdef _WIN32

// What the box of this thread said, one text a window.
std::vector<Text> shown;

BOOL CALLBACK Note(HWND window, LPARAM /*unused*/) {
  wchar_t text[100];
  const int length = GetWindowTextW(window, text, std::size(text));
  if (length > 0) shown.emplace_back(FromWide(text), static_cast<size_t>(length));
  return TRUE;
}

LRESULT CALLBACK CloseAtOnce(int code, WPARAM target, LPARAM details) {
  auto* const window = reinterpret_cast<HWND>(target);
  if (code == HCBT_ACTIVATE) PostMessageW(window, WM_CLOSE, 0, 0);
  wchar_t kind[10] = L"";
  if (code == HCBT_DESTROYWND) GetClassNameW(window, kind, std::size(kind));
  if (std::wstring_view(kind) == L"#32770") {  // a dialog
    Note(window, 0);
    EnumChildWindows(window, Note, 0);
  }
  return CallNextHookEx(nullptr, code, target, details);
}

TEST(Messages, ShowsTextAndTitle) {
  const HHOOK hook = SetWindowsHookExW(WH_CBT, CloseAtOnce, nullptr, GetCurrentThreadId());
  ASSERT_NE(hook, nullptr);
  ShowMessage(u"Zo\u00EB: nothing saved", u"vellum250");
  UnhookWindowsHookEx(hook);
  EXPECT_TRUE(std::ranges::count(shown, u"vellum250") == 1 &&
              std::ranges::count(shown, u"Zo\u00EB: nothing saved") == 1)
      << testing::PrintToString(shown);
}

#else

TEST(Messages, ShowsTextAndTitle) {
  testing::internal::CaptureStderr();
  ShowMessage(u"Zo\u00EB: nothing saved", u"vellum250");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "vellum250: Zo\xC3\xAB: nothing saved\n");
}

#endif

}  // namespace
}  // namespace vellum250::platform
