#include <random>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "records/dvbpsi.h"
#include "tests/tools/support/descriptor_text.h"
#include "tests/tools/support/table_makers.h"
#include "tools/descriptors/descriptor_fields.h"
#include "tools/tables/table_json.h"

namespace tevra::tools {
namespace {

using nlohmann::json;
using test::Bytes;
using test::descriptorText;

constexpr size_t kLongest = 255;

Bytes randomBytes(std::mt19937& random, size_t size, unsigned limit) {
  Bytes bytes(size);
  for (uint8_t& byte : bytes) {
    byte = static_cast<uint8_t>(random() % limit);
  }
  return bytes;
}

/** Each tag, also with the owners around that give private tags a meaning. */
void expectPrinted(int tag, const Bytes& payload) {
  const std::string text = descriptorText({{0x05, {'G', 'A', '9', '4'}},
                                           {0x05, {'C', 'U', 'E', 'I'}},
                                           {0x5F, {0, 0, 0, 0x28}},
                                           {tag, payload}});
  // Three lines for the owners; what is printed of the descriptor starts with its name and tag.
  size_t start = 0;
  for (int line = 0; line < 3; ++line) {
    start = text.find('\n', start) + 1;
  }
  ASSERT_NE(std::string::npos, text.find("_descriptor (0x", start)) << tag << " " << text;
  ASSERT_EQ('\n', text.back());
}

json descriptorJson(int tag, const Bytes& payload) {
  const Descriptor descriptor = test::descriptorRecord(tag, {payload.begin(), payload.end()});
  return json::parse(tableJson(tableFields(test::catRecord({descriptor})))).at("descriptors").at(0);
}

void expectJson(int tag, const Bytes& payload) {
  const json descriptor = descriptorJson(tag, payload);
  ASSERT_EQ(tag, descriptor.at("tag"));
  ASSERT_EQ(2 * payload.size(), descriptor.at("data").get<std::string>().size());
  ASSERT_FALSE(descriptor.contains("fields") && descriptor.contains("problem"));
}

TEST(MalformedDescriptors, OfEveryTagAndLengthArePrinted) {
  std::mt19937 random(1);
  for (int tag = 0; tag < 256; ++tag) {
    for (size_t size = 0; size <= kLongest; size += size < 24 ? 1 : 11) {
      for (const unsigned limit : {1U, 4U, 256U}) {
        const Bytes payload = randomBytes(random, size, limit);
        ASSERT_NO_FATAL_FAILURE(expectPrinted(tag, payload));
        ASSERT_NO_FATAL_FAILURE(expectJson(tag, payload));
      }
    }
  }
}

TEST(MalformedDescriptors, AreDumpedWithTheReason) {
  EXPECT_EQ(
      "ISO_639_language_descriptor (0x0A) shorter than its syntax demands, 5 bytes\n"
      "  65 6e 67 00 66  |eng.f|\n",
      descriptorText({{0x0A, {'e', 'n', 'g', 0, 'f'}}}));
  EXPECT_EQ(
      "service_descriptor (0x48) shorter than its syntax demands, 4 bytes\n"
      "  01 09 52 54  |..RT|\n",
      descriptorText({{0x48, {0x01, 9, 'R', 'T'}}}));
  EXPECT_EQ("CA_descriptor (0x09) shorter than its syntax demands, 0 bytes\n",
            descriptorText({{0x09, {}}}));
}

TEST(MalformedDescriptors, DumpsAlignTheirLastLine) {
  Bytes payload(18, 'x');
  payload[0] = 0x80;
  EXPECT_EQ(
      "mosaic_descriptor (0x51), 18 bytes\n"
      "  80 78 78 78 78 78 78 78 78 78 78 78 78 78 78 78  |.xxxxxxxxxxxxxxx|\n"
      "  78 78                                            |xx|\n",
      descriptorText({{0x51, payload}}));
}

/** A descriptor as libdvbpsi has it, for those of its decoders that can be trusted. */
DescriptorPtr toDvbpsi(int tag, Bytes& payload) {
  return DescriptorPtr(dvbpsi_NewDescriptor(static_cast<uint8_t>(tag),
                                            static_cast<uint8_t>(payload.size()), payload.data()));
}

TEST(DecodedDescriptors, AgreeWithLibdvbpsiOnConditionalAccess) {
  std::mt19937 random(2);
  for (size_t size = 4; size <= kLongest; ++size) {
    Bytes payload = randomBytes(random, size, 256);
    const DescriptorPtr descriptor = toDvbpsi(0x09, payload);
    const dvbpsi_ca_dr_t* decoded = dvbpsi_DecodeCADr(descriptor.get());
    ASSERT_NE(nullptr, decoded);
    const json fields = descriptorJson(0x09, payload).at("fields");
    EXPECT_EQ(decoded->i_ca_system_id, fields.at("caSystemId"));
    EXPECT_EQ(decoded->i_ca_pid, fields.at("caPid"));
    const size_t digits = size == 4 ? 0 : fields.at("privateData").get<std::string>().size();
    EXPECT_EQ(2U * decoded->i_private_length, digits);
  }
}

TEST(DecodedDescriptors, AgreeWithLibdvbpsiOnSubtitlesAndServices) {
  std::mt19937 random(3);
  for (size_t count = 1; count <= 20; ++count) {
    Bytes payload = randomBytes(random, 8 * count, 256);
    const DescriptorPtr descriptor = toDvbpsi(0x59, payload);
    const dvbpsi_subtitling_dr_t* decoded = dvbpsi_DecodeSubtitlingDr(descriptor.get());
    ASSERT_NE(nullptr, decoded);
    const json subtitles = descriptorJson(0x59, payload).at("fields").at("subtitles");
    ASSERT_EQ(decoded->i_subtitles_number, subtitles.size());
    for (size_t i = 0; i < count; ++i) {
      EXPECT_EQ(decoded->p_subtitle[i].i_subtitling_type, subtitles.at(i).at("subtitlingType"));
      EXPECT_EQ(decoded->p_subtitle[i].i_ancillary_page_id, subtitles.at(i).at("ancillaryPageId"));
    }
    payload.resize(3 * count);
    const DescriptorPtr list = toDvbpsi(0x41, payload);
    const dvbpsi_service_list_dr_t* services = dvbpsi_DecodeServiceListDr(list.get());
    ASSERT_NE(nullptr, services);
    const json entries = descriptorJson(0x41, payload).at("fields").at("services");
    ASSERT_EQ(services->i_service_count, entries.size());
    EXPECT_EQ(services->i_service[count - 1].i_service_id, entries.back().at("serviceId"));
    EXPECT_EQ(services->i_service[count - 1].i_service_type, entries.back().at("serviceType"));
  }
}

}  // namespace
}  // namespace tevra::tools
