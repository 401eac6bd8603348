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
 * std::bad_alloc. */
template <class Pointer>
[[nodiscard]] Pointer allocated(Pointer made) {
  if (made == nullptr) {
    throw std::bad_alloc();
  }
  return made;
}

}  // namespace tevra
