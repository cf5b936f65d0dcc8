#include "imports/recurrence.h"

#include <algorithm>

#include "base/number.h"
#include "base/text.h"

namespace orvanta {
namespace {

constexpr int kWeek = 7;
constexpr int kYear = 12;  // months
constexpr int kMostInterval = 1000;
constexpr std::array<std::string_view, kWeek> kDays{"mo", "tu", "we", "th", "fr", "sa", "su"};

// The text before the next mark, which goes with it.
std::string_view cutAt(std::string_view& text, char mark) {
  const auto end = std::min(text.find(mark), text.size());
  const auto piece = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return piece;
}

std::size_t weekday(const Date& date) {
  return static_cast<std::size_t>(date.monday().daysUntil(date));
}

// False where one of them is none, or is counted within a month.
bool readDays(std::string_view list, std::array<bool, kWeek>& days) {
  while (!list.empty()) {
    const auto name = lowerCase(cutAt(list, ','));
    const auto found = std::find(kDays.begin(), kDays.end(), name);
    if (found == kDays.end()) return false;
    days.at(static_cast<std::size_t>(found - kDays.begin())) = true;
  }
  return true;
}

}  // namespace

std::optional<Recurrence> Recurrence::parse(std::string_view rule, const Date& first) {
  Recurrence read;
  bool known = false;
  while (!rule.empty()) {
    auto value = cutAt(rule, ';');
    const auto name = lowerCase(cutAt(value, '='));
    const auto word = lowerCase(value);
    const auto number = parseNumber<int>(value);
    if (name == "freq") {
      if (word == "weekly") read.every = Every::Week;
      if (word == "monthly") read.every = Every::Month;
      known = word == "daily" || word == "weekly" || word == "monthly";
    } else if (name == "interval") {
      if (!number || *number < 1) return {};
      read.interval = std::min(*number, kMostInterval);
    } else if (name == "count") {
      if (!number || *number < 1) return {};
      read.count = static_cast<std::size_t>(*number);
    } else if (name == "until") {
      read.until = value;
    } else if (name == "byday") {
      if (!readDays(value, read.days)) return {};
    } else if (name == "bymonthday") {
      if (number != first.day) return {};
    } else if (name == "wkst") {
      read.weekFromSunday = word == "su";
    } else if (!name.starts_with("x-")) {
      return {};
    }
  }
  const bool chosen = std::find(read.days.begin(), read.days.end(), true) != read.days.end();
  if (!known || (chosen && read.every == Every::Month)) return {};
  if (!chosen && read.every == Every::Week) read.days.at(weekday(first)) = true;
  return read;
}

Date Recurrence::weekOf(const Date& date) const {
  return weekFromSunday ? date.plusDays(1).monday().plusDays(-1) : date.monday();
}

void Recurrence::each(const Date& first, const Date& last, std::size_t& looks,
                      const std::function<bool(const Date&)>& visit) const {
  const bool anyDay = std::find(days.begin(), days.end(), true) == days.end();
  // That an event begins on another day than the rule says is its own business.
  if (!visit(first)) return;
  const int stretch = every == Every::Week ? kWeek : 1;
  auto from = every == Every::Week ? weekOf(first) : first;
  for (int month = first.month - 1; from <= last && looks > 0; --looks) {
    // A month without such a day is passed over.
    const bool there = every != Every::Month || Date::parse(from.iso());
    for (int i = 0; there && i < stretch; ++i) {
      const auto date = every == Every::Month ? from : from.plusDays(i);
      if (date <= first || date > last || !(anyDay || days.at(weekday(date)))) continue;
      if (!visit(date)) return;
    }
    month += interval;
    from = every == Every::Month ? Date{first.year + month / kYear, month % kYear + 1, first.day}
                                 : from.plusDays(interval * stretch);
  }
}

}  // namespace orvanta
