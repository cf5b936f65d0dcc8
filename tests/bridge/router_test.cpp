#include "bridge/router.h"

#include <fstream>
#include <set>
#include <sstream>

#include "app/route_call.h"
#include "support/program.h"

namespace orvanta::test {
namespace {

struct RouterTest : testing::Test, Program {
  static constexpr double kNow = 1'700'000'000;

  json::value error(const std::string& message) { return json::object{{"error", message}}; }

  int64_t span(double start, double end, const char* app = "A", const Value& category = {},
               const Value& project = {}, bool idle = false) {
    return store.db.run(
        "INSERT INTO events(start,end,app,bundle,title,url,domain,idle,category,project_id) "
        "VALUES (?,?,?,'b','t','u','d.fr',?,?,?)",
        {start, end, app, idle, category, project});
  }
  std::string spans() {
    return Program::spans(
        "ifnull(category, '-') || ' ' || ifnull(project_id, '-') || "
        "iif(title = 't', '', ' title lost')");
  }
  std::string setting(const char* key) { return store.db.setting(key); }
};

TEST_F(RouterTest, StatusTellsAllItHasBeforeAndWhileRecording) {
  EXPECT_EQ(call("status"), json::value({{"paused", false},
                                         {"current", nullptr},
                                         {"now", kNow},
                                         {"accessibility", true},
                                         {"current_project", nullptr},
                                         {"current_project_name", nullptr},
                                         {"current_project_since", nullptr},
                                         {"db", store.db.location().file().string()},
                                         {"onboarded", false},
                                         {"telemetry", false},
                                         {"install_id", ""},
                                         {"version", "0.1"},
                                         {"update", nullptr}}));
  call("onboarding.done");
  EXPECT_EQ(call("tracker.project", R"({"project_id": "12"})"), done());
  EXPECT_EQ(shell.asked, Texts{"menu"});
  auto status = call("status");
  EXPECT_EQ(status.at("onboarded"), true);
  EXPECT_EQ(status.at("current_project"), 12);
  EXPECT_TRUE(status.at("current_project_name").is_null()) << "there is no such project";
  EXPECT_EQ(status.at("current_project_since"), kNow);
  store.db.run("INSERT INTO projects(id, name) VALUES (12, 'Thèse')");
  EXPECT_EQ(call("status").at("current_project_name"), "Thèse");
  call("tracker.pause");
  core.tracker.shutdown();
  EXPECT_EQ(call("status").at("paused"), true);
}

TEST_F(RouterTest, ReportsAndCommandLineCallsAreAskedByName) {
  const auto call = [&](Texts words) {
    const auto result = callRoute(core.router, words);
    return std::pair(result.status, json::parse(result.output));
  };
  EXPECT_TRUE(call({"day"}).second.at("first").is_null());
  for (const auto* today :
       {"{}", R"({"date": ""})", R"({"date": 20231115})", R"({"date": "2023-13-01"})"}) {
    EXPECT_EQ(call({"day", today}).second.at("date"), "2023-11-14") << today;
  }
  EXPECT_EQ(call({"day", R"({"date": "2023-11-15"})"}).second.at("date"), "2023-11-15");
  EXPECT_EQ(call({"week"}).second.at("monday"), "2023-11-13");
  EXPECT_EQ(call({"recap"}).second.at("monday"), "2023-11-13");
  EXPECT_EQ(call({"suggestions"}), std::pair(0, json::value(json::array())));
  EXPECT_EQ(call({"Day"}), std::pair(1, error("route inconnue : Day")));
  const auto broken = error("arguments illisibles : ce n’est pas du JSON");
  for (const auto* text : {"", "{", "{\"date\": \"\xff\"}", "{} {}"}) {
    EXPECT_EQ(call({"day", text}), std::pair(1, broken)) << text;
  }
  for (const auto& words : {Texts(), Texts{"day", "[]"}, Texts{"day", "{}", "{}"}}) {
    EXPECT_EQ(call(words).first, 1);
    EXPECT_TRUE(call(words).second.at("error").is_string());
  }
}

TEST_F(RouterTest, ProjectsAreSavedListedAndDeletedEverywhere) {
  EXPECT_EQ(call("projects.save", R"({"name": "  "})"), error("nom manquant"));
  EXPECT_EQ(call("projects.save", R"({"name": "\u0000x"})"), error("nom manquant"));
  EXPECT_EQ(call("projects.save", R"({"name": "Thèse\u0000"})"),
            error("nom invalide : il contient un caractère nul"));
  EXPECT_EQ(call("projects.save", R"({"name": " Thèse\t", "keywords": "  "})").at("id"), 1);
  EXPECT_EQ(call("projects.save", R"({"name": "Thèse"})"), error("un projet porte déjà ce nom"));
  EXPECT_EQ(call("projects.save", R"({"name": "Âge", "archived": 1})").at("id"), 2);
  EXPECT_EQ(call("projects.save", R"({"id": 1, "name": "Z", "archived": 1.0, "color": "#fff"})"),
            json::value({{"ok", true}, {"id", 1}}));
  EXPECT_EQ(call("projects.list"),
            json::parse(R"([{"id": 2, "name": "Âge", "color": "#3b82f6", "category": "travail",
                             "archived": 0, "created": 1.7E9, "external_id": null, "client": null,
                             "keywords": null},
                            {"id": 1, "name": "Z", "color": "#fff", "category": "travail",
                             "archived": 1, "created": 1.7E9, "external_id": null, "client": null,
                             "keywords": null}])"));
  EXPECT_EQ(call("projects.delete"), error("id manquant"));
  EXPECT_EQ(call("projects.delete", R"({"id": 1e300})"), error("nombre hors limites : id"));
  call("rules.save", R"({"field": "app", "pattern": "A", "project_id": 1})");
  span(0, 1, "A", {}, 1);
  span(1, 2, "A", "travail", 2);
  core.tracker.setCurrentProjectId(1);
  EXPECT_EQ(call("projects.delete", R"({"id": 1})"), done());
  EXPECT_EQ(spans(), "0-1 - -\n1-2 travail 2\n");
  EXPECT_TRUE(call("rules.list").at(0).at("project_id").is_null());
  EXPECT_FALSE(core.tracker.currentProjectId());
}

TEST_F(RouterTest, ARuleReplacesThoseThatDifferInCaseOnly) {
  for (const auto* invalid :
       {R"({"field": "bundle", "pattern": "x"})", R"({"field": "app", "pattern": " \t"})",
        R"({"pattern": "x"})", R"({"field": "app", "pattern": "x\u0000"})"}) {
    EXPECT_EQ(call("rules.save", invalid), error("règle invalide")) << invalid;
  }
  EXPECT_EQ(call("rules.defaults").at("added"), 287);
  call("rules.save", R"({"field": "domain", "pattern": " GitHub.COM ", "category": "loisir"})");
  const auto rules = call("rules.list");
  EXPECT_EQ(rules.as_array().size(), 287U);
  EXPECT_EQ(rules.at(0).at("pattern"), "GitHub.COM");
  EXPECT_EQ(rules.at(0).at("priority"), 0);
  EXPECT_EQ(call("rules.delete"), done());
  EXPECT_EQ(call("rules.list").as_array().size(), 287U);
  EXPECT_EQ(ask("rules.delete", {{"id", rules.at(0).at("id")}}), done());
  EXPECT_EQ(call("rules.defaults").at("added"), 1);
}

TEST_F(RouterTest, AssigningStoresAndLearns) {
  for (const auto* nothing : {"{}", R"({"ids": []})", R"({"ids": [1, "2"]})", R"({"ids": 3})"}) {
    EXPECT_EQ(call("events.assign", nothing), error("aucun bloc")) << nothing;
  }
  span(0, 10);
  span(100000, 100010);
  span(200000, 200010);
  EXPECT_EQ(call("events.assign", R"({"ids": [1, 2], "category": "loisir", "project_id": 3})"),
            json::parse(R"({"ok": true, "learned": [{"field": "domain", "pattern": "d.fr",
                            "category": "loisir", "project": null}]})"));
  EXPECT_EQ(spans(), "0-10 loisir 3\n100000-100010 loisir 3\n200000-200010 - -\n");
  EXPECT_EQ(call("events.assign", R"({"ids": [2, 3], "category": "x", "clear": true})"), done());
  EXPECT_EQ(spans(), "0-10 loisir 3\n100000-100010 - -\n200000-200010 - -\n");
}

