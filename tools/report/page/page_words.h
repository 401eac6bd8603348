#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/report/facts/report_data.h"

namespace tevra::tools::report {

/** What the report is headed by: its title, or else the file's name. */
[[nodiscard]] std::string titleOf(const Report& report);
/** As its SDT has it; "Service 101" where that has none. */
[[nodiscard]] std::string nameOf(const Service& service);
/** The event's own name; "event 7" where it has none. */
[[nodiscard]] std::string nameOf(const Event& event);
/** "present", "following" or "schedule"; also the name of a class. */
[[nodiscard]] std::string placeOf(const Event& event);
/** "service 101": the words between others. */
[[nodiscard]] std::string serviceText(int serviceId);
/** "1.60 Mbit/s"; empty without a clock. */
[[nodiscard]] std::string rateText(const Report& report, uint64_t packets);
/** "1.60 Mbit/s, 38.3 %, 10013 packets"; without a clock there is no bit rate. */
[[nodiscard]] std::string amountText(const Report& report, uint64_t packets);
/** What is not empty of `parts`, with `separator` between. */
[[nodiscard]] std::string joinedNonEmpty(const std::vector<std::string>& parts,
                                         const std::string& separator);

}  // namespace tevra::tools::report
