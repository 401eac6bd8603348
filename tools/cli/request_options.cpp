#include "tools/cli/request_options.h"

#include "tools/outputs/out_argument.h"
#include "tools/text/dvb_text.h"

namespace tevra::tools {
namespace {

constexpr int kHighestId = 0xFFFF;

std::string faultOfLanguages(const std::string& text) {
  return parseLanguages(text) ? "" : "'" + text + "' is no three-letter language code";
}

std::string faultOfListedNode(const std::string& text) {
  return parseListedNode(text) ? "" : "'" + text + "' is not GSID[:USID[:LANGUAGES]]";
}

std::string faultOfName(const std::string& text) {
  return isUtf8(text) ? "" : "'" + text + "' is not UTF-8: convert it, with iconv for one";
}

void addServiceOptions(Command& command, RequestOptions& options, OutputDefaults defaults) {
  OutputOptions& output = options.output;
  const auto withDefault = [defaults](const std::string& help, const std::string& fixed,
                                      const std::string& fromStream) {
    const std::string given =
        defaults == OutputDefaults::kFromStream
            ? fromStream
            : fixed + (fixed.empty() ? "" : "; ") + "with --from " + fromStream;
    return help + " (default: " + given + ")";
  };
  const std::string streams = "the input stream's";
  command
      .option("--service", options.service,
              withDefault("Input service id", "", "the stream's first with a PMT"))
      .range(0, kHighestId);
  command.option("--output-sid", output.outputSid, "Output service id (default: the input's)")
      .range(0, kHighestId);
  command
      .option("--name", output.name,
              withDefault("Output service name, UTF-8", "Service ID", streams))
      .checked(faultOfName);
  command
      .option("--transport-stream-id", output.transportStreamId,
              withDefault("Output transport stream id", "1", streams))
      .range(0, kHighestId);
  command
      .option("--original-network-id", output.originalNetworkId,
              withDefault("Output original network id", "1", streams))
      .range(0, kHighestId);
}

void addNodeOptions(Command& command, RequestOptions& options) {
  OutputOptions& output = options.output;
  command
      .option("--audio", options.audio,
              "Audio language to keep, of several with commas or repeatedly; the others are "
              "dropped. Either code of a language does, in any case: fra keeps fre and FRE too. "
              "ndl stands for audio without a language, none drops all audio. "
              "(default: all audio is kept)")
      .checked(faultOfLanguages, "LANG");
  command.option("--global-sid", output.globalSid,
                 "Global service id of the output (default: the output service id)");
  command.option("--next-node", output.nextNode,
                 "Next node; 0: the output leaves here under its output service id and name");
  command.option("--output-param", output.outputParam, "The description's further value");
  command
      .option("--last-node", options.lastNode,
              "Last-node settings sent: direct (one, with the output's global service id), "
              "listed (those of --listed-node), none (default: direct)")
      .oneOf({"direct", "listed", "none"});
  command.option("--unique-sid", output.uniqueSid,
                 "Unique service id of the direct last node (default: the global service id)");
  command
      .option("--listed-node", options.listedNodes,
              "A last node with a global service id of its own; repeatable")
      .checked(faultOfListedNode, "GSID[:USID[:LANG+LANG]]");
}

/** What the options of one output say. What they cannot be has been refused. */
OutputDraft singleOutput(const RequestOptions& options) {
  OutputDraft draft;
  draft.service = options.service;
  draft.output = options.output;
  if (options.lastNode) {
    draft.output.lastNode = parseLastNode(*options.lastNode).value();
  }
  for (const std::string& text : options.audio) {
    const auto languages = parseLanguages(text).value();
    auto& all = draft.output.audio ? *draft.output.audio : draft.output.audio.emplace();
    all.insert(all.end(), languages.begin(), languages.end());
  }
  for (const std::string& text : options.listedNodes) {
    draft.output.listedNodes.push_back(parseListedNode(text).value());
  }
  return draft;
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

void addRequestOptions(Command& command, RequestOptions& options, OutputDefaults defaults) {
  addServiceOptions(command, options, defaults);
  addNodeOptions(command, options);
  command
      .option("--out", options.outs,
              std::string("One of several outputs, once for each: gsid=1,sid=1201,name=Uno; the "
                          "other output options give what it does not say. Keys: ") +
                  kOutputKeys)
      .called("KEY=VALUE[,...]");
}

std::vector<OutputDraft> draftsOf(const RequestOptions& options, OutputDefaults defaults) {
  std::vector<OutputDraft> drafts;
  for (const std::string& text : options.outs) {
    drafts.push_back(parseOutArgument(text, singleOutput(options)));
  }
  if (drafts.empty()) {
    drafts.push_back(singleOutput(options));
  }
  if (defaults == OutputDefaults::kFixed) {
    requireServices(drafts);
  }
  requireConsistent(drafts);
  requireDistinct(drafts);
  return drafts;
}

}  // namespace tevra::tools
