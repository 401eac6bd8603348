#include "tools/feed/stream_inventory.h"

#include <array>
#include <utility>

#include "tools/descriptors/descriptor_values.h"
#include "tools/descriptors/name_table.h"
#include "tools/text/text_table.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

/** The commonest of EN 300 468, table 89. */
std::string typeName(int serviceType) {
  static constexpr std::array<NamedCode, 8> kNames = {{
      {0x00, "?"},
      {0x01, "TV"},
      {0x02, "radio"},
      {0x0A, "radio (advanced codec)"},
      {0x11, "HD TV"},
      {0x16, "SD TV (advanced codec)"},
      {0x19, "HD TV"},
      {0x1F, "HEVC TV"},
  }};
  const std::string name = nameIn(kNames, serviceType);
  return name.empty() ? "type " + hex(serviceType, 2) : name;
}

void describe(const PMT& pmt, ServiceSummary& service) {
  service.hasPmt = true;
  service.streams = pmt.esList.size();
  for (const PMTES& stream : pmt.esList) {
    if (!isAudio(stream)) {
      continue;
    }
    const std::vector<std::string> codes = languages(stream.descriptors);
    service.audioLanguages.push_back(codes.empty() ? "-" : joined(codes, "+"));
  }
}

}  // namespace

void StreamInventory::add(const SiTable& table) {
  if (const PAT* pat = std::get_if<PAT>(&table)) {
    if (pat_ && pat_->transportStreamId != pat->transportStreamId) {
      *this = StreamInventory();
    }
    pat_ = *pat;
    forgetUnnamedPmts();
  } else if (const SDT* sdt = std::get_if<SDT>(&table)) {
    sdt_ = *sdt;
  } else if (const PMT* pmt = std::get_if<PMT>(&table)) {
    pmts_[pmt->programNumber] = *pmt;
  }
}

void StreamInventory::forgetUnnamedPmts() {
  std::map<int, PMT> named;
  for (const PATProgram& program : pat_->programs) {
    named.insert(pmts_.extract(program.programNumber));
  }
  pmts_ = std::move(named);
}

std::optional<int> StreamInventory::transportStreamId() const {
  return pat_ ? std::optional<int>(pat_->transportStreamId) : std::nullopt;
}

std::optional<int> StreamInventory::originalNetworkId() const {
  return sdt_ ? std::optional<int>(sdt_->originalNetworkId) : std::nullopt;
}

const PMT* StreamInventory::pmt(int serviceId) const {
  const auto pmt = pmts_.find(serviceId);
  return pmt == pmts_.end() ? nullptr : &pmt->second;
}

std::vector<ServiceSummary> StreamInventory::services() const {
  std::map<int, ServiceSummary> found;
  for (const SDTService& entry : sdt_ ? sdt_->services : std::vector<SDTService>{}) {
    const ServiceNames names = serviceNames(entry.descriptors);
    ServiceSummary& service = found[entry.serviceId];
    service.type = names.type;
    service.name = names.name;
    service.provider = names.provider;
  }
  for (const PATProgram& program : pat_ ? pat_->programs : std::vector<PATProgram>{}) {
    if (program.programNumber == 0) {
      continue;
    }
    ServiceSummary& service = found[program.programNumber];
    service.pmtPid = program.pid;
    const PMT* table = pmt(program.programNumber);
    if (table != nullptr && !service.hasPmt) {
      describe(*table, service);
    }
  }
  std::vector<ServiceSummary> services;
  for (auto& [serviceId, service] : found) {
    service.serviceId = serviceId;
    services.push_back(std::move(service));
  }
  return services;
}

ServiceSummary StreamInventory::service(int serviceId) const {
  for (const ServiceSummary& service : services()) {
    if (service.serviceId == serviceId) {
      return service;
    }
  }
  ServiceSummary unknown;
  unknown.serviceId = serviceId;
  return unknown;
}

std::optional<int> StreamInventory::firstServiceWithPmt() const {
  for (const ServiceSummary& service : services()) {
    if (service.hasPmt) {
      return service.serviceId;
    }
  }
  return std::nullopt;
}

void StreamInventory::print(std::ostream& out) const {
  TextTable table({"service", "name", "provider", "kind", "PMT PID", "streams", "audio"});
  for (const ServiceSummary& service : services()) {
    table.addRow({std::to_string(service.serviceId), service.name, service.provider,
                  typeName(service.type), service.pmtPid ? std::to_string(*service.pmtPid) : "-",
                  service.hasPmt ? std::to_string(service.streams) : "no PMT",
                  joined(service.audioLanguages, " ")});
  }
  if (!table.empty()) {
    table.print(out, 2);
  }
}

std::string StreamInventory::servicesWithPmt() const {
  std::vector<std::string> texts;
  for (const ServiceSummary& service : services()) {
    if (service.hasPmt) {
      texts.push_back(std::to_string(service.serviceId) +
                      (service.name.empty() ? "" : " \"" + service.name + "\""));
    }
  }
  return texts.empty() ? "none" : joined(texts, ", ");
}

}  // namespace tevra::tools
