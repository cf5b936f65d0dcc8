#include "app/store_commands.h"

#include <sys/stat.h>

#include "storage/data_lock.h"
#include "storage/store_check.h"
#include "support/store_files.h"

namespace orvanta::test {
namespace {

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

struct StoreCommands : testing::Test {
  Said check() {
    return listenTo([&] { return checkCommand(where_); });
  }
  Said backup(const Texts& words) {
    return listenTo([&] { return backupCommand(words, where_); });
  }
  Said restore(const Texts& words) {
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
  EXPECT_TRUE(holds(whole.output, "orvanta.db : intacte\n"));
  EXPECT_TRUE(
      holds(whole.output, "100 activités du 1970-01-12 au 1970-01-12, 2 projets, 2 règles"));
  fs::resize_file(copy, 3000);
  const auto damaged = check();
  EXPECT_EQ(damaged.status, 1);
  EXPECT_TRUE(holds(damaged.output, "orvanta.db : intacte\n"));
  EXPECT_TRUE(holds(damaged.output, "orvanta-2026-11-22-0930.db : ABÎMÉE\n  - "));
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
  EXPECT_EQ(modeOf(file), 0600U);
  const auto bytes = bytesIn(file);
  EXPECT_EQ(backup({file}).status, 1);
  EXPECT_EQ(bytesIn(file), bytes);
  fs::create_symlink(folder_.path() / "nowhere", folder_.path() / "link");
  EXPECT_EQ(backup({folder_.path() / "link"}).status, 1);
  fs::create_directory(folder_.path() / "stick");
  EXPECT_EQ(backup({folder_.path() / "stick"}).status, 0);
  EXPECT_EQ(namesIn(folder_.path() / "stick").size(), 1U);
  EXPECT_EQ(backup({folder_.path() / "no" / "folder.db"}).status, 1);
}

TEST_F(StoreCommands, WhatIsTakenAlongIsRestoredElsewhere) {
  const auto file = folder_.path() / "tout.db";
  const auto take = [&](const Texts& words) {
    return listenTo([&] { return takeAllCommand(words, where_); });
  };
  EXPECT_EQ(take({}).status, 2);
  EXPECT_EQ(take({file}).status, 1) << "nothing to take";
  fillStore(newStore(where_.file()), 100);
  const auto taken = take({file});
  EXPECT_EQ(taken.status, 0) << taken.errors;
  EXPECT_TRUE(holds(taken.output, "orvanta --restore tout.db"));
  EXPECT_EQ(take({file}).status, 1) << "it is there already";
  fs::remove_all(where_.dir);
  EXPECT_EQ(restore({file}).status, 0);
  EXPECT_EQ(readStoreFacts(where_.file()).spans, 100);
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
    EXPECT_TRUE(holds(refused.errors, "en marche"));
  }
  const auto restored = restore({file});
  EXPECT_EQ(restored.status, 0) << restored.errors;
  EXPECT_TRUE(holds(restored.output, "100 activités"));
  EXPECT_TRUE(holds(restored.output, "orvanta.db.avant-restauration-"));
  // On a machine without data yet there is nothing to keep.
  fs::remove_all(where_.dir);
  const auto fresh = restore({file});
  EXPECT_EQ(fresh.status, 0) << fresh.errors;
  EXPECT_FALSE(holds(fresh.output, "avant-restauration"));
  EXPECT_EQ(check().status, 0);
}

}  // namespace
}  // namespace orvanta::test
