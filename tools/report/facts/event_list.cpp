#include "tools/report/facts/event_list.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <utility>

#include "tools/descriptors/descriptor_values.h"
#include "tools/si/section.h"

namespace tevra::tools::report {
namespace {

class EventJoiner {
 public:
  explicit EventJoiner(std::optional<StreamTime> clock) : clock_(clock) {}

  void add(const EIT& eit) {
    for (size_t place = 0; place < eit.events.size(); ++place) {
      if (Event* event = take(eit.events[place])) {
        mark(*event, eit, place);
      }
    }
  }

  EventList finish() {
    EventList list;
    list.timeless = timeless_;
    for (auto& entry : events_) {
      list.events.push_back(std::move(entry.second));
    }
    return list;
  }

 private:
  /** The event, new or known from another EIT; null when it has no time. */
  Event* take(const EITEvent& record) {
    const auto start = streamTime(record.startTime);
    const auto duration = durationSeconds(record.duration);
    if (!start || !duration) {
      ++timeless_;
      return nullptr;
    }
    Event& event = events_[{*start, record.eventId, *duration}];
    event.eventId = record.eventId;
    event.start = *start;
    event.duration = *duration;
    if (event.name.empty()) {
      event.name = eventName(record.descriptors);
    }
    return &event;
  }

  void mark(Event& event, const EIT& eit, size_t place) const {
    if (eit.tableId != kTableEitPresentFollowing) {
      event.isScheduled = true;
    } else if (eit.events.size() == 1) {
      const bool isToCome = clock_ && event.start > *clock_;
      (isToCome ? event.isFollowing : event.isPresent) = true;
    } else {
      event.isPresent = event.isPresent || place == 0;
      event.isFollowing = event.isFollowing || place == 1;
    }
  }

  using Key = std::tuple<StreamTime, int, int64_t>;  // start, event_id, duration

  std::optional<StreamTime> clock_;
  std::map<Key, Event> events_;
  size_t timeless_ = 0;
};

}  // namespace

EventList eventList(const std::vector<EIT>& eits, std::optional<StreamTime> clock) {
  EventJoiner joiner(clock);
  for (const EIT& eit : eits) {
    joiner.add(eit);
  }
  return joiner.finish();
}

}  // namespace tevra::tools::report
