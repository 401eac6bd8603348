#pragma once

#include "common_fpga_types.h"
#include "dvb_tables_types.h"
#include "in_module_types.h"
#include "spts_types.h"

/**
 * @file
 * The records in which tables travel and are stored, generated from idl/.
 *
 * Value semantics: copies are deep, nothing is shared. Integers start at 0, everything else empty.
 * `__isset` holds one flag per member; code of this program sets members and leaves the flags as
 * they are. operator== compares the members and ignores the flags.
 */
namespace tevra {

using thrift::dvb_tables::BAT;
using thrift::dvb_tables::BATTS;
using thrift::dvb_tables::CAT;
using thrift::dvb_tables::Descriptor;
using thrift::dvb_tables::DVBOutputTables;
using thrift::dvb_tables::EIT;
using thrift::dvb_tables::EITEvent;
using thrift::dvb_tables::MGT;
using thrift::dvb_tables::MGTTBL;
using thrift::dvb_tables::NIT;
using thrift::dvb_tables::NITTS;
using thrift::dvb_tables::PAT;
using thrift::dvb_tables::PATProgram;
using thrift::dvb_tables::PMT;
using thrift::dvb_tables::PMTES;
using thrift::dvb_tables::SDT;
using thrift::dvb_tables::SDTService;
using thrift::dvb_tables::TOT;
using thrift::dvb_tables::VCT;
using thrift::dvb_tables::VCTChannel;

using thrift::common_fpga::OutputTables;
using thrift::common_fpga::PIDItem;
using thrift::common_fpga::SPTSConfiguration;

using thrift::spts::AudioLanguage;
using thrift::spts::LastNodeSettings;

/** Service id, then EIT table id. The keys are the sender's; nothing derives them from the EIT
 * inside. */
using thrift::in_module::EITMap;
using thrift::in_module::EITTableVersionStore;
using thrift::in_module::EITTableVersionStoreFile;
using thrift::in_module::OutputServiceDescription;
using thrift::in_module::PIDRemap;
using thrift::in_module::SIService;
using thrift::in_module::SrvOutputRequest;
using thrift::in_module::TableStore;
using thrift::in_module::TableStoreFile;

}  // namespace tevra
