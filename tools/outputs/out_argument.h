#pragma once

#include <string>

#include "tools/outputs/output_draft.h"

namespace tevra::tools {

/** The keys of --out, with commas between them. */
inline constexpr const char* kOutputKeys =
    "service, gsid, sid, name, tsid, onid, audio, next-node, output-param, last-node, usid, "
    "listed-node";

/**
 * Reads the argument of --out, "KEY=VALUE,KEY=VALUE...".
 *
 * A comma in a value stands behind a backslash, and so does a backslash. Numbers are decimal, or
 * hexadecimal behind 0x. Languages and listed nodes are written as parseLanguages and
 * parseListedNode take them; listed-node alone may come more than once. What is not said stays as
 * in `defaults`. Raises UsageError, which names the argument, for anything else.
 */
[[nodiscard]] OutputDraft parseOutArgument(const std::string& text, const OutputDraft& defaults);

}  // namespace tevra::tools
