// Every route that writes, while the store cannot be written: what the answer says is what the file
// holds, and nothing is half done.
#include <stdlib.h>
#include <sys/syscall.h>

#include <chrono>
#include <future>
#include <map>
#include <memory>
#include <thread>

#include "classify/defaults.h"
#include "storage/schema.h"
#include "support/children.h"
#include "support/fault_vfs.h"
#include "support/program.h"
#include "support/store_rows.h"

namespace orvanta::test {
namespace {

using namespace std::chrono_literals;

constexpr double kNow = 1'700'000'000;

// Three days of spans, some of them assigned, with projects and rules.
struct FilledProgram : Program {
  FilledProgram() {
    store.db.exec(
        "BEGIN; INSERT INTO projects(id, name, created) VALUES (1,'Thèse',1),(2,'Été',2);"
        "INSERT INTO rules(field, pattern, category, project_id, created) VALUES "
        "('domain','a.fr','travail',1,1),('app','Mail','autre',1,1);"
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 150) "
        "INSERT INTO events(start,end,app,title,url,domain,category,project_id) "
        "SELECT 1699700000 + i*1800, 1699701800 + i*1800, 'Firefox', 'titre ' || i, 'u', "
        "CASE i % 3 WHEN 0 THEN 'a.fr' ELSE 'b' || (i % 5) || '.fr' END, "
        "CASE i % 7 WHEN 0 THEN 'loisir' END, CASE i % 4 WHEN 0 THEN 1 END FROM n; COMMIT");
  }
  fs::path file() const { return store.db.location().file(); }
};

// What waits is stored.
void settle(FilledProgram& program) {
  program.store.db.look();
  program.call("events.assignRange", R"({"start": 5, "end": 6})");
}

// With a minute of an open span, stored. Several at once: each takes a second to begin.
std::vector<std::unique_ptr<FilledProgram>>& recording() {
  static std::vector<std::unique_ptr<FilledProgram>> list;
  return list;
}
std::unique_ptr<FilledProgram> nextRecording() {
  auto& list = recording();
  if (list.empty()) {
    while (list.size() < 12) {
      list.push_back(std::make_unique<FilledProgram>());
      list.back()->desktop.show("Éditeur", "titre");
      list.back()->core.tracker.start();
    }
    for (auto& program : list) {
      while (!program->core.tracker.current()) std::this_thread::sleep_for(5ms);
      program->clock.now = kNow + 60;
      settle(*program);
    }
  }
  auto program = std::move(list.back());
  list.pop_back();
  return program;
}

using Act = std::function<json::value(FilledProgram&)>;
struct Op {
  const char* name;
  Act act;
  Act prepare = {};
  bool holds = false;    // also while it is not stored, and is stored as soon as that is possible
  bool records = false;  // spans of its own, which are stored when they can be