TEST_F(RouterTest, AHundredThousandSpansAreAssignedAndTakenBackWhole) {
  store.db.exec(
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 100000) "
      "INSERT INTO events(start,end,app,title,domain) "
      "SELECT i * 10, i * 10 + 10, 'App ' || i % 500, 't' || i, iif(i % 2, 'd' || i % 700, NULL) "
      "FROM n");
  json::array ids;
  for (int64_t id = 1; id <= 100000; ++id) ids.push_back(id);
  const auto count = [&](const char* where) {
    return store.db.query(std::string("SELECT 1 FROM events WHERE ") + where).size();
  };
  const double before = wallClock();
  const auto answer = ask("events.assign", {{"ids", ids}, {"category", "loisir"}});
  EXPECT_LT(wallClock() - before, 120)
      << "seconds, its effect told included; their square is hours";
  EXPECT_EQ(answer.at("ok"), true);
  EXPECT_EQ(count("category='loisir'"), 100000U);
  EXPECT_EQ(newestChange().at("spans"), 100000);
  EXPECT_TRUE(undo(lastChange()));
  EXPECT_EQ(count("category IS NULL"), 100000U);
}

TEST_F(RouterTest, ARangeIsCutOutOfTheSpansThatCrossIt) {
  for (const auto* missing : {"{}", R"({"start": 1})", R"({"start": "1", "end": 2})"}) {
    EXPECT_EQ(call("events.assignRange", missing), error("plage invalide")) << missing;
  }
  span(100, 900, "A", "travail", 1);  // covers it
  span(0, 250, "A");                  // reaches into it
  span(250, 260, "A", "loisir", 2);   // lies in it
  span(350, 90000, "A");              // long, reaches out
  span(210, 390, "Inactif", {}, {}, true);
  span(400, 500, "A");  // only touches it
  EXPECT_EQ(call("events.assignRange", R"({"start": 200, "end": 400.0, "category": "autre"})"),
            done());
  EXPECT_EQ(spans(),
            "0-200 - -\n100-200 travail 1\n200-400 autre -\n200-250 autre -\n210-390 - -\n"
            "250-260 autre -\n350-400 autre -\n400-500 - -\n400-900 travail 1\n400-90000 - -\n");
  EXPECT_EQ(store.db.query("SELECT 1 FROM events WHERE id=1 AND start=200").size(), 1U);
  const auto before = spans();
  call("events.assignRange", R"({"start": 300, "end": 100, "category": "x"})");
  EXPECT_EQ(spans(), before) << "an empty range";
}

