#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <thrift/protocol/TBinaryProtocol.h>
#include <thrift/transport/TBufferTransports.h>

#include "im_SIControlSrv.h"
#include "records/records.h"

namespace tevra::fuzz {

/** Keeps every call as the bytes that a client would send, frame length included. */
class CallRecorder : public thrift::in_module::im_SIControlSrvIf {
 public:
  [[nodiscard]] const std::vector<std::string>& calls() const { return calls_; }

  void getSIData(SIService& /*service*/) override { client_.send_getSIData(), keep(); }
  bool SISetData(const SIService& data) override { return client_.send_SISetData(data), keep(); }
  bool sendCmd(int32_t command) override { return client_.send_sendCmd(command), keep(); }
  void setPAT(const PAT& pat) override { client_.send_setPAT(pat), keep(); }
  void setSDT(const SDT& sdt) override { client_.send_setSDT(sdt), keep(); }
  void setPMT(const PMT& pmt) override { client_.send_setPMT(pmt), keep(); }
  bool setNIT(const NIT& nit) override { return client_.send_setNIT(nit), keep(); }
  void setTOT(const TOT& tot) override { client_.send_setTOT(tot), keep(); }
  bool setBAT(const BAT& bat) override { return client_.send_setBAT(bat), keep(); }
  void setCAT(const CAT& cat) override { client_.send_setCAT(cat), keep(); }
  void setEITPresentFollowing(const EITMap& eits) override {
    client_.send_setEITPresentFollowing(eits), keep();
  }
  void setEITSchedule(const EITMap& eits) override { client_.send_setEITSchedule(eits), keep(); }
  void getSrvOutputData(std::map<int32_t, SPTSConfiguration>& /*answer*/,
                        const SrvOutputRequest& request) override {
    client_.send_getSrvOutputData(request), keep();
  }

 private:
  bool keep() {
    calls_.push_back(sent_->getBufferAsString());
    sent_->resetBuffer();
    return true;
  }

  std::vector<std::string> calls_;
  std::shared_ptr<apache::thrift::transport::TMemoryBuffer> sent_ =
      std::make_shared<apache::thrift::transport::TMemoryBuffer>();
  thrift::in_module::im_SIControlSrvClient client_{
      std::make_shared<apache::thrift::protocol::TBinaryProtocol>(
          std::make_shared<apache::thrift::transport::TFramedTransport>(sent_))};
};

}  // namespace tevra::fuzz
