// SPDX-License-Identifier: Apache-2.0
//
// Manufacture dates: minutes since 1996, as management controllers keep them, and codes of week and year.
#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <string_view>

#include "zeldb/storage.h"

namespace {

constexpr int kFirstYear = 1996;
constexpr int kLastYear = 2027;
constexpr int kLastWeek = 47;  // of the last year: the minutes of a later one do not fit 24 bits
constexpr std::string_view kUnknownDate = "\xFF\xFF\xFF\xFF";

struct Day {
  int year, month, day;
};

Day day_of(uint32_t minutes) {
  static constexpr std::time_t k1996 = 820454400;
  const std::time_t time = k1996 + std::time_t{60} * static_cast<std::time_t>(minutes);
  std::tm local = {};
  tzset();  // unlike localtime, localtime_r need not follow a change of the time zone
  localtime_r(&time, &local);
  return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday};
}

struct Week {
  int week, year;
};

// Reads the next number of at most two characters, including its sign, after any blanks, as scanf does. False
// if there is none; the value then stays as it was.
bool take_number(std::string_view& text, int& value) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  const bool sign = text.starts_with('-') || text.starts_with('+');
  const bool negative = text.starts_with('-');
  int number = 0;
  size_t used = sign ? 1 : 0;
  const size_t digits_from = used;
  while (used < 2 && used < text.size() && text[used] >= '0' && text[used] <= '9') {
    number = number * 10 + (text[used++] - '0');
  }
  if (used == digits_from) return false;
  text.remove_prefix(used);
  value = negative ? -number : number;
  return true;
}

constexpr bool has_53_weeks(int year) {
  constexpr int kYears[] = {1998, 2004, 2009, 2015, 2020, 2026};
  return std::ranges::find(kYears, year) != std::end(kYears);
}

constexpr int weeks_of(int year) {
  return has_53_weeks(year) ? 53 : 52;
}

Week week_of(std::string_view code) {
  int week = 0;
  int year = 0;
  if (take_number(code, week)) take_number(code, year);
  if (year <= kLastYear - 2000) {
    year += 2000;
  } else if (year >= kFirstYear - 1900) {
    year += 1900;
  } else {
    return {kLastWeek, kLastYear};
  }
  return {std::clamp(week, 1, year == kLastYear ? kLastWeek : weeks_of(year)), year};
}

// Noon of the first day of the week, which is the same day in nearly all time zones.
constexpr uint32_t minutes_of(Week week) {
  int weeks = week.week - 1;
  for (int year = kFirstYear; year < week.year; ++year) weeks += weeks_of(year);
  return (7u * 24 * 60 * static_cast<uint32_t>(weeks) + 12 * 60) & 0xFFFFFF;
}
static_assert(minutes_of({kLastWeek, kLastYear}) == 16773840);

}  // namespace

void get_manuf_date(const uint8_t* bytes, int* year, int* month, int* day) {
  if (bytes == nullptr) return;
  const Day date = day_of(bytes[0] | uint32_t{bytes[1]} << 8 | uint32_t{bytes[2]} << 16);
  if (year != nullptr) *year = date.year;
  if (month != nullptr) *month = date.month;
  if (day != nullptr) *day = date.day;
}

void vpd_manuf_date_to_ymd(const char* code, char* dst, uint32_t size) {
  static constexpr size_t kCodeLength = 4;
  if (code == nullptr || dst == nullptr) return;
  size_t length = 0;
  while (length < kCodeLength && code[length] != '\0') ++length;
  const std::string_view text(code, length);
  const Day date = text == kUnknownDate ? Day{kFirstYear, 1, 1} : day_of(minutes_of(week_of(text)));
  std::snprintf(dst, size, "%d-%02d-%02d", date.year, date.month, date.day);
}
