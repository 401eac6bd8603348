#pragma once

#include <cstdint>
#include <string>

/**
 * @file
 * DVB utilities of the device; see module_utils.h on who implements them. Callable from any
 * thread.
 */
namespace tevra {

/** Two BCD digits to their value: 0x59 to 59. Digits above 9 count as they stand. */
uint8_t bcd4_2_bin(uint8_t bcd);

/** 0 to 99 to two BCD digits: 59 to 0x59. */
uint8_t bin_2_bcd4(uint8_t value);

/**
 * Converts UTF-8 to DVB text with its character table selector (EN 300 468 annex A).
 * Returns false, with `dvb` untouched, when `utf8` is not valid UTF-8.
 */
[[nodiscard]] bool dvbTextFromUTF8(const std::string& utf8, std::string& dvb);

/**
 * By which code the language `code` of a stream, any three bytes, is asked for: a device may have
 * one form for several, a host compares it as the stream writes it. `other` receives a second form,
 * if there is one. Returns false, with both outputs untouched, for what is no language code; of
 * three letters all are, those reserved for local use (ISO 639-2: "qaa" to "qtz") too.
 */
[[nodiscard]] bool getEnglishAudioCode(const std::string& code, std::string& englishCode,
                                       std::string& other);

}  // namespace tevra
