#pragma once

namespace tevra::test {

/** True in a cross-built test, which QEMU's user emulation runs, with every program that it starts:
 * what the kernel then tells of a process is told of the emulator. */
#if defined(TORNEL_EMULATED)
inline constexpr bool kEmulated = true;
#else
inline constexpr bool kEmulated = false;
#endif

}  // namespace tevra::test
