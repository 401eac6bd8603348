#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "bench/control_call.h"
#include "bench/reading_main_task.h"
#include "bench/sample_tables.h"
#include "bench/unsaving_handler.h"
#include "bench/work.h"
#include "im_SINotifySrv.h"

namespace tevra::bench {
namespace {

using apache::thrift::transport::TMemoryBuffer;
using Arguments = thrift::in_module::im_SIControlSrv_setEITSchedule_args;

constexpr int32_t kToldMpts = 0;

std::string scheduleMessage(ScheduleSize size) {
  const EITMap eits = sampleSchedule(size);
  return messageOf([&](BareClient& client) { client.send_setEITSchedule(eits); });
}

class Decode : public Work {
 public:
  explicit Decode(ScheduleSize size) : message_(scheduleMessage(size)) {}

  void prepare() override { arguments_.emplace(); }
  void run() override { decode(message_, *arguments_); }

 protected:
  [[nodiscard]] const EITMap& decoded() const { return arguments_->eits; }

 private:
  std::string message_;
  std::optional<Arguments> arguments_;
};

/** Every EIT is encoded as its notification, one after the other into the same memory. */
class DecodeAndEncode : public Decode {
 public:
  using Decode::Decode;

  void run() override {
    Decode::run();
    for (const auto& [serviceId, tables] : decoded()) {
      for (const auto& [tableId, eit] : tables) {
        frame_->resetBuffer();
        client_.send_notifyEITSchedule(eit);
      }
    }
  }

 private:
  std::shared_ptr<TMemoryBuffer> frame_ = std::make_shared<TMemoryBuffer>();
  thrift::in_module::im_SINotifySrvClientT<BareProtocol> client_{
      std::make_shared<BareProtocol>(frame_)};
};

enum class Before { kNothing, kTheSame };

/** setEITSchedule with a time offset, so that the schedule is restamped. */
class TakeSchedule : public Work {
 public:
  TakeSchedule(ScheduleSize size, Before before, int32_t mptsIndex)
      : message_(scheduleMessage(size)), before_(before), mptsIndex_(mptsIndex) {
    if (mptsIndex == kToldMpts) {
      mainTask_.emplace();
    }
    start();
    run();
  }

  void prepare() override {
    if (before_ == Before::kNothing) {
      start();
    }
  }

  void run() override { call_->process(message_); }

 private:
  void start() {
    const auto handler = std::make_shared<UnsavingHandler>(mptsIndex_);
    handler->setTOT(sampleTot(0));
    call_.emplace(handler);
  }

  std::string message_;
  const Before before_;
  const int32_t mptsIndex_;
  std::optional<ReadingMainTask> mainTask_;
  std::optional<ControlCall> call_;
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

/** Every run has another offset. */
class Restamp : public Work {
 public:
  explicit Restamp(ScheduleSize size) : handler_(kUntoldMpts) {
    handler_.setTOT(tots_.first);
    handler_.setEITSchedule(sampleSchedule(size));
  }

  void prepare() override { std::swap(tots_.first, tots_.second); }
  void run() override { handler_.setTOT(tots_.first); }

 private:
  std::pair<TOT, TOT> tots_{sampleTot(0), sampleTot(120)};
  UnsavingHandler handler_;
};

void addSize(Works& works, ScheduleSize size) {
  const std::string name = "schedule/" + std::to_string(eventCount(size));
  works.push_back({name + "/floor", [size] { return std::make_unique<Decode>(size); }});
  works.push_back({name + "/first", [size] {
                     return std::make_unique<TakeSchedule>(size, Before::kNothing, kUntoldMpts);
                   }});
  works.push_back({name + "/again", [size] {
                     return std::make_unique<TakeSchedule>(size, Before::kTheSame, kUntoldMpts);
                   }});
}

}  // namespace

void addScheduleWorks(Works& works) {
  for (const ScheduleSize size : kScheduleSizes) {
    addSize(works, size);
  }
  works.push_back({"schedule-told/9600/floor",
                   [] { return std::make_unique<DecodeAndEncode>(kFullSchedule); }});
  works.push_back(
      {"schedule-told/9600/first",
       [] { return std::make_unique<TakeSchedule>(kFullSchedule, Before::kNothing, kToldMpts); }});
  works.push_back(
      {"schedule-told/9600/again",
       [] { return std::make_unique<TakeSchedule>(kFullSchedule, Before::kTheSame, kToldMpts); }});
  works.push_back({"tot/9600/floor", [] { return std::make_unique<TwoCopies>(kFullSchedule); }});
  works.push_back({"tot/9600/restamp", [] { return std::make_unique<Restamp>(kFullSchedule); }});
}

}  // namespace tevra::bench
