#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tevra::tools {

/** Where the daemon of this machine has its files, unless it was told otherwise: in the directory
 * of the package's service if there is one, else where the platform says. */
[[nodiscard]] std::string usualRoot();

/** The type of the module that this machine is, or stands for. */
[[nodiscard]] int moduleTypeHere();

/** What became of reading a file. */
enum class FileState {
  kRead,
  kAbsent,      ///< there is none: nothing has been saved
  kUnreadable,  ///< there may be one
  kDamaged,     ///< a start would lose what is in it, or a part
};

/** One of the daemon's three files. */
struct KeptFile {
  std::string name;                    ///< below the configuration root
  FileState state = FileState::kRead;  ///< what became of it
  std::string reason;                  ///< why it was not read, or not to its end
  /** When it was last saved, where it can be looked at. */
  std::optional<std::chrono::system_clock::time_point> saved;
  bool isForbidden = false;  ///< who runs this may not read it
};

/** The PIDs that one daemon may hand out; the first never is (docs/contract.md, "First PID of a
 * pool"). */
struct PidPool {
  int64_t first = 0;  ///< one less than the first that is handed out
  int64_t last = 0;   ///< after it comes another daemon's
};

/** The pool of multiplex `set` of a module; nothing for a type that has none. */
[[nodiscard]] std::optional<PidPool> pidPoolOf(int32_t slot, int set, int moduleType);

/** What the PID map says. */
struct KeptPids {
  int32_t transportStreamId = 0;  ///< which it belongs to
  int32_t slot = 0;               ///< in which it was made
  size_t used = 0;                ///< output PIDs handed out
  int64_t highest = 0;            ///< of them; 0 without any
  std::optional<PidPool> pool;    ///< nothing where the map cannot be one of this type's
};

/** Versions that were handed out last, as they stand in the file: they may be anything. */
struct KeptVersions {
  std::map<int32_t, int32_t> byTableId;  ///< of every table of the service
  int64_t startsLeft = 0;  ///< that the entry survives: docs/contract.md, "Restart counters"
};

/** What is kept of one input service. */
struct KeptService {
  std::optional<KeptVersions> tables;  ///< PAT, SDT and PMT
  std::optional<int32_t> outputSid;    ///< the last output's service id
  std::string name;                    ///< the last output's, UTF-8; empty if it has none
  std::optional<KeptVersions> eits;    ///< of its EITs
};

/** What a start would find. */
struct KeptState {
  std::vector<KeptFile> files;              ///< PID map, table store, EIT versions
  std::optional<KeptPids> pids;             ///< nothing without a whole PID map
  std::map<int32_t, KeptService> services;  ///< by input service id

  /** Whether there is a file of them that can be looked at. */
  [[nodiscard]] bool any() const;
};

/**
 * Reads the files of multiplex `set` below the directory `root`, as the daemon does: of a damaged
 * table store or EIT version file what stands before the fault. Changes nothing.
 */
[[nodiscard]] KeptState readKeptState(const std::string& root, int set, int moduleType);

}  // namespace tevra::tools
