#include <fstream>
#include <set>

#include "support/program.h"
#include "support/store_rows.h"

namespace orvanta::test {
namespace {

constexpr double kMonday = 1'699'866'000;  // 13 November 2023, 10:00 in Paris
constexpr double kTuesday = kMonday + 86400;
constexpr auto kBoth = R"("from": "2023-11-13", "to": "2023-11-14")";

struct SheetTest : testing::Test, Program {
  SheetTest() {
    call("projects.save", R"({"name": "Site web", "client": "Ada",
         "terms": {"rate": 8550, "budget": 36000, "rounding": 15}})");
    call("projects.save", R"({"name": "=SOMME(1;2)\"", "client": "Ada", "terms": null})");
    span(kMonday, 1000, 1);
    span(kTuesday, 3000, 1);
    span(kTuesday + 4000, 5000, 2);
    span(kTuesday + 9000, 1200, {}, "travail");
    span(kTuesday + 11000, 600, {}, "loisir");
    store.db.run("INSERT INTO events(start,end,app,idle,project_id) VALUES (?,?,'A',1,1)",
                 {kTuesday + 12000, kTuesday + 13000});
  }
  void span(double start, double seconds, const Value& project, const Value& category = {}) {
    store.db.run("INSERT INTO events(start,end,app,category,project_id) VALUES (?,?,'A',?,?)",
                 {start, start + seconds, category, project});
  }
  json::value sheet(const std::string& more = "") {
    return call("sheet", std::string("{") + kBoth + more + "}");
  }
  std::string text(const char* format, const std::string& more = "") {
    const auto body = fmt::format(R"({{{}, "format": "{}"{}}})", kBoth, format, more);
    const auto answer = call("sheet.text", body);
    return answer.as_object().contains("text") ? std::string(answer.at("text").as_string())
                                               : json::serialize(answer);
  }
  // The texts of a row's cells and its total.
  static std::string printed(const json::value& row, const char* key = "text") {
    std::string text;
    for (const auto& cell : row.at("cells").as_array()) {
      text += (cell.is_null() ? "-" : std::string(cell.at(key).as_string())) + " ";
    }
    return text + std::string(row.at(key).as_string());
  }
  std::multiset<std::string> changes(int64_t id) {
    std::multiset<std::string> texts;
    const auto diff = ask("sheets.diff", {{"id", id}});
    for (const auto& change : diff.at("changes").as_array()) {
      texts.insert(std::string(change.at("text").as_string()));
    }
    return texts;
  }
};

TEST_F(SheetTest, ClientsThatDifferInCaseOrAccentsAreOne) {
  store.db.exec("UPDATE projects SET client = ' ADÀ ' WHERE id = 2");
  const auto made = sheet(R"(, "client": "ada")");
  EXPECT_EQ(made.at("rows").as_array().size(), 2U);
  ASSERT_EQ(made.at("clients").as_array().size(), 1U);
  EXPECT_EQ(made.at("clients").at(0).at("client"), "Ada");
  const auto period = call("period", std::string("{") + kBoth + "}");
  EXPECT_EQ(period.at("by_client").as_array().size(), 1U);
  const auto projects = call("projects.list").as_array();
  EXPECT_TRUE(std::any_of(projects.begin(), projects.end(), [](const auto& project) {
    return project.at("client") == " ADÀ ";
  })) << "what is stored stays";
}

TEST_F(SheetTest, ADeletedVersionsNumberIsNotGivenAgain) {
  const auto freeze = [&] { return call("sheets.freeze", std::string("{") + kBoth + "}"); };
  const auto list = [&] { return call("sheets.list").as_array().size(); };
  const auto remove = [&](const json::value& sheet) {
    return ask("sheets.delete", {{"id", sheet.at("id")}}).as_object().contains("ok");
  };
  const auto first = freeze();
  const auto second = freeze();
  EXPECT_TRUE(remove(second));
  EXPECT_FALSE(remove(second)) << "it is gone";
  EXPECT_EQ(list(), 1U);
  EXPECT_TRUE(ask("sheets.get", {{"id", second.at("id")}}).as_object().contains("error"));
  EXPECT_EQ(freeze().at("version"), 3);
  EXPECT_TRUE(remove(first));
  EXPECT_EQ(list(), 1U);
  EXPECT_EQ(store.db.query("SELECT 1 FROM sheets").size(), 1U) << "no more rows than needed";
}

