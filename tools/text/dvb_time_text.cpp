#include "tools/text/dvb_time_text.h"

#include <array>
#include <cstdio>

namespace tevra::tools {
namespace {

constexpr size_t kBufferSize = 64;

struct Date {
  int year;
  int month;
  int day;
};

/** Gregorian date of a Modified Julian Date from 0 (1858-11-17) to 65535. */
Date dateOf(int mjd) {
  // Days since 0000-03-01 of the proleptic calendar, in which the leap day ends the year.
  const int days = mjd + 678881;
  const int era = days / 146097;
  const int dayOfEra = days % 146097;
  const int yearOfEra = (dayOfEra - dayOfEra / 1460 + dayOfEra / 36524 - dayOfEra / 146096) / 365;
  const int dayOfYear = dayOfEra - (365 * yearOfEra + yearOfEra / 4 - yearOfEra / 100);
  const int marchMonth = (5 * dayOfYear + 2) / 153;
  const int month = marchMonth < 10 ? marchMonth + 3 : marchMonth - 9;
  return {yearOfEra + era * 400 + (month <= 2 ? 1 : 0), month,
          dayOfYear - (153 * marchMonth + 2) / 5 + 1};
}

}  // namespace

std::string dvbTimeText(int64_t utcTime) {
  const Date date = dateOf(static_cast<int>((utcTime >> 24) & 0xFFFF));
  const auto clock = static_cast<unsigned>(utcTime & 0xFFFFFF);
  std::array<char, kBufferSize> text{};
  // BCD digits print as hexadecimal ones.
  std::snprintf(text.data(), text.size(), "%04d-%02d-%02d %02x:%02x:%02x", date.year, date.month,
                date.day, clock >> 16, (clock >> 8) & 0xFF, clock & 0xFF);
  return text.data();
}

}  // namespace tevra::tools
