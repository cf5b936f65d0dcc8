#include "base/child_process.h"

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <stop_token>
#include <thread>

namespace orvanta {
namespace {

ChildResult shell(const std::string& script, double timeout = 10) {
  return runChild({{"/bin/sh", "-c", script}, {"ORVANTA_TEST=donné"}}, timeout);
}

struct ChildProcess : testing::Test {
  void TearDown() override {
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "a child is left";
    EXPECT_EQ(errno, ECHILD);
  }

  double seconds() const {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin_).count();
  }

 private:
  const std::chrono::steady_clock::time_point begin_ = std::chrono::steady_clock::now();
};

TEST_F(ChildProcess, YieldsWhatItWroteAndHowItEnded) {
  auto child = shell("echo sortie; echo erreur >&2; exit 7");
  EXPECT_EQ(child.output, "sortie\n");
  EXPECT_EQ(child.errors, "erreur\n");
  EXPECT_EQ(child.status, 7);
  EXPECT_EQ(shell("kill -9 $$").status, 128 + 9);
  EXPECT_EQ(shell("echo $ORVANTA_TEST; cat").output, "donné\n");  // nothing to read
  child = runChild({{"/nonexistent/programme"}, {}}, 1);
  EXPECT_EQ(child.launchError, "No such file or directory");
}

TEST_F(ChildProcess, FullPipesHoldNobodyUp) {
  const auto child = shell("head -c 1000000 /dev/zero; head -c 1000000 /dev/zero >&2");
  EXPECT_FALSE(child.timedOut);
  EXPECT_EQ(child.output.size(), 1'000'000U);
  EXPECT_EQ(child.errors.size(), 1'000'000U);
  EXPECT_EQ(shell("head -c 9000000 /dev/zero").output.size(), kMostChildOutput);
  EXPECT_LT(seconds(), 5);
}

TEST_F(ChildProcess, EndsInTimeWhateverItDoes) {
  for (const auto* script : {"sleep 60", "trap '' TERM; sleep 60", "exec >&- 2>&-; sleep 60",
                             "while :; do echo encore; done"}) {
    const double before = seconds();
    EXPECT_TRUE(shell(script, 0.2).timedOut) << script;
    EXPECT_LT(seconds() - before, 1.0) << script;
  }
  std::stop_source end;
  const std::jthread user([&end] {
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    end.request_stop();
  });
  const double before = seconds();
  EXPECT_TRUE(runChild({{"/bin/sleep", "60"}, {}, end.get_token()}, 60).timedOut);
  EXPECT_LT(seconds() - before, 1.0) << "given up";
  // Its own end counts, not that of somebody who inherited its pipe.
  EXPECT_EQ(shell("setsid sleep 2 & echo fini").output, "fini\n");
  EXPECT_LT(seconds(), 5);
}

}  // namespace
}  // namespace orvanta
