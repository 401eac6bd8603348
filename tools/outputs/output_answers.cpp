#include "tools/outputs/output_answers.h"

#include "im_SIControlSrv.h"
#include "tools/text/words.h"

namespace tevra::tools {

OutputAnswers askFor(thrift::in_module::im_SIControlSrvIf& daemon,
                     const std::vector<OutputOptions>& outputs) {
  OutputAnswers answers;
  for (const SrvOutputRequest& request : makeRequests(outputs)) {
    OutputAnswers answer;
    daemon.getSrvOutputData(answer, request);
    answers.merge(answer);
  }
  return answers;
}

std::map<int32_t, std::vector<int32_t>> unanswered(const std::vector<OutputOptions>& outputs,
                                                   const OutputAnswers& answers) {
  std::map<int32_t, std::vector<int32_t>> missing;
  for (const OutputOptions& output : outputs) {
    if (answers.count(output.resolvedGlobalSid()) == 0) {
      missing[output.inputSid].push_back(output.resolvedGlobalSid());
    }
  }
  return missing;
}

std::string servicesText(const std::map<int32_t, std::vector<int32_t>>& globalSids) {
  std::vector<std::string> services;
  services.reserve(globalSids.size());
  for (const auto& [service, ids] : globalSids) {
    services.push_back("service " + std::to_string(service) + " (global service id " +
                       numbersText(ids) + ")");
  }
  return joined(services, ", ");
}

}  // namespace tevra::tools
