#pragma once

#include <vector>

#include "tools/report/facts/stream_check.h"
#include "tools/report/facts/stream_survey.h"

namespace tevra::tools::report {

/**
 * The checks of ETSI TR 101 290 that a recording can show, by their numbers. Of those that have two
 * forms it is the newer one, which fails wherever the older would. Sections with a wrong CRC_32
 * count as not having come; what is before the first packet and behind the last counts for nothing.
 */
[[nodiscard]] std::vector<StreamCheck> checksOf(const StreamSurvey& survey);

/** PAT, then PMTs, the SDT, and PCRs, each by PID; none without a clock. */
[[nodiscard]] std::vector<IntervalFact> intervalsOf(const StreamSurvey& survey);

/**
 * PAT, PMT and SDT of an output with the PCRs of the input's `pcrPid`, as `extract` of the live
 * stream repeats them; none without such PCRs.
 */
[[nodiscard]] std::vector<IntervalFact> tableIntervalsOf(const StreamSurvey& survey, int pcrPid,
                                                         int pmtPid);

}  // namespace tevra::tools::report
