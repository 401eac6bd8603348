#pragma once

namespace tevra::test {

/**
 * Gives this process, and all that it starts from now on, a network of its own that holds a
 * loopback device and nothing else, so that the daemon's fixed ports are free whatever runs beside.
 * Where the system grants none, waits until no other process is between this call and its end. What
 * is started by a process that has called it need not call it, but may.
 *
 * To be called while the process has one thread.
 */
void enterOwnNetwork();

/** Waits until no other process of this network is between this call and its end. */
void waitForTurn();

}  // namespace tevra::test
