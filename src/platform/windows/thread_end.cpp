// Lets thread_local objects be destroyed before the memory that they live in is freed.
#include <cxxabi.h>

// On x86 the run time calls it as it calls destructors, which g++ finds odd.
#pragma GCC diagnostic ignored "-Wattributes"
static void _GLIBCXX_CDTOR_CALLABI Nothing(void*) {}

// Both are done by destructors of POSIX thread keys, which run in the order in which the keys were
// made: the C++ run time's, made with its first registration, and that of emulated thread-local
// storage, made with its first use. So a registration that does nothing comes before any use.
// The name is in a link option in src/CMakeLists.txt, which brings this file into every program.
extern "C" [[gnu::constructor(101)]] void vellum250_thread_end() {
  abi::__cxa_thread_atexit(&Nothing, nullptr, nullptr);
}
