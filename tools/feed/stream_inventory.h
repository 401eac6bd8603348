#pragma once

#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tools/si/si_table.h"

namespace tevra::tools {

/** A service as the tables of its stream describe it. */
struct ServiceSummary {
  int serviceId = 0;                        ///< service_id, the programme number of its PMT
  int type = 0;                             ///< service_type; 0 without a service descriptor
  std::string name;                         ///< UTF-8
  std::string provider;                     ///< UTF-8
  std::optional<int> pmtPid;                ///< nothing when the PAT does not name it
  bool hasPmt = false;                      ///< whether the next two come from one
  size_t streams = 0;                       ///< elementary streams
  std::vector<std::string> audioLanguages;  ///< one per audio stream: "eng", "eng+fre", "-"
};

/** The last PAT, SDT and PMTs of a stream: what its services are. */
class StreamInventory {
 public:
  /**
   * Takes the place of the one before, of a PMT's by programme number; other tables are ignored.
   * A PAT does away with the PMTs that it does not name, that of another transport stream with all
   * tables.
   */
  void add(const SiTable& table);

  [[nodiscard]] std::optional<int> transportStreamId() const;  ///< of the PAT
  [[nodiscard]] std::optional<int> originalNetworkId() const;  ///< of the SDT
  /** The last SDT; nothing before the first. */
  [[nodiscard]] const std::optional<SDT>& sdt() const { return sdt_; }
  /** The last PMT of the service; null without one. It stays until the next table is added. */
  [[nodiscard]] const PMT* pmt(int serviceId) const;
  /** Those of the PAT and the SDT, in ascending service id. */
  [[nodiscard]] std::vector<ServiceSummary> services() const;
  /** As constructed, but for its id, when the stream knows nothing of the service. */
  [[nodiscard]] ServiceSummary service(int serviceId) const;

  /** The lowest id; nothing when no service has a PMT. */
  [[nodiscard]] std::optional<int> firstServiceWithPmt() const;

  /** A table for people. */
  void print(std::ostream& out) const;
  /** The services that have a PMT, on one line: '3401 "Uno", 3402 "Due"'. */
  [[nodiscard]] std::string servicesWithPmt() const;

 private:
  void forgetUnnamedPmts();

  std::optional<PAT> pat_;
  std::optional<SDT> sdt_;
  std::map<int, PMT> pmts_;  // by programme number
};

}  // namespace tevra::tools
