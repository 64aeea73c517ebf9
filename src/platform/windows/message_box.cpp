#include "platform/message_box.h"

#include <windows.h>

#include "platform/windows/wide.h"

namespace vellum250::platform {

void ShowMessage(TextView text, TextView title) {
  MessageBoxW(nullptr, Wide(Text(text)), Wide(Text(title)), MB_OK | MB_TASKMODAL);
}

}  // namespace vellum250::platform
