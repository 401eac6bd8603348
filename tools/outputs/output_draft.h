#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/outputs/output_request.h"

namespace tevra::tools {

/** What a user says about one output, before it is known to make sense. */
struct OutputDraft {
  /** Input service id; nothing leaves it to the input stream. `output.inputSid` is not used. */
  std::optional<int32_t> service;
  OutputOptions output;  ///< what is said of the rest
  /** Where it was said, for errors: "--out 'gsid=1'". Empty for the options of one output. */
  std::string origin;

  /** Nothing when it follows a service that is not known yet. */
  [[nodiscard]] std::optional<int32_t> globalSid() const;
};

/** Raises UsageError for each draft with settings that do not go together. */
void requireConsistent(const std::vector<OutputDraft>& drafts);

/**
 * Raises UsageError when two drafts, or one draft and a listed node of another, have the same
 * global service id: an answer has only one place for both.
 */
void requireDistinct(const std::vector<OutputDraft>& drafts);

/** The outputs to ask for. Precondition: every draft has a service. */
[[nodiscard]] std::vector<OutputOptions> outputsOf(const std::vector<OutputDraft>& drafts);

}  // namespace tevra::tools
