#pragma once

#include <map>
#include <ostream>
#include <string>
#include <vector>

#include "records/control_service.h"
#include "tools/si/table_identity.h"

namespace tevra::tools {

/** Hands tables to a daemon, one call each, and keeps account of them. */
class TableFeeder {
 public:
  /** `daemon` must outlive the feeder. */
  explicit TableFeeder(thrift::in_module::im_SIControlSrvIf& daemon) : daemon_(daemon) {}

  /** The table came in so many sections. Passes on what the call raises. */
  void feed(const SiTable& table, size_t sections);

  /** Tables handed to the daemon, those that it refused included. */
  [[nodiscard]] size_t sent() const { return sent_; }
  /** Tables that the daemon said no to. */
  [[nodiscard]] size_t refused() const { return refused_; }
  /** What was sent of one table. */
  struct Sent {
    std::string kind;     ///< "PMT"
    std::string what;     ///< "service 101"; nothing for tables of which there is one
    std::string last;     ///< "version 4", the time of a TOT
    size_t sections = 0;  ///< of the last
    size_t count = 0;     ///< times that it was sent
  };

  /** By kind, then by id. */
  [[nodiscard]] std::vector<Sent> account() const;
  /** The same as a table for people. */
  void print(std::ostream& out) const;

 private:
  thrift::in_module::im_SIControlSrvIf& daemon_;
  std::map<TablePlace, Sent> accounts_;
  size_t sent_ = 0;
  size_t refused_ = 0;
};

}  // namespace tevra::tools
