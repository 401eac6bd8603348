#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "records/control_service.h"
#include "tools/feed/stream_inventory.h"
#include "tools/feed/table_feeder.h"
#include "tools/si/table_demux.h"
#include "tools/stream/byte_source.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/** What came of handing the tables of one stream to a daemon, and what the stream holds. */
class StreamFeed {
 public:
  /** Told of every packet before its tables are sent, and how many have been; false ends the feed.
   */
  using OnPacket = std::function<bool(const TsPacket& packet, size_t tablesSent)>;

  /** Told of every table when it has been sent, and what the stream then holds. */
  using OnTable = std::function<void(const SiTable& table, const StreamInventory& inventory)>;

  /**
   * Reads `source`, called `name`, to its end, and sends each table as soon as it is complete.
   *
   * Raises ToolError when the source cannot be read, holds no transport stream or none of the
   * tables. Passes on what a call raises.
   */
  [[nodiscard]] static StreamFeed feed(
      ByteSource& source, const std::string& name, thrift::in_module::im_SIControlSrvIf& daemon,
      const OnPacket& onPacket = [](const TsPacket& /*packet*/,
                                    size_t /*tablesSent*/) { return true; },
      const OnTable& onTable = [](const SiTable& /*table*/,
                                  const StreamInventory& /*inventory*/) {});

  /** What the stream's services are. */
  [[nodiscard]] const StreamInventory& inventory() const { return inventory_; }
  /** The account of what was sent. */
  [[nodiscard]] const TableFeeder& tables() const { return feeder_; }
  /** Transport stream packets read. */
  [[nodiscard]] uint64_t packets() const { return packets_; }
  /** What was lost on the way to tables. */
  [[nodiscard]] const SectionFaults& statistics() const { return statistics_; }

  /** For people: what was wrong with the stream, one line per fault. */
  [[nodiscard]] const std::vector<std::string>& faults() const { return faults_; }
  /** The same, printed. */
  void printFaults(std::ostream& out) const;

 private:
  explicit StreamFeed(thrift::in_module::im_SIControlSrvIf& daemon) : feeder_(daemon) {}

  TableFeeder feeder_;
  StreamInventory inventory_;
  uint64_t packets_ = 0;
  SectionFaults statistics_;
  std::vector<std::string> faults_;
};

}  // namespace tevra::tools
