#pragma once

#include <cstdint>
#include <string>

#include "tools/output_draft.h"

namespace tevra::tools {

/**
 * The keys by which --out and --request describe an output: service, gsid, sid, name, tsid, onid,
 * audio, next-node, output-param, last-node, usid, listed-node.
 */

/** A key whose value is a whole number. */
struct NumberKey {
  const char* name;
  int32_t lowest;
  int32_t highest;
  void (*set)(OutputDraft& draft, int32_t value);

  [[nodiscard]] bool takes(int64_t value) const { return value >= lowest && value <= highest; }
  /** "0 to 65535". */
  [[nodiscard]] std::string range() const;
};

/** Null for a key that takes no number, or that there is not. */
[[nodiscard]] const NumberKey* findNumberKey(const std::string& name);

/** All keys, with commas between them. */
[[nodiscard]] std::string outputKeys();

}  // namespace tevra::tools
