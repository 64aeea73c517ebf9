// The module as Windows sees it: where it lies, and what keeps it loaded.
#pragma once

#include <atomic>
#include <cstdint>

#include "platform/windows/ole.h"

namespace vellum250::com {

// The DLL, or the program that this code is linked into.
HMODULE ThisModule();
// Its full path.
Text ModulePath();

// What is alive now, in all threads.
struct LiveCounts {
  std::atomic<int32_t> adapters = 0;     // objects of the library that a host holds
  std::atomic<int32_t> hostObjects = 0;  // the host's objects that the library holds
  std::atomic<int32_t> locks = 0;        // class factories, and their LockServer

  // Whether a host still needs the module.
  bool Needed() const { return adapters != 0 || locks != 0; }
};
LiveCounts& Live();

// Counts while it lives.
class LiveCount {
 public:
  explicit LiveCount(std::atomic<int32_t>& count) : count_(count) { ++count_; }
  LiveCount(const LiveCount&) = delete;
  LiveCount& operator=(const LiveCount&) = delete;
  ~LiveCount() { --count_; }

 private:
  std::atomic<int32_t>& count_;
};

// The process is being ended: other modules may be gone already, so nothing of theirs is called.
void TellProcessEnds();
bool ProcessEnds();

}  // namespace vellum250::com
