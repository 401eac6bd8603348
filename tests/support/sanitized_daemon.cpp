// Linked into a daemon that a sanitizer watches: has it do, on purpose and only when the
// environment asks for it, what the sanitizer must find; and for AddressSanitizer end in a way that
// lets it look.
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <thread>

#if defined(TORNEL_LOOKS_FOR_LEAKS)
#include <sanitizer/lsan_interface.h>
#endif

namespace {

#if defined(TORNEL_LOOKS_FOR_LEAKS)

constexpr int kLeaked = 23;  // as of LeakSanitizer itself

/** The daemon does not end by itself, and with it the sanitizer's look for leaks would not come.
 * The signal is taken by the main thread, which sleeps between two kicks of the watchdog and holds
 * no lock that the sanitizer needs. */
void endWithLeakCheck(int /*signal*/) {
  _exit(__lsan_do_recoverable_leak_check() == 0 ? EXIT_SUCCESS : kLeaked);
}

void* volatile lost = nullptr;  // the compiler must not see that nobody reads it

void leakOnPurpose() {
  constexpr size_t kSize = 1000;
  lost = std::malloc(kSize);
  lost = nullptr;
}

[[gnu::constructor]] void lookForLeaks() {
  (void)std::signal(SIGTERM, endWithLeakCheck);
  if (std::getenv("TORNEL_LEAK_ON_PURPOSE") != nullptr) {
    leakOnPurpose();
  }
}

#else

int shared = 0;

[[gnu::constructor]] void raceOnPurpose() {
  if (std::getenv("TORNEL_RACE_ON_PURPOSE") == nullptr) {
    return;
  }
  std::thread other([] { ++shared; });
  ++shared;
  other.join();
}

#endif

}  // namespace
