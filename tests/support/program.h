// The core over a store and a desktop of the test.
#pragma once

#include <fmt/format.h>

#include <boost/json/parse.hpp>
#include <boost/json/serialize.hpp>
#include <string>
#include <thread>
#include <vector>

#include "bridge/core.h"
#include "bridge/request.h"
#include "bridge/routes/routes.h"
#include "support/fake_desktop.h"
#include "support/places.h"
#include "support/temp_store.h"

namespace orvanta::test {

namespace json = boost::json;

/// Writes down what is asked of it.
struct FakeShell : Shell {
  void post(std::function<void()> task) override { task(); }
  void quit() override { asked.emplace_back("quit"); }
  void showDashboard(const std::string& token, const std::string& /*day*/) override {
    asked.push_back("show " + token);
  }
  void prepareDashboard() override { asked.emplace_back("prepare"); }
  void refreshMenu() override { asked.emplace_back("menu"); }
  void tell(const std::string& sentence) override { asked.push_back("tell " + sentence); }
  void openUrl(const std::string& url) override { asked.push_back("open " + url); }
  void openFile(const fs::path& file) override {
    asked.push_back("open " + file.filename().string());
  }
  bool reveal(const fs::path& file) override {
    asked.push_back("reveal " + file.filename().string());
    return showsFolders;
  }
  std::optional<fs::path> saveAs(const std::string& name) override {
    asked.push_back("save " + name);
    return saveTo;
  }

  std::optional<fs::path> chooseFile() override {
    asked.emplace_back("choose");
    return chosen;
  }

  Texts asked;  ///< in order
  std::optional<fs::path> saveTo;
  std::optional<fs::path> chosen;
  bool showsFolders = true;
};

struct Program {
  Program() = default;
  /// Over the store in this folder.
  explicit Program(const fs::path& folder) : store(folder) {}

  /// The answer of a route to arguments in JSON.
  json::value call(const std::string& route, const std::string& body = "{}") {
    return ask(route, json::parse(body).as_object());
  }
  json::value ask(const std::string& route, const json::object& body) {
    return json::parse(answer(core.router, route, body).json);
  }

  /// The newest change that the history lists.
  json::value newestChange() { return ask("changes.list", {{"limit", 1}}).at(0); }
  json::value lastChange() { return newestChange().at("id"); }
  /// Takes a change back, or makes it again; whether that was done.
  bool undo(const json::value& id) { return ask("changes.undo", {{"id", id}}) == done(); }
  bool redo(const json::value& id) { return ask("changes.redo", {{"id", id}}) == done(); }

  /// Records what the desktop shows, until core.tracker.shutdown().
  void record() {
    core.tracker.start();
    while (!core.tracker.openSpanId()) std::this_thread::yield();
  }

  /// The stored spans by start, each as "start-end" and what this makes of its row.
  std::string spans(const std::string& sql) {
    std::string text;
    store.db.each("SELECT start, end, " + sql + " FROM events ORDER BY start, id", {},
                  [&](const Cursor& row) {
                    text += fmt::format("{:g}-{:g} {}\n", row.dbl(0), row.dbl(1), *row.str(2));
                  });
    return text;
  }

  FakeShell shell;
  /// What a browser's helper prints when it is tested; absent while it does not answer.
  std::optional<std::string> tab = "https://exemple.fr/\nExemple";

  TempStore store;
  FakeDesktop desktop;
  FakeClock clock;
  Desktop probes = desktop.probes();
  Calendar calendar{Glib::TimeZone::create("Europe/Paris")};
  Core core{{.db = store.db,
             .desktop = probes,
             .shell = shell,
             .browsers = browsers(),
             .loginItem = {folder() / "autostart", "/opt/Mes \"outils\"/orv$"},
             .facts = {"0.1", "12.0", "x86_64"},
             .service = "http://127.0.0.1:1",
             .clock = clock.read(),
             .uptime = clock.uptime(),
             .calendar = calendar,
             .log = store.log.sink()}};

 private:
  fs::path folder() const { return store.db.location().dir; }
  Core::Browsers browsers() {
    return {
        .helper = "orvanta-tab",
        .sockets = folder(),
        .runChild = [this](const ChildCommand&, double) -> ChildResult {
          return {.timedOut = !tab, .output = tab.value_or("")};
        },
        .setup = {{folder(), folder()}, "orvanta-tab", kDataFolder},
        .running =
            [] { return std::vector<RunningBrowser>{{findBrowser("org.mozilla.firefox"), 7}}; }};
  }
};

}  // namespace orvanta::test
