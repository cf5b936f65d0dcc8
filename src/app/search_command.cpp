#include "app/search_command.h"

#include <fmt/format.h>

#include <cstdio>

#include "app/report_commands.h"
#include "base/display_text.h"
#include "reports/french_text.h"

namespace orvanta {
namespace {

constexpr std::size_t kLongestTitle = 100;
constexpr auto kColon = "\u00a0: ";
constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kSecondsPerMinute = 60;
constexpr int64_t kMinutesPerHour = 60;

std::string clockOf(double instant, const Calendar& calendar) {
  const auto wall = calendar.wallSeconds(instant);
  const auto minutes =
      (wall - floorDivide(wall, kSecondsPerDay) * kSecondsPerDay) / kSecondsPerMinute;
  return fmt::format("{:02}:{:02}", minutes / kMinutesPerHour, minutes % kMinutesPerHour);
}

std::string momentOf(double instant, const Calendar& calendar) {
  return longDate(calendar.dateOf(instant)) + ", " + clockOf(instant, calendar);
}

std::string rowText(const Found::Row& row, const Calendar& calendar) {
  const auto place = row.domain && !row.domain->empty() ? *row.domain : row.app;
  const auto title = row.title && !row.title->empty() ? *row.title : std::string();
  return fmt::format("  {}-{}  {}{}{} ({})\n", clockOf(row.start, calendar),
                     clockOf(row.end, calendar), oneLine(place, kLongestTitle),
                     title.empty() ? "" : kColon, oneLine(title, kLongestTitle),
                     fmtDur(row.seconds));
}

}  // namespace

std::string foundText(const Found& found, const Calendar& calendar) {
  if (!found.first) return "Rien de tel n’a été enregistré.\n";
  auto text = fmt::format("Temps en tout{}{}\nPremière fois{}{}\n", kColon, fmtDur(found.seconds),
                          kColon, momentOf(*found.first, calendar));
  // When it was done last, which is when that ended.
  if (found.last)
    text += fmt::format("Dernière fois{}{}\n", kColon, momentOf(*found.last, calendar));
  for (const auto& day : found.days) {
    text += fmt::format("\n{}{}{}\n", longDate(day.date), kColon, fmtDur(day.seconds));
    for (const auto& row : day.rows) text += rowText(row, calendar);
    if (day.more > 0) text += fmt::format("  et {} de plus\n", day.more);
  }
  if (found.more) text += "\nIl y a des jours plus anciens.\n";
  return text;
}

int searchCommand(const Analytics& analytics, const Calendar& calendar,
                  const std::vector<std::string>& words) {
  std::string text;
  for (const auto& word : words) text += (text.empty() ? "" : " ") + word;
  if (searchWords(text).empty()) {
    fmt::print(stderr, "usage\u00a0: orvanta --search TEXTE\n");
    return 2;
  }
  const auto found = analytics.search().find({.text = text});
  const auto status = printText(foundText(found, calendar), found.whole);
  return found.first ? status : 1;
}

}  // namespace orvanta
