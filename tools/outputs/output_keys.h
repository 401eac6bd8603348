#pragma once

#include <cstdint>
#include <string>

#include "tools/outputs/output_draft.h"

/**
 * @file
 * The keys by which --out and --request describe an output: service, gsid, sid, name, tsid, onid,
 * audio, next-node, output-param, last-node, usid, listed-node.
 */
namespace tevra::tools {

/** A key whose value is a whole number. */
struct NumberKey {
  const char* name;  ///< as it is written, "next-node"
  int32_t lowest;    ///< inclusive
  int32_t highest;   ///< inclusive
  /** Puts a value that the key takes where it belongs. */
  void (*set)(OutputDraft& draft, int32_t value);

  /** Whether it is one that the key takes; else `set` must not have it. */
  [[nodiscard]] bool takes(int64_t value) const { return value >= lowest && value <= highest; }
  /** "0 to 65535". */
  [[nodiscard]] std::string range() const;
};

/** Null for a key that takes no number, or that there is not. */
[[nodiscard]] const NumberKey* findNumberKey(const std::string& name);

/** All keys, with commas between them. */
[[nodiscard]] std::string outputKeys();

}  // namespace tevra::tools
