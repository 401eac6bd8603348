#include "tools/si/section_gatherer.h"

#include <cstring>
#include <new>

#include "records/dvbpsi.h"

namespace tevra::tools {
namespace {

/** The longest section of any table (EN 300 468, 5.2.4). */
constexpr int kLongestSection = 4096;

/**
 * Whether libdvbpsi can be given the packet: its payload, and the pointer_field if there is one,
 * lie inside.
 */
bool isSafe(const TsPacket& packet) {
  const size_t offset = packet.payloadOffset();
  if (packet.transportError() || packet.scrambled() || offset >= kTsPacketSize) {
    return false;
  }
  return !packet.unitStart() || offset + 1 + packet.data()[offset] < kTsPacketSize;
}

}  // namespace

/** libdvbpsi's own packet-to-section decoder, with a callback that only chains the sections up. */
class SectionGatherer::Decoder {
 public:
  Decoder() : handle_(dvbpsi_new(&Decoder::onMessage, DVBPSI_MSG_ERROR)) {
    if (handle_ == nullptr) {
      throw std::bad_alloc();
    }
    handle_->p_sys = this;
    handle_->p_decoder = static_cast<dvbpsi_decoder_t*>(dvbpsi_decoder_new(
        &Decoder::onSection, kLongestSection, /*b_discontinuity=*/false, sizeof(dvbpsi_decoder_t)));
    if (handle_->p_decoder == nullptr) {
      throw std::bad_alloc();
    }
  }

  ~Decoder() {
    dvbpsi_decoder_delete(handle_->p_decoder);
    handle_->p_decoder = nullptr;
  }

  Decoder(const Decoder&) = delete;
  Decoder& operator=(const Decoder&) = delete;

  std::vector<Section> push(TsPacket packet) {
    const int last = handle_->p_decoder->i_continuity_counter;
    if (packet.continuityCounter() == last) {
      return {};  // a repeated packet (ISO/IEC 13818-1, 2.4.3.3)
    }
    if (packet.continuityCounter() == ((last + 1) & 0x0F)) {
      dropIfCutShort(packet);
    }
    // What it returns is known better from the sections and the messages.
    (void)dvbpsi_packet_push(handle_.get(), packet.data());
    const SectionsPtr chain = std::move(chain_);
    last_ = nullptr;
    return parseChain(chain.get());
  }

  uint64_t truncatedSections = 0;
  uint64_t crcErrors = 0;
  uint64_t malformedSections = 0;
  uint64_t discontinuities = 0;

 private:
  static Decoder& self(dvbpsi_t* handle) { return *static_cast<Decoder*>(handle->p_sys); }

  // Runs inside libdvbpsi: must not throw.
  static void onSection(dvbpsi_t* handle, dvbpsi_psi_section_t* section) {
    Decoder& decoder = self(handle);
    section->p_next = nullptr;
    if (decoder.last_ == nullptr) {
      decoder.chain_.reset(section);
    } else {
      decoder.last_->p_next = section;
    }
    decoder.last_ = section;
  }

  static void onMessage(dvbpsi_t* handle, const dvbpsi_msg_level_t /*level*/, const char* message) {
    if (std::strstr(message, "CRC_32") != nullptr) {
      ++self(handle).crcErrors;
    } else if (std::strstr(message, "discontinuity") != nullptr) {
      ++self(handle).discontinuities;
    }
  }

  /**
   * Drops the section in work when the next one starts before its end, which libdvbpsi does not
   * see: it would go on into the next one and lose both.
   */
  void dropIfCutShort(const TsPacket& packet) {
    dvbpsi_decoder_t& decoder = *handle_->p_decoder;
    if (packet.unitStart() && decoder.p_current_section != nullptr &&
        decoder.i_need > packet.data()[packet.payloadOffset()]) {
      dvbpsi_DeletePSISections(decoder.p_current_section);
      decoder.p_current_section = nullptr;
      ++truncatedSections;
    }
  }

  std::vector<Section> parseChain(const dvbpsi_psi_section_t* chain) {
    std::vector<Section> sections;
    for (const auto* node = chain; node != nullptr; node = node->p_next) {
      if (!Section::isHandled(node->i_table_id)) {
        continue;
      }
      if (auto section = Section::parse(node->p_data, size_t{3} + node->i_length)) {
        sections.push_back(std::move(*section));
      } else {
        ++malformedSections;
      }
    }
    return sections;
  }

  DvbpsiHandle handle_;
  SectionsPtr chain_;
  dvbpsi_psi_section_t* last_ = nullptr;
};

SectionGatherer::SectionGatherer() : decoder_(std::make_unique<Decoder>()) {}

SectionGatherer::~SectionGatherer() = default;

std::vector<Section> SectionGatherer::push(const TsPacket& packet) {
  return isSafe(packet) ? decoder_->push(packet) : std::vector<Section>{};
}

uint64_t SectionGatherer::truncatedSections() const {
  return decoder_->truncatedSections;
}

uint64_t SectionGatherer::crcErrors() const {
  return decoder_->crcErrors;
}

uint64_t SectionGatherer::malformedSections() const {
  return decoder_->malformedSections;
}

uint64_t SectionGatherer::discontinuities() const {
  return decoder_->discontinuities;
}

}  // namespace tevra::tools