TEST_F(SheetTest, CountsWhatItPrints) {
  const auto made = sheet();
  const auto& rows = made.at("rows");
  ASSERT_EQ(rows.as_array().size(), 2U);
  EXPECT_EQ(rows.at(0).at("name"), "=SOMME(1;2)\"");
  EXPECT_EQ(printed(rows.at(0)), "- 1:23 1:23");
  EXPECT_TRUE(rows.at(0).at("amount").is_null());
  EXPECT_EQ(printed(rows.at(1)), "0:15 0:45 1:00");
  EXPECT_EQ(printed(rows.at(1), "raw_text"), "0:17 0:50 1:07");
  EXPECT_EQ(rows.at(1).at("amount"), "85,50\u00a0€");
  EXPECT_EQ(printed(made.at("totals")), "0:15 2:08 2:23");
  EXPECT_EQ(made.at("clients").as_array().size(), 1U);
  EXPECT_EQ(made.at("clients").at(0).at("amounts").at(0).at("cents"), 8550);
  EXPECT_EQ(printed(made.at("unassigned")), "- 0:20 0:20") << "leisure waits for no project";
  const auto up = sheet(R"(, "rounding": 30, "rounding_mode": "up", "client": "ada",
                           "hours": "decimal")");
  EXPECT_EQ(printed(up.at("rows").at(1)), "0,50 1,00 1,50");
  EXPECT_TRUE(up.at("unassigned").is_null());
  const auto total = sheet(R"(, "rounding": 15, "rounding_scope": "total", "project_id": 1)");
  EXPECT_EQ(printed(total.at("rows").at(0)), "0:17 0:50 1:00");
  EXPECT_EQ(sheet(R"(, "columns": "month")").at("columns").at(0).at("label"), "13/11–14/11/2023");
  EXPECT_EQ(sheet(R"(, "rounding": 7)").at("error"),
            "arrondi inconnu\u00a0: 0, 5, 6, 10, 15 ou 30 minutes");
  EXPECT_TRUE(
      call("sheet", R"({"from": "2023-11-14", "to": "2023-11-13"})").as_object().contains("error"));
}

TEST_F(SheetTest, TermsAreKeptUntilTheyAreSentAgain) {
  call("projects.save", R"({"id": 1, "name": "Site"})");
  const auto terms = call("projects.terms");
  EXPECT_EQ(terms.at(0).at("client"), "Ada");
  EXPECT_EQ(terms.at(0).at("rate_text"), "85,50\u00a0€/h");
  const auto hours = call("projects.hours").at(0);
  EXPECT_EQ(hours.at("this_month"), 4000.0);
  EXPECT_EQ(hours.at("left"), 32000.0);
  EXPECT_EQ(hours.at("used_percent"), 11);
  EXPECT_EQ(hours.at("runs_out"), "2024-06-25") << "1000 seconds a week";
  for (const auto* wrong : {R"("rate": -1)", R"("currency": "€")", R"("rounding": 7)",
                            R"("budget_from": "hier")", R"("budget": 1e300)"}) {
    EXPECT_TRUE(
        call("projects.save", fmt::format(R"({{"id": 1, "name": "S", "terms": {{{}}}}})", wrong))
            .as_object()
            .contains("error"))
        << wrong;
  }
  call("projects.save",
       R"({"id": 1, "name": "Site", "client": " ", "terms": {"billable": false}})");
  EXPECT_EQ(call("projects.terms").at(0).at("client"), "");
  EXPECT_TRUE(call("projects.terms").at(0).at("rate").is_null());
  store.db.run("UPDATE project_terms SET rate=9e18, budget=-1");
  EXPECT_TRUE(sheet().at("rows").at(0).at("amount").is_null()) << "what another program wrote";
  EXPECT_TRUE(call("projects.hours").at(0).at("left").is_null());
}

