#include "reports/csv_file.h"

#include "base/whole_file.h"

namespace orvanta {

CsvWritten writeCsv(const Analytics& analytics, const Date& from, const Date& to,
                    const std::filesystem::path& file) {
  WholeFile whole(file);
  if (whole.problem().empty() &&
      !analytics.exportCsv(from, to, [&](std::string_view text) { whole.write(text); })) {
    return {kUnreadable};
  }
  return {whole.finish()};
}

}  // namespace orvanta
