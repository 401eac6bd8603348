#pragma once

#include <string>
#include <vector>

#include "tools/outputs/output_draft.h"

namespace tevra::tools {

/** Bytes of the largest request that is read. */
inline constexpr size_t kLargestRequest = size_t{1} << 20;

/**
 * Reads the outputs that a JSON text describes: an array of objects, one for each output, or an
 * object with this array as "outputs" and, beside it, what holds for every output that does not say
 * otherwise. The members are the keys of output_keys.h:
 *
 *   { "service": 101,
 *     "outputs": [ { "gsid": 1, "sid": 1201, "name": "Uno, HD", "audio": [ "eng", "spa" ] },
 *                  { "gsid": 2, "last-node": "listed",
 *                    "listed-node": [ { "gsid": 5, "usid": 6, "audio": [] }, { "gsid": 7 } ] } ] }
 *
 * Ids are numbers, name and last-node texts. audio is an array of language codes, an empty one for
 * no audio, or a text as in --out; listed-node an array of objects of which gsid alone must be
 * there. What is not said stays as in `defaults`. Raises UsageError, which begins with `name` and
 * says where, for anything else: text that is no JSON, a member that is unknown, given twice, of
 * another type or out of range, no output at all.
 */
[[nodiscard]] std::vector<OutputDraft> parseRequest(const std::string& json,
                                                    const std::string& name,
                                                    const OutputDraft& defaults);

/**
 * The same of a file, or of standard input for "-". Raises ToolError when it cannot be read,
 * UsageError when it is larger than kLargestRequest.
 */
[[nodiscard]] std::vector<OutputDraft> readRequest(const std::string& path,
                                                   const OutputDraft& defaults);

}  // namespace tevra::tools