// Of a project that is gone: what it was agreed for, what a sheet that was sent says of it.
TEST_F(SheetTest, NoProjectGetsTheNumberOfAnother) {
  const auto sent = call("sheets.freeze", std::string("{") + kBoth + "}").at("id");
  for (const auto* id : {"1", "2"}) call("projects.delete", fmt::format(R"({{"id": {}}})", id));
  store.db.run("DELETE FROM project_terms");
  for (const int64_t next : {3, 4}) {
    store.db.run("DELETE FROM changes");  // what goes after a while
    Program later(store.folder.path());
    const auto added = later.call("projects.save", R"({"name": "Autre", "terms": {"rate": 7}})");
    EXPECT_EQ(added.at("id"), next);
    later.ask("projects.delete", {{"id", next}});
  }
  EXPECT_EQ(changes(sent.as_int64()).count("Site web\u00a0: 1:00 → rien"), 1U);
}

TEST_F(SheetTest, TakenBackAreTermsClientAndAll) {
  const auto before = rowsOf(store.db.location().file(), {"projects", "project_terms"});
  call("projects.save", R"({"id": 1, "name": "S", "client": "Rex", "terms": {"currency": "CHF",
       "rate": 1, "billable": false, "budget": 9, "budget_from": "2023-01-01", "rounding": 5}})");
  call("projects.delete", R"({"id": 1})");
  call("projects.save", R"({"name": "Autre", "terms": {"rate": 7}})");
  const auto list = call("changes.list");
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(undo(list.at(i).at("id")));
  }
  EXPECT_EQ(difference(before, rowsOf(store.db.location().file(), {"projects", "project_terms"})),
            "");
}

TEST_F(SheetTest, FilesAreWhatSpreadsheetsCalendarsAndMailsExpect) {
  EXPECT_EQ(text("csv"),
            "\xEF\xBB\xBF\"Client\";\"Projet\";\"13/11/2023\";\"14/11/2023\";Total;Sans arrondi;"
            "Tarif;Montant;Devise\r\n"
            "\"Ada\";\"'=SOMME(1;2)\"\"\";;1,3833;1,3833;1,3833;;;\r\n"
            "\"Ada\";\"Site web\";0,25;0,75;1,00;1,1167;85,50;85,50;\"EUR\"\r\n"
            "\"\";\"Total\";0,25;2,1333;2,3833;2,50;;85,50;\"EUR\"\r\n"
            "\"\";\"Sans projet\";;0,3333;0,3333;0,3333;;;\r\n");
  EXPECT_NE(text("csv_plain", R"(, "hours": "decimal", "project_id": 1)")
                .find("\"Ada\",\"Site web\",0.25,0.75,1.00,1.11,85.50,85.50,\"EUR\"\r\n"),
            std::string::npos);
  EXPECT_NE(text("text").find("  Site web" + std::string(15, ' ') + "1:00" + std::string(10, ' ') +
                              "1:07"),
            std::string::npos)
      << text("text");
  call("projects.save",
       R"({"id": 1, "name": "Refonte; a,b\\ \nBEGIN:VEVENT étés étés étés étés étés étés étés"})");
  const auto ics = text("ics");
  EXPECT_NE(ics.find("DTSTART:20231113T090000Z\r\nDTEND:20231113T091640Z\r\n"
                     "SUMMARY:Refonte\\; a\\,b\\\\  BEGIN:VEVENT étés étés étés étés"),
            std::string::npos)
      << ics;
  std::istringstream lines(ics);
  for (std::string line; std::getline(lines, line);) {
    EXPECT_LE(line.size(), 76U) << "75 bytes and the carriage return";
    EXPECT_TRUE(line.ends_with('\r'));
  }
  shell.saveTo = store.db.location().dir / "feuille.csv";
  EXPECT_EQ(call("sheet.export", std::string("{") + kBoth + "}").at("ok"), true);
  EXPECT_EQ(shell.asked.back(), "save feuille_2023-11-13_2023-11-14.csv");
  EXPECT_EQ(bytesIn(*shell.saveTo), text("csv"));
  shell.saveTo = "/nulle/part.csv";
  EXPECT_EQ(call("sheet.export", std::string("{") + kBoth + "}").at("written"), false);
}

