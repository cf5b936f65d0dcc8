#include "app/report_commands.h"

#include <fmt/format.h>

#include <algorithm>
#include <boost/json/serialize.hpp>
#include <cerrno>
#include <cstdio>

#include "app/period_text.h"
#include "base/display_text.h"
#include "base/exact_json.h"
#include "base/folded.h"
#include "base/text.h"
#include "base/whole_file.h"
#include "bridge/sheet_files.h"
#include "bridge/sheet_json.h"
#include "reports/csv_file.h"

namespace orvanta {
namespace {

constexpr int kWrongWords = 2;
constexpr std::size_t kLongestName = 200;

std::optional<DateRange> periodIn(const std::vector<std::string>& words, const char* usage) {
  if (words.size() != 1) {
    fmt::print(stderr, "usage\u00a0: orvanta {}\n", usage);
    return {};
  }
  const auto range = parsePeriod(words.front());
  if (range && range->days() > kMostDays) {
    fmt::print(stderr, "Orvanta\u00a0: période trop longue\u00a0: vingt ans au plus\n");
    return {};
  }
  if (!range) {
    fmt::print(
        stderr,
        "Orvanta\u00a0: «\u00a0{}\u00a0» n’est pas une période comme 2026, 2026-T4, 2026-10, "
        "2026-W43, 2026-10-05 ou 2026-10-05..2026-10-20\n",
        oneLine(words.front(), kLongestName));
    return {};
  }
  return range;
}

bool isClient(const Projects& projects, const std::string& name) {
  return std::any_of(projects.begin(), projects.end(), [&](const auto& project) {
    return folded(project.second.client) == folded(trimBlanks(name));
  });
}

}  // namespace

int printText(const std::string& text, bool whole) {
  const auto valid = validUtf8(text);
  const bool written = std::fwrite(valid.data(), 1, valid.size(), stdout) == valid.size();
  if (std::fflush(stdout) != 0 || !written) {
    fmt::print(stderr, "Orvanta\u00a0: impossible d’écrire la sortie standard\u00a0: {}\n",
               reasonOf(errno));
    return 1;
  }
  if (!whole) fmt::print(stderr, "Orvanta\u00a0: {}\n", kUnreadable);
  return whole ? 0 : 1;
}

int reportCommand(const Analytics& analytics, const Calendar& calendar,
                  const std::vector<std::string>& words) {
  const auto range = periodIn(words, "--report PÉRIODE");
  if (!range) return kWrongWords;
  const auto report = analytics.period({.range = *range});
  return printText(periodText(report, calendar), report.whole);
}

int sheetCommand(const Analytics& analytics, const Clock& clock, const Projects& projects,
                 const std::vector<std::string>& words, const std::optional<std::string>& client,
                 const std::string& format) {
  const auto range = periodIn(words, "--sheet PÉRIODE [--client NOM] [--format FORMAT]");
  if (!range) return kWrongWords;
  const auto fileFormat = parsed<SheetFormat>(format);
  if (!fileFormat && format != "json") {
    fmt::print(stderr,
               "Orvanta\u00a0: «\u00a0{}\u00a0» n’est pas un format\u00a0: text, csv, csv_plain, "
               "json, ics\n",
               format);
    return kWrongWords;
  }
  if (client && !isClient(projects, *client)) {
    fmt::print(stderr, "Orvanta\u00a0: aucun projet n’a pour client «\u00a0{}\u00a0»\n",
               oneLine(*client, kLongestName));
    return kWrongWords;
  }
  const SheetQuestion question{.range = *range, .client = client};
  if (fileFormat == SheetFormat::Ics) {
    const auto entries = analytics.sheetEntries(question);
    return printText(calendarFile(entries.list, clock()), entries.whole);
  }
  const auto sheet = analytics.sheet(question);
  const auto object = sheetJson(sheet);
  const auto text = fileFormat ? sheetFile(object, *fileFormat)
                               : plainNumbers(boost::json::serialize(object)) + "\n";
  return printText(text, sheet.whole);
}

}  // namespace orvanta
