#pragma once

#include <cstdint>
#include <map>
#include <vector>

#include "cfdb/conflict_free_db.h"
#include "records/records.h"
#include "synth/psi_synthesis.h"
#include "synth/service_work_record.h"

namespace tevra {

/** The answer to a request: global service id to what its output is made of. */
using OutputConfigurations = std::map<int32_t, SPTSConfiguration>;

/**
 * Answers getSrvOutputData: resolves which outputs of an input service are served with which
 * last-node settings, and builds each.
 *
 * Keeps no state of its own; lasting effects are those of the table stores and of the PID mapping's
 * file. Used on the server thread. `database` and `stores` must outlive it.
 */
class OutputData {
 public:
  /** Both are used by every call. */
  OutputData(ConflictFreeDB& database, TableStores& stores)
      : database_(database), stores_(stores) {}

  /**
   * Replaces `answer`. Empty when the input service is unknown or no output is described. No
   * exception gets out: an output that cannot be built, for lack of memory perhaps, is told of at
   * level 3 and is not in the answer; the others are.
   */
  void getSrvOutputData(OutputConfigurations& answer, const SrvOutputRequest& request);

  /** How buildOutput treats the PID list. */
  struct BuildOptions {
    bool remapPids;     ///< set input PIDs to those of the input multiplex, 65535 where unknown
    bool fromLastNode;  ///< settings of one last node; without it, and next node 1, EMM PIDs are
                        ///< added
  };

  /**
   * Builds one output of `service` from its conflict-free `pmt`, with CA descriptors or without.
   * Synthesises and saves once. Raises std::bad_alloc, and what the platform's conversions raise.
   */
  [[nodiscard]] SPTSConfiguration buildOutput(const ServiceTables& service, const PMT& pmt,
                                              const OutputServiceDescription& spts,
                                              const LastNodeSettings& lastNode,
                                              BuildOptions options);

 private:
  void serve(OutputConfigurations& answer, const SrvOutputRequest& request);
  void serveOutput(OutputConfigurations& answer, const OutputServiceDescription& spts,
                   const std::vector<LastNodeSettings>& lastNodes, const ServiceTables& service,
                   PMT& pmt);
  SPTSConfiguration buildDirect(const OutputServiceDescription& spts,
                                const LastNodeSettings& lastNode, const ServiceTables& service,
                                PMT& pmt);
  SPTSConfiguration buildListed(const OutputServiceDescription& spts,
                                const LastNodeSettings& lastNode, const ServiceTables& service);
  SPTSConfiguration buildFallback(const OutputServiceDescription& spts,
                                  const std::vector<LastNodeSettings>& lastNodes,
                                  const ServiceTables& service, const PMT& pmt);
  void addEmmPids(PidList& pidItems);
  void resolveInputPids(std::vector<PIDItem>& pidItems, bool remapPids);

  ConflictFreeDB& database_;
  TableStores& stores_;
};

}  // namespace tevra
