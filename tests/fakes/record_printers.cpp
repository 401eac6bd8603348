#include <ostream>
#include <string>

#include <thrift/protocol/TJSONProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "in_module_types.h"

// The records come without stream operators, which are declared all the same; a failed comparison
// in a test prints the record's JSON.

namespace {

template <class Record>
std::ostream& printJson(std::ostream& out, const Record& record) {
  auto buffer = std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  apache::thrift::protocol::TJSONProtocol protocol(buffer);
  record.write(&protocol);
  return out << buffer->getBufferAsString();
}

}  // namespace

#define TORNEL_PRINTER(space, Record)                                 \
  namespace tevra::thrift::space {                                    \
  std::ostream& operator<<(std::ostream& out, const Record& record) { \
    return printJson(out, record);                                    \
  }                                                                   \
  }

TORNEL_PRINTER(dvb_tables, Descriptor)
TORNEL_PRINTER(dvb_tables, PATProgram)
TORNEL_PRINTER(dvb_tables, PAT)
TORNEL_PRINTER(dvb_tables, PMTES)
TORNEL_PRINTER(dvb_tables, PMT)
TORNEL_PRINTER(dvb_tables, SDTService)
TORNEL_PRINTER(dvb_tables, SDT)
TORNEL_PRINTER(dvb_tables, CAT)
TORNEL_PRINTER(dvb_tables, NITTS)
TORNEL_PRINTER(dvb_tables, NIT)
TORNEL_PRINTER(dvb_tables, BATTS)
TORNEL_PRINTER(dvb_tables, BAT)
TORNEL_PRINTER(dvb_tables, TOT)
TORNEL_PRINTER(dvb_tables, EITEvent)
TORNEL_PRINTER(dvb_tables, EIT)
TORNEL_PRINTER(dvb_tables, DVBOutputTables)
TORNEL_PRINTER(common_fpga, PIDItem)
TORNEL_PRINTER(common_fpga, OutputTables)
TORNEL_PRINTER(common_fpga, SPTSConfiguration)
TORNEL_PRINTER(spts, AudioLanguage)
TORNEL_PRINTER(spts, LastNodeSettings)
TORNEL_PRINTER(in_module, SIService)
TORNEL_PRINTER(in_module, TableStore)
TORNEL_PRINTER(in_module, TableStoreFile)
TORNEL_PRINTER(in_module, EITTableVersionStore)
TORNEL_PRINTER(in_module, EITTableVersionStoreFile)
TORNEL_PRINTER(in_module, PIDRemap)
TORNEL_PRINTER(in_module, OutputServiceDescription)
TORNEL_PRINTER(in_module, SrvOutputRequest)
