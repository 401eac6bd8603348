#pragma once

#include <cstdint>
#include <functional>
#include <utility>

#include "im_SINotifySrv.h"
#include "tools/listen/notification.h"

namespace tevra::tools {

/** Takes MainTask's notifications and hands each on, with the time at which it came. */
class NotificationReceiver : public thrift::in_module::im_SINotifySrvIf {
 public:
  /** What it raises is lost: the calls are oneway. */
  using Consumer = std::function<void(const Notification& notification)>;

  /** `consumer` is called on the server's thread. */
  explicit NotificationReceiver(Consumer consumer) : consumer_(std::move(consumer)) {}

  ///@{
  /** Hands on one notification with what the call carries. */
  void notifyNIM(int32_t value) override;
  void notifyPAT(const PAT& pat) override;
  void notifySDT(const SDT& sdt) override;
  void notifyPMT(const PMT& pmt) override;
  void notifyNIT(const NIT& nit) override;
  void notifyTOT(const TOT& tot) override;
  void notifyBAT(const BAT& bat) override;
  void notifyCAT(const CAT& cat) override;
  void notifyEITPresentFollowing(const EIT& eit) override;
  void notifyEITSchedule(const EIT& eit) override;
  void requestConfiguration() override;
  ///@}

 private:
  void handOn(const Notification::Content& content);

  Consumer consumer_;
};

}  // namespace tevra::tools
