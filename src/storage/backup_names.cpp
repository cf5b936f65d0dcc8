#include "storage/backup_names.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <array>
#include <chrono>
#include <cmath>
#include <regex>

namespace orvanta {
namespace fs = std::filesystem;
namespace {

constexpr int64_t kMinute = 60;
constexpr int64_t kHour = 3600;
constexpr int64_t kDay = 86400;
constexpr double kNano = 1e9;

int64_t wallMinuteOf(const Date& date, int hour, int minute) {
  using namespace std::chrono;
  const sys_days day = year_month_day(year(date.year), month(static_cast<unsigned>(date.month)),
                                      std::chrono::day(static_cast<unsigned>(date.day)));
  return int64_t{day.time_since_epoch().count()} * kDay + hour * kHour + minute * kMinute;
}

// An instant at which the wall clock shows this; close to it where it never does.
double instantOf(int64_t wall, const Calendar& calendar) {
  auto instant = static_cast<double>(wall);
  for (int i = 0; i < 2; ++i) {
    instant += static_cast<double>(wall - calendar.wallSeconds(instant));
  }
  return instant;
}

}  // namespace

std::string localStamp(double instant, const Calendar& calendar) {
  const auto wall = calendar.wallSeconds(instant);
  const auto ofDay = wall - floorDivide(wall, kDay) * kDay;
  return fmt::format("{}-{:02}{:02}", calendar.dateOf(instant).iso(), ofDay / kHour,
                     ofDay % kHour / kMinute);
}

std::string backupName(double instant, int number, const Calendar& calendar) {
  const auto more = number > 1 ? fmt::format("-{}", number) : std::string();
  return fmt::format("orvanta-{}{}.db", localStamp(instant, calendar), more);
}

std::optional<BackupName> readBackupName(const fs::path& file, const Calendar& calendar) {
  static const std::regex form(
      "orvanta-([0-9]{4}-[0-9]{2}-[0-9]{2})-([01][0-9]|2[0-3])([0-5][0-9])(-([1-9][0-9]{0,5}))?"
      "\\.db");
  std::smatch parts;
  const auto name = file.filename().string();
  if (!std::regex_match(name, parts, form)) return {};
  const auto date = Date::parse(parts[1]);
  if (!date) return {};
  const auto wall = wallMinuteOf(*date, std::stoi(parts[2]), std::stoi(parts[3]));
  const auto modified = modifiedAt(file);
  const bool agree = floorDivide(calendar.wallSeconds(modified), kMinute) == wall / kMinute;
  return BackupName{.time = agree ? modified : instantOf(wall, calendar),
                    .number = parts[5].matched ? std::stoi(parts[5]) : 1};
}

double modifiedAt(const fs::path& file) {
  struct stat facts{};
  if (lstat(file.c_str(), &facts) != 0) return 0;
  return static_cast<double>(facts.st_mtim.tv_sec) +
         static_cast<double>(facts.st_mtim.tv_nsec) / kNano;
}

void setModifiedAt(const fs::path& file, double instant) {
  const double whole = std::floor(instant);
  const timespec modified{.tv_sec = static_cast<time_t>(whole),
                          .tv_nsec = static_cast<long>((instant - whole) * kNano)};
  const std::array times{timespec{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, modified};
  utimensat(AT_FDCWD, file.c_str(), times.data(), AT_SYMLINK_NOFOLLOW);
}

}  // namespace orvanta
