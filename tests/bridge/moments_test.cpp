// Moments added by hand: they fill what is idle or empty, and nothing else.
#include "classify/moments.h"
#include "capture/engine.h"
#include "support/program.h"
#include "support/random_store.h"
#include "support/store_rows.h"
#include "support/times.h"

namespace orvanta::test {
namespace {

struct Moments : testing::Test, Program {
  static constexpr double kNow = 1'700'000'000;

  int64_t span(double start, double end, bool idle = false, const Value& project = {}) {
    return store.db.run("INSERT INTO events(start,end,app,idle,project_id) VALUES (?,?,?,?,?)",
                        {start, end, idle ? "Inactif" : "A", idle, project});
  }
  std::string rows() { return rowsOf(store.db.location().file()); }
  json::value add(double from, double to, json::object more = {}) {
    more["ranges"] = json::array{{{"from", from}, {"to", to}}};
    return ask("moments.add", more);
  }
  double sum(const char* condition) {
    double seconds = 0;
    store.db.each(std::string("SELECT ifnull(sum(end - start), 0) FROM events WHERE ") + condition,
                  {}, [&](const Cursor& row) { seconds = row.dbl(0); });
    return seconds;
  }
  // Spans that begin before an earlier one ends, one of them a moment.
  std::string overlaps() {
    std::string found;
    double end = 0;
    store.db.each("SELECT start, end FROM events WHERE end > start ORDER BY start, end", {},
                  [&](const Cursor& row) {
                    if (row.dbl(0) < end) found += fmt::format("{} < {}\n", row.dbl(0), end);
                    end = std::max(end, row.dbl(1));
                  });
    return found;
  }
};

TEST_F(Moments, FillWhatIsIdleOrEmptyAndTellWhatWasTaken) {
  store.db.run("INSERT INTO projects(id, name) VALUES (3, 'Thèse')");
  span(0, 100);
  const auto idle = span(100, 400, true);
  span(500, 600);
  const auto before = rows();
  EXPECT_EQ(add(50, 550, {{"title", " Réunion\t"}, {"project_id", 3}, {"category", "travail"}}),
            json::value(
                {{"ok", true}, {"spans", 2}, {"added", 400.0}, {"taken", 100.0}, {"future", 0.0}}));
  const auto sql =
      "app || ' ' || ifnull(bundle || ' ' || title || ' ' || project_id || category, '')";
  EXPECT_EQ(Program::spans(sql),
            "0-100 A \n"
            "100-400 Hors écran fr.quellvane.orvanta.manual Réunion 3travail\n"
            "400-500 Hors écran fr.quellvane.orvanta.manual Réunion 3travail\n500-600 A \n");
  EXPECT_EQ(store.db.query("SELECT idle FROM events WHERE id=?", {idle}).front().int_("idle"), 0);
  const auto change = newestChange();
  EXPECT_EQ(change.at("label"), "Ajout · Travail · Thèse : 01/01/1970, 01:00 – 01:09");
  EXPECT_FALSE(change.at("effect").is_null());
  const auto after = rows();
  EXPECT_TRUE(undo(change.at("id")));
  EXPECT_EQ(difference(before, rows()), "");
  span(20000, 20001);  // recording goes on in between, and is given the next id
  EXPECT_TRUE(redo(change.at("id")));
  store.db.run("DELETE FROM events WHERE start=20000");
  EXPECT_EQ(difference(after, rows()), "");

  EXPECT_EQ(add(10, 90).at("added"), 0.0);
  EXPECT_EQ(add(kNow - 60, kNow + 60).at("added"), 60.0);
  EXPECT_EQ(add(kNow - 60, kNow + 60).at("future"), 60.0);
  const struct {
    const char *body, *error;
  } wrong[] = {
      {R"({})", "plage invalide"},
      {R"({"ranges": []})", "plage invalide"},
      {R"({"ranges": [{"from": 5, "to": 5}]})", "plage invalide"},
      {R"({"ranges": [3]})", "plage invalide"},
      {R"({"ranges": [{"from": 1e17, "to": 100000000000001000}]})", "plage invalide"},
      {R"({"ranges": [{"from": 0, "to": 9e9}]})", "plages trop longues : 31 jours au plus"},
      {R"({"ranges": [{"from": 0, "to": 9}], "project_id": 8})", "projet inconnu"},
      {R"({"ranges": [{"from": 0, "to": 9}], "category": "inactif"})", "catégorie inconnue"},
  };
  for (const auto& [body, error] : wrong) {
    EXPECT_EQ(call("moments.add", body), json::value({{"error", error}})) << body;
  }
}

TEST_F(Moments, NeverOverlapAndGoBackRowByRow) {
  for (unsigned seed = 0; seed < times(150U); ++seed) {
    SCOPED_TRACE(seed);
    Dice dice(seed);
    store.db.exec("DELETE FROM events; DELETE FROM changes");
    double end = 1'699'900'000;
    for (int i = 0; i < 40; ++i) {
      const double start = end + (dice.oneIn(3) ? dice.upTo(300) / 8.0 : 0);
      end = start + dice.upTo(9000) / 8.0;
      span(start, end, dice.oneIn(2));
    }
    Texts states{rows()};
    json::array ids;
    for (int i = 0; i < 6; ++i) {
      json::array ranges;
      for (int n = 1 + dice.upTo(3); n > 0; --n) {
        const double from = 1'699'900'000 + dice.upTo(20000) + dice.upTo(9) / 8.0;
        ranges.push_back({{"from", from}, {"to", from + 1 + dice.upTo(9000) / 3.0}});
      }
      const double active = sum("idle=0");
      const double idle = sum("idle=1");
      const json::object body{{"ranges", ranges}, {"title", "Appel"}, {"category", "autre"}};
      ask("changes.preview", {{"path", "moments.add"}, {"body", body}});
      ASSERT_EQ(difference(states.back(), rows()), "") << "only rehearsed";
      const auto added = ask("moments.add", body).at("added").as_double();
      ASSERT_EQ(overlaps(), "");
      ASSERT_NEAR(sum("idle=0"), active + added, 0.01);
      ASSERT_LE(sum("idle=1"), idle);
      if (added == 0) continue;
      ids.push_back(lastChange());
      states.push_back(rows());
    }
    for (std::size_t i = ids.size(); i-- > 0;) {
      ASSERT_TRUE(undo(ids[i]));
      ASSERT_EQ(difference(states[i], rows()), "");
    }
    for (std::size_t i = 0; i < ids.size(); ++i) {
      ASSERT_TRUE(redo(ids[i]));
      ASSERT_EQ(difference(states[i + 1], rows()), "");
    }
  }
}

TEST_F(Moments, AreNotMadeAgainOverOthers) {
  span(0, 10);
  span(110, 120);
  add(10, 110);
  const auto first = lastChange();
  ASSERT_TRUE(undo(first));
  add(50, 80);
  const auto second = lastChange();
  EXPECT_FALSE(redo(first));
  EXPECT_EQ(overlaps(), "");
  EXPECT_TRUE(undo(second) && redo(second) && undo(second) && redo(first));
}

// The engine extends and closes the absence that is cut, and an activity that is beside it.
TEST_F(Moments, LeaveWhatIsBeingRecordedAlone) {
  Collectors collectors{desktop, desktop, desktop};
  LiveState live{clock.read()};
  Engine engine(store.db, collectors, live, clock.read(), clock.uptime());
  const double begin = clock.now;
  const auto run = [&](int seconds) {
    for (int i = 0; i < seconds / 2; ++i) {
      clock.now = clock.now + 2;
      engine.tick();
    }
  };
  const auto fill = [&](double from, double to) {
    const TimeRange range{begin + from, begin + to};
    ASSERT_TRUE(engine.hold(range, Engine::Changes::Absences));
    Transaction change(store.db);
    addMoment(change, {{range.start, std::min(range.end, engine.limit().value_or(range.end))}}, {});
    EXPECT_TRUE(change.commit());
    run(2);
    engine.release(true);
  };
  desktop.show("A");
  run(20);
  fill(0, 500);  // an activity
  run(20);
  engine.setLocked(true);
  run(100);
  fill(60, 100);   // the absence that is being recorded: what is over of it
  fill(120, 900);  // and what is not
  run(40);
  engine.setLocked(false);
  run(40);
  engine.finish();
  EXPECT_EQ(overlaps(), "");
  EXPECT_NEAR(sum("1"), clock.now - begin, 0.01);
  EXPECT_EQ(store.db.query("SELECT 1 FROM events WHERE app='A'").size(), 2U)
      << Program::spans("app");
  EXPECT_NEAR(sum("app='Hors écran'"), 2 + 40 + 24, 0.01) << Program::spans("app");
}

TEST_F(Moments, TeachNothing) {
  span(0, 10);
  span(200'000, 200'010);
  add(10, 100);
  add(200'010, 200'100);
  json::array ids;
  for (const auto& row : store.db.query("SELECT id FROM events WHERE app='Hors écran'")) {
    ids.push_back(*row.int_("id"));
  }
  ASSERT_EQ(ids.size(), 2U);
  const auto answer = ask("events.assign", {{"ids", ids}, {"category", "travail"}});
  EXPECT_EQ(answer, json::parse(R"({"ok": true, "learned": []})"));
}

TEST_F(Moments, GapsAreToldWithWhatTheyMayHaveBeen) {
  store.db.exec(
      "INSERT INTO projects(id, name, color, archived) VALUES (1,'Avant','#111',0),"
      "(2,'Après','#222',0),(3,'Habitude','#333',0),(4,'Vieux','#444',1),(5,'Autre','#555',0)");
  const double nine = 1'699'862'400;  // 13 November 2023, a Monday, 9:00
  const double hour = 3600;
  span(nine - hour, nine, false, 1);
  span(nine, nine + 0.5 * hour, true);
  span(nine + hour, nine + 1.2 * hour, false, 2);
  span(nine + 1.2 * hour + 599, nine + 2 * hour, false, 4);
  for (int week = 1; week <= 8; ++week) {
    // At nine by the wall's clock, which was changed on 29 October.
    const double then = nine - week * 168 * hour - (week > 2 ? hour : 0);
    span(then, then + hour, false, 3);
  }
  span(nine + 20 * hour, nine + 21 * hour, false, 5);  // the next day
  const auto gaps = call("moments.gaps", R"({"from": "2023-11-13", "to": "2023-11-14"})");
  EXPECT_EQ(gaps, json::parse(R"({"count": 1, "duration": 3.6E3, "days": [{"date": "2023-11-13",
      "gaps": [{"from": 1.6998624E9, "to": 1.699866E9, "duration": 3.6E3, "idle": 1.8E3, "likely": [
        {"project_id": 1, "name": "Avant", "color": "#111", "category": "travail"},
        {"project_id": 3, "name": "Habitude", "color": "#333", "category": "travail"},
        {"project_id": 2, "name": "Après", "color": "#222", "category": "travail"}]}]}]})"));
  EXPECT_EQ(call("moments.gaps", R"({"from": "2023-11-13", "min_seconds": 599})").at("count"), 2);
  const json::object lunch{{"ranges", json::array{{{"from", nine + 60}, {"to", nine + hour}}}}};
  EXPECT_EQ(ask("moments.skip", lunch), done());
  EXPECT_EQ(call("moments.gaps", R"({"from": "2023-11-13"})").at("count"), 0);
  EXPECT_EQ(newestChange().at("label"), "Absence ignorée : 13/11/2023, 09:01 – 10:00");
  EXPECT_TRUE(undo(lastChange()));
  EXPECT_EQ(call("moments.gaps", R"({"from": "2023-11-13"})").at("count"), 1);
  EXPECT_EQ(call("absence.get").at("ask_minutes"), 10.0);
  EXPECT_TRUE(call("absence.set", R"({"ask_minutes": 3})").as_object().contains("error"));
  EXPECT_EQ(call("absence.set", R"({"ask_minutes": 0})").at("ok"), true);
  EXPECT_EQ(call("absence.get").at("ask_minutes"), 0.0);
}

