#pragma once

namespace tevra {

/**
 * The whole life of the process: parses the arguments, registers with the watchdog, starts the
 * control server of the MPTS and then feeds the watchdog every 5 seconds for ever.
 *
 * Returns, with exit status 0, only when the module's type does not allow the MPTS index.
 */
int runTornel(int argc, char** argv);

/** The highest MPTS index that a module type allows; an unknown type is logged at level 3 and
 * allows only 0. */
[[nodiscard]] int highestMptsIndex(int moduleType);

}  // namespace tevra
