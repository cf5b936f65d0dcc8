#include <fstream>

#include "app/legacy_agents.h"
#include "app/retention_schedule.h"
#include "support/temp_store.h"

namespace orvanta::test {
namespace {

TEST(Retention, IsDueAtFourOrAfterADay) {
  const Calendar paris(Glib::TimeZone::create("Europe/Paris"));
  constexpr double kMidnight = 1'700'002'800;  // 15 November 2023
  constexpr double kHour = 3600;
  struct Case {
    double hour, lastHour;
    bool due;
  };
  for (const auto& [hour, lastHour, due] :
       {Case{4, 0, true}, Case{4.9, 4.1, true}, Case{3.99, 0, false}, Case{5, 0, false},
        Case{9, -14.9, false}, Case{9, -15, true}, Case{-20, 0, true}}) {
    EXPECT_EQ(retentionDue(kMidnight + hour * kHour, kMidnight + lastHour * kHour, paris), due)
        << hour << " " << lastHour;
  }
}

TEST(LegacyAgents, ThoseThatAreThereAreStoppedAndRemoved) {
  const TempFolder folder;
  LogLines log;
  const auto make = [&](const char* name) {
    const auto path = folder.path() / name;
    fs::create_directories(path.parent_path());
    std::ofstream(path) << "x";
  };
  make("autostart/fr.quellvane.lumaplan.tracker.desktop");
  make("systemd/user/fr.quellvane.lumaplan.server.service");
  make("systemd/user/other.service");
  Texts stopped;
  const auto run = [&](const Texts& words) {
    EXPECT_TRUE(fs::exists(folder.path() / "systemd/user" / words.back()));
    stopped.push_back(words.back());
  };
  for (int start = 0; start < 2; ++start) cleanupLegacyAgents(folder.path(), run, log.sink());
  EXPECT_EQ(stopped, Texts{"fr.quellvane.lumaplan.server.service"});
  EXPECT_EQ(log.lines(), (Texts{"Orvanta: ancien agent fr.quellvane.lumaplan.tracker retiré",
                                "Orvanta: ancien agent fr.quellvane.lumaplan.server retiré"}));
  EXPECT_FALSE(fs::exists(folder.path() / "systemd/user/fr.quellvane.lumaplan.server.service"));
  EXPECT_TRUE(fs::exists(folder.path() / "systemd/user/other.service"));
}

}  // namespace
}  // namespace orvanta::test