TEST_F(Moments, APauseMayHaveAnEnd) {
  const struct {
    const char* length;
    double seconds;
  } cases[] = {{"15m", 900}, {"15min", 900}, {"1h", 3600}, {"1h30", 5400}};
  for (const auto& [length, seconds] : cases) {
    const auto answer = ask("tracker.pauseFor", {{"length", length}});
    EXPECT_EQ(answer, json::value({{"ok", true}, {"until", kNow + seconds}})) << length;
    EXPECT_EQ(call("status").at("paused_until"), kNow + seconds);
    Program later(store.folder.path());  // after a restart
    EXPECT_EQ(later.call("status").at("paused"), true);
    later.clock.now = kNow + seconds;
    EXPECT_EQ(later.call("status").at("paused"), false);
    EXPECT_FALSE(later.call("status").as_object().contains("paused_until"));
  }
  for (const auto* length : {"", "0m", "h", "1h60", "15", "1 h", "-1h", "800h", "hier", "1hm"}) {
    EXPECT_TRUE(ask("tracker.pauseFor", {{"length", length}}).as_object().contains("error"))
        << length;
  }
  call("tracker.pause");
  EXPECT_EQ(call("status").at("paused"), true);
  EXPECT_FALSE(call("status").as_object().contains("paused_until"));
  call("tracker.resume");
  EXPECT_EQ(call("status").at("paused"), false);
}

