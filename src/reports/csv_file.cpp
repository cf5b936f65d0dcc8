#include "reports/csv_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace orvanta {
namespace {

struct Close {
  void operator()(std::FILE* file) const {
    std::fclose(file);  // NOLINT(cppcoreguidelines-owning-memory)
  }
};

using Stream = std::unique_ptr<std::FILE, Close>;

bool exportTo(Stream stream, const Analytics& analytics, const std::string& from,
              const std::string& to) {
  if (!stream) return false;
  bool written = true;
  analytics.exportCsv(from, to, [&](std::string_view text) {
    written = written && std::fwrite(text.data(), 1, text.size(), stream.get()) == text.size();
  });
  return std::fflush(stream.get()) == 0 && written;
}

}  // namespace

bool writeCsv(const Analytics& analytics, const std::string& from, const std::string& to,
              const std::filesystem::path& file) {
  std::error_code ignored;
  const auto status = std::filesystem::status(file, ignored);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    // A pipe or a device is written to, not replaced.
    return exportTo(Stream(std::fopen(file.c_str(), "we")), analytics, from, to);
  }
  const auto target = std::filesystem::weakly_canonical(file, ignored);
  auto temporary = target.string() + ".XXXXXX";
  const int descriptor = mkostemp(temporary.data(), O_CLOEXEC);
  if (descriptor < 0) return false;
  const bool written = exportTo(Stream(fdopen(descriptor, "w")), analytics, from, to) &&
                       std::rename(temporary.c_str(), target.c_str()) == 0;
  if (!written) unlink(temporary.c_str());
  return written;
}

}  // namespace orvanta
