#include "app/csv_export.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <cstdio>
#include <memory>
#include <optional>

#include "base/calendar.h"

namespace orvanta {
namespace {

struct Close {
  void operator()(std::FILE* file) const {
    if (file && file != stdout) std::fclose(file);  // NOLINT(cppcoreguidelines-owning-memory)
  }
};
using File = std::unique_ptr<std::FILE, Close>;

File openFile(const std::vector<std::string>& words) {
  if (words.size() < 3) return File(stdout);
  const int file =
      open(words[2].c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, S_IRUSR | S_IWUSR);
  return File(file >= 0 ? fdopen(file, "w") : nullptr);
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
  const auto file = openFile(words);
  bool written = file != nullptr;
  if (written) {
    analytics.exportCsv(words[0], words[1], [&](std::string_view text) {
      written = written && std::fwrite(text.data(), 1, text.size(), file.get()) == text.size();
    });
    written = written && std::fflush(file.get()) == 0;
  }
  if (written) return 0;
  fmt::print(stderr, "Orvanta : impossible d'écrire {}\n",
             words.size() > 2 ? words[2] : "la sortie standard");
  return 1;
}

}  // namespace orvanta
