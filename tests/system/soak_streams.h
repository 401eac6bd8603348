#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "in_module_types.h"

/** Which streams and which PIDs an output must have. */
namespace tevra::test {

/** Without the audio streams that the settings do not want. */
[[nodiscard]] thrift::dvb_tables::PMT withWantedAudio(
    const thrift::dvb_tables::PMT& pmt, const thrift::spts::LastNodeSettings& settings);

/** The PIDs of the programme's PMT, PCR, streams and ECMs, in the order of the PMT. */
[[nodiscard]] std::vector<thrift::common_fpga::PIDItem> itemsOf(const thrift::dvb_tables::PMT& pmt,
                                                                const thrift::dvb_tables::PAT& pat);

/** Adds the PIDs of the CAT's EMMs. */
void addEmmItems(std::vector<thrift::common_fpga::PIDItem>& items,
                 const thrift::dvb_tables::CAT& cat);

/** The languages that streams may have, and outputs want. */
[[nodiscard]] const std::vector<std::string>& soakLanguages();

inline constexpr int32_t kLanguageTag = 0x0A;

}  // namespace tevra::test
