#include <optional>
#include <string>

#include "bench/bare_dvbpsi.h"
#include "bench/no_saves.h"
#include "bench/sample_tables.h"
#include "bench/work.h"
#include "cfdb/conflict_free_db.h"
#include "store/table_stores.h"
#include "synth/output_data.h"

namespace tevra::bench {
namespace {

struct ServiceSize {
  int streams;
  int descriptors;
};

/** buildOutput against the tables of the run before, or against none. */
class BuildOutput : public Work {
 public:
  enum class Stored { kSame, kNothing };

  BuildOutput(ServiceSize size, Stored stored) : stored_(stored) {
    service_.inputSID = kServiceId;
    database_.setConflictFreePAT(service_.pat, samplePat());
    service_.sdt = sampleSdt();
    PMT ignored;
    database_.setConflictFreePMT(ignored, samplePmt(size.streams, size.descriptors));
    (void)database_.getOutputPMT(pmt_, kServiceId);
    request_ = sampleRequest();
    run();
  }

  void prepare() override {
    answer_ = {};
    if (stored_ == Stored::kNothing) {
      stores_.emplace(kMptsIndex);
    }
  }

  void run() override {
    const OutputServiceDescription& output = request_.outputs.at(kServiceId);
    const LastNodeSettings& lastNode = request_.lastNodeSettings.at(kServiceId).front();
    answer_ =
        OutputData(database_, *stores_).buildOutput(service_, pmt_, output, lastNode, {true, true});
  }

 private:
  static constexpr int32_t kMptsIndex = 0;

  const NoSaves noSaves_;
  TimeOffset timeOffset_;
  EITVersions eitVersions_{kMptsIndex};
  ConflictFreeDB database_{kMptsIndex, timeOffset_, eitVersions_};
  std::optional<TableStores> stores_{kMptsIndex};
  ServiceTables service_;
  PMT pmt_;
  SrvOutputRequest request_;
  SPTSConfiguration answer_;
  const Stored stored_;
};

class Bare : public Work {
 public:
  explicit Bare(ServiceSize size)
      : synthesis_(samplePmt(size.streams, size.descriptors), sampleSdt()) {
    run();
  }

  void prepare() override { synthesis_.forget(); }
  void run() override { synthesis_.run(); }

 private:
  BareSynthesis synthesis_;
};

void add(Works& works, const std::string& name, ServiceSize size) {
  using Stored = BuildOutput::Stored;
  works.push_back({name + "/floor", [size] { return std::make_unique<Bare>(size); }});
  works.push_back(
      {name + "/unchanged", [size] { return std::make_unique<BuildOutput>(size, Stored::kSame); }});
  works.push_back({name + "/changed",
                   [size] { return std::make_unique<BuildOutput>(size, Stored::kNothing); }});
}

}  // namespace

void addOutputWorks(Works& works) {
  add(works, "output/10x17", {10, 17});
  add(works, "output/20x80", {20, 80});
}

}  // namespace tevra::bench
