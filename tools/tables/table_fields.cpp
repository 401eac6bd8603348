#include "tools/tables/table_fields.h"

#include <utility>

#include "tools/descriptors/code_names.h"
#include "tools/descriptors/descriptor_fields.h"
#include "tools/si/table_identity.h"
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

Field timeField(const std::string& name, int64_t utcTime) {
  return {name, Time{utcTimeText(utcTime), streamTime(utcTime)}};
}

Field freeCaField(bool freeCA) {
  return wordField("freeCA", freeCA, "scrambled", "not scrambled");
}

// What a table holds behind its header.

void append(Fields& fields, const PAT& pat) {
  fields.push_back(listField("programs", pat.programs, [](const PATProgram& program) {
    return Fields{idField("programNumber", program.programNumber),
                  idField("pid", program.pid, program.programNumber == 0 ? "NIT" : "PMT")};
  }));
}

void append(Fields& fields, const CAT& cat) {
  fields.push_back(descriptorsField(cat.descriptors));
}

void append(Fields& fields, const PMT& pmt) {
  const auto registrations = registeredFormats(pmt.descriptors);
  fields.push_back(idField("pcrPid", pmt.pcrPid));
  fields.push_back(descriptorsField(pmt.descriptors));
  fields.push_back(listField("esList", pmt.esList, [&](const PMTES& stream) {
    return Fields{idField("pid", stream.pid),
                  codeField("streamType", stream.streamType, streamTypeName(stream.streamType)),
                  descriptorsField(stream.descriptors, registrations)};
  }));
}

/** Of an NIT and a BAT. */
template <class Table>
void append(Fields& fields, const Table& table) {
  fields.push_back(descriptorsField(table.descriptors));
  fields.push_back(listField("transportStreams", table.transportStreams, [](const auto& stream) {
    return Fields{idField("transportStreamId", stream.transportStreamId),
                  idField("originalNetworkId", stream.originalNetworkId),
                  descriptorsField(stream.descriptors)};
  }));
}

Fields serviceFields(const SDTService& service) {
  return {idField("serviceId", service.serviceId),
          decimalField("runningStatus", service.runningStatus,
                       runningStatusName(service.runningStatus)),
          wordField("eitSchedule", service.eitSchedule, "EIT schedule", "no EIT schedule"),
          wordField("eitPresentFollowing", service.eitPresentFollowing, "EIT p/f", "no EIT p/f"),
          freeCaField(service.freeCA),
          descriptorsField(service.descriptors)};
}

void append(Fields& fields, const SDT& sdt) {
  fields.push_back(listField("services", sdt.services, &serviceFields));
}

Fields eventFields(const EITEvent& event) {
  return {
      idField("eventId", event.eventId),
      timeField("startTime", event.startTime),
      plainField("duration", durationDigits(event.duration)),
      decimalField("runningStatus", event.runningStatus, runningStatusName(event.runningStatus)),
      freeCaField(event.freeCA),
      descriptorsField(event.descriptors)};
}

void append(Fields& fields, const EIT& eit) {
  fields.push_back(codeField("lastTableId", eit.lastTableId));
  fields.push_back(listField("events", eit.events, &eventFields));
}

void append(Fields& fields, const TOT& tot) {
  fields.push_back(timeField("utcTime", tot.utcTime));
  fields.push_back(descriptorsField(tot.descriptors));
}

std::string meaningOf(TableKind kind) {
  if (kind == TableKind::kEitSchedule) {
    return "schedule";
  }
  return kind == TableKind::kEitPresentFollowing ? "present/following" : "";
}

/** What every table begins with, in the order of the section. */
Fields headerOf(const SiTable& table) {
  const TableIdentity identity = identityOf(table);
  Fields fields = {codeField("tableId", identity.tableId, meaningOf(identity.kind))};
  for (const TableId& id : identity.ids) {
    fields.push_back(idField(id.name, id.value));
  }
  if (const auto version = versionOf(table)) {
    const bool isCurrent = std::visit([](const auto& record) { return record.currentNext; }, table);
    const auto behindExtension = fields.begin() + (identity.ids.empty() ? 1 : 2);
    fields.insert(behindExtension, {decimalField("version", *version),
                                    wordField("currentNext", isCurrent, "current", "next")});
  }
  return fields;
}

}  // namespace

TableFields tableFields(const SiTable& table) {
  TableFields result = {tableName(table), headerOf(table)};
  std::visit([&](const auto& record) { append(result.fields, record); }, table);
  return result;
}

std::string tableName(const SiTable& table) {
  return namesOf(identityOf(table).kind).table;
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
