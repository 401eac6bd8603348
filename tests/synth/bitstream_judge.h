#pragma once

#include <string>

#include "tests/synth/transport_packets.h"

/**
 * What others make of the packets: biTStream's readers and validators, in which nothing is ours.
 * Each says what is wrong with the one table that `packets` carry; nothing when they take it.
 */
namespace tevra::test {

[[nodiscard]] std::string faultOfPat(const Packets& packets);
[[nodiscard]] std::string faultOfSdt(const Packets& packets);

/** biTStream knows only a PMT of one section; of several each is judged as if it were one. */
[[nodiscard]] std::string faultOfPmt(const Packets& packets, int pid);

}  // namespace tevra::test
