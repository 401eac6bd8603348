// Differences between the sample's tables and changed copies of them, by chance but always the
// same ones.

#include <functional>
#include <random>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/temporary_file.h"
#include "tools/changes/table_changes.h"
#include "tools/listen/notification_json.h"
#include "tools/listen/notification_text.h"
#include "tools/si/table_demux.h"
#include "tools/stream/files.h"
#include "tools/stream/ts_packet_reader.h"
#include "tools/tables/table_json.h"

namespace tevra::tools {
namespace {

using Random = std::mt19937;

std::vector<SiTable> tablesOf(const std::string& path) {
  std::vector<SiTable> tables;
  InputFile file(path);
  TsPacketReader reader(file);
  TableDemux demux([&](const SiTable& table, size_t /*sections*/) { tables.push_back(table); });
  TsPacket packet;
  while (reader.next(packet)) {
    demux.push(packet);
  }
  return tables;
}

/** Changes a list in one of the ways in which lists change. */
template <class Element>
void shake(std::vector<Element>& list, Random& random,
           const std::function<void(Element& element)>& change) {
  if (list.empty()) {
    list.emplace_back();
    return;
  }
  const size_t place = random() % list.size();
  const auto at = list.begin() + static_cast<std::ptrdiff_t>(place);
  switch (random() % 5) {
    case 0:
      list.erase(at);
      break;
    case 1:
      list.insert(list.begin(), Element(*at));
      break;
    case 2:
      std::shuffle(list.begin(), list.end(), random);
      break;
    default:
      change(*at);
  }
}

void shakeDescriptor(Descriptor& descriptor, Random& random) {
  if (descriptor.data.empty() || random() % 8 == 0) {
    descriptor.data += static_cast<char>(random() & 0xFF);
    descriptor.tag = static_cast<int32_t>(random() & 0xFF);
  } else if (random() % 4 == 0) {
    descriptor.data.resize(random() % descriptor.data.size());
  } else {
    descriptor.data[random() % descriptor.data.size()] = static_cast<char>(random() & 0xFF);
  }
}

void shakeDescriptors(std::vector<Descriptor>& descriptors, Random& random) {
  shake<Descriptor>(descriptors, random,
                    [&](Descriptor& descriptor) { shakeDescriptor(descriptor, random); });
}

/** Changes one thing about a table. */
struct Shake {
  Random& random;

  void operator()(PAT& pat) const {
    shake<PATProgram>(pat.programs, random, [&](PATProgram& program) {
      program.pid = static_cast<int32_t>(random() & 0x1FFF);
    });
  }
  void operator()(CAT& cat) const { shakeDescriptors(cat.descriptors, random); }
  void operator()(TOT& tot) const {
    tot.utcTime = static_cast<int64_t>(random());
    shakeDescriptors(tot.descriptors, random);
  }
  void operator()(PMT& pmt) const {
    if (random() % 3 == 0) {
      shakeDescriptors(pmt.descriptors, random);
      return;
    }
    shake<PMTES>(pmt.esList, random, [&](PMTES& stream) {
      if (random() % 3 == 0) {
        stream.pid = static_cast<int32_t>(random() & 0x1FFF);
      }
      shakeDescriptors(stream.descriptors, random);
    });
  }
  void operator()(SDT& sdt) const {
    shake<SDTService>(sdt.services, random, [&](SDTService& service) {
      service.runningStatus = static_cast<int32_t>(random() & 7);
      shakeDescriptors(service.descriptors, random);
    });
  }
  void operator()(NIT& nit) const { shakeDescriptors(nit.descriptors, random); }
  void operator()(BAT& bat) const {
    shake<BATTS>(bat.transportStreams, random,
                 [&](BATTS& stream) { shakeDescriptors(stream.descriptors, random); });
  }
  void operator()(EIT& eit) const {
    const auto shift = static_cast<int64_t>(random() % 4);
    for (EITEvent& event : eit.events) {
      event.startTime += shift;
    }
    shake<EITEvent>(eit.events, random,
                    [&](EITEvent& event) { shakeDescriptors(event.descriptors, random); });
  }
};

/** JSON and text are well-formed whatever the table. */
void expectPrintable(const SiTable& table, const TableNews& news) {
  const Notification notification = {{}, NotifiedTable{TableKind::kEitSchedule, table}};
  const std::string json = notificationJson(notification, news, Zone::kUtc);
  EXPECT_TRUE(nlohmann::json::accept(json)) << json;
  NotificationTextOptions options;
  options.all = true;
  const std::string text = notificationText(notification, news, options);
  for (const char c : text) {
    ASSERT_TRUE(c == '\n' || static_cast<unsigned char>(c) >= 0x20) << text;
  }
}

TEST(TableChangesOfNoise, AreThereExactlyWhenTheTablesReadDifferently) {
  const std::vector<SiTable> tables = tablesOf(test::sample());
  ASSERT_GE(tables.size(), 20U);
  size_t changed = 0;
  for (unsigned seed = 0; seed < 3000; ++seed) {
    Random random(seed);
    const SiTable& before = tables[seed % tables.size()];
    SiTable after = before;
    for (unsigned i = 0; i <= seed % 3; ++i) {
      std::visit(Shake{random}, after);
    }
    const TableNews news = {before, tableChanges(before, after)};
    const bool readDifferently = tableJson(tableFields(before)) != tableJson(tableFields(after));
    ASSERT_EQ(readDifferently, !news.changes.empty()) << "seed " << seed;
    expectPrintable(after, news);
    changed += readDifferently ? 1 : 0;
  }
  EXPECT_GT(changed, 2000U) << "the test changes something";
}

}  // namespace
}  // namespace tevra::tools
