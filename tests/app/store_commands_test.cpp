#include "app/store_commands.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include "storage/data_lock.h"
#include "support/store_files.h"

namespace orvanta {
namespace {

namespace fs = std::filesystem;
using test::bytesIn;
using test::fillStore;
using test::newStore;
using test::TempFolder;

struct Said {
  int status;
  std::string output;
  std::string errors;
};

template <class Command>
Said listenTo(Command command) {
  testing::internal::CaptureStdout();
  testing::internal::CaptureStderr();
  const int status = command();
  return {status, testing::internal::GetCapturedStdout(), testing::internal::GetCapturedStderr()};
}

class StoreCommands : public testing::Test {
 protected:
  Said check() {
    return listenTo([&] { return checkCommand(where_); });
  }
  Said backup(const std::vector<std::string>& words) {
    return listenTo([&] { return backupCommand(words, where_); });
  }
  Said restore(const std::vector<std::string>& words) {
    return listenTo([&] { return restoreCommand(words, where_); });
  }

  TempFolder folder_;
  DataLocation where_ = folder_.location();
};

TEST_F(StoreCommands, CheckNamesWhatIsWholeAndWhatIsNot) {
  EXPECT_EQ(check().status, 1);
  fillStore(newStore(where_.file()), 100);
  fs::create_directory(where_.dir / "sauvegardes");
  const auto copy = where_.dir / "sauvegardes" / "orvanta-2026-11-22-0930.db";
  fs::copy(where_.file(), copy);
  const auto whole = check();
  EXPECT_EQ(whole.status, 0);
  EXPECT_NE(whole.output.find("orvanta.db : intacte\n"), std::string::npos) << whole.output;
  EXPECT_NE(whole.output.find("100 activités du 1970-01-12 au 1970-01-12, 2 projets, 2 règles"),
            std::string::npos)
      << whole.output;
  fs::resize_file(copy, 3000);
  const auto damaged = check();
  EXPECT_EQ(damaged.status, 1);
  EXPECT_NE(damaged.output.find("orvanta.db : intacte\n"), std::string::npos);
  EXPECT_NE(damaged.output.find("orvanta-2026-11-22-0930.db : ABÎMÉE\n  - "), std::string::npos)
      << damaged.output;
}

TEST_F(StoreCommands, BackupNeverReplacesAFile) {
  const auto file = folder_.path() / "copie.db";
  EXPECT_EQ(backup({}).status, 2);
  EXPECT_EQ(backup({file, file}).status, 2);
  EXPECT_EQ(backup({file}).status, 1);
  fillStore(newStore(where_.file()), 100);
  const auto mask = umask(0);
  const auto made = backup({file});
  umask(mask);
  EXPECT_EQ(made.status, 0) << made.errors;
  EXPECT_EQ(fs::status(file).permissions(), fs::perms::owner_read | fs::perms::owner_write);
  const auto bytes = bytesIn(file);
  EXPECT_EQ(backup({file}).status, 1);
  EXPECT_EQ(bytesIn(file), bytes);
  fs::create_symlink(folder_.path() / "nowhere", folder_.path() / "link");
  EXPECT_EQ(backup({folder_.path() / "link"}).status, 1);
  fs::create_directory(folder_.path() / "stick");
  EXPECT_EQ(backup({folder_.path() / "stick"}).status, 0);
  EXPECT_EQ(test::namesIn(folder_.path() / "stick").size(), 1U);
  EXPECT_EQ(backup({folder_.path() / "no" / "folder.db"}).status, 1);
}

TEST_F(StoreCommands, RestoreWaitsForTheProgramToEndAndKeepsTodaysFile) {
  const auto file = folder_.path() / "copie.db";
  fillStore(newStore(where_.file()), 100);
  ASSERT_EQ(backup({file}).status, 0);
  fillStore(FileConnection::writing(where_.file()), 50, 2'000'000);
  EXPECT_EQ(restore({}).status, 2);
  EXPECT_EQ(restore({folder_.path() / "none"}).status, 1);
  {
    const auto running = DataLock::take(where_);
    const auto refused = restore({file});
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.errors.find("en marche"), std::string::npos);
  }
  const auto restored = restore({file});
  EXPECT_EQ(restored.status, 0) << restored.errors;
  EXPECT_NE(restored.output.find("100 activités"), std::string::npos);
  EXPECT_NE(restored.output.find("orvanta.db.avant-restauration-"), std::string::npos);
  // On a machine without data yet there is nothing to keep.
  fs::remove_all(where_.dir);
  const auto fresh = restore({file});
  EXPECT_EQ(fresh.status, 0) << fresh.errors;
  EXPECT_EQ(fresh.output.find("avant-restauration"), std::string::npos);
  EXPECT_EQ(check().status, 0);
}

}  // namespace
}  // namespace orvanta
