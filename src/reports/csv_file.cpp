#include "reports/csv_file.h"

#include "base/whole_file.h"

namespace orvanta {
namespace {

// `writeTo` hands it over piece by piece; false when that is not all.
template <class WriteTo>
CsvWritten writeWhole(const std::filesystem::path& file, const WriteTo& writeTo) {
  WholeFile whole(file);
  if (whole.problem().empty() && !writeTo([&](std::string_view text) { whole.write(text); })) {
    return {kUnreadable};
  }
  return {whole.finish()};
}

}  // namespace

CsvWritten writeCsv(const Analytics& analytics, const Date& from, const Date& to,
                    const std::filesystem::path& file) {
  return writeWhole(file, [&](const auto& write) { return analytics.exportCsv(from, to, write); });
}

CsvWritten writeFoundCsv(const Analytics& analytics, const std::string& text,
                         const std::filesystem::path& file) {
  return writeWhole(file, [&](const auto& write) { return analytics.exportFound(text, write); });
}

}  // namespace orvanta
