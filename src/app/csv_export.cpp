#include "app/csv_export.h"

#include <fmt/format.h>

#include <cerrno>
#include <cstdio>

#include "base/calendar.h"
#include "base/whole_file.h"
#include "reports/csv_file.h"

namespace orvanta {
namespace {

CsvWritten print(const Analytics& analytics, const std::string& from, const std::string& to) {
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
    fmt::print(stderr, "usage : orvanta --export DU AU [FICHIER]\n");
    return 2;
  }
  for (const auto& word : {words[0], words[1]}) {
    if (Date::parse(word)) continue;
    fmt::print(stderr, "Orvanta : « {} » n'est pas une date de la forme AAAA-MM-JJ\n", word);
    return 2;
  }
  const bool toFile = words.size() > 2;
  const auto written = toFile ? writeCsv(analytics, words[0], words[1], words[2])
                              : print(analytics, words[0], words[1]);
  if (written) return 0;
  fmt::print(stderr, "Orvanta : impossible d'écrire {} : {}\n",
             toFile ? words[2] : "la sortie standard", written.problem);
  return 1;
}

}  // namespace orvanta
