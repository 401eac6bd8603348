#include <array>
#include <functional>

#include "tools/status/status_output.h"
#include "tools/text/decimals.h"

namespace tevra::tools {
namespace {

/** Adds a sample of the family in work: its labels besides the set, and its value. */
using Sample = std::function<void(const std::string& labels, const std::string& value)>;

void addFlag(const Sample& sample, const std::string& labels, bool value) {
  sample(labels, value ? "1" : "0");
}

void addUp(const SetStatus& status, const Sample& sample) {
  addFlag(sample, "", status.daemon.answerSeconds.has_value());
}

void addAnswerTime(const SetStatus& status, const Sample& sample) {
  if (status.daemon.answerSeconds) {
    sample("", fixedText(*status.daemon.answerSeconds, 6));
  }
}

void addProblems(const SetStatus& status, const Sample& sample) {
  sample("", std::to_string(problemsOf(status).size()));
}

void addMainTask(const SetStatus& status, const Sample& sample) {
  if (status.mainTaskListens) {
    addFlag(sample, "", *status.mainTaskListens);
  }
}

std::string fileLabel(const KeptFile& file) {
  return ",file=\"" + file.name + "\"";
}

void addReadable(const SetStatus& status, const Sample& sample) {
  for (const KeptFile& file : status.kept.files) {
    if (file.state != FileState::kAbsent) {
      addFlag(sample, fileLabel(file), file.state == FileState::kRead);
    }
  }
}

void addSaved(const SetStatus& status, const Sample& sample) {
  for (const KeptFile& file : status.kept.files) {
    if (file.saved) {
      sample(fileLabel(file), std::to_string(std::chrono::system_clock::to_time_t(*file.saved)));
    }
  }
}

void addTransportStream(const SetStatus& status, const Sample& sample) {
  if (status.kept.pids) {
    sample("", std::to_string(status.kept.pids->transportStreamId));
  }
}

void addPidsUsed(const SetStatus& status, const Sample& sample) {
  if (status.kept.pids) {
    sample("", std::to_string(status.kept.pids->used));
  }
}

void addPidPool(const SetStatus& status, const Sample& sample) {
  if (status.kept.pids && status.kept.pids->pool) {
    sample("", std::to_string(sizeOf(*status.kept.pids->pool)));
  }
}

template <std::optional<KeptVersions> KeptService::*kVersions>
void addVersions(const SetStatus& status, const Sample& sample) {
  for (const auto& [id, service] : status.kept.services) {
    if (!(service.*kVersions)) {
      continue;
    }
    for (const auto& [tableId, version] : (service.*kVersions)->byTableId) {
      sample(",service=\"" + std::to_string(id) + "\",table_id=\"" + std::to_string(tableId) + "\"",
             std::to_string(version));
    }
  }
}

void addStartsLeft(const SetStatus& status, const Sample& sample) {
  for (const auto& [id, service] : status.kept.services) {
    const std::string labels = ",service=\"" + std::to_string(id) + "\",tables=";
    if (service.tables) {
      sample(labels + "\"PSI\"", std::to_string(service.tables->startsLeft));
    }
    if (service.eits) {
      sample(labels + "\"EIT\"", std::to_string(service.eits->startsLeft));
    }
  }
}

/** Samples that stand together, whatever number of sets there is. */
struct Family {
  const char* name;
  const char* help;  ///< without backslash, quote or line break, which would need escaping
  void (*add)(const SetStatus& status, const Sample& sample);
};

constexpr std::array<Family, 12> kFamilies = {{
    {"tornel_up", "Whether the daemon answers.", addUp},
    {"tornel_answer_seconds", "From connecting to the daemon to its answer.", addAnswerTime},
    {"tornel_problems", "How many things are wrong.", addProblems},
    {"tornel_main_task_listening", "Whether something listens on the port of MainTask.",
     addMainTask},
    {"tornel_file_readable", "Whether a saved file can be read to its end.", addReadable},
    {"tornel_file_saved_timestamp_seconds", "When a file was last saved.", addSaved},
    {"tornel_transport_stream_id", "The transport stream that the PIDs belong to.",
     addTransportStream},
    {"tornel_pids_used", "Output PIDs that have been handed out.", addPidsUsed},
    {"tornel_pids_pool", "Output PIDs that can be handed out.", addPidPool},
    {"tornel_table_version", "Version of the PAT, SDT or PMT that was handed out last.",
     addVersions<&KeptService::tables>},
    {"tornel_eit_version", "Version of the EIT that was handed out last.",
     addVersions<&KeptService::eits>},
    {"tornel_starts_left", "Starts of the daemon that the versions of a service survive.",
     addStartsLeft},
}};

std::string samplesOf(const Family& family, const std::vector<SetStatus>& sets) {
  std::string text;
  for (const SetStatus& status : sets) {
    const std::string start = family.name + ("{set=\"" + std::to_string(status.set)) + "\"";
    family.add(status, [&](const std::string& labels, const std::string& value) {
      text += start;
      text += labels;
      text += "} " + value + "\n";
    });
  }
  return text;
}

}  // namespace

std::string statusMetrics(const std::vector<SetStatus>& sets) {
  std::string text;
  for (const Family& family : kFamilies) {
    const std::string samples = samplesOf(family, sets);
    if (!samples.empty()) {
      text.append("# HELP ").append(family.name).append(" ").append(family.help);
      text.append("\n# TYPE ").append(family.name).append(" gauge\n").append(samples);
    }
  }
  return text + "# EOF\n";
}

}  // namespace tevra::tools
