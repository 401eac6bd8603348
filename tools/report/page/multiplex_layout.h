#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <vector>

#include "tools/report/facts/report_data.h"
#include "tools/report/page/geometry.h"

namespace tevra::tools::report {

/** A service with its output, or, last of all, the PIDs of no service. */
struct Band {
  std::optional<size_t> service;     ///< its place in the report; nothing for the PIDs of none
  double top = 0;                    ///< kInset above its cards
  double height = 0;                 ///< down to the next band; 0 for a service that is not drawn
  std::vector<InputStream> streams;  ///< the service's, or those of none
  Box input;                         ///< the card on the left: its head, then its rows
  std::vector<Box> inputRows;        ///< one per stream
  /** For each row its own service; for a PID of none all services whose outputs take it. */
  std::vector<std::set<size_t>> inputServices;
  std::optional<Box> output;    ///< the card on the right; nothing without an output
  std::vector<Box> outputRows;  ///< one per stream of the output
};

/** From a row on the left to a row on the right. */
struct Link {
  size_t fromBand = 0;   ///< its own, or the first that has the PID
  size_t fromRow = 0;    ///< in `inputRows`
  size_t toBand = 0;     ///< also the service that it belongs to
  size_t toRow = 0;      ///< in `outputRows`
  double thickness = 0;  ///< by the bit rate; little where the daemon makes the packets
};

/** Where everything of the picture of the multiplex lies. */
struct MultiplexLayout {
  std::vector<Band> bands;  ///< one below the other
  std::vector<Link> links;  ///< by service, then by row; none for a PID that is in no band
  std::optional<Box> key;   ///< how to read the picture: beside the PIDs of no service
  double fullRate = 0;      ///< packets that a whole bar stands for; at least 1
};

inline constexpr double kHeadingsHeight = 32;  ///< above the first band
/** Cards keep this far from the sides of their pictures, so that their frames are whole. */
inline constexpr double kInset = 2;
inline constexpr double kInputWidth = 520;  ///< of the cards on the left, which begin at kInset
inline constexpr double kOutputLeft = 690;  ///< where the cards on the right begin
inline constexpr double kHeadHeight = 50;   ///< of a card, above its first row

/**
 * Computes the layout; depends on nothing but the report. What multiplex_folds.h leaves out of the
 * picture has no place in it.
 */
[[nodiscard]] MultiplexLayout layoutMultiplex(const Report& report);

}  // namespace tevra::tools::report
