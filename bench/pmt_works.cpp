#include <memory>
#include <string>

#include "bench/control_call.h"
#include "bench/reading_main_task.h"
#include "bench/sample_tables.h"
#include "bench/unsaving_handler.h"
#include "bench/work.h"
#include "im_SINotifySrv.h"

namespace tevra::bench {
namespace {

using apache::thrift::transport::TMemoryBuffer;

constexpr int kStreams = 10;
constexpr int kDescriptors = 17;
constexpr int32_t kFirstMpts = 0;

std::string pmtMessage() {
  const PMT pmt = samplePmt(kStreams, kDescriptors);
  return messageOf([&](BareClient& client) { client.send_setPMT(pmt); });
}

class DecodeAndEncode : public Work {
 public:
  void run() override {
    thrift::in_module::im_SIControlSrv_setPMT_args arguments;
    decode(message_, arguments);
    frame_->resetBuffer();
    client_.send_notifyPMT(arguments.pmt);
  }

 private:
  std::string message_ = pmtMessage();
  std::shared_ptr<TMemoryBuffer> frame_ = std::make_shared<TMemoryBuffer>();
  thrift::in_module::im_SINotifySrvClientT<BareProtocol> client_{
      std::make_shared<BareProtocol>(frame_)};
};

/** setPMT whose PIDs are known, told to a MainTask. */
class TakePmt : public Work {
 public:
  explicit TakePmt(int32_t mptsIndex)
      : mainTask_(), call_(std::make_shared<UnsavingHandler>(mptsIndex)) {
    run();
  }

  void run() override { call_.process(message_); }

 private:
  std::string message_ = pmtMessage();
  ReadingMainTask mainTask_;
  ControlCall call_;
};

}  // namespace

void addPmtWorks(Works& works) {
  works.push_back({"pmt/10x17/floor", [] { return std::make_unique<DecodeAndEncode>(); }});
  works.push_back({"pmt/10x17/told", [] { return std::make_unique<TakePmt>(kFirstMpts); }});
  works.push_back({"pmt/10x17/untold", [] { return std::make_unique<TakePmt>(kUntoldMpts); }});
}

}  // namespace tevra::bench
