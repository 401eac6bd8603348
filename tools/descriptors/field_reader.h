#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "tools/fields/fields.h"

namespace tevra::tools {

/** The standard's name of a coded value; empty where it has none. */
using NameOf = std::string (*)(int value);

/**
 * Reads the payload of a descriptor field by field, most significant bit first, and keeps what it
 * reads. Once the payload proves too short, or something in it impossible, the reader has failed:
 * everything then reads as 0 or empty, loops end, and what has been kept is of no use.
 */
class FieldReader {
 public:
  /** `payload` must outlive the reader. */
  explicit FieldReader(const std::string& payload);

  /** Reads without keeping, 64 bits at most. */
  [[nodiscard]] uint64_t bits(int count);
  void skip(int count) { (void)bits(count); }  ///< Reads for the effect: reserved bits.
  /** Whole bytes that are left. */
  [[nodiscard]] size_t left() const { return hasFailed() ? 0 : (end_ - position_) / 8; }

  // Read and keep; what others depend on is returned too.

  /** A quantity: shown in decimal. */
  void number(const std::string& name, int bitCount);
  /** An identifier: shown in decimal and hexadecimal. */
  void id(const std::string& name, int bitCount);
  /** A code: shown in hexadecimal, with its name where there is one. */
  int64_t code(const std::string& name, int bitCount, NameOf nameOf = nullptr);
  /** A 32-bit code that mostly is four characters. */
  void fourCharacters(const std::string& name);
  /** A small code: shown in decimal, with its name where there is one. */
  int choice(const std::string& name, int bitCount, NameOf nameOf);
  /** One bit: shown as yes or no. */
  bool flag(const std::string& name);
  /** A flag that is shown as one of two words instead of its name. */
  void word(const std::string& name, const std::string& ifSet, const std::string& ifNot);
  /** Three characters (ISO 639-2 or ISO 3166). */
  void letters(const std::string& name);
  /** DVB text (EN 300 468 annex A) of `size` bytes. */
  void text(const std::string& name, size_t size);
  /** DVB text behind its 8-bit length. */
  void countedText(const std::string& name);
  /** `size` bytes without a meaning of their own. */
  void bytes(const std::string& name, size_t size);
  /** What is left, if anything is. */
  void rest(const std::string& name);
  /**
   * Binary coded decimal digits times `factor`; fails for a digit that is none. `shown` says how
   * people read the product.
   */
  void decimalDigits(const std::string& name, int digits, int64_t factor,
                     const std::function<std::string(int64_t)>& shown);
  /** A field that is made from values already read. */
  void keep(Field field);

  /** `entry` again and again until the payload ends. */
  void list(const std::string& name, const std::function<void()>& entry);
  /** `entry` until `size` bytes are read, and nothing beyond them. */
  void listWithin(const std::string& name, size_t size, const std::function<void()>& entry);

  /** The first reason counts. */
  void fail(const std::string& reason);
  /** Whether there is a problem(). */
  [[nodiscard]] bool hasFailed() const { return !problem_.empty(); }
  /** Why it has failed; empty while it has not. */
  [[nodiscard]] const std::string& problem() const { return problem_; }
  /** Hands out what has been kept. Call it once, at the end. */
  [[nodiscard]] Fields takeFields();

 private:
  [[nodiscard]] std::string take(size_t size);

  const std::string& payload_;
  size_t position_ = 0;  // in bits
  size_t end_;
  Fields fields_;
  Fields* current_ = &fields_;
  std::string problem_;
};

}  // namespace tevra::tools
