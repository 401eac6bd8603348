#include "tools/listen/table_history.h"

#include "tools/changes/table_changes.h"
#include "tools/listen/table_facts.h"

namespace tevra::tools {
namespace {

/** Of a PAT none: a stream has one, whatever its transport_stream_id. */
std::vector<int> idsOf(const SiTable& table) {
  if (std::holds_alternative<PAT>(table)) {
    return {};
  }
  const TableIdentity identity = identityOf(table);
  std::vector<int> values = {identity.tableId};
  for (const TableId& id : identity.ids) {
    values.push_back(id.value);
  }
  return values;
}

}  // namespace

TableNews TableHistory::add(const NotifiedTable& notified) {
  const auto& [kind, table] = notified;
  const Key key = {kind, idsOf(table)};
  TableNews news;
  news.last = take(key);
  if (news.last) {
    news.changes = tableChanges(*news.last, table);
  }
  entries_.push_front({key, table, memoryOf(table)});
  places_[key] = entries_.begin();
  bytes_ += entries_.front().bytes;
  while (entries_.size() > mostTables_ || bytes_ > mostBytes_) {
    forgetOldest();
  }
  return news;
}

std::optional<SiTable> TableHistory::take(const Key& key) {
  const auto found = places_.find(key);
  if (found == places_.end()) {
    return std::nullopt;
  }
  std::optional<SiTable> table = std::move(found->second->table);
  bytes_ -= found->second->bytes;
  entries_.erase(found->second);
  places_.erase(found);
  return table;
}

void TableHistory::forgetOldest() {
  bytes_ -= entries_.back().bytes;
  places_.erase(entries_.back().key);
  entries_.pop_back();
}

}  // namespace tevra::tools