TEST_F(SheetTest, NothingChangesWhatWasSent) {
  const auto body = std::string("{") + kBoth + R"(, "client": "Ada", "title": "Facture 7"})";
  const auto shouted = std::string("{") + kBoth + R"(, "client": "ADA"})";
  const auto frozen = call("sheets.freeze", body);
  EXPECT_EQ(frozen.at("version"), 1);
  const auto id = frozen.at("id").as_int64();
  const auto sent = ask("sheets.get", {{"id", id}});
  EXPECT_EQ(sent.at("sheet").at("title"), "Facture 7");
  EXPECT_EQ(ask("sheets.diff", {{"id", id}}).at("same"), true);
  EXPECT_EQ(call("sheets.freeze", shouted).at("version"), 2) << "the same client";

  call("events.assign", R"({"ids": [4], "project_id": 1})");  // by hand, learnt
  call("rules.save", R"({"field": "app", "pattern": "A", "project_id": 2})");
  call("projects.save", R"({"id": 1, "name": "Site", "archived": 1, "client": "Ada",
       "terms": {"rate": 9000, "rounding": 15}})");
  call("projects.delete", R"({"id": 2})");
  EXPECT_EQ(ask("sheets.get", {{"id", id}}), sent);
  EXPECT_EQ(changes(id),
            (std::multiset<std::string>{
                "=SOMME(1;2)\"\u00a0: 1:23 → rien",
                "Nom de «\u00a0Site web\u00a0»\u00a0: Site web → Site",
                "Site web, tarif\u00a0: 85,50\u00a0€/h → 90,00\u00a0€/h",
                "Site web, 14/11/2023\u00a0: 0:45 → 1:15", "Site web, total\u00a0: 1:00 → 1:30",
                "Site web, montant\u00a0: 85,50\u00a0€ → 135,00\u00a0€", "Total\u00a0: 2:23 → 1:30",
                "Montant\u00a0: 85,50\u00a0€ → 135,00\u00a0€"}));

  call("events.delete", R"({"ids": [1, 2, 3]})");
  EXPECT_EQ(ask("sheets.get", {{"id", id}}), sent) << "hours that are erased were sent";
  const auto backup = call("store.backup").at("file");
  call("sheets.delete", R"({"id": 2})");
  EXPECT_EQ(call("sheets.list").as_array().size(), 1U);
  EXPECT_EQ(ask("store.restore", {{"file", backup}}).at("ok"), true);
  EXPECT_EQ(call("sheets.list").as_array().size(), 2U);
  EXPECT_EQ(ask("sheets.get", {{"id", id}}), sent);
  EXPECT_EQ(call("projects.terms").at(0).at("rate"), 9000);
  EXPECT_EQ(
      ask("sheet.text", {{"id", id}, {"format", "text"}}).at("text").as_string().find("Facture 7"),
      0U);
  EXPECT_TRUE(call("sheets.get", R"({"id": 99})").as_object().contains("error"));
  EXPECT_TRUE(call("sheets.delete", R"({"id": 99})").as_object().contains("error"));
}

}  // namespace
}  // namespace orvanta::test
