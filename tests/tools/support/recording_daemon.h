#pragma once

#include <functional>
#include <map>
#include <string>
#include <vector>

#include "im_SIControlSrv.h"
#include "tools/si/si_table.h"

namespace tevra::tools::test {

/** A daemon that records what it is told and answers what it is told to. */
class RecordingDaemon : public thrift::in_module::im_SIControlSrvIf {
 public:
  /** Method and table of every call in order: "setPMT PMT 101 v4". */
  std::vector<std::string> calls;
  /** The maps of the EIT calls, as they came. */
  std::vector<EITMap> eitMaps;
  std::vector<SrvOutputRequest> requests;

  std::map<int32_t, SPTSConfiguration> answer;
  /** In the place of `answer` where it is set. */
  std::function<std::map<int32_t, SPTSConfiguration>(const SrvOutputRequest& request)> answerTo;
  bool takesNit = true;
  bool takesBat = true;
  std::function<void()> beforeCall = [] {};  // may throw or wait

  void getSIData(SIService& /*service*/) override { call("getSIData"); }
  bool SISetData(const SIService& /*data*/) override { return call("SISetData"); }
  bool sendCmd(int32_t command) override { return call("sendCmd " + std::to_string(command)); }
  void setPAT(const PAT& pat) override { table("setPAT", pat); }
  void setSDT(const SDT& sdt) override { table("setSDT", sdt); }
  void setPMT(const PMT& pmt) override { table("setPMT", pmt); }
  bool setNIT(const NIT& nit) override { return table("setNIT", nit) && takesNit; }
  void setTOT(const TOT& tot) override { table("setTOT", tot); }
  bool setBAT(const BAT& bat) override { return table("setBAT", bat) && takesBat; }
  void setCAT(const CAT& cat) override { table("setCAT", cat); }
  void setEITPresentFollowing(const EITMap& eits) override {
    eitCall("setEITPresentFollowing", eits);
  }
  void setEITSchedule(const EITMap& eits) override { eitCall("setEITSchedule", eits); }
  void getSrvOutputData(std::map<int32_t, SPTSConfiguration>& configurations,
                        const SrvOutputRequest& request) override;

 private:
  bool call(const std::string& text);
  bool table(const std::string& method, const SiTable& table);
  void eitCall(const std::string& method, const EITMap& eits);
};

}  // namespace tevra::tools::test
