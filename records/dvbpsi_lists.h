#pragma once

#include <cassert>
#include <string>
#include <vector>

#include "records/dvbpsi.h"
#include "records/records.h"

/**
 * @file
 * Appending to libdvbpsi's singly linked lists in constant time: its own add functions walk from
 * the head, which takes seconds for the largest tables. Nodes come from libdvbpsi and belong to the
 * table.
 *
 * An appender must not outlive its table, and nothing else may append to the list meanwhile. All of
 * them raise std::bad_alloc when libdvbpsi cannot allocate.
 */
namespace tevra {

/** Appends programmes to an empty PAT. */
class ProgramAppender {
 public:
  /** `pat` has no programme yet. */
  explicit ProgramAppender(dvbpsi_pat_t& pat) : pat_(pat) {
    assert(pat.p_first_program == nullptr);
  }

  /** Adds nothing for PID 0, which libdvbpsi refuses. */
  void add(uint16_t number, uint16_t pid);

 private:
  dvbpsi_pat_t& pat_;
  dvbpsi_pat_t tail_{};
};

/** Appends elementary streams to a PMT that has none. */
class StreamAppender {
 public:
  /** `pmt` has no stream yet. */
  explicit StreamAppender(dvbpsi_pmt_t& pmt) : pmt_(pmt) { assert(pmt.p_first_es == nullptr); }

  /** The new stream, without descriptors, as part of the table. */
  dvbpsi_pmt_es_t& add(uint8_t type, uint16_t pid);

 private:
  dvbpsi_pmt_t& pmt_;
  dvbpsi_pmt_t tail_{};
};

/** Appends services to an empty SDT. */
class ServiceAppender {
 public:
  /** `sdt` has no service yet. */
  explicit ServiceAppender(dvbpsi_sdt_t& sdt) : sdt_(sdt) {
    assert(sdt.p_first_service == nullptr);
  }

  /** The new service as part of the table; `source` gives everything but the descriptors. */
  dvbpsi_sdt_service_t& add(const SDTService& source);

 private:
  dvbpsi_sdt_t& sdt_;
  dvbpsi_sdt_t tail_{};
};

/** A descriptor's payload has an 8-bit length (ISO/IEC 13818-1, 2.6.1). */
inline constexpr size_t kMaxDescriptorPayload = 255;

/** `text` as libdvbpsi takes it: without const, though it only reads the bytes. */
inline uint8_t* bytesOf(const std::string& text) {
  return reinterpret_cast<uint8_t*>(const_cast<char*>(text.data()));
}

/** Whether a section can hold the descriptor. */
[[nodiscard]] inline bool fitsSection(const Descriptor& descriptor) {
  return descriptor.data.size() <= kMaxDescriptorPayload;
}

/** The level-4 line of a descriptor that does not fit a section, where it is left out. */
void logLeftOut(const Descriptor& descriptor);

/**
 * A record's descriptor for libdvbpsi's decoders, which only read the payload: it is not copied.
 * Owns what they decode. The record must fit a section and outlive this.
 */
class DecodableDescriptor {
 public:
  /** Only points to the payload. */
  explicit DecodableDescriptor(const Descriptor& record);
  ~DecodableDescriptor();
  DecodableDescriptor(const DecodableDescriptor&) = delete;
  DecodableDescriptor& operator=(const DecodableDescriptor&) = delete;

  /** What a decoder takes; what it returns lives as long as this. */
  [[nodiscard]] dvbpsi_descriptor_t* get() { return &descriptor_; }

 private:
  dvbpsi_descriptor_t descriptor_{};
};

/**
 * Fills the empty loop at `first`, the table's own pointer to it, in order. A descriptor whose
 * payload exceeds 255 bytes is left out with a level-4 line.
 */
void toDvbpsi(const std::vector<Descriptor>& descriptors, dvbpsi_descriptor_t*& first);

/** The loop that starts at `first`, which may be null, as records. */
[[nodiscard]] std::vector<Descriptor> descriptorsFromDvbpsi(const dvbpsi_descriptor_t* first);

}  // namespace tevra
