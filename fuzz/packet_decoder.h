#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "records/records.h"

/**
 * What a receiver finds in the packets of one output, written from ISO/IEC 13818-1 and EN 300 468
 * and independent of how they were made. Anything a receiver could not take ends the program.
 */
namespace tevra::fuzz {

/** The tables of one PID; `sections` tells how many it took. */
template <class Table>
struct Received {
  Table table;
  size_t sections = 0;
};

[[nodiscard]] Received<PAT> receivePat(const std::vector<std::string>& packets);
[[nodiscard]] Received<SDT> receiveSdt(const std::vector<std::string>& packets);
[[nodiscard]] Received<PMT> receivePmt(const std::vector<std::string>& packets, int pid);

}  // namespace tevra::fuzz
