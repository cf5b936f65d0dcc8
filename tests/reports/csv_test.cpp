#include <fmt/format.h>

#include "app/csv_export.h"
#include "reports/analytics.h"
#include "reports/csv_file.h"
#include "support/fake_desktop.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

const std::string kHeader =
    "\xEF\xBB\xBF"
    "debut;fin;duree_s;categorie;projet;app;domaine;titre;url";

struct CsvTest : testing::Test {
  std::string csv(const char* from, const char* to) {
    std::string text;
    analytics.exportCsv(*Date::parse(from), *Date::parse(to),
                        [&](std::string_view piece) { text += piece; });
    return text;
  }

  TempStore store;
  FakeClock clock;
  Calendar paris{Glib::TimeZone::create("Europe/Paris")};
  Analytics analytics{store.db, clock.read(), paris};
  const double midnight = paris.startOf({2024, 3, 31});  // the clock skips from 2 to 3
};

TEST_F(CsvTest, ClipsQuotesAndTruncates) {
  store.db.run("INSERT INTO projects(id, name) VALUES (1, 'L''\"Été\"; suite')");
  store.db.run("INSERT INTO events(start,end,app,project_id) VALUES (?,?,'A',99)",
               {midnight - 100, midnight + 59.9});
  store.db.run(
      "INSERT INTO events(start,end,app,domain,title,url,category,project_id) VALUES "
      "(?,?,?,?,?,?,?,?)",
      {midnight + 7199, midnight + 7201, "B;b", "x.fr", "dit \"oui\"\nligne", "https://x.fr/;",
       "loisir", 1});
  store.db.run("INSERT INTO events(start,end,idle) VALUES (?,?,1)",
               {midnight + 9000, midnight + 8000});
  EXPECT_EQ(
      csv("2024-03-31", "2024-03-31"),
      kHeader +
          "\n2024-03-31 00:00:00;2024-03-31 00:00:59;59;nonclasse;\"\";\"A\";\"\";\"\";\"\""
          "\n2024-03-31 01:59:59;2024-03-31 03:00:01;2;loisir;\"L'\"\"Été\"\"; suite\";\"B;b\";"
          "\"x.fr\";\"dit \"\"oui\"\"\nligne\";\"https://x.fr/;\""
          "\n2024-03-31 03:30:00;2024-03-31 03:13:20;0;inactif;\"\";\"Inconnu\";\"\";\"\";\"\"");
  EXPECT_EQ(csv("2024-04-01", "2024-03-30"), kHeader);
  EXPECT_EQ(csv("2025-01-01", "2025-12-31"), kHeader);
  store.db.run(
      "UPDATE events SET app=CAST(x'61ff00' AS TEXT), category='a;b', start=-9e999, end=9e999 "
      "WHERE app='A'");
  EXPECT_EQ(csv("2025-01-01", "2025-12-31"),
            kHeader +
                "\n2025-01-01 00:00:00;2026-01-01 00:00:00;31536000;\"a;b\";\"\";"
                "\"a\uFFFD\uFFFD\";\"\";\"\";\"\"")
      << "whatever the store holds, it is a table";
}

TEST_F(CsvTest, TellsTheWallClockWhereItIsChangedAtAnOddMinute) {
  // Until 2011 Newfoundland changed its clocks a minute past midnight.
  const Calendar calendar{Glib::TimeZone::create("America/St_Johns")};
  const Analytics analytics{store.db, clock.read(), calendar};
  const double change = calendar.startOf({2010, 3, 14}) + 60;
  std::string expected = kHeader;
  for (const auto& [at, shown] :
       {std::pair(-61, "2010-03-13 23:59:59"), std::pair(-1, "2010-03-14 00:00:59"),
        std::pair(0, "2010-03-14 01:01:00"), std::pair(1000, "2010-03-14 01:17:40")}) {
    store.db.run("INSERT INTO events(start,end,app) VALUES (?,?,'A')", {change + at, change + at});
    expected += fmt::format("\n{0};{0};0;nonclasse;\"\";\"A\";\"\";\"\";\"\"", shown);
  }
  std::string text;
  analytics.exportCsv({2010, 3, 13}, {2010, 3, 15}, [&](auto piece) { text += piece; });
  EXPECT_EQ(text, expected);
}

TEST_F(CsvTest, GoesToAFileOfItsOwnerOnly) {
  const auto path = store.folder.path() / "export.csv";
  EXPECT_EQ(exportCsvFile(analytics, {"2024-03-31", "2024-04-02", path}), 0);
  EXPECT_EQ(bytesIn(path), kHeader);
  EXPECT_EQ(modeOf(path), 0600U);
  EXPECT_EQ(exportCsvFile(analytics, {"2024-03-31"}), 2);
  EXPECT_EQ(exportCsvFile(analytics, {"hier", "2024-03-31"}), 2);
  EXPECT_EQ(exportCsvFile(analytics, {"2024-03-31", "2024-03-31", "/nulle/part.csv"}), 1);
  EXPECT_EQ(exportCsvFile(analytics, {"2024-03-31", "2024-03-31", "/dev/full"}), 1);
  EXPECT_EQ(writeCsv(analytics, {2024, 3, 31}, {2024, 3, 31}, "/dev/full").problem,
            "il n’y a plus de place");
}

}  // namespace
}  // namespace orvanta::test
