#include "tools/listen/notification_receiver.h"

namespace tevra::tools {
namespace {

using Kind = Notification::Kind;

Notification received(Kind kind) {
  Notification notification;
  notification.kind = kind;
  notification.time = std::chrono::system_clock::now();
  return notification;
}

}  // namespace

void NotificationReceiver::handOn(Kind kind, const SiTable& table) {
  Notification notification = received(kind);
  notification.table = table;
  consumer_(notification);
}

void NotificationReceiver::notifyNIM(int32_t value) {
  Notification notification = received(Kind::kNim);
  notification.value = value;
  consumer_(notification);
}

void NotificationReceiver::notifyPAT(const PAT& pat) {
  handOn(Kind::kPat, pat);
}

void NotificationReceiver::notifySDT(const SDT& sdt) {
  handOn(Kind::kSdt, sdt);
}

void NotificationReceiver::notifyPMT(const PMT& pmt) {
  handOn(Kind::kPmt, pmt);
}

void NotificationReceiver::notifyNIT(const NIT& nit) {
  handOn(Kind::kNit, nit);
}

void NotificationReceiver::notifyTOT(const TOT& tot) {
  handOn(Kind::kTot, tot);
}

void NotificationReceiver::notifyBAT(const BAT& bat) {
  handOn(Kind::kBat, bat);
}

void NotificationReceiver::notifyCAT(const CAT& cat) {
  handOn(Kind::kCat, cat);
}

void NotificationReceiver::notifyEITPresentFollowing(const EIT& eit) {
  handOn(Kind::kEitPresentFollowing, eit);
}

void NotificationReceiver::notifyEITSchedule(const EIT& eit) {
  handOn(Kind::kEitSchedule, eit);
}

void NotificationReceiver::requestConfiguration() {
  consumer_(received(Kind::kConfigurationRequest));
}

}  // namespace tevra::tools
