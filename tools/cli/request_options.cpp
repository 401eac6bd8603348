#include "tools/cli/request_options.h"

#include <string>
#include <vector>

#include "tools/outputs/out_argument.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

CLI::Validator sixteenBits() {
  return CLI::Range(0, 65535).description("0..65535");
}

CLI::Validator languageList() {
  const auto check = [](const std::string& text) {
    return parseLanguages(text) ? std::string() : "'" + text + "' is no three-letter language code";
  };
  return {check, "LANG"};
}

CLI::Validator listedNode() {
  const auto check = [](const std::string& text) {
    return parseListedNode(text) ? std::string() : "'" + text + "' is not GSID[:USID[:LANGUAGES]]";
  };
  return {check, "GSID[:USID[:LANG+LANG]]"};
}

void addServiceOptions(CLI::App& command, OutputCommandOptions& options, OutputDefaults defaults) {
  OutputOptions& output = options.output;
  const bool fromStream = defaults == OutputDefaults::kFromStream;
  const std::string streams = " (default: the input stream's)";
  command
      .add_option("--service", options.service,
                  std::string("Input service id") +
                      (fromStream ? " (default: the stream's first with a PMT)" : ""))
      ->check(sixteenBits());
  command.add_option("--output-sid", output.outputSid, "Output service id (default: the input's)")
      ->check(sixteenBits());
  command.add_option(
      "--name", output.name,
      "Output service name, UTF-8" + (fromStream ? streams : " (default: Service ID)"));
  command
      .add_option("--transport-stream-id", output.transportStreamId,
                  "Output transport stream id" + (fromStream ? streams : " (default: 1)"))
      ->check(sixteenBits());
  command
      .add_option("--original-network-id", output.originalNetworkId,
                  "Output original network id" + (fromStream ? streams : " (default: 1)"))
      ->check(sixteenBits());
}

void addNodeOptions(CLI::App& command, OutputCommandOptions& options) {
  OutputOptions& output = options.output;
  command.add_option("--global-sid", output.globalSid,
                     "Global service id of the output (default: the output service id)");
  command
      .add_option("--next-node", output.nextNode,
                  "Next node; 0: the output leaves here under its output service id and name")
      ->capture_default_str();
  command.add_option("--output-param", output.outputParam, "The description's further value")
      ->capture_default_str();
  command
      .add_option_function<std::string>(
          "--last-node",
          [&output](const std::string& text) {
            output.lastNode = parseLastNode(text).value_or(LastNode::kDirect);  // has been checked
          },
          "Last-node settings sent: direct (one, with the output's global service id), "
          "listed (those of --listed-node), none (default: direct)")
      ->check(CLI::IsMember({"direct", "listed", "none"}).description("{direct,listed,none}"));
  command.add_option("--unique-sid", output.uniqueSid,
                     "Unique service id of the direct last node (default: the global service id)");
  command
      .add_option("--listed-node", options.listedNodes,
                  "A last node with a global service id of its own; repeatable")
      ->allow_extra_args(false)
      ->check(listedNode());
}

/** Behind those of one output, which stand in for what they do not say. */
void addSeveralOutputsOptions(CLI::App& command, OutputCommandOptions& options) {
  command
      .add_option("--out", options.outs,
                  "One of several outputs, once for each: gsid=1,sid=1201,name=Uno; the other "
                  "output options give what it does not say. Keys: " +
                      kOutputKeys)
      ->type_name("KEY=VALUE[,...]")
      ->allow_extra_args(false);
}

OutputDraft singleOutput(const OutputCommandOptions& options) {
  OutputDraft draft;
  draft.service = options.service;
  draft.output = options.output;
  for (const std::string& text : options.audio) {
    if (!draft.output.audio) {
      draft.output.audio.emplace();
    }
    for (const std::string& language : parseLanguages(text).value_or(std::vector<std::string>{})) {
      draft.output.audio->push_back(language);
    }
  }
  for (const std::string& text : options.listedNodes) {
    draft.output.listedNodes.push_back(parseListedNode(text).value_or(ListedNode{}));
  }
  return draft;
}

std::vector<OutputDraft> draftsOf(const OutputCommandOptions& options) {
  const OutputDraft single = singleOutput(options);
  if (options.outs.empty()) {
    return {single};
  }
  std::vector<OutputDraft> drafts;
  drafts.reserve(options.outs.size());
  for (const std::string& text : options.outs) {
    drafts.push_back(parseOutArgument(text, single));
  }
  return drafts;
}

void requireServices(const std::vector<OutputDraft>& drafts) {
  for (const OutputDraft& draft : drafts) {
    if (!draft.service) {
      throw UsageError(draft.origin.empty()
                           ? "no service is named: give --service ID or --out service=ID"
                           : draft.origin + " names no input service: add the key service");
    }
  }
}

}  // namespace

void addOutputOptions(CLI::App& command, OutputCommandOptions& options, OutputDefaults defaults) {
  addServiceOptions(command, options, defaults);
  command
      .add_option("--audio", options.audio,
                  "Audio language to keep, of several with commas or repeatedly; the others are "
                  "dropped. Codes are ISO 639-2 bibliographic ones in lower case, as the daemon "
                  "compares them: fre and ger, not fra and deu. none drops all audio. "
                  "(default: all audio is kept)")
      ->allow_extra_args(false)
      ->check(languageList());
  addNodeOptions(command, options);
  addSeveralOutputsOptions(command, options);
}

std::vector<OutputDraft> finishOutputOptions(const OutputCommandOptions& options,
                                             OutputDefaults defaults) {
  std::vector<OutputDraft> drafts = draftsOf(options);
  if (defaults == OutputDefaults::kFixed) {
    requireServices(drafts);
  }
  requireConsistent(drafts);
  requireDistinct(drafts);
  return drafts;
}

}  // namespace tevra::tools
