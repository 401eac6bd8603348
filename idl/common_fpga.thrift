/** What an output single-programme transport stream is made of. */
namespace * tevra.thrift.common_fpga

include "dvb_tables.thrift"

struct PIDItem {
  1: i32 inputPid
  2: i32 outputPid
  3: i32 attributes  // why the PID is carried: 0x02 PMT, 0x04 PCR, 0x08 ES, 0x10 ECM, 0x20 EMM
}

// Packet lists: one 188-byte transport stream packet per element, in transmission order.
struct OutputTables {
  1: i32 outputParam1  // unique service id of the last node
  2: i32 outputParam2
  3: list<binary> patPackets
  4: list<binary> sdtPackets
  5: list<binary> pmtPackets
  6: list<binary> otherPackets
  7: dvb_tables.DVBOutputTables dvbTables
}

struct SPTSConfiguration {
  1: list<PIDItem> pidItems
  2: OutputTables outputTables
}
