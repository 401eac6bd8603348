#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace tevra::tools {

inline constexpr size_t kTsPacketSize = 188;  ///< bytes (ISO/IEC 13818-1, 2.4.3.2)
inline constexpr uint8_t kTsSyncByte = 0x47;  ///< its first byte

///@{
/** PID of the table (ISO/IEC 13818-1, table 2-3; EN 300 468, table 1). */
inline constexpr int kPatPid = 0x0000;
inline constexpr int kCatPid = 0x0001;
inline constexpr int kNitPid = 0x0010;
inline constexpr int kSdtPid = 0x0011;
inline constexpr int kEitPid = 0x0012;
inline constexpr int kTotPid = 0x0014;
///@}

inline constexpr int kNullPid = 0x1FFF;   ///< PID of null packets
inline constexpr int kPidCount = 0x2000;  ///< 13 bits

/** Ticks of the 27 MHz system clock per second. */
inline constexpr int64_t kSystemClock = 27'000'000;
/** The most from one PCR to the next (ISO/IEC 13818-1, 2.7.2; ETSI TR 101 290, 2.3a and 2.3b). */
inline constexpr int64_t kPcrLimit = kSystemClock / 10;
/** Seconds that so many ticks take. */
[[nodiscard]] constexpr double ticksToSeconds(int64_t ticks) {
  return static_cast<double>(ticks) / static_cast<double>(kSystemClock);
}
/** A PCR's range: 33 bits at 90 kHz, extended to 27 MHz (ISO/IEC 13818-1, 2.4.3.5). */
inline constexpr int64_t kPcrModulus = (int64_t{1} << 33) * 300;

/**
 * Ticks from one PCR to the next of its PID. They are at most 0.1 s apart (ISO/IEC 13818-1, 2.7.2);
 * beyond 5 s it is a jump of the clock, and 0.
 */
[[nodiscard]] int64_t pcrInterval(int64_t from, int64_t to);

/**
 * One transport stream packet (ISO/IEC 13818-1, 2.4.3.2), with its sync byte.
 *
 * Any bytes are legal; the accessors never look past the packet. Fields keep the standard's
 * meaning.
 */
class TsPacket {
 public:
  /** A packet of zeros. */
  TsPacket() = default;
  /** Copies 188 bytes. */
  explicit TsPacket(const uint8_t* bytes);

  ///@{
  /** Its 188 bytes. */
  [[nodiscard]] const uint8_t* data() const { return bytes_.data(); }
  [[nodiscard]] uint8_t* data() { return bytes_.data(); }
  ///@}

  /** 0 to 8191. */
  [[nodiscard]] int pid() const { return ((bytes_[1] & 0x1F) << 8) | bytes_[2]; }
  /** Keeps the low 13 bits. */
  void setPid(int pid);
  /** 0 to 15. */
  [[nodiscard]] int continuityCounter() const { return bytes_[3] & 0x0F; }
  /** Keeps the low 4 bits. */
  void setContinuityCounter(int counter);

  ///@{
  /**
   * transport_error_indicator, payload_unit_start_indicator, any transport_scrambling_control, and
   * the two bits of adaptation_field_control.
   */
  [[nodiscard]] bool transportError() const { return (bytes_[1] & 0x80) != 0; }
  [[nodiscard]] bool unitStart() const { return (bytes_[1] & 0x40) != 0; }
  [[nodiscard]] bool scrambled() const { return (bytes_[3] & 0xC0) != 0; }
  [[nodiscard]] bool hasAdaptationField() const { return (bytes_[3] & 0x20) != 0; }
  [[nodiscard]] bool hasPayload() const { return (bytes_[3] & 0x10) != 0; }
  ///@}

  /**
   * Where the payload starts; 188 when there is none or the adaptation field leaves no room for it.
   */
  [[nodiscard]] size_t payloadOffset() const;
  /**
   * The program clock reference in 27 MHz ticks, below kPcrModulus; nothing where
   * transport_error_indicator says that it may be wrong (ISO/IEC 13818-1, 2.4.3.3).
   */
  [[nodiscard]] std::optional<int64_t> pcr() const;
  /** The discontinuity_indicator of the adaptation field. */
  [[nodiscard]] bool discontinuity() const;

  /**
   * The packet without its payload: the adaptation field, stretched over the rest of the packet
   * with stuffing. Precondition: pcr() has a value.
   */
  [[nodiscard]] TsPacket withoutPayload() const;

 private:
  std::array<uint8_t, kTsPacketSize> bytes_{};
};

}  // namespace tevra::tools
