/** The input module's own stores, its control service and MainTask's notification service. */
namespace * tevra.thrift.in_module

include "dvb_tables.thrift"
include "common_fpga.thrift"
include "spts.thrift"

/** Service id, then EIT table id (0x4E present/following, 0x50 to 0x5F schedule). */
typedef map<i32, map<i32, dvb_tables.EIT>> EITMap

struct SIService {
  1: string name
}

/** The tables last handed out for one service. */
struct TableStore {
  1: i32 restartCounter
  2: dvb_tables.PAT pat
  3: dvb_tables.SDT sdt
  4: dvb_tables.PMT pmt
}

struct TableStoreFile {
  1: map<i32, TableStore> tableStores  // key: input programme number
}

/** The EIT versions last handed out for one service. */
struct EITTableVersionStore {
  1: i32 restartCounter
  2: map<i32, i32> versions  // key: EIT table id
}

struct EITTableVersionStoreFile {
  1: map<i32, EITTableVersionStore> versionStores  // key: service id
}

/** The PID mapping of one module chain. The two maps are each other's reverse. */
struct PIDRemap {
  1: i32 transportStreamId  // 0xFFFF after a reset
  2: map<i32, i32> inputToOutput
  3: map<i32, i32> outputToInput
  4: i32 nextPIDCounter
  5: i32 moduleSlot
}

struct OutputServiceDescription {
  1: i32 globalSID
  2: i32 nextNode  // 0: the output leaves the chain here and carries the members below
  3: i32 outputSID
  4: string serviceName  // UTF-8
  5: i32 transportStreamId
  6: i32 originalNetworkId
  7: i32 outputParam
}

struct SrvOutputRequest {
  1: i32 inputSID
  2: map<i32, OutputServiceDescription> outputs
  3: map<i32, list<spts.LastNodeSettings>> lastNodeSettings  // key: global service id
}

/** Served by the SI task on TCP 9224 + MPTS index; framed transport, binary protocol. */
service im_SIControlSrv {
  SIService getSIData()
  bool SISetData(1: SIService data)
  bool sendCmd(1: i32 command)
  void setPAT(1: dvb_tables.PAT pat)
  void setSDT(1: dvb_tables.SDT sdt)
  void setPMT(1: dvb_tables.PMT pmt)
  bool setNIT(1: dvb_tables.NIT nit)
  void setTOT(1: dvb_tables.TOT tot)
  bool setBAT(1: dvb_tables.BAT bat)
  void setCAT(1: dvb_tables.CAT cat)
  void setEITPresentFollowing(1: EITMap eits)
  void setEITSchedule(1: EITMap eits)
  /** The answer is keyed by global service id. */
  map<i32, common_fpga.SPTSConfiguration> getSrvOutputData(1: SrvOutputRequest request)
}

/**
 * Served by MainTask on TCP 9256 + MPTS index of the loopback interface; framed transport, binary protocol.
 * Oneway: a slow MainTask, or one that is itself inside a call to the SI task, must not hold up table processing.
 */
service im_SINotifySrv {
  oneway void notifyNIM(1: i32 value)
  oneway void notifyPAT(1: dvb_tables.PAT pat)
  oneway void notifySDT(1: dvb_tables.SDT sdt)
  oneway void notifyPMT(1: dvb_tables.PMT pmt)
  oneway void notifyNIT(1: dvb_tables.NIT nit)
  oneway void notifyTOT(1: dvb_tables.TOT tot)
  oneway void notifyBAT(1: dvb_tables.BAT bat)
  oneway void notifyCAT(1: dvb_tables.CAT cat)
  oneway void notifyEITPresentFollowing(1: dvb_tables.EIT eit)
  oneway void notifyEITSchedule(1: dvb_tables.EIT eit)
  oneway void requestConfiguration()
}
