#include "app/csv_export.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>

#include "base/calendar.h"
#include "base/whole_file.h"
#include "reports/csv_file.h"

namespace orvanta {
namespace {

CsvWritten print(const Analytics& analytics, const Date& from, const Date& to) {
  bool written = true;
  const bool whole = analytics.exportCsv(from, to, [&](std::string_view text) {
    written = written && std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
  });
  if (std::fflush(stdout) != 0 || !written) return {reasonOf(errno)};
  return {whole ? "" : kUnreadable};
}

}  // namespace

int exportCsvFile(const Analytics& analytics, const std::vector<std::string>& words) {
  if (words.size() < 2 || words.size() > 3) {
    fmt::print(stderr, "usage : orvanta --export DU AU [FICHIER]\n");
    return 2;
  }
  const auto from = Date::parse(words[0]);
  const auto to = Date::parse(words[1]);
  if (!from || !to) {
    fmt::print(stderr, "Orvanta : « {} » n’est pas une date de la forme AAAA-MM-JJ\n",
               words[from ? 1 : 0]);
    return 2;
  }
  const bool toFile = words.size() > 2;
  const auto written =
      toFile ? writeCsv(analytics, *from, *to, words[2]) : print(analytics, *from, *to);
  if (written) return 0;
  fmt::print(stderr, "Orvanta : impossible d’écrire {} : {}\n",
             toFile ? words[2] : "la sortie standard", written.problem);
  return 1;
}

}  // namespace orvanta
