#include "tools/tables/table_fields.h"

#include <array>
#include <utility>

#include "tools/descriptors/code_names.h"
#include "tools/descriptors/descriptor_fields.h"
#include "tools/si/section.h"
#include "tools/text/dvb_time.h"

namespace tevra::tools {
namespace {

template <class Record, class ToFields>
Field listField(const std::string& name, const std::vector<Record>& records, ToFields toFields) {
  List list;
  for (const Record& record : records) {
    list.entries.push_back(toFields(record));
  }
  return {name, std::move(list)};
}

Field descriptorsField(const std::vector<Descriptor>& descriptors,
                       const std::set<uint32_t>& registrations = {}) {
  return {"descriptors", describe(descriptors, registrations)};
}

Field choiceField(const std::string& name, int value, const std::string& meaning) {
  return {name, Number{value, std::to_string(value), meaning}};
}

Field freeCaField(bool freeCA) {
  return wordField("freeCA", freeCA, "scrambled", "not scrambled");
}

template <class Table>
void appendVersion(Fields& fields, const Table& table) {
  fields.push_back(decimalField("version", table.version));
  fields.push_back(wordField("currentNext", table.currentNext, "current", "next"));
}

template <class Stream>
Fields transportStreamFields(const Stream& stream) {
  return {idField("transportStreamId", stream.transportStreamId),
          idField("originalNetworkId", stream.originalNetworkId),
          descriptorsField(stream.descriptors)};
}

Fields fieldsOf(const PAT& pat) {
  Fields fields = {codeField("tableId", kTablePat),
                   idField("transportStreamId", pat.transportStreamId)};
  appendVersion(fields, pat);
  fields.push_back(listField("programs", pat.programs, [](const PATProgram& program) {
    Field pid = idField("pid", program.pid);
    std::get<Number>(pid.value).meaning = program.programNumber == 0 ? "NIT" : "PMT";
    return Fields{idField("programNumber", program.programNumber), std::move(pid)};
  }));
  return fields;
}

Fields fieldsOf(const CAT& cat) {
  Fields fields = {codeField("tableId", kTableCat)};
  appendVersion(fields, cat);
  fields.push_back(descriptorsField(cat.descriptors));
  return fields;
}

Fields fieldsOf(const PMT& pmt) {
  const auto registrations = registeredFormats(pmt.descriptors);
  Fields fields = {codeField("tableId", kTablePmt), idField("programNumber", pmt.programNumber)};
  appendVersion(fields, pmt);
  fields.push_back(idField("pcrPid", pmt.pcrPid));
  fields.push_back(descriptorsField(pmt.descriptors));
  fields.push_back(listField("esList", pmt.esList, [&](const PMTES& stream) {
    return Fields{idField("pid", stream.pid),
                  codeField("streamType", stream.streamType, streamTypeName(stream.streamType)),
                  descriptorsField(stream.descriptors, registrations)};
  }));
  return fields;
}

Fields fieldsOf(const NIT& nit) {
  Fields fields = {codeField("tableId", nit.tableId), idField("networkId", nit.networkId)};
  appendVersion(fields, nit);
  fields.push_back(descriptorsField(nit.descriptors));
  fields.push_back(
      listField("transportStreams", nit.transportStreams, &transportStreamFields<NITTS>));
  return fields;
}

Fields fieldsOf(const BAT& bat) {
  Fields fields = {codeField("tableId", bat.tableId), idField("bouquetId", bat.bouquetId)};
  appendVersion(fields, bat);
  fields.push_back(descriptorsField(bat.descriptors));
  fields.push_back(
      listField("transportStreams", bat.transportStreams, &transportStreamFields<BATTS>));
  return fields;
}

Fields serviceFields(const SDTService& service) {
  return {
      idField("serviceId", service.serviceId),
      choiceField("runningStatus", service.runningStatus, runningStatusName(service.runningStatus)),
      wordField("eitSchedule", service.eitSchedule, "EIT schedule", "no EIT schedule"),
      wordField("eitPresentFollowing", service.eitPresentFollowing, "EIT p/f", "no EIT p/f"),
      freeCaField(service.freeCA),
      descriptorsField(service.descriptors)};
}

Fields fieldsOf(const SDT& sdt) {
  Fields fields = {codeField("tableId", sdt.tableId),
                   idField("transportStreamId", sdt.transportStreamId)};
  appendVersion(fields, sdt);
  fields.push_back(idField("originalNetworkId", sdt.originalNetworkId));
  fields.push_back(listField("services", sdt.services, &serviceFields));
  return fields;
}

Fields eventFields(const EITEvent& event) {
  return {idField("eventId", event.eventId),
          plainField("startTime", utcTimeText(event.startTime)),
          plainField("duration", durationDigits(event.duration)),
          choiceField("runningStatus", event.runningStatus, runningStatusName(event.runningStatus)),
          freeCaField(event.freeCA),
          descriptorsField(event.descriptors)};
}

Fields fieldsOf(const EIT& eit) {
  const bool isSchedule = isEitSchedule(eit.tableId);
  Fields fields = {codeField("tableId", eit.tableId, isSchedule ? "schedule" : "present/following"),
                   idField("serviceId", eit.serviceId)};
  appendVersion(fields, eit);
  fields.push_back(idField("transportStreamId", eit.transportStreamId));
  fields.push_back(idField("originalNetworkId", eit.originalNetworkId));
  fields.push_back(codeField("lastTableId", eit.lastTableId));
  fields.push_back(listField("events", eit.events, &eventFields));
  return fields;
}

Fields fieldsOf(const TOT& tot) {
  return {codeField("tableId", kTableTot), plainField("utcTime", utcTimeText(tot.utcTime)),
          descriptorsField(tot.descriptors)};
}

}  // namespace

TableFields tableFields(const SiTable& table) {
  return {tableName(table), std::visit([](const auto& record) { return fieldsOf(record); }, table)};
}

std::string tableName(const SiTable& table) {
  static constexpr std::array<const char*, 8> kNames = {"PAT", "CAT", "PMT", "SDT",
                                                        "NIT", "BAT", "TOT", "EIT"};
  static_assert(std::variant_size_v<SiTable> == kNames.size());
  return kNames.at(table.index());
}

int serviceOf(const SiTable& table) {
  if (const PMT* pmt = std::get_if<PMT>(&table)) {
    return pmt->programNumber;
  }
  if (const EIT* eit = std::get_if<EIT>(&table)) {
    return eit->serviceId;
  }
  return -1;
}

}  // namespace tevra::tools
