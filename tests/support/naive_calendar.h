// Local days by the C library, found by trying.
#pragma once

#include <stdlib.h>
#include <time.h>

#include <cmath>
#include <string>

namespace orvanta::test {

/// The machine's zone for as long as it lives.
class LocalZone {
 public:
  explicit LocalZone(const char* zone) {
    const char* before = getenv("TZ");
    if (before) before_ = before;
    set(zone);
  }
  ~LocalZone() { set(before_.empty() ? nullptr : before_.c_str()); }
  LocalZone(const LocalZone&) = delete;
  LocalZone& operator=(const LocalZone&) = delete;

 private:
  static void set(const char* zone) {
    zone ? setenv("TZ", zone, 1) : unsetenv("TZ");
    tzset();
  }
  std::string before_;
};

// Days are numbered from 1970-01-01, which was a Thursday.

inline std::string naiveIso(int day) {
  const time_t noon = time_t{day} * 86400 + 43200;
  tm civil{};
  gmtime_r(&noon, &civil);
  char text[32];
  strftime(text, sizeof text, "%Y-%m-%d", &civil);
  return text;
}

inline int naiveDayOf(double instant) {
  const auto second = static_cast<time_t>(std::floor(instant));
  tm local{};
  localtime_r(&second, &local);
  return static_cast<int>(timegm(&local) / 86400);
}

inline int naiveDay(const char* iso) {
  tm civil{};
  strptime(iso, "%Y-%m-%d", &civil);
  return static_cast<int>(timegm(&civil) / 86400);
}

inline double naiveStart(int day) {
  double instant = (day - 1) * 86400.0;  // nowhere is it so late yet
  while (naiveDayOf(instant) < day) instant += 900;
  return instant;
}

inline int naiveMonday(int day) {
  while ((day + 3) % 7 != 0) --day;
  return day;
}

}  // namespace orvanta::test
