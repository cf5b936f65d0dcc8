#include "base/whole_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>

#include "support/files.h"

namespace orvanta::test {
namespace {

constexpr uid_t kSomebody = 12345;

std::string write(const fs::path& file, std::string_view text, bool named = false) {
  WholeFile whole(file, named);
  whole.write(text);
  return whole.finish();
}

struct WholeFileTest : testing::Test {
  WholeFileTest() : umask_(umask(0)) {
    fs::create_directory(shared);
    chmod(shared.c_str(), 01777);
    std::ofstream(victim) << "précieux";
  }
  ~WholeFileTest() override { umask(umask_); }

  // What lies in the folder, but for what the fixture made.
  Texts made() const {
    auto names = namesIn(folder.path());
    std::erase_if(names, [](const auto& name) { return name == "commun" || name == "victime"; });
    return names;
  }

  const mode_t umask_;
  const TempFolder folder;
  const fs::path shared = folder.path() / "commun";
  const fs::path victim = folder.path() / "victime";
};

TEST_F(WholeFileTest, IsThereWhenItIsCompleteAndForItsOwner) {
  const auto file = folder.path() / "export.csv";
  for (const bool named : {false, true}) {
    for (const auto* text : {"un", "", "deux"}) {  // new, then replaced
      EXPECT_EQ(write(file, text, named), "");
      EXPECT_EQ(bytesIn(file), text);
      EXPECT_EQ(modeOf(file), 0600U);
      EXPECT_EQ(made(), Texts{"export.csv"});
    }
    {
      WholeFile given(file, named);
      given.write("à moitié");
    }
    EXPECT_EQ(bytesIn(file), "deux");
    EXPECT_EQ(made(), Texts{"export.csv"});
    fs::remove(file);
  }
}

TEST_F(WholeFileTest, FollowsOnlyLinksThatNobodyElsePlaced) {
  const auto own = folder.path() / "lien";
  fs::create_symlink("victime", own);
  EXPECT_EQ(write(own, "par le lien"), "");
  EXPECT_EQ(bytesIn(victim), "par le lien");
  EXPECT_TRUE(fs::is_symlink(own));

  const auto planted = shared / "export.csv";
  fs::create_symlink(victim, planted);
  const auto chain = folder.path() / "chaîne";
  fs::create_symlink(planted, chain);
  const auto foreign = folder.path() / "étranger";
  fs::create_symlink("victime", foreign);
  const auto loop = folder.path() / "boucle";
  fs::create_symlink("boucle", loop);
  std::vector<fs::path> refused{planted, chain, loop};
  if (lchown(foreign.c_str(), kSomebody, kSomebody) == 0) refused.push_back(foreign);  // as root
  for (const auto& path : refused) {
    for (const bool named : {false, true}) {
      EXPECT_NE(write(path, "autre chose", named), "") << path;
      EXPECT_TRUE(fs::is_symlink(path)) << path;
    }
  }
  EXPECT_EQ(bytesIn(victim), "par le lien");
  EXPECT_TRUE(holds(WholeFile(planted).problem(), "lien symbolique"));
  EXPECT_EQ(std::distance(fs::directory_iterator(shared), {}), 1);

  // A file of the user's own is as good there as elsewhere, and a link to what is not there yet.
  EXPECT_EQ(write(shared / "autre.csv", "texte"), "");
  EXPECT_EQ(bytesIn(shared / "autre.csv"), "texte");
  const auto dangling = folder.path() / "vers";
  fs::create_symlink(shared / "neuf.csv", dangling);
  EXPECT_EQ(write(dangling, "neuf"), "");
  EXPECT_EQ(bytesIn(shared / "neuf.csv"), "neuf");
}

TEST_F(WholeFileTest, WritesThroughPipesAndDevices) {
  EXPECT_EQ(write("/dev/null", "rien"), "");
  EXPECT_NE(write("/dev/full", "trop"), "");
  EXPECT_TRUE(fs::is_character_file("/dev/full"));

  std::array<int, 2> ends{};
  ASSERT_EQ(pipe(ends.data()), 0);
  EXPECT_EQ(write("/proc/self/fd/" + std::to_string(ends[1]), "au tuyau"), "");
  std::array<char, 64> text{};
  EXPECT_EQ(read(ends[0], text.data(), text.size()), 8);
  EXPECT_STREQ(text.data(), "au tuyau");
  for (const int end : ends) close(end);

  const auto foreign = shared / "tuyau";
  ASSERT_EQ(mkfifo(foreign.c_str(), 0666), 0);
  if (chown(foreign.c_str(), kSomebody, kSomebody) == 0) {  // as root
    EXPECT_NE(write(foreign, "secret"), "");
  }
}

TEST_F(WholeFileTest, TellsWhy) {
  for (const auto& path : {shared, shared / "", folder.path() / "nulle" / "part", victim / "sous",
                           fs::path(), folder.path() / std::string(300, 'x')}) {
    EXPECT_NE(write(path, "texte"), "") << path;
  }
  EXPECT_EQ(bytesIn(victim), "précieux");
  EXPECT_EQ(made(), Texts{});
}

}  // namespace
}  // namespace orvanta::test
