#include "platform/message_box.h"

#include <cstdio>
#include <string>

namespace vellum250::platform {

void ShowMessage(TextView text, TextView title) {
  std::string line = ToUtf8(title);
  line.append(": ");
  AppendUtf8(line, text);
  line.push_back('\n');
  // One call, so that two messages at once do not mix.
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace vellum250::platform