TEST_F(RouterTest, SettingsTakeKnownKeysAsText) {
  span(kNow - 3 * 86400, kNow - 2 * 86400);
  EXPECT_EQ(call("settings.set", R"({"idle_threshold": 240, "min_span_seconds": 2.5,
              "paused": true, "excluded_domains": ["a.fr", "l'été"], "privacy_mode": null,
              "rules_seeded": "0", "unknown": 1, "retention_days": 1})"),
            done());
  const auto settings = call("settings.get");
  EXPECT_EQ(settings.at("idle_threshold"), "240");
  EXPECT_EQ(settings.at("min_span_seconds"), "2.5");
  EXPECT_EQ(settings.at("paused"), "1");
  EXPECT_EQ(settings.at("excluded_domains"), R"(["a.fr","l'été"])");
  EXPECT_EQ(settings.at("privacy_mode"), "full");
  EXPECT_FALSE(settings.as_object().contains("unknown"));
  EXPECT_TRUE(holds(spans(), "title lost")) << "retention acts at once";
  EXPECT_EQ(call("settings.set", R"({"idle_threshold": -5, "retention_days": 2})"),
            json::parse(R"({"ok": true, "read_as": {"idle_threshold": 30}})"));
  EXPECT_EQ(setting("idle_threshold"), "-5") << "as it was given";
  const auto described = call("settings.describe").as_array();
  EXPECT_EQ(described.at(0), json::parse(R"({"key": "idle_threshold", "default": "180",
              "kind": "number", "smallest": 30, "largest": 7200, "writer": "user"})"));
  EXPECT_EQ(described.at(3), json::parse(R"({"key": "privacy_mode", "default": "full",
              "kind": "choice", "smallest": null, "largest": null, "writer": "user",
              "choices": ["full", "domain"]})"));
}

