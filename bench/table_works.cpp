#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "bench/call_work.h"
#include "bench/control_call.h"
#include "bench/own_handler.h"
#include "bench/reading_main_task.h"
#include "bench/sample_tables.h"
#include "bench/work.h"
#include "im_SINotifySrv.h"

namespace tevra::bench {
namespace {

using apache::thrift::transport::TMemoryBuffer;
using Before = CallWork::Before;
using ScheduleArguments = thrift::in_module::im_SIControlSrv_setEITSchedule_args;
using PmtArguments = thrift::in_module::im_SIControlSrv_setPMT_args;

std::string scheduleMessage(ScheduleSize size) {
  const EITMap eits = sampleSchedule(size);
  return messageOf([&](BareClient& client) { client.send_setEITSchedule(eits); });
}

std::string pmtMessage() {
  const PMT pmt = samplePmt(10, 17);
  return messageOf([&](BareClient& client) { client.send_setPMT(pmt); });
}

std::string totMessage(int minutes) {
  return messageOf([&](BareClient& client) { client.send_setTOT(sampleTot(minutes)); });
}

/** Notifications, each into the memory of the one before. */
class Notifications {
 public:
  using Client = thrift::in_module::im_SINotifySrvClientT<BareProtocol>;

  [[nodiscard]] Client& next() {
    frame_->resetBuffer();
    return client_;
  }

 private:
  std::shared_ptr<TMemoryBuffer> frame_ = std::make_shared<TMemoryBuffer>();
  Client client_{std::make_shared<BareProtocol>(frame_)};
};

void tellSchedule(const ScheduleArguments& arguments, Notifications& notifications) {
  for (const auto& [serviceId, tables] : arguments.eits) {
    for (const auto& [tableId, eit] : tables) {
      notifications.next().send_notifyEITSchedule(eit);
    }
  }
}

void tellPmt(const PmtArguments& arguments, Notifications& notifications) {
  notifications.next().send_notifyPMT(arguments.pmt);
}

/** A call decoded, and what MainTask is told of it encoded; nothing without `tell`. */
template <class Arguments>
class BareCall : public Work {
 public:
  using Tell = void (*)(const Arguments&, Notifications&);

  explicit BareCall(std::string message, Tell tell = nullptr)
      : message_(std::move(message)), tell_(tell) {}

  void prepare() override { arguments_.emplace(); }

  void run() override {
    decode(message_, *arguments_);
    if (tell_ != nullptr) {
      tell_(*arguments_, notifications_);
    }
  }

 private:
  std::string message_;
  const Tell tell_;
  std::optional<Arguments> arguments_;
  Notifications notifications_;
};

class TwoCopies : public Work {
 public:
  explicit TwoCopies(ScheduleSize size) : eits_(sampleSchedule(size)) {}

  void prepare() override { copies_.emplace(); }

  void run() override {
    copies_->first = eits_;
    copies_->second = eits_;
  }

 private:
  const EITMap eits_;
  std::optional<std::pair<EITMap, EITMap>> copies_;
};

CallWork::Start untold() {
  return [] { return std::make_shared<OwnHandler>(); };
}

/** With a time offset, so that schedules are restamped. */
CallWork::Start timed(const CallWork::Start& start) {
  return [start] {
    auto handler = start();
    handler->setTOT(sampleTot(0));
    return handler;
  };
}

/** Holds a schedule already. */
CallWork::Start full(const CallWork::Start& start) {
  return [start] {
    auto handler = start();
    handler->setEITSchedule(sampleSchedule(kFullSchedule));
    return handler;
  };
}

/** Of the first MPTS, with a MainTask to tell. */
CallWork::Start told() {
  return
      [mainTask = std::make_shared<ReadingMainTask>()] { return std::make_shared<OwnHandler>(0); };
}

void addSchedule(Works& works, const std::string& name, ScheduleSize size,
                 CallWork::Start (*handler)(), BareCall<ScheduleArguments>::Tell tell) {
  const std::string sized = name + "/" + std::to_string(eventCount(size));
  const auto take = [size, handler](Before before) {
    return std::make_unique<CallWork>(timed(handler()), std::vector{scheduleMessage(size)}, before);
  };
  works.push_back({sized + "/floor", [size, tell] {
                     return std::make_unique<BareCall<ScheduleArguments>>(scheduleMessage(size),
                                                                          tell);
                   }});
  works.push_back({sized + "/first", [take] { return take(Before::kNothing); }});
  works.push_back({sized + "/again", [take] { return take(Before::kTheLast); }});
}

}  // namespace

void addTableWorks(Works& works) {
  for (const ScheduleSize size : kScheduleSizes) {
    addSchedule(works, "schedule", size, untold, nullptr);
  }
  addSchedule(works, "schedule-told", kFullSchedule, told, tellSchedule);
  works.push_back({"tot/9600/floor", [] { return std::make_unique<TwoCopies>(kFullSchedule); }});
  works.push_back({"tot/9600/restamp", [] {
                     return std::make_unique<CallWork>(full(timed(untold())),
                                                       std::vector{totMessage(120), totMessage(0)});
                   }});
  works.push_back({"pmt/10x17/floor",
                   [] { return std::make_unique<BareCall<PmtArguments>>(pmtMessage(), tellPmt); }});
  works.push_back({"pmt/10x17/told",
                   [] { return std::make_unique<CallWork>(told(), std::vector{pmtMessage()}); }});
}

}  // namespace tevra::bench
