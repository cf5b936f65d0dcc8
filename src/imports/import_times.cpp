#include "imports/import_times.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <string>

#include "base/number.h"
#include "base/text.h"

namespace orvanta {
namespace {

constexpr double kMinute = 60;
constexpr double kHour = 3600;

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

// Takes it away from the front.
std::optional<int> number(std::string_view& text, std::size_t most) {
  std::size_t digits = 0;
  while (digits < std::min(most, text.size()) && isDigit(text[digits])) ++digits;
  const auto value = parseNumber<int>(text.substr(0, digits));
  if (value) text.remove_prefix(digits);
  return value;
}

bool taken(std::string_view& text, std::string_view marks) {
  if (text.empty() || marks.find(text.front()) == std::string_view::npos) return false;
  text.remove_prefix(1);
  return true;
}

struct Parts {
  std::array<int, 3> numbers{};
  bool yearFirst = false;
};

// Three numbers between marks of one kind; "20261025" of a calendar file, too.
std::optional<Parts> dateParts(std::string_view& text) {
  auto rest = text;
  constexpr std::size_t kYear = 4;
  const auto digits = rest.find_first_not_of("0123456789");
  const auto first = number(rest, kYear);
  if (!first) return {};
  Parts parts{.numbers = {*first, 0, 0}, .yearFirst = text.size() - rest.size() == kYear};
  const bool packed = std::min(digits, text.size()) == 8;
  const char mark = rest.empty() ? '\0' : rest.front();
  for (const std::size_t i : {1U, 2U}) {
    if (!packed && (!taken(rest, "-/.") || text[text.size() - rest.size() - 1] != mark)) return {};
    const auto next = number(rest, !packed && i == 2 && !parts.yearFirst ? kYear : 2);
    if (!next) return {};
    parts.numbers.at(i) = *next;
  }
  if (!rest.empty() && isDigit(rest.front())) return {};
  text = rest;
  return parts;
}

std::optional<Date> dateOf(const Parts& parts, bool monthFirst) {
  auto [a, b, c] = parts.numbers;
  if (!parts.yearFirst) {
    if (monthFirst) std::swap(a, b);
    std::swap(a, c);
    constexpr int kCentury = 100;
    if (a < kCentury) a += 2000;
  }
  return Date::parse(fmt::format("{:04}-{:02}-{:02}", a, b, c));
}

// "14:03:09.5", "140309", "2:03 PM".
std::optional<double> timeIn(std::string_view& text) {
  constexpr int kHours = 24;
  constexpr int kSixty = 60;
  const bool packed = text.size() >= 6 && std::all_of(text.begin(), text.begin() + 6, isDigit);
  auto hour = number(text, 2);
  if (!hour || *hour > kHours) return {};
  if (!packed && !taken(text, ":hH")) return {};
  const auto minute = number(text, 2);
  if (!minute || *minute >= kSixty) return {};
  double seconds = 0;
  if (packed || taken(text, ":")) {
    const auto whole = number(text, 2);
    if (!whole || *whole > kSixty) return {};
    seconds = *whole;
    if (taken(text, ".,")) {
      const auto end = std::min(text.find_first_not_of("0123456789"), text.size());
      seconds += parseNumber("0." + std::string(text.substr(0, end))).value_or(0);
      text.remove_prefix(end);
    }
  }
  const auto half = lowerCase(trimBlanks(text));
  if (half == "am" || half == "pm") {
    if (*hour == 0 || *hour > kHours / 2) return {};
    hour = *hour % (kHours / 2) + (half == "pm" ? kHours / 2 : 0);
    text = {};
  }
  return *hour * kHour + *minute * kMinute + seconds;
}

// East of Greenwich, seconds; absent for none. False for what is none.
bool offsetIn(std::string_view text, std::optional<double>& offset) {
  text = trimBlanks(text);
  if (text.empty()) return true;
  if (text == "Z" || text == "z" || text == "UTC" || text == "GMT") {
    offset = 0;
    return true;
  }
  const double sign = text.front() == '-' ? -1 : 1;
  if (!taken(text, "+-")) return false;
  const auto hours = number(text, 2);
  taken(text, ":");
  const auto minutes = text.empty() ? std::optional(0) : number(text, 2);
  if (!hours || !minutes || !text.empty()) return false;
  offset = sign * (*hours * kHour + *minutes * kMinute);
  return true;
}

std::optional<WrittenTime> unixTime(std::string_view text) {
  constexpr double kLeast = 1e8;
  constexpr double kMilliseconds = 1e11;
  const auto value = parseNumber(text);
  if (!value || *value < kLeast || text.size() == 8) return {};
  return WrittenTime{.instant = *value >= kMilliseconds ? *value / 1000 : *value};
}

}  // namespace

std::optional<WrittenTime> writtenTime(std::string_view text, bool monthFirst) {
  constexpr std::size_t kLongest = 60;
  text = trimBlanks(text);
  if (text.empty() || text.size() > kLongest) return {};
  if (const auto instant = unixTime(text)) return instant;
  WrittenTime written;
  if (const auto parts = dateParts(text)) {
    written.date = dateOf(*parts, monthFirst);
    if (!written.date) return {};
    if (trimBlanks(text).empty()) return written;
    if (!taken(text, "Tt") && !taken(text, " ")) return {};
    text = trimBlanks(text);
  }
  written.time = timeIn(text);
  std::optional<double> offset;
  if (!written.time || !offsetIn(text, offset)) return {};
  if (!offset) return written;
  if (!written.date) return {};
  constexpr double kDay = 86400;
  const double days = Date{}.daysUntil(*written.date);
  return WrittenTime{.instant = days * kDay + *written.time - *offset};
}

bool needsMonthFirst(std::string_view text) {
  constexpr int kMonths = 12;
  text = trimBlanks(text);
  const auto parts = dateParts(text);
  return parts && !parts->yearFirst && parts->numbers[0] <= kMonths && parts->numbers[1] > kMonths;
}

double instantOf(const Calendar& calendar, const Date& date, double secondsOfDay) {
  constexpr double kDay = 86400;
  const double wanted = Date{}.daysUntil(date) * kDay + secondsOfDay;
  const double plain = calendar.startOf(date) + secondsOfDay;
  const auto off = [&](double instant) {
    return std::floor(wanted) - static_cast<double>(calendar.wallSeconds(instant));
  };
  // The clock may have been set since midnight. Of an hour shown twice the first is meant.
  const double moved = plain + off(plain);
  return off(moved) == 0 ? moved : plain;
}

std::optional<double> writtenDuration(std::string_view text, double unit) {
  text = trimBlanks(text);
  if (text.empty()) return {};
  std::string plain(text);
  std::replace(plain.begin(), plain.end(), ',', '.');
  if (const auto bare = parseNumber(plain)) return *bare * unit;
  const auto first = number(text, 4);
  if (!first) return {};
  text = trimBlanks(text, " \t\xc2\xa0");
  if (taken(text, ":")) {
    const auto minutes = number(text, 2);
    const auto seconds = taken(text, ":") ? number(text, 2) : std::optional(0);
    if (!minutes || !seconds) return {};
    return *first * kHour + *minutes * kMinute + *seconds;
  }
  const auto word = lowerCase(text);
  if (word.starts_with("h")) {
    const auto at = word.find_first_of("0123456789");
    const auto minutes =
        at == std::string::npos ? 0 : parseNumber<int>(word.substr(at, 2)).value_or(0);
    return *first * kHour + minutes * kMinute;
  }
  if (word.starts_with("min") || word == "m") return *first * kMinute;
  if (word.starts_with("s")) return *first;
  return {};
}

}  // namespace orvanta