TEST_F(RouterTest, PermissionsRememberHowEachBrowserAnswered) {
  store.db.setSetting("browser_perms", "[oops");
  EXPECT_EQ(call("permissions.status"),
            json::parse(R"({"accessibility": true, "launch_at_login": false, "browsers": {},
                            "probes": {"foreground": "fake", "idle": "fake", "inhibition": "fake",
                                       "session": "none"},
                            "advice": "", "browsers_running": [{"bundle": "org.mozilla.firefox",
                                                                "name": "Firefox"}]})"));
  probes.whyFilmsAreMissed = [] { return "Un film compte comme absence."; };
  EXPECT_EQ(call("permissions.status").at("films"), "Un film compte comme absence.");
  EXPECT_EQ(call("permissions.sources"),
            json::parse(R"({"foreground": "Fake", "idle": "Fake", "inhibition": "Fake",
                            "session": "non disponible ici"})"));
  const auto listed = call("permissions.browsers").at(0);
  EXPECT_EQ(listed.at("running"), true);
  EXPECT_EQ(listed.at("connected"), false);
  EXPECT_EQ(listed.at("steps").at(0),
            json::parse(R"({"text": "Ouvrez Firefox.", "copy": "", "button": "", "done": true})"));
  EXPECT_EQ(call("permissions.connectBrowser", R"({"bundle": "vi"})").at("ok"), false);
  for (const auto* body : {R"({})", R"({"bundle": "org.mozilla.firefox"})",
                           R"({"bundle": "org.mozilla.firefox", "step": 9})"}) {
    EXPECT_EQ(call("permissions.openBrowserPage", body).at("ok"), false) << body;
  }
  EXPECT_EQ(call("permissions.testBrowser", R"({"bundle": "vi"})"), error("navigateur inconnu"));
  EXPECT_EQ(call("permissions.testBrowser", R"({"bundle": "org.mozilla.firefox"})"),
            json::value({{"ok", true}, {"error", nullptr}}));
  EXPECT_EQ(setting("browser_perms"), R"({"org.mozilla.firefox":"ok"})");
  tab.reset();
  const auto failed = call("permissions.testBrowser", R"({"bundle": "org.mozilla.firefox"})");
  EXPECT_EQ(failed.at("ok"), false);
  EXPECT_TRUE(failed.at("error").as_string().starts_with("Pas de réponse (")) << failed;
  EXPECT_EQ(call("permissions.status").at("browsers").at("org.mozilla.firefox"), "denied");
}

