#pragma once

#include <string>

namespace tevra::fuzz {

/**
 * Cuts the program off from the machine it runs on, before anything of the system runs: a
 * configuration root of its own, removed at exit; no connection is ever made, no line reaches the
 * machine's log, though every line is put together, and nothing is synced (isolation.cpp defines
 * the functions that do it).
 */
void isolate();

/** The private configuration root. */
[[nodiscard]] const std::string& configurationRoot();

/** Removes the three files of every MPTS. */
void emptyConfigurationRoot();

}  // namespace tevra::fuzz
