#include "tools/report/page/page_words.h"

#include <algorithm>
#include <filesystem>
#include <iterator>

#include "tools/report/page/figures.h"
#include "tools/text/standard_streams.h"
#include "tools/text/words.h"

namespace tevra::tools::report {

std::string titleOf(const Report& report) {
  return report.title.empty() ? std::filesystem::path(sourceName(report.file)).filename().string()
                              : report.title;
}

std::string nameOf(const Service& service) {
  return service.name.empty() ? "Service " + std::to_string(service.serviceId) : service.name;
}

std::string nameOf(const Event& event) {
  return event.name.empty() ? "event " + std::to_string(event.eventId) : event.name;
}

std::string placeOf(const Event& event) {
  if (event.isPresent || event.isFollowing) {
    return event.isPresent ? "present" : "following";
  }
  return "schedule";
}

std::string serviceText(int serviceId) {
  return "service " + std::to_string(serviceId);
}

std::string rateText(const Report& report, uint64_t packets) {
  const auto rate = report.bitRate(packets);
  return rate ? bitRateText(*rate) : std::string();
}

std::string amountText(const Report& report, uint64_t packets) {
  return joinedNonEmpty(
      {rateText(report, packets), shareText(report.share(packets)), counted(packets, "packet")},
      ", ");
}

std::string joinedNonEmpty(const std::vector<std::string>& parts, const std::string& separator) {
  std::vector<std::string> said;
  std::copy_if(parts.begin(), parts.end(), std::back_inserter(said),
               [](const std::string& part) { return !part.empty(); });
  return joined(said, separator);
}

}  // namespace tevra::tools::report
