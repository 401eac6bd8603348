#include "tools/listen/notification_json.h"

#include <array>

#include "tools/fields/fields_json.h"
#include "tools/listen/table_facts.h"
#include "tools/tables/table_json.h"

namespace tevra::tools {
namespace {

using Clock = std::chrono::system_clock;

/** The value of an object with one member, else the object. */
Json valueOrObject(const Fields& fields) {
  Json object = fieldsJson(fields);
  return fields.size() == 1 ? object[fields.front().name] : object;
}

struct SideJson {
  Json operator()(std::monostate /*nothing*/) const { return nullptr; }
  Json operator()(const Field& field) const { return valueOrObject({field}); }
  Json operator()(const Fields& entry) const { return fieldsJson(entry); }
  Json operator()(const DescriptorFields& descriptor) const { return descriptorJson(descriptor); }
};

Json idJson(const std::vector<Fields>& ids) {
  return ids.size() == 1 ? valueOrObject(ids.front()) : jsonList(ids, &valueOrObject);
}

std::string whatOf(const Change& change) {
  const bool isDescriptor = !change.descriptor.empty() && change.field.empty();
  const std::string part = isDescriptor ? "descriptor" : change.field;
  const bool needsDot = !change.subject.noun.empty() && !part.empty();
  return change.subject.noun + (needsDot ? "." : "") + part;
}

Json changeJson(const Change& change) {
  static constexpr std::array<const char*, 4> kKinds = {"added", "removed", "changed", "reordered"};
  Json json;
  json["what"] = whatOf(change);
  if (!change.subject.ids.empty()) {
    json["id"] = idJson(change.subject.ids);
  }
  if (!change.descriptor.empty()) {
    json["descriptor"] = change.descriptor;
  }
  if (change.descriptorKey) {
    appendFields(json, {*change.descriptorKey});
  }
  json["change"] = kKinds.at(static_cast<size_t>(change.kind));
  if (change.seconds) {
    json["seconds"] = *change.seconds;
  }
  if (change.from.index() != 0) {
    json["from"] = std::visit(SideJson(), change.from);
  }
  if (change.to.index() != 0) {
    json["to"] = std::visit(SideJson(), change.to);
  }
  return json;
}

Json idsJson(const TableIdentity& table) {
  Json ids;
  ids["tableId"] = table.tableId;
  for (const TableId& id : table.ids) {
    ids[id.name] = id.value;
  }
  return ids;
}

const char* stateOf(const TableNews& news) {
  if (!news.last) {
    return "first";
  }
  return news.changes.empty() ? "unchanged" : "changed";
}

void appendTable(Json& json, const SiTable& table, const TableNews& news, Clock::time_point now) {
  json["ids"] = idsJson(identityOf(table));
  if (const auto version = versionOf(table)) {
    json["version"] = *version;
  }
  if (const auto seconds = secondsBehind(table, now)) {
    json["systemClockSeconds"] = *seconds;
  }
  json["state"] = stateOf(news);
  json["changes"] = jsonList(news.changes, &changeJson);
  json["table"] = tableFieldsJson(tableFields(table));
}

}  // namespace

std::string notificationJson(const Notification& notification, const TableNews& news, Zone zone) {
  Json json;
  json["time"] = isoTimeStamp(notification.time, zone);
  if (const auto* notified = std::get_if<NotifiedTable>(&notification.content)) {
    json["kind"] = namesOf(notified->kind).call;
    appendTable(json, notified->table, news, notification.time);
  } else if (const auto* nim = std::get_if<NimValue>(&notification.content)) {
    json["kind"] = "NIM";
    json["value"] = nim->value;
  } else {
    json["kind"] = "requestConfiguration";
  }
  return jsonLine(json);
}

}  // namespace tevra::tools
