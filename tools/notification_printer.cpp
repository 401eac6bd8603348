#include "tools/notification_printer.h"

#include "tools/dvb_time_text.h"
#include "tools/text_table.h"

namespace tevra::tools {
namespace {

constexpr size_t kKindWidth = 14;

std::string version(int number) {
  return ", version " + std::to_string(number);
}

std::string eitText(const EIT& eit) {
  return "service " + std::to_string(eit.serviceId) + ", table " + hex(eit.tableId, 2) +
         version(eit.version) + ", " + counted(eit.events.size(), "event");
}

}  // namespace

void NotificationPrinter::print(const std::string& kind, const std::string& text) {
  const std::string padding(kind.size() < kKindWidth ? kKindWidth - kind.size() : 1, ' ');
  out_ << kind << (text.empty() ? "" : padding) << text << "\n" << std::flush;
}

void NotificationPrinter::notifyNIM(int32_t value) {
  print("NIM", "value " + std::to_string(value));
}

void NotificationPrinter::notifyPAT(const PAT& pat) {
  print("PAT", "transport stream " + std::to_string(pat.transportStreamId) + version(pat.version) +
                   ", " + counted(pat.programs.size(), "programme"));
}

void NotificationPrinter::notifySDT(const SDT& sdt) {
  print("SDT", "transport stream " + std::to_string(sdt.transportStreamId) + version(sdt.version) +
                   ", " + counted(sdt.services.size(), "service"));
}

void NotificationPrinter::notifyPMT(const PMT& pmt) {
  print("PMT", "service " + std::to_string(pmt.programNumber) + version(pmt.version) + ", " +
                   counted(pmt.esList.size(), "stream") + ", PCR on PID " +
                   std::to_string(pmt.pcrPid));
}

void NotificationPrinter::notifyNIT(const NIT& nit) {
  print("NIT", "network " + std::to_string(nit.networkId) + version(nit.version) + ", " +
                   counted(nit.transportStreams.size(), "transport stream"));
}

void NotificationPrinter::notifyTOT(const TOT& tot) {
  print("TOT", dvbTimeText(tot.utcTime) + " UTC, " + counted(tot.descriptors.size(), "descriptor"));
}

void NotificationPrinter::notifyBAT(const BAT& bat) {
  print("BAT", "bouquet " + std::to_string(bat.bouquetId) + version(bat.version) + ", " +
                   counted(bat.transportStreams.size(), "transport stream"));
}

void NotificationPrinter::notifyCAT(const CAT& cat) {
  print("CAT", "version " + std::to_string(cat.version) + ", " +
                   counted(cat.descriptors.size(), "descriptor"));
}

void NotificationPrinter::notifyEITPresentFollowing(const EIT& eit) {
  print("EIT p/f", eitText(eit));
}

void NotificationPrinter::notifyEITSchedule(const EIT& eit) {
  print("EIT schedule", eitText(eit));
}

void NotificationPrinter::requestConfiguration() {
  print("configuration requested", "");
}

}  // namespace tevra::tools
