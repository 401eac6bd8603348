#include "store/kept_packets.h"

namespace tevra {

bool KeptPackets::areOf(int32_t version, bool currentNext, int32_t pid) const {
  return !packets_.empty() && version_ == version && currentNext_ == currentNext && pid_ == pid;
}

}  // namespace tevra
