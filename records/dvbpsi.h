#pragma once

// libdvbpsi's headers neither include what they need nor guard against a second inclusion: include
// this one instead, and no other. The order matters.

#include <cstddef>
#include <cstdint>

#include <sys/types.h>

// clang-format off
#include <dvbpsi/dvbpsi.h>
#include <dvbpsi/psi.h>
#include <dvbpsi/descriptor.h>
#include <dvbpsi/demux.h>
#include <dvbpsi/pat.h>
#include <dvbpsi/pmt.h>
#include <dvbpsi/cat.h>
#include <dvbpsi/sdt.h>
#include <dvbpsi/dr.h>
// clang-format on

#include <memory>
#include <new>

namespace tevra {

/** Releases what libdvbpsi allocates, each with its own function. */
struct DvbpsiDeleter {
  ///@{
  /** Tables and chains with everything in them; a handle must have no decoder attached. Not null.
   */
  void operator()(dvbpsi_t* handle) const { dvbpsi_delete(handle); }
  void operator()(dvbpsi_descriptor_t* chain) const { dvbpsi_DeleteDescriptors(chain); }
  void operator()(dvbpsi_psi_section_t* chain) const { dvbpsi_DeletePSISections(chain); }
  void operator()(dvbpsi_pat_t* table) const { dvbpsi_pat_delete(table); }
  void operator()(dvbpsi_pmt_t* table) const { dvbpsi_pmt_delete(table); }
  void operator()(dvbpsi_cat_t* table) const { dvbpsi_cat_delete(table); }
  void operator()(dvbpsi_sdt_t* table) const { dvbpsi_sdt_delete(table); }
  ///@}
};

/** Owns a handle, a whole table, or a whole chain; never a part of one. */
template <class Object>
using DvbpsiPtr = std::unique_ptr<Object, DvbpsiDeleter>;

using DvbpsiHandle = DvbpsiPtr<dvbpsi_t>;              ///< makes sections, or takes them
using DescriptorPtr = DvbpsiPtr<dvbpsi_descriptor_t>;  ///< a descriptor that is in no table
using SectionsPtr = DvbpsiPtr<dvbpsi_psi_section_t>;   ///< the sections of a table, in order

///@{
/** A table with its loops. */
using PatPtr = DvbpsiPtr<dvbpsi_pat_t>;
using PmtPtr = DvbpsiPtr<dvbpsi_pmt_t>;
using CatPtr = DvbpsiPtr<dvbpsi_cat_t>;
using SdtPtr = DvbpsiPtr<dvbpsi_sdt_t>;
///@}

/** `made` by libdvbpsi, owned or not, which gives null for lack of memory: that raises
 * std::bad_alloc. Its decoders give null for what cannot be decoded, too, which is not for here. */
template <class Pointer>
[[nodiscard]] Pointer allocated(Pointer made) {
  if (made == nullptr) {
    throw std::bad_alloc();
  }
  return made;
}

/** Raises std::bad_alloc unless there is memory for a section: the generators of SDT and PMT
 * sections write to one without a look at whether they got it. What is asked for, and given back,
 * is several times as much, so that the allocator has the rest to give. */
inline void assureSection() {
  ::operator delete(::operator new (size_t{8} * 1024));  // called by name: not optimised away
}

}  // namespace tevra
