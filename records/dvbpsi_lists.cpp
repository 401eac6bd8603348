#include "records/dvbpsi_lists.h"

#include <cstdlib>

#include "platform/module_utils.h"

namespace tevra {
namespace {

/** Makes `node`, just appended through the window `tail`, the window's head and the table's first
 * if needed. */
template <class Node>
void advance(Node*& first, Node*& tail, Node* node) {
  if (first == nullptr) {
    first = node;
  }
  tail = node;
}

}  // namespace

// The appenders below call libdvbpsi's add function on a window, a table of one node: the list's
// last.

void ProgramAppender::add(uint16_t number, uint16_t pid) {
  if (pid == 0) {
    return;
  }
  advance(pat_.p_first_program, tail_.p_first_program,
          allocated(dvbpsi_pat_program_add(&tail_, number, pid)));
}

dvbpsi_pmt_es_t& StreamAppender::add(uint8_t type, uint16_t pid) {
  dvbpsi_pmt_es_t* stream = allocated(dvbpsi_pmt_es_add(&tail_, type, pid));
  advance(pmt_.p_first_es, tail_.p_first_es, stream);
  return *stream;
}

dvbpsi_sdt_service_t& ServiceAppender::add(const SDTService& source) {
  dvbpsi_sdt_service_t* service = allocated(dvbpsi_sdt_service_add(
      &tail_, static_cast<uint16_t>(source.serviceId), source.eitSchedule,
      source.eitPresentFollowing, static_cast<uint8_t>(source.runningStatus), source.freeCA));
  advance(sdt_.p_first_service, tail_.p_first_service, service);
  return *service;
}

void logLeftOut(const Descriptor& descriptor) {
  assert(!fitsSection(descriptor));
  log_function(kLogWarning, kNoTag, "Descriptor [0x%02x] of [%d] bytes left out",
               static_cast<unsigned>(descriptor.tag), static_cast<int>(descriptor.data.size()));
}

DecodableDescriptor::DecodableDescriptor(const Descriptor& record) {
  assert(fitsSection(record));
  descriptor_.i_tag = static_cast<uint8_t>(record.tag);
  descriptor_.i_length = static_cast<uint8_t>(record.data.size());
  descriptor_.p_data = bytesOf(record.data);
}

DecodableDescriptor::~DecodableDescriptor() {
  std::free(descriptor_.p_decoded);  // as dvbpsi_DeleteDescriptors does
}

void toDvbpsi(const std::vector<Descriptor>& descriptors, dvbpsi_descriptor_t*& first) {
  assert(first == nullptr);
  dvbpsi_descriptor_t** end = &first;
  for (const Descriptor& descriptor : descriptors) {
    if (!fitsSection(descriptor)) {
      logLeftOut(descriptor);
      continue;
    }
    *end = allocated(dvbpsi_NewDescriptor(static_cast<uint8_t>(descriptor.tag),
                                          static_cast<uint8_t>(descriptor.data.size()),
                                          bytesOf(descriptor.data)));
    end = &(*end)->p_next;
  }
}

std::vector<Descriptor> descriptorsFromDvbpsi(const dvbpsi_descriptor_t* first) {
  std::vector<Descriptor> descriptors;
  for (const dvbpsi_descriptor_t* node = first; node != nullptr; node = node->p_next) {
    Descriptor& descriptor = descriptors.emplace_back();
    descriptor.tag = node->i_tag;
    descriptor.data.assign(reinterpret_cast<const char*>(node->p_data), node->i_length);
  }
  return descriptors;
}

}  // namespace tevra
