#include "reports/french_text.h"

#include <fmt/format.h>

#include <array>
#include <cmath>

namespace orvanta {
namespace {

constexpr int64_t kMinute = 60;
constexpr int64_t kHour = 3600;
constexpr int64_t kHundred = 100;
constexpr auto kSpace = "\u00a0";

std::string_view monthName(const Date& date) {
  static constexpr std::array<std::string_view, 12> kNames{
      "janvier", "février", "mars",      "avril",   "mai",      "juin",
      "juillet", "août",    "septembre", "octobre", "novembre", "décembre"};
  return kNames.at(static_cast<std::size_t>(date.month - 1));
}

std::string dayNumber(const Date& date) {
  return date.day == 1 ? "1er" : std::to_string(date.day);
}

int weekNumber(const Date& date) {
  constexpr int kThursday = 3;
  constexpr int kDaysPerWeek = 7;
  const auto thursday = date.monday().plusDays(kThursday);
  return Date{thursday.year, 1, 1}.daysUntil(thursday) / kDaysPerWeek + 1;
}

// "du 1er au 15 octobre 2026", with what both have in common said once.
std::string fromTo(const DateRange& range) {
  const auto& [from, to] = range;
  std::string first = dayNumber(from);
  if (from.month != to.month || from.year != to.year) {
    first += fmt::format(" {}", monthName(from));
  }
  if (from.year != to.year) first += fmt::format(" {}", from.year);
  return fmt::format("du {} au {} {} {}", first, dayNumber(to), monthName(to), to.year);
}

int64_t nearest(int64_t number, int64_t step) {
  return floorDivide(number * 2 + step, step * 2);
}

}  // namespace

std::string longDate(const Date& date) {
  static constexpr std::array<std::string_view, 7> kDays{"lundi",    "mardi",  "mercredi", "jeudi",
                                                         "vendredi", "samedi", "dimanche"};
  return fmt::format("{} {} {} {}",
                     kDays.at(static_cast<std::size_t>(date.monday().daysUntil(date))),
                     dayNumber(date), monthName(date), date.year);
}

std::string shortDate(const Date& date) {
  return fmt::format("{:02}/{:02}/{:04}", date.day, date.month, date.year);
}

std::string nameOf(const DateRange& range) {
  const auto& from = range.from;
  switch (kindOf(range)) {
    case PeriodKind::Day:
      return longDate(from);
    case PeriodKind::Week:
      return fmt::format("semaine {}, {}", weekNumber(from), fromTo(range));
    case PeriodKind::Month:
      return fmt::format("{} {}", monthName(from), from.year);
    case PeriodKind::Quarter:
      return fmt::format("{} trimestre {}",
                         from.month == 1 ? "1er" : fmt::format("{}e", from.month / 3 + 1),
                         from.year);
    case PeriodKind::Year:
      return std::to_string(from.year);
    default:
      return fromTo(range);
  }
}

std::string hoursInWords(double seconds) {
  const int64_t minutes = std::llround(seconds / static_cast<double>(kMinute));
  const int64_t hours = minutes / kMinute;
  if (hours == 0) return fmt::format("{}{}min", minutes, kSpace);
  return fmt::format("{0}{2}h{2}{1:02}", hours, minutes % kMinute, kSpace);
}

std::string clockHours(int64_t seconds) {
  const auto minutes = nearest(seconds, kMinute);
  return fmt::format("{}:{:02}", minutes / kMinute, minutes % kMinute);
}

std::string decimalHours(int64_t seconds, char point) {
  const auto hundredths = nearest(seconds, kHour / kHundred);
  return fmt::format("{}{}{:02}", hundredths / kHundred, point, hundredths % kHundred);
}

std::string plainMoney(int64_t cents, char point) {
  return fmt::format("{}{}{:02}", cents / kHundred, point, cents % kHundred);
}

std::string moneyText(int64_t cents, std::string_view currency) {
  constexpr std::size_t kGroup = 3;
  auto whole = std::to_string(cents / kHundred);
  for (auto at = whole.size(); at > kGroup; at -= kGroup) whole.insert(at - kGroup, "\u202f");
  return fmt::format("{},{:02}{}{}", whole, cents % kHundred, kSpace,
                     currency == "EUR" ? "€" : currency);
}

}  // namespace orvanta
