#include "store_maker/bench_stores.h"

#include <fmt/format.h>

#include <cstdlib>
#include <limits>
#include <random>

#include "base/calendar.h"
#include "base/clock.h"
#include "classify/defaults.h"
#include "storage/transaction.h"
#include "store_maker/span_writer.h"

namespace orvanta::bench {
namespace {

constexpr double kSecondsPerDay = 86400;
constexpr double kMorning = 7 * 3600;
constexpr double kWorkingDay = 15 * 3600;

class Life {
 public:
  explicit Life(SpanWriter& spans) : spans_(spans) {}

  void live(int day, double midnight) {
    spans_.add({.start = midnight - kSecondsPerDay + kMorning + kWorkingDay,
                .end = midnight + kMorning,
                .app = "Inactif",
                .idle = true});
    const double length = kWorkingDay / (kSpansPerDay - 1);
    double at = midnight + kMorning;
    for (int i = 1; i < kSpansPerDay; ++i, at += length) {
      const int app = upTo(11);
      if (app > 4) {
        const auto title =
            fmt::format("Document {} de la semaine {} — relecture", upTo(200), day / 7);
        spans_.add({.start = at,
                    .end = at + length,
                    .app = fmt::format("Application {}", app),
                    .title = title,
                    .idle = upTo(39) == 0});
        continue;
      }
      const auto site =
          app == 0 ? std::string("www.youtube.com") : fmt::format("site{}.fr", upTo(150));
      const int page = upTo(400);
      spans_.add(
          {.start = at,
           .end = at + length,
           .app = "Firefox",
           .title = fmt::format("Page {} de la semaine {} — un titre assez long", page, day / 7),
           .url = fmt::format("https://{}/chemin/{}/{}?parametre=valeur", site, day / 7, page),
           .domain = site});
    }
  }

 private:
  int upTo(int most) { return std::uniform_int_distribution<int>(0, most)(random_); }

  SpanWriter& spans_;
  std::mt19937 random_{7};  // NOLINT(cert-msc51-cpp): the same life every time
};

}  // namespace

double today() {
  const Calendar calendar;
  return calendar.startOf(calendar.dateOf(wallClock()));
}

DataLocation storeLocation(int days) {
  const auto date = Calendar().dateOf(wallClock()).iso();
  return DataLocation::under(std::filesystem::temp_directory_path() /
                             fmt::format("orvanta-bench-{}-days-until-{}", days, date));
}

std::unique_ptr<Database> openStoreToChange(int days) {
  namespace fs = std::filesystem;
  const auto from = storeLocation(days);
  const auto base = from.dir.parent_path().string() + "-to-change";
  const auto to = DataLocation::under(base);
  if (!fs::exists(to.file())) {
    openStore(days);
    fs::create_directories(to.dir);
    fs::copy_file(from.file(), to.file());
  }
  auto db = std::make_unique<Database>(to);
  if (!db->setSetting("retention_days", "30")) std::abort();
  return db;
}

std::unique_ptr<Database> openStore(int days) {
  auto db = std::make_unique<Database>(storeLocation(days));
  if (db->setting("bench_made") == "1") return db;
  seedDefaults(*db, wallClock);
  Transaction change(*db);
  change.run("DELETE FROM events");
  for (int i = 1; i <= 10; ++i) {
    change.run(
        "INSERT OR IGNORE INTO projects(name, keywords) VALUES (?, ?)",
        {fmt::format("Projet {}", i), fmt::format("document {}, client numéro {}", 150 + i, i)});
  }
  SpanWriter spans(change, std::numeric_limits<double>::max());
  Life life(spans);
  for (int day = 0; day < days; ++day) life.live(day, today() - (days - 1 - day) * kSecondsPerDay);
  change.run("INSERT OR REPLACE INTO settings VALUES ('bench_made', '1')");
  if (!change.commit() || !db->truncateLog()) std::abort();
  return db;
}

}  // namespace orvanta::bench
