#include "tools/listen/notification_receiver.h"

namespace tevra::tools {

void NotificationReceiver::handOn(const Notification::Content& content) {
  consumer_({std::chrono::system_clock::now(), content});
}

void NotificationReceiver::notifyNIM(int32_t value) {
  handOn(NimValue{value});
}

void NotificationReceiver::notifyPAT(const PAT& pat) {
  handOn(NotifiedTable{TableKind::kPat, pat});
}

void NotificationReceiver::notifySDT(const SDT& sdt) {
  handOn(NotifiedTable{TableKind::kSdt, sdt});
}

void NotificationReceiver::notifyPMT(const PMT& pmt) {
  handOn(NotifiedTable{TableKind::kPmt, pmt});
}

void NotificationReceiver::notifyNIT(const NIT& nit) {
  handOn(NotifiedTable{TableKind::kNit, nit});
}

void NotificationReceiver::notifyTOT(const TOT& tot) {
  handOn(NotifiedTable{TableKind::kTot, tot});
}

void NotificationReceiver::notifyBAT(const BAT& bat) {
  handOn(NotifiedTable{TableKind::kBat, bat});
}

void NotificationReceiver::notifyCAT(const CAT& cat) {
  handOn(NotifiedTable{TableKind::kCat, cat});
}

void NotificationReceiver::notifyEITPresentFollowing(const EIT& eit) {
  handOn(NotifiedTable{TableKind::kEitPresentFollowing, eit});
}

void NotificationReceiver::notifyEITSchedule(const EIT& eit) {
  handOn(NotifiedTable{TableKind::kEitSchedule, eit});
}

void NotificationReceiver::requestConfiguration() {
  handOn(ConfigurationRequest());
}

}  // namespace tevra::tools
