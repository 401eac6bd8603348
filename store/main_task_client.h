#pragma once

#include <chrono>
#include <cstdint>

#include "records/records.h"

/**
 * @file
 * Client of MainTask's notification service on 127.0.0.1.
 *
 * Every notification opens a connection of its own, makes one oneway call and closes. Nothing is
 * retried or queued. It waits for a MainTask that does not take the call, as long as its patience
 * says for connecting and sending together; without one, 2 s. Called by one thread at a time: the
 * main thread asks for the configuration before there is a server thread, which does all the rest.
 *
 * The notifications return true when the call was made. Port 0 ("Notification Port not set.", level
 * 4) and a failing call ("Can't access to Notify server. EXCEPTION: %s", level 3) return false;
 * nothing of Thrift is raised, but std::bad_alloc is.
 */
namespace tevra {

/** Where requests to MainTask go. */
struct NotificationTarget {
  int32_t value = 0;  ///< the last value of notifyNIM
  uint16_t port = 0;  ///< of MainTask, 9256 + MPTS index; 0: none
};

///@{
/** Store `port`. Port 0 is refused with a level-4 line and false, the stored port staying as it
 * was. */
bool setNotificationPort(uint16_t& storedPort, uint16_t port);
bool setNotificationPort(NotificationTarget& target, uint16_t port);
///@}

/**
 * What the notifications of one control call share: a new one for every call. Once one of them has
 * run out of time, MainTask hangs, and the others must not wait as long again for each table.
 */
struct Patience {
  std::chrono::milliseconds perNotification{2000};  ///< 50 ms after the first that timed out
};

/** Stores `value` in `target`, then sends it. True whatever becomes of the call. */
bool notifyNIM(NotificationTarget& target, int32_t value);

///@{
/**
 * Sends the table to MainTask on `port`; a PAT that was sent is a level-4 line, others level 7.
 * Those with a `patience` are sent several in a control call.
 */
bool notifyPAT(uint16_t port, const PAT& pat);
bool notifySDT(uint16_t port, const SDT& sdt);
bool notifyPMT(uint16_t port, const PMT& pmt);
bool notifyNIT(uint16_t port, const NIT& nit);
bool notifyTOT(uint16_t port, const TOT& tot, Patience& patience);
bool notifyBAT(uint16_t port, const BAT& bat);
bool notifyCAT(uint16_t port, const CAT& cat);
bool notifyEITPresentFollowing(uint16_t port, const EIT& eit, Patience& patience);
bool notifyEITSchedule(uint16_t port, const EIT& eit, Patience& patience);
///@}

/** Asks for every table, which MainTask has its clients hand over. "I need Configuration!!!". */
bool requestConfiguration(const NotificationTarget& target);

}  // namespace tevra
