// make-store: a store of made-up data, as the program of a user who has it for some time.
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/calendar.h"
#include "base/clock.h"
#include "store_maker/store_maker.h"

namespace {

using namespace orvanta;

constexpr auto kUsage =
    "usage: make-store FOLDER [--kind person|odd|empty|new] [--days N] [--blocks N]\n"
    "                  [--until \"YYYY-MM-DD HH:MM\"]\n"
    "Makes FOLDER/Orvanta/orvanta.db, where FOLDER stands for XDG_DATA_HOME: the N days (31) "
    "until\n"
    "the time given (now), the last one in N blocks.\n";

std::optional<int> number(std::string_view text) {
  int value = 0;
  const auto [stop, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || stop != text.data() + text.size() || value < 0) return {};
  return value;
}

// Of what the wall clock shows.
std::optional<double> instant(const std::string& text) {
  constexpr std::size_t kDateLength = 10;
  constexpr std::size_t kLength = 16;
  const auto date = Date::parse(text.substr(0, kDateLength));
  if (!date || text.size() != kLength) return {};
  const auto hours = number(text.substr(kDateLength + 1, 2));
  const auto minutes = number(text.substr(kDateLength + 4, 2));
  if (!hours || !minutes) return {};
  return Calendar().startOf(*date) + *hours * 3600 + *minutes * 60;
}

bool read(const std::vector<std::string>& words, StorePlan& plan) {
  for (std::size_t i = 0; i + 1 < words.size(); i += 2) {
    const auto& value = words[i + 1];
    const auto read = number(value);
    if (words[i] == "--kind" && storeKind(value)) {
      plan.kind = *storeKind(value);
    } else if (words[i] == "--days" && read) {
      plan.days = *read;
    } else if (words[i] == "--blocks" && read) {
      plan.blocks = *read;
    } else if (words[i] == "--until" && instant(value)) {
      plan.now = *instant(value);
    } else {
      return false;
    }
  }
  return words.size() % 2 == 0;
}

}  // namespace

int main(int argc, char** argv) {
  StorePlan plan{.now = wallClock()};
  if (argc < 2 || argv[1][0] == '-' || !read({argv + 2, argv + argc}, plan)) {
    std::fputs(kUsage, stderr);
    return 2;
  }
  const auto where = DataLocation::under(argv[1]);
  if (std::filesystem::exists(where.file())) {
    std::fprintf(stderr, "make-store: %s exists\n", where.file().c_str());
    return 1;
  }
  return makeStore(where, plan) ? 0 : 1;
}
