#pragma once

#include <string>
#include <utility>

namespace tevra {

/** Text that is made once for as long as what it tells does not change. */
class KeptText {
 public:
  /** Whether there is any. */
  [[nodiscard]] bool isMade() const;

  /** As it was made. */
  [[nodiscard]] const std::string& get() const { return text_; }

  /** `text` is not empty. */
  void make(std::string text) noexcept { text_ = std::move(text); }

  /** What it told has changed, or will at once. */
  void forget() noexcept { text_ = {}; }

 private:
  std::string text_;
};

/** The Thrift JSON of a `Record` that is an entry of a store: a TableStore or EITTableVersionStore.
 */
template <class Record>
[[nodiscard]] std::string entryText(const Record& record);

/**
 * An entry of a store with its text in the store's file, which takes some thousand times as many
 * instructions as a copy of it. Whoever uses it locks.
 */
template <class Record>
class KeptEntry {
 public:
  KeptEntry() = default;
  /** Its text is made when it is asked for. */
  explicit KeptEntry(Record record) : record_(std::move(record)) {}

  ///@{
  /** As it is. */
  [[nodiscard]] const Record& operator*() const { return record_; }
  [[nodiscard]] const Record* operator->() const { return &record_; }
  ///@}

  /** To be changed before its text is asked for again. */
  [[nodiscard]] Record& change() noexcept {
    text_.forget();
    return record_;
  }

  /** The record as JSON. Raises std::bad_alloc. */
  [[nodiscard]] const std::string& text() const {
    if (!text_.isMade()) {
      text_.make(entryText(record_));
    }
    return text_.get();
  }

 private:
  Record record_;
  mutable KeptText text_;
};

}  // namespace tevra
