// Makes the inputs that fuzzing starts from: make_seeds DIRECTORY STREAM...
//
// DIRECTORY gets a folder per target. What a stream holds is sent as calls, stored in files and cut
// into the packets of its tables.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "fuzz/call_recorder.h"
#include "fuzz/isolation.h"
#include "fuzz/owned_handler.h"
#include "tools/feed/stream_feed.h"
#include "tools/feed/stream_inventory.h"
#include "tools/stream/ts_packet_reader.h"

namespace tevra::fuzz {
namespace {

namespace fs = std::filesystem;

/** Larger ones would only slow the fuzzer down. */
constexpr size_t kMaxSeed = 16 * 1024;

class SeedDirectory {
 public:
  SeedDirectory(const fs::path& parent, const std::string& target) : path_(parent / target) {
    fs::create_directories(path_);
  }

  void add(const std::string& content) {
    if (content.size() <= kMaxSeed) {
      std::ofstream(path_ / ("seed" + std::to_string(count_++)), std::ios::binary) << content;
    }
  }

 private:
  fs::path path_;
  size_t count_ = 0;
};

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

SrvOutputRequest requestFor(int service) {
  SrvOutputRequest request;
  request.inputSID = service;
  OutputServiceDescription& output = request.outputs[0];
  output.globalSID = 7;
  output.outputSID = 1201;
  output.serviceName = "Uno HD";
  output.transportStreamId = 1;
  output.originalNetworkId = 0xFF01;
  LastNodeSettings& lastNode = request.lastNodeSettings[7].emplace_back();
  lastNode.globalSID = 7;
  lastNode.uniqueSID = 70;
  lastNode.audioFilter = 1;
  lastNode.audioLanguages.emplace_back().language = "eng";
  return request;
}

/** Every call alone, and tables with a request behind them as one client would send them. */
void addCalls(SeedDirectory& directory, const std::string& stream) {
  CallRecorder recorder;
  const auto feed = tools::StreamFeed::feed(*tools::openSource(stream), stream, recorder);
  SIService service;
  recorder.getSIData(service);
  (void)recorder.SISetData(service);
  (void)recorder.sendCmd(0);
  std::map<int32_t, SPTSConfiguration> answer;
  recorder.getSrvOutputData(answer, requestFor(feed.inventory().firstServiceWithPmt().value_or(1)));
  std::string together;
  for (const std::string& call : recorder.calls()) {
    directory.add(call);
    together += call.size() < kMaxSeed / 8 ? call : "";
  }
  directory.add(together.substr(0, kMaxSeed));
}

/** The three files as they are after all of the stream's tables and a request. */
void addFiles(SeedDirectory& directory, const std::string& stream) {
  emptyConfigurationRoot();
  OwnedHandler handler;
  const auto feed = tools::StreamFeed::feed(*tools::openSource(stream), stream, handler);
  for (const tools::ServiceSummary& service : feed.inventory().services()) {
    std::map<int32_t, SPTSConfiguration> answer;
    handler.getSrvOutputData(answer, requestFor(service.serviceId));
  }
  const fs::path root = configurationRoot();
  directory.add('\0' + contentOf(root / "PIDRemap0"));
  directory.add('\1' + contentOf(root / "Tornel/TableStoreFile0"));
  directory.add('\2' + contentOf(root / "Tornel/EITTableVersionStoreFile0"));
}

/** Packets of the tables, and of the streams between them, behind the byte for plain packets. */
void addPackets(SeedDirectory& directory, const std::string& stream) {
  std::ifstream file(stream, std::ios::binary);
  tools::TsPacketReader reader([&](uint8_t* buffer, size_t size) {
    file.read(reinterpret_cast<char*>(buffer), static_cast<std::streamsize>(size));
    return static_cast<size_t>(file.gcount());
  });
  std::string tables(1, '\0');
  std::string all(1, '\0');
  tools::TsPacket packet;
  while (reader.next(packet) && tables.size() + tools::kTsPacketSize <= kMaxSeed) {
    const std::string bytes(reinterpret_cast<const char*>(packet.data()), tools::kTsPacketSize);
    tables += packet.pid() < 0x20 || packet.unitStart() ? bytes : "";
    all += all.size() + bytes.size() <= kMaxSeed ? bytes : "";
  }
  directory.add(tables);
  directory.add(all);
}

/** For targets that turn any bytes into records. */
void addDecisions(SeedDirectory directory) {
  std::minstd_rand random;
  for (size_t size = 16; size <= 4096; size *= 2) {
    std::string bytes(size, '\0');
    std::generate(bytes.begin(), bytes.end(), [&] { return static_cast<char>(random() >> 8); });
    directory.add(bytes);
  }
}

void makeSeeds(const fs::path& parent, const std::vector<std::string>& streams) {
  SeedDirectory calls(parent, "control_call");
  SeedDirectory files(parent, "store_files");
  SeedDirectory packets(parent, "stream_reader");
  for (const std::string& stream : streams) {
    addCalls(calls, stream);
    addFiles(files, stream);
    addPackets(packets, stream);
  }
  addDecisions({parent, "call_sequence"});
  addDecisions({parent, "descriptors"});
  addDecisions({parent, "synthesis"});
}

}  // namespace
}  // namespace tevra::fuzz

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: make_seeds DIRECTORY STREAM...\n");
    return 2;
  }
  try {
    tevra::fuzz::isolate();
    tevra::fuzz::makeSeeds(argv[1], {argv + 2, argv + argc});
  } catch (const std::exception& exception) {
    std::fprintf(stderr, "make_seeds: %s\n", exception.what());
    return EXIT_FAILURE;
  }
  return EXIT_SUCCESS;
}
