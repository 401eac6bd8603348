#pragma once

#include <cstdint>
#include <ostream>
#include <string>

#include "im_SINotifySrv.h"
#include "records/records.h"

namespace tevra::tools {

/**
 * Takes MainTask's notifications and prints one line for each: its kind, what table it is about,
 * the version and how much the table holds. Every line is flushed.
 */
class NotificationPrinter : public thrift::in_module::im_SINotifySrvIf {
 public:
  /** `out` must outlive the printer. */
  explicit NotificationPrinter(std::ostream& out) : out_(out) {}

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

 private:
  void print(const std::string& kind, const std::string& text);

  std::ostream& out_;
};

}  // namespace tevra::tools
