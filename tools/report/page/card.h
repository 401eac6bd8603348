#pragma once

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tools/report/facts/report_data.h"
#include "tools/report/page/geometry.h"
#include "tools/report/page/svg.h"

namespace tevra::tools::report {

/** From the sides of a card to what is written in it. */
inline constexpr double kCardPadding = 14;
/** From the middle of a row down to the base line of its texts. */
inline constexpr double kBaseLine = 4.4;

/** What stands at the top of a card, in two lines; all but the name may be empty. */
struct CardHead {
  std::string name;         ///< of the service or output
  std::string facts;        ///< below the name
  std::string figure;       ///< on the right of the name
  std::string moreFigures;  ///< on the right of the facts
  double figuresWidth = 0;  ///< what the figures take from the texts beside them
};

/** A service, an output or the PIDs of no service. What is drawn while it lives is a part of it. */
class Card {
 public:
  /**
   * Draws the frame. `side` becomes a class of the card; `service` is its place in the report,
   * nothing if the card is that of none. `svg` must outlive it.
   */
  Card(Svg& svg, const std::string& side, const Box& box, std::optional<size_t> service);

  /** Texts on the left are cut where they would meet the figures. */
  void head(const CardHead& head);

 private:
  Svg& svg_;
  Box box_;
  Markup::Element group_;
};

/** What rows of both sides show of a PID. */
struct RowFacts {
  int pid = 0;                                  ///< 0 to 8191
  StreamKind kind = StreamKind::kUnreferenced;  ///< gives the row its colour
  std::string description;                      ///< cut where the languages begin
  std::vector<std::string> languages;           ///< as many of them as have room
  std::string title;                            ///< shown where the pointer rests
  std::set<size_t> services;                    ///< the row is lit up with these, by their places
  bool made = false;                            ///< by the daemon
  bool silent = false;                          ///< no packets
};

/** A PID in a card. What is drawn while it lives is a part of it. */
class CardRow {
 public:
  /** Draws the facts. `svg` must outlive it. */
  CardRow(Svg& svg, const Box& box, const RowFacts& facts);

  /** A word in a frame, behind those that the row has already. */
  void chip(const std::string& word);

 private:
  Svg& svg_;
  Box box_;
  double nextChip_;
  Markup::Element group_;
};

}  // namespace tevra::tools::report
