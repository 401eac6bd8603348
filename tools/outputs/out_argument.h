#pragma once

#include <string>

#include "tools/outputs/output_draft.h"

namespace tevra::tools {

/**
 * Reads the argument of --out, "KEY=VALUE,KEY=VALUE...", with the keys of output_keys.h.
 *
 * A comma in a value stands behind a backslash, and so does a backslash. Numbers are decimal, or
 * hexadecimal behind 0x. Languages and listed nodes are written as parseLanguages and
 * parseListedNode take them; listed-node alone may come more than once. What is not said stays as
 * in `defaults`. Raises UsageError, which names the argument, for anything else.
 */
[[nodiscard]] OutputDraft parseOutArgument(const std::string& text, const OutputDraft& defaults);

}  // namespace tevra::tools
