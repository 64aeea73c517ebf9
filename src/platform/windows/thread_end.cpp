// The destruction of thread_local objects, in the C++ run time's place. Its own way has two faults
// in a module that can be unloaded: the objects' memory may be freed before they are destroyed, and
// the end of a thread gives back the last reference to the module whose code is running.
#include "platform/windows/thread_end.h"

#include <windows.h>
#include <cxxabi.h>
#include <pthread.h>

#include <atomic>
#include <cstdlib>
#include <utility>

namespace {

// On x86 destructors are called in a way of their own, which g++ finds odd for a function.
#pragma GCC diagnostic ignored "-Wattributes"
using Destroy = void(_GLIBCXX_CDTOR_CALLABI*)(void*);

struct Registered {
  Destroy destroy;
  void* object;
  Registered* earlier;
};

// The thread's list. The memory of thread_local objects is freed by the destructor of such a key
// too, and those run in the order in which the keys were made: this one before any use.
pthread_key_t list;
std::atomic<int> lists = 0;      // of all threads
std::atomic<bool> held = false;  // whether the module holds a reference to itself, for the lists

HMODULE ThisModule(DWORD flags) {
  HMODULE module = nullptr;
  GetModuleHandleExW(flags | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                     reinterpret_cast<const wchar_t*>(&ThisModule), &module);
  return module;
}

// Destructors may use objects that are made only now: those begin another list.
void DestroyAll(void* last) {
  while (last != nullptr) {
    pthread_setspecific(list, nullptr);
    for (auto* next = static_cast<Registered*>(last); next != nullptr;) {
      next->destroy(next->object);
      std::free(std::exchange(next, next->earlier));
    }
    --lists;
    last = pthread_getspecific(list);
  }
}

}  // namespace

// The name is in a link option in src/CMakeLists.txt, which brings this file into every program.
extern "C" [[gnu::constructor(101)]] void vellum250_thread_end() {
  pthread_key_create(&list, &DestroyAll);
}

// What the compiler calls for a thread_local object once it is made (Itanium C++ ABI, 3.3.5.2).
extern "C" int __cxa_thread_atexit(Destroy destroy, void* object, void* /*module*/) noexcept {
  auto* const registered = static_cast<Registered*>(std::malloc(sizeof(Registered)));
  if (registered == nullptr) return -1;
  auto* const earlier = static_cast<Registered*>(pthread_getspecific(list));
  *registered = {destroy, object, earlier};
  if (pthread_setspecific(list, registered) != 0) {
    std::free(registered);
    return -1;
  }
  if (earlier == nullptr) {
    ++lists;
    if (!held.exchange(true)) ThisModule(0);
  }
  return 0;
}

namespace vellum250::platform {

bool ThreadsLetGo() {
  if (lists != 0) return false;
  if (held.exchange(false)) FreeLibrary(ThisModule(GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT));
  return true;
}

}  // namespace vellum250::platform