TEST_F(Moments, KeepTheirPlaceInTheHistoryWhenTheyAreChangedLater) {
  span(0, 100);
  span(100, 400, true);
  span(500, 600);
  add(100, 500, {{"title", "Réunion"}, {"category", "travail"}});
  add(600, 700, {{"title", "Appel"}, {"category", "travail"}});
  const auto ids = [&](const char* title) {
    json::array list;
    store.db.each("SELECT id FROM events WHERE title=? ORDER BY start", {title},
                  [&](const Cursor& row) { list.emplace_back(*row.int_(0)); });
    return list;
  };
  auto both = ids("Réunion");
  const auto known = ask("moments.get", {{"ids", ids("Appel")}}).at("moments");
  EXPECT_EQ(known,
            json::value(json::array{
                {{"ids", ids("Appel")}, {"from", 600.0}, {"to", 700.0}, {"title", "Appel"}}}));
  const auto shown = [&] { return Program::spans("ifnull(title || ' ' || category, app)"); };
  const auto begun = shown();

  // The note alone; then as well when it was, into what was recorded and what was empty.
  EXPECT_EQ(ask("moments.edit", {{"ids", both}, {"title", " Réunion <b>Zoé</b> "}}).at("ok"), true);
  EXPECT_EQ(shown(),
            "0-100 A\n100-400 Réunion <b>Zoé</b> travail\n400-500 Réunion <b>Zoé</b> travail\n"
            "500-600 A\n600-700 Appel travail\n");
  EXPECT_EQ(ask("moments.edit", {{"ids", both}, {"title", "R"}, {"from", 50}, {"to", 450}}),
            json::value({{"ok", true}, {"added", 0.0}, {"taken", 50.0}}));
  EXPECT_EQ(ask("moments.edit", {{"ids", ids("Appel")}, {"from", 690}, {"to", 800}}).at("added"),
            100.0);
  EXPECT_EQ(shown(),
            "0-100 A\n100-400 R travail\n400-450 R travail\n500-600 A\n690-700 Appel travail\n"
            "700-800 Appel travail\n");
  EXPECT_EQ(newestChange().at("label"), "Moment modifié\u00a0: 01/01/1970, 01:11 – 01:13");
  for (int i = 0; i < 3; ++i) {
    const auto changes = ask("changes.list", {});
    for (const auto& change : changes.as_array()) {
      if (change.at("undone") == true) continue;
      EXPECT_TRUE(undo(change.at("id")));
      break;
    }
  }
  EXPECT_EQ(shown(), begun);

  both.push_back(ids("Appel").front());
  const json::object wrong[] = {{{"ids", json::array{}}},
                                {{"ids", json::array{1}}, {"title", "A"}},
                                {{"ids", both}, {"title", "A"}},
                                {{"ids", ids("Appel")}, {"from", 701}, {"to", 800}},
                                {{"ids", ids("Appel")}, {"from", 700}}};
  for (const auto& body : wrong) {
    EXPECT_TRUE(ask("moments.edit", body).as_object().contains("error")) << json::serialize(body);
  }
  EXPECT_EQ(shown(), begun);
  // Nothing is added to the future.
  add(kNow - 100, kNow, {{"title", "Fin"}});
  ask("moments.edit", {{"ids", ids("Fin")}, {"title", "Fin"}, {"to", kNow + 500}});
  EXPECT_EQ(sum("title='Fin'"), 100);
}

TEST_F(Moments, TomorrowBeginsAtFourInTheMorning) {
  const double four = kNow + 4 * 3600 + 2800;
  const double spring = calendar.startOf({2026, 3, 29});  // a night without its third hour
  const double autumn = calendar.startOf({2026, 10, 25});
  const struct {
    double now;
    double until;
  } cases[] = {{kNow + 2799, four},
               {kNow + 2800 + 1800, four},  // half past midnight
               {four - 1, four},
               {four, four + 86400},
               {spring - 1, spring + 3 * 3600},
               {spring + 1800, spring + 3 * 3600},
               {autumn + 1800, autumn + 5 * 3600}};
  for (const auto& [now, until] : cases) {
    clock.now = now;
    const auto answer = ask("tracker.pauseFor", {{"length", "demain"}});
    EXPECT_EQ(answer, json::value({{"ok", true}, {"until", until}})) << now;
  }
}

}  // namespace
}  // namespace orvanta::test
