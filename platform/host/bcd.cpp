#include "platform/dvb_utils.h"

namespace tevra {

uint8_t bcd4_2_bin(uint8_t bcd) {
  return static_cast<uint8_t>((bcd >> 4) * 10 + (bcd & 0x0F));
}

uint8_t bin_2_bcd4(uint8_t value) {
  // Two digits hold 0 to 99; of a greater value they keep the last two.
  const int twoDigits = value % 100;
  return static_cast<uint8_t>(twoDigits / 10 << 4 | twoDigits % 10);
}

}  // namespace tevra
