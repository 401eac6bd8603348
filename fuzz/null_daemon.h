#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

#include "im_SIControlSrv.h"

namespace tevra::fuzz {

/** A daemon that says yes to everything and counts the calls. */
class NullDaemon : public thrift::in_module::im_SIControlSrvIf {
 public:
  [[nodiscard]] size_t calls() const { return calls_; }

  void getSIData(thrift::in_module::SIService& /*service*/) override { ++calls_; }
  bool SISetData(const thrift::in_module::SIService& /*data*/) override { return count(); }
  bool sendCmd(int32_t /*command*/) override { return count(); }
  void setPAT(const thrift::dvb_tables::PAT& /*pat*/) override { ++calls_; }
  void setSDT(const thrift::dvb_tables::SDT& /*sdt*/) override { ++calls_; }
  void setPMT(const thrift::dvb_tables::PMT& /*pmt*/) override { ++calls_; }
  bool setNIT(const thrift::dvb_tables::NIT& /*nit*/) override { return count(); }
  void setTOT(const thrift::dvb_tables::TOT& /*tot*/) override { ++calls_; }
  bool setBAT(const thrift::dvb_tables::BAT& /*bat*/) override { return count(); }
  void setCAT(const thrift::dvb_tables::CAT& /*cat*/) override { ++calls_; }
  void setEITPresentFollowing(const thrift::in_module::EITMap& /*eits*/) override { ++calls_; }
  void setEITSchedule(const thrift::in_module::EITMap& /*eits*/) override { ++calls_; }
  void getSrvOutputData(std::map<int32_t, thrift::common_fpga::SPTSConfiguration>& /*answer*/,
                        const thrift::in_module::SrvOutputRequest& /*request*/) override {
    ++calls_;
  }

 private:
  bool count() {
    ++calls_;
    return true;
  }

  size_t calls_ = 0;
};

}  // namespace tevra::fuzz
