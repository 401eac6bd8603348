// Linked into a daemon that AddressSanitizer watches. The daemon does not end by itself, and with
// it the sanitizer's look for leaks would not come: here SIGTERM brings it. The signal is taken by
// the main thread, which sleeps between two kicks of the watchdog and holds no lock that the
// sanitizer needs.
#include <sanitizer/lsan_interface.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>

namespace {

constexpr int kLeaked = 23;  // as of LeakSanitizer itself

void endWithLeakCheck(int /*signal*/) {
  _exit(__lsan_do_recoverable_leak_check() == 0 ? EXIT_SUCCESS : kLeaked);
}

void* volatile lost = nullptr;  // the compiler must not see that nobody reads it

/** What shows that a leak is found. */
void leakOnPurpose() {
  constexpr size_t kSize = 1000;
  lost = std::malloc(kSize);
  lost = nullptr;
}

[[gnu::constructor]] void checkForLeaksAtTheEnd() {
  (void)std::signal(SIGTERM, endWithLeakCheck);
  if (std::getenv("TORNEL_LEAK_ON_PURPOSE") != nullptr) {
    leakOnPurpose();
  }
}

}  // namespace
