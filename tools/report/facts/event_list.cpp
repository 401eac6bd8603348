#include "tools/report/facts/event_list.h"

#include <map>
#include <tuple>
#include <utility>

#include "tools/descriptors/descriptor_values.h"
#include "tools/si/section.h"

namespace tevra::tools::report {
namespace {

/** What the EIT in which it is the event number `place` says of when it is. */
void mark(const EIT& eit, size_t place, std::optional<StreamTime> clock, Event& event) {
  if (eit.tableId != kTableEitPresentFollowing) {
    event.isScheduled = true;
  } else if (eit.events.size() == 1) {
    const bool isToCome = clock && event.start > *clock;
    (isToCome ? event.isFollowing : event.isPresent) = true;
  } else {
    event.isPresent = event.isPresent || place == 0;
    event.isFollowing = event.isFollowing || place == 1;
  }
}

}  // namespace

EventList eventList(const std::vector<EIT>& eits, std::optional<StreamTime> clock) {
  EventList list;
  std::map<std::tuple<StreamTime, int, int64_t>, Event> events;  // by start, event_id, duration
  for (const EIT& eit : eits) {
    for (size_t place = 0; place < eit.events.size(); ++place) {
      const EITEvent& record = eit.events[place];
      const auto start = streamTime(record.startTime);
      const auto duration = durationSeconds(record.duration);
      if (!start || !duration) {
        ++list.timeless;
        continue;
      }
      Event& event = events[{*start, record.eventId, *duration}];
      event.eventId = record.eventId;
      event.start = *start;
      event.duration = *duration;
      if (event.name.empty()) {
        event.name = eventName(record.descriptors);
      }
      mark(eit, place, clock, event);
    }
  }
  for (auto& entry : events) {
    list.events.push_back(std::move(entry.second));
  }
  return list;
}

}  // namespace tevra::tools::report
