#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "im_SIControlSrv.h"
#include "tools/stream_inventory.h"
#include "tools/table_feeder.h"

namespace tevra::tools {

/** Hands all tables of one file to a daemon and keeps account of what the file holds. */
class StreamFeed {
 public:
  /**
   * Reads `path` to its end, "-" is standard input; a table is sent as soon as it is complete.
   *
   * Raises ToolError when the file cannot be read, holds no transport stream or none of the tables.
   * Passes on what a call raises.
   */
  StreamFeed(const std::string& path, thrift::in_module::im_SIControlSrvIf& daemon);

  [[nodiscard]] const StreamInventory& inventory() const { return inventory_; }
  [[nodiscard]] const TableFeeder& tables() const { return feeder_; }
  [[nodiscard]] uint64_t packets() const { return packets_; }

  /** For people: what was wrong with the stream, one line per fault. */
  void printFaults(std::ostream& out) const;

 private:
  TableFeeder feeder_;
  StreamInventory inventory_;
  uint64_t packets_ = 0;
  std::vector<std::string> faults_;
};

}  // namespace tevra::tools
