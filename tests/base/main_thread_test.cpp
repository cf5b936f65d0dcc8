#include "base/main_thread.h"

#include <giomm/init.h>
#include <glibmm/main.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>

namespace orvanta {
namespace {

using namespace std::chrono_literals;

struct MainThreadTest : testing::Test {
  void SetUp() override {
#ifdef __SANITIZE_THREAD__
    GTEST_SKIP() << "GLib's own locks are not known to the thread sanitizer";
#endif
    Gio::init();
  }

  void turn() {
    while (Glib::MainContext::get_default()->iteration(false)) {
    }
  }

  std::string done;
};

TEST_F(MainThreadTest, RunsHereWhatOtherThreadsPostInOrder) {
  MainThread mainThread;
  const auto here = std::this_thread::get_id();
  std::thread([&] {
    for (const char c : std::string("abc")) {
      mainThread.post([this, c, here] {
        EXPECT_EQ(std::this_thread::get_id(), here);
        done += c;
      });
    }
  }).join();
  EXPECT_EQ(done, "");
  turn();
  EXPECT_EQ(done, "abc");
}

TEST_F(MainThreadTest, NothingRunsOnceItIsGone) {
  {
    MainThread mainThread;
    mainThread.post([this] { done += "post"; });
    mainThread.after(0ms, [this] { done += "after"; });
    mainThread.every(1s, [this] { done += "every"; });
  }
  std::this_thread::sleep_for(10ms);
  turn();
  EXPECT_EQ(done, "");
  EXPECT_FALSE(Glib::MainContext::get_default()->pending());
}

}  // namespace
}  // namespace orvanta
