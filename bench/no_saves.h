#pragma once

namespace tevra::bench {

/** While one lives, table stores are not saved: what a request costs besides is counted. */
class NoSaves {
 public:
  NoSaves();
  ~NoSaves();
  NoSaves(const NoSaves&) = delete;
  NoSaves& operator=(const NoSaves&) = delete;
};

}  // namespace tevra::bench