  // What is stored later, by itself, is not listed as a change.
  std::string rowsIn(const fs::path& file) const {
    Texts tables{"events", "rules", "projects", "settings"};
    if (!holds) tables.emplace_back("changes");
    return rowsOf(file, tables);
  }
  std::string rows(const FilledProgram& program) const { return rowsIn(program.file()); }
  std::unique_ptr<FilledProgram> program() const {
    auto made = records ? nextRecording() : std::make_unique<FilledProgram>();
    if (prepare) prepare(*made);
    return made;
  }
};

Act route(const char* name, const char* body = "{}") {
  return [=](FilledProgram& program) { return program.call(name, body); };
}
Act onLastChange(const char* name) {
  return [=](FilledProgram& program) {
    return program.ask(name, {{"id", program.call("changes.list").at(0).at("id")}});
  };
}

const Act kAssignRange =
    route("events.assignRange",
          R"({"start": 1699750100, "end": 1699900100, "category": "autre", "project_id": 2})");

json::value assignAndUndo(FilledProgram& program) {
  kAssignRange(program);
  return onLastChange("changes.undo")(program);
}

json::value seed(FilledProgram& program) {
  const int added = seedDefaults(program.store.db, program.clock.read());
  return added > 0 ? json::value(done()) : json::value{{"stored", false}, {"message", "…"}};
}

const std::vector<Op>& ops() {
  static const std::vector<Op> list{
      {"a new project", route("projects.save", R"({"name": "Nouveau", "keywords": "a,b"})")},
      {"a project", route("projects.save", R"({"id": 2, "name": "Autre", "archived": 1})")},
      {"a project's end", route("projects.delete", R"({"id": 1})")},
      {"a rule", route("rules.save", R"({"field": "domain", "pattern": "A.fr"})")},
      {"a rule's end", route("rules.delete", R"({"id": 1})")},
      {"the default rules", route("rules.defaults")},
      {"seeding", seed},
      {"assigning", route("events.assign",
                          R"({"ids": [2, 3, 5, 80, 81, 140], "category": "x", "project_id": 2})")},
      {"a range", kAssignRange},
      {"the open span",
       route("events.assignRange", R"({"start": 1699960000, "end": 1700000030, "category": "x"})"),
       {},
       false,
       true},
      {"undo", onLastChange("changes.undo"), kAssignRange},
      {"redo", onLastChange("changes.redo"), assignAndUndo},
      {"settings",
       route("settings.set", R"({"idle_threshold": 99, "privacy_mode": "domain"})"),
       {},
       true},
      {"the welcome", route("onboarding.done"), {}, true},
      {"pausing", route("tracker.pause"), {}, true},
      {"resuming", route("tracker.resume"), route("tracker.pause"), true},
      {"telemetry", route("telemetry.set", R"({"enabled": true})"), {}, true},
  };
  return list;
}

// Whether the answer calls it stored; when not, it says why.
bool calledStored(const json::value& answer) {
  const auto& object = answer.as_object();
  if (const auto* error = object.if_contains("error")) {
    EXPECT_GT(error->as_string().size(), 10U);
    EXPECT_NE(*error, "un projet porte déjà ce nom");
    return false;
  }
  if (!object.contains("stored")) return true;
  EXPECT_EQ(object.at("stored"), false);
  EXPECT_FALSE(object.at("message").as_string().empty());
  return false;
}

const std::string& after(const Op& op) {
  static std::map<const char*, std::string> known;
  auto& rows = known[op.name];
  if (!rows.empty()) return rows;
  auto program = op.program();
  EXPECT_TRUE(calledStored(op.act(*program))) << op.name;
  return rows = op.rows(*program);
}

struct StoreFaults : testing::Test {
  static void TearDownTestSuite() { recording().clear(); }
};

TEST_F(StoreFaults, AnAnswerSaysWhatTheFileHolds) {
  const struct {
    Fault fault;
    int most;
    const char* state;
  } cases[] = {{Fault::Full, 200, "full"},
               {Fault::WriteError, 200, "absent"},
               {Fault::ReadOnly, 1, "readonly"}};
  for (const auto& op : ops()) {
    const auto& expected = after(op);
    for (const auto& [fault, most, state] : cases) {
      auto program = op.program();
      const auto before = op.rows(*program);
      bool reached = true;
      for (int n = 1; reached && n <= most; n += op.records ? 3 : 1) {
        SCOPED_TRACE(std::string(op.name) + ", " + state + " at write " + std::to_string(n));
        bool stored = false;
        {
          const Failing failing(fault, n);
          stored = calledStored(op.act(*program));
          reached = FaultVfs::struck();
          if (!stored && program->store.db.condition()) {
            EXPECT_EQ(program->call("status").at("store").at("state"), state);
          }
        }
        if (stored && op.records) settle(*program);
        ASSERT_EQ(difference(stored ? expected : before, op.rows(*program)), "");
        ASSERT_TRUE(stored || reached);
        if (!stored && !op.holds) continue;  // the next one finds all as it was
        settle(*program);
        ASSERT_EQ(difference(expected, op.rows(*program)), "");
        ASSERT_FALSE(program->store.db.condition());
        program = op.program();
      }
      EXPECT_TRUE(calledStored(op.act(*program)));
      EXPECT_EQ(difference(expected, op.rows(*program)), "") << op.name << ", " << state;
    }
  }
}

// All at once, since each waits for two seconds.
TEST_F(StoreFaults, AnotherProgramsLockIsWaitedForAndThenTold) {
  struct Run {
    const Op& op;
    const std::string& expected = after(op);
    std::unique_ptr<FilledProgram> program = op.program();
    std::string before = op.rows(*program);
    OtherProgram other{program->file()};
    std::future<json::value> answer = {};
  };
  // SQLite counts the naps of its wait, not the time: on a busy machine it gives up later than
  // asked. So the long lock is held until everyone has given up.
  for (const auto held : {300ms, 60'000ms}) {
    std::vector<std::unique_ptr<Run>> runs;
    for (const auto& op : ops()) runs.emplace_back(new Run{op});
    for (auto& run : runs) {
      EXPECT_EQ(run->other.ask("BEGIN IMMEDIATE"), "");
      run->answer =
          std::async(std::launch::async, [&run = *run] { return run.op.act(*run.program); });
    }
    const auto begin = std::chrono::steady_clock::now();
    const auto answered = [&] {
      return std::all_of(runs.begin(), runs.end(), [](const auto& run) {
        return run->answer.wait_for(0s) == std::future_status::ready;
      });
    };
    auto slowest = 0ns;
    while (!answered() && std::chrono::steady_clock::now() - begin < held) {
      for (auto& run : runs) {
        const auto start = std::chrono::steady_clock::now();
        (void)run->program->store.db.setting("onboarded");
        (void)run->program->core.tracker.current();
        slowest = std::max(slowest, std::chrono::steady_clock::now() - start);
      }
      std::this_thread::sleep_for(1ms);
    }
    EXPECT_LT(slowest, 2500ms) << "what is read does not wait behind what is to be written";
    for (auto& run : runs) EXPECT_EQ(run->other.ask("ROLLBACK"), "");
    for (auto& run : runs) {
      const bool stored = calledStored(run->answer.get());
      EXPECT_EQ(stored, held == 300ms) << run->op.name;
      EXPECT_EQ(difference(stored ? run->expected : run->before, run->op.rows(*run->program)), "")
          << run->op.name;
      if (!run->op.holds) continue;
      run->program->store.db.look();
      EXPECT_EQ(difference(run->expected, run->op.rows(*run->program)), "") << run->op.name;
    }
  }
}

// A child of this process that is killed at its n-th write, in a folder of its own.
class Killed {
 public:
  Killed(int n, const std::function<std::function<void()>()>& prepare) {
    const int status = endOfChild([&] {
      setenv("TMPDIR", folder_.path().c_str(), 1);
      const auto act = prepare();
      FaultVfs::fail(n % 2 == 0 ? Fault::Kill : Fault::Torn, n);
      act();
      // Past the thread sanitizer, which minds the threads that an end like this leaves behind.
      syscall(SYS_exit_group, 0);
    });
    EXPECT_TRUE(WIFSIGNALED(status) || WEXITSTATUS(status) == 0);
    survived = WIFEXITED(status);
    where = DataLocation::under(fs::directory_iterator(folder_.path())->path());
  }

  bool survived = false;
  DataLocation where;

 private:
  TempFolder folder_;
};

TEST_F(StoreFaults, KilledAtAnyWriteItIsDoneOrNotBegun) {
  for (const auto& op : ops()) {
    // The default rules are written as they are seeded.
    if (op.records || op.name == std::string("the default rules")) continue;
    const auto& expected = after(op);
    const auto before = op.rows(*op.program());
    bool survived = false;
    int doneBefore = 0;
    for (int n = 1; !survived; ++n) {
      SCOPED_TRACE(std::string(op.name) + ", killed at write " + std::to_string(n));
      const Killed killed(
          n, [&] { return [&op, program = op.program().release()] { op.act(*program); }; });
      survived = killed.survived;
      ASSERT_EQ(integrityOf(killed.where.file()), "ok|\n");
      const auto rows = op.rowsIn(killed.where.file());
      ASSERT_TRUE(rows == expected || (rows == before && !survived)) << difference(before, rows);
      doneBefore += rows == before ? 1 : 0;
    }
    EXPECT_GT(doneBefore, 1) << op.name;
  }
}

// What an early version left behind, and nothing at all.
TEST_F(StoreFaults, KilledAtAnyWriteOfItsMakingTheStoreIsMadeAtTheNextStart) {
  for (const bool old : {false, true}) {
    const auto content = [](const fs::path& file) {
      return OtherProgram(file).ask(
          "SELECT name FROM sqlite_master ORDER BY 1; SELECT * FROM "
          "settings; PRAGMA user_version; SELECT * FROM projects");
    };
    const auto tables = [](const fs::path& file) {
      return OtherProgram(file).ask("SELECT count(*) FROM sqlite_master");
    };
    const auto start = [&]() -> std::function<void()> {
      const auto where = (new TempFolder)->location();
      orvanta::prepare(where, [](const std::string&) {});
      if (old) {
        OtherProgram(where.file()).ask(kLegacyTables);
      }
      return [where] { new Database(where, [](const std::string&) {}); };
    };
    const Killed never(1'000'000, start);
    const auto made = content(never.where.file());
    const auto tablesMade = tables(never.where.file());
    bool survived = false;
    for (int n = 1; !survived; ++n) {
      SCOPED_TRACE(n);
      const Killed killed(n, start);
      survived = killed.survived;
      const auto file = killed.where.file();
      const auto found = tables(file);
      ASSERT_TRUE(found == tablesMade || found == (old ? "5|\n" : "0|\n")) << found;
      {
        LogLines log;
        TestDatabase db(killed.where, log.sink());
        ASSERT_EQ(ageOf(db), StoreAge::Current);
        ASSERT_EQ(db.setting("idle_threshold"), old ? "240" : "180");
        ASSERT_TRUE(log.lines().empty()) << log.lines().front();
      }
      ASSERT_EQ(integrityOf(file), "ok|\n");
      ASSERT_EQ(content(file), made);
    }
  }
}

}  // namespace
}  // namespace orvanta::test
