// Calls as a client's library would make them, in any order and with any content, and then the
// request for an output.

#include "fuzz/byte_source.h"
#include "fuzz/check.h"
#include "fuzz/isolation.h"
#include "fuzz/owned_handler.h"
#include "fuzz/record_source.h"
#include "fuzz/target.h"
#include "synth/output_data.h"

namespace tevra::fuzz {
namespace {

constexpr size_t kPacketSize = 188;
constexpr size_t kMaxCalls = 40;

void checkPackets(const std::vector<std::string>& packets) {
  TORNEL_FUZZ_CHECK(!packets.empty());
  for (const std::string& packet : packets) {
    TORNEL_FUZZ_CHECK(packet.size() == kPacketSize && packet[0] == '\x47');
  }
}

/** A repeated request gets the same answer, unless several outputs take turns with one entry. */
void checkRepeated(SIControlSrvHandler& handler, const SrvOutputRequest& request,
                   const OutputConfigurations& answer) {
  OutputConfigurations again;
  handler.getSrvOutputData(again, request);
  TORNEL_FUZZ_CHECK(answer.size() == again.size());
  TORNEL_FUZZ_CHECK(answer.size() != 1 || request.outputs.size() != 1 || answer == again);
}

void requestOutput(SIControlSrvHandler& handler, const SrvOutputRequest& request) {
  OutputConfigurations answer;
  handler.getSrvOutputData(answer, request);
  for (const auto& [globalSID, configuration] : answer) {
    checkPackets(configuration.outputTables.patPackets);
    checkPackets(configuration.outputTables.sdtPackets);
    checkPackets(configuration.outputTables.pmtPackets);
    TORNEL_FUZZ_CHECK(!configuration.pidItems.empty());
  }
  checkRepeated(handler, request, answer);
}

void makeCall(SIControlSrvHandler& handler, ByteSource& source) {
  SIService data;
  switch (source.choice(13)) {
    case 0:
      return handler.setPAT(makePat(source));
    case 1:
      return handler.setPMT(makePmt(source));
    case 2:
      return handler.setSDT(makeSdt(source));
    case 3:
      return handler.setCAT(makeCat(source));
    case 4:
      return handler.setTOT(makeTot(source));
    case 5:
      return handler.setEITPresentFollowing(makeEits(source));
    case 6:
      return handler.setEITSchedule(makeEits(source));
    case 7:
      return requestOutput(handler, makeRequest(source));
    case 8:
      TORNEL_FUZZ_CHECK(handler.setNIT(makeNit(source)));
      return;
    case 9:
      TORNEL_FUZZ_CHECK(handler.setBAT(makeBat(source)));
      return;
    case 10:
      TORNEL_FUZZ_CHECK(handler.sendCmd(source.number()));
      return;
    case 11:
      data.name = source.text(300);
      TORNEL_FUZZ_CHECK(handler.SISetData(data));
      return;
    default:
      return handler.getSIData(data);
  }
}

}  // namespace
}  // namespace tevra::fuzz

int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  using namespace tevra::fuzz;  // NOLINT(google-build-using-namespace): the target itself
  emptyConfigurationRoot();
  OwnedHandler handler;
  ByteSource source(bytes, size);
  for (size_t calls = 0; calls < kMaxCalls && !source.empty(); ++calls) {
    makeCall(handler, source);
  }
  requestOutput(handler, makeRequest(source));
  return 0;
}
