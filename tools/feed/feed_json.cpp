#include "tools/feed/feed_json.h"

#include "tools/text/json_text.h"

namespace tevra::tools {
namespace {

Json tableJson(const TableFeeder::Sent& sent) {
  return {{"table", sent.kind},
          {"of", sent.what},
          {"last", sent.last},
          {"sections", sent.sections},
          {"sent", sent.count}};
}

Json serviceJson(const ServiceSummary& service) {
  return {{"serviceId", service.serviceId},
          {"type", service.type},
          {"name", service.name},
          {"provider", service.provider},
          {"pmtPid", orNull(service.pmtPid)},
          {"hasPmt", service.hasPmt},
          {"streams", service.streams},
          {"audioLanguages", service.audioLanguages}};
}

}  // namespace

std::string feedJson(const std::string& source, const StreamFeed& stream) {
  const SectionFaults faults = stream.statistics();
  return indentedJson({{"source", source},
                       {"packets", stream.packets()},
                       {"tablesSent", stream.tables().sent()},
                       {"tablesRefused", stream.tables().refused()},
                       {"discontinuities", faults.discontinuities},
                       {"crcErrors", faults.crcErrors},
                       {"truncatedSections", faults.truncatedSections},
                       {"malformedSections", faults.malformedSections},
                       {"tables", jsonList(stream.tables().account(), tableJson)},
                       {"services", jsonList(stream.inventory().services(), serviceJson)}});
}

}  // namespace tevra::tools
