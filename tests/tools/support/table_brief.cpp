#include "tests/tools/support/table_brief.h"

#include "tools/text/words.h"

namespace tevra::tools::test {
namespace {

struct Describe {
  static std::string text(const std::string& kind, int id, int version) {
    return kind + " " + std::to_string(id) + " v" + std::to_string(version);
  }

  std::string operator()(const PAT& pat) const {
    return text("PAT", pat.transportStreamId, pat.version);
  }
  std::string operator()(const CAT& cat) const { return "CAT v" + std::to_string(cat.version); }
  std::string operator()(const PMT& pmt) const {
    return text("PMT", pmt.programNumber, pmt.version);
  }
  std::string operator()(const SDT& sdt) const {
    return text("SDT", sdt.transportStreamId, sdt.version);
  }
  std::string operator()(const NIT& nit) const { return text("NIT", nit.networkId, nit.version); }
  std::string operator()(const BAT& bat) const { return text("BAT", bat.bouquetId, bat.version); }
  std::string operator()(const TOT& tot) const { return "TOT " + std::to_string(tot.utcTime); }
  std::string operator()(const EIT& eit) const {
    return "EIT " + std::to_string(eit.serviceId) + "/" + hex(eit.tableId, 2) + " v" +
           std::to_string(eit.version);
  }
};

}  // namespace

std::string brief(const SiTable& table) {
  return std::visit(Describe{}, table);
}

}  // namespace tevra::tools::test