TEST_F(RouterTest, ActionsAskTheDesktop) {
  probes.requestTitles = [] { return "Activez l'extension."; };
  for (const auto* route : {"permissions.requestAccessibility", "permissions.openAutomation",
                            "revealData", "quit", "openURL"}) {
    EXPECT_EQ(call(route), done()) << route;
  }
  call("openURL", R"({"url": "pas une adresse"})");
  call("openURL", R"({"url": "https://exemple.fr/é?a=b"})");
  EXPECT_EQ(shell.asked, (Texts{"tell Activez l'extension.", "open navigateurs.html",
                                "reveal " + store.db.location().file().filename().string(), "quit",
                                "open https://exemple.fr/é?a=b"}));
  shell.showsFolders = false;
  EXPECT_EQ(call("revealData").at("shown"), false);
}

TEST_F(RouterTest, NoRouteIsMissingFromTheReference) {
  std::ifstream file(std::string(kSourceFolder) + "/docs/routes.md");
  std::set<std::string> documented;
  for (std::string line; std::getline(file, line);) {
    // | `name` | kind | …
    if (!line.starts_with("| `")) continue;
    const auto end = line.find('`', 3);
    documented.insert(line.substr(3, end - 3) +
                      line.substr(end + 1, line.find(" |", end + 4) - end - 1));
    const auto* route = Router::find(line.substr(3, end - 3));
    std::istringstream names(std::string(route ? route->arguments : ""));
    for (std::string name; line.find("`sheet`") == std::string::npos && names >> name;) {
      while (name.ends_with(',')) name.pop_back();
      EXPECT_NE(line.find('`' + name + '`'), std::string::npos) << line << name;
    }
  }
  std::set<std::string> known;
  for (const auto* route : Router::routes()) {
    known.insert(std::string(route->name) + " | " + std::string(nameOf(route->kind)));
  }
  EXPECT_EQ(documented, known);
}

TEST_F(RouterTest, TheLoginItemIsAnAutostartEntry) {
  const auto on = json::value({{"ok", true}, {"error", nullptr}, {"enabled", true}});
  EXPECT_EQ(call("launchAtLogin"), on);
  EXPECT_EQ(call("launchAtLogin", R"({"enabled": true})"), on);
  const auto entry = bytesIn(store.db.location().dir / "autostart/fr.quellvane.orvanta.desktop");
  EXPECT_TRUE(holds(entry, R"(Exec="/opt/Mes \\"outils\\"/orv\\$")"));
  EXPECT_TRUE(holds(entry, "\nTryExec=/opt/Mes \"outils\"/orv$\n"));
  EXPECT_EQ(call("permissions.status").at("launch_at_login"), true);
  EXPECT_EQ(call("launchAtLogin", R"({"enabled": false})").at("enabled"), false);
  EXPECT_EQ(call("launchAtLogin", R"({"enabled": false})").at("ok"), true);
  fs::remove(store.db.location().dir / "autostart");
  std::ofstream(store.db.location().dir / "autostart") << "no folder";
  const auto failed = callRoute(core.router, {"launchAtLogin"});
  EXPECT_TRUE(json::parse(failed.output).at("error").is_string()) << failed.output;
  EXPECT_EQ(failed.status, 1) << "a script is told of an error";
}

TEST_F(RouterTest, ExportWritesWhereTheUserWants) {
  span(kNow - 600, kNow);
  EXPECT_EQ(call("export"), json::value({{"ok", false}}));
  EXPECT_EQ(shell.asked.back(), "save lumaplan_2023-11-14_2023-11-14.csv");
  shell.saveTo = store.db.location().dir / "été.csv";
  EXPECT_EQ(call("export", R"({"from": "2023-11-13"})"), done());
  EXPECT_EQ(shell.asked.back(), "save lumaplan_2023-11-13_2023-11-13.csv");
  call("export", R"({"from": "2023-11-13", "to": "2023-11-14"})");
  EXPECT_TRUE(holds(bytesIn(*shell.saveTo), "\n")) << "more than the header";
  shell.saveTo = "/proc/nulle/part.csv";
  const auto failed = call("export");
  EXPECT_EQ(failed.at("ok"), true) << "the user did choose";
  EXPECT_EQ(failed.at("written"), false);
  EXPECT_TRUE(holds(failed.at("message").as_string(), "n’a pas pu être écrit"));
  shell.saveTo = "";  // a place that has no path here
  EXPECT_TRUE(holds(call("export").at("message").as_string(), "pas un dossier de cet ordinateur"));
}

}  // namespace
}  // namespace orvanta::test
