#include "base/serial_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <vector>

namespace orvanta {
namespace {

TEST(SerialQueue, RunsOneAtATimeInOrderAndFinishesBeforeItEnds) {
  std::vector<int> order;  // without a lock: the queue is the lock
  {
    SerialQueue queue("test");
    for (int i = 0; i < 1000; ++i) queue.post([&order, i] { order.push_back(i); });
    queue.sync([&] { EXPECT_EQ(order.size(), 1000U); });
    queue.post([&] { order.push_back(1000); });
  }
  ASSERT_EQ(order.size(), 1001U);
  for (int i = 0; i <= 1000; ++i) EXPECT_EQ(order[static_cast<std::size_t>(i)], i);
}

TEST(SerialQueue, TakesTasksFromManyThreads) {
  int count = 0;
  SerialQueue queue("test");
  std::vector<std::future<void>> callers;
  for (int i = 0; i < 4; ++i) {
    callers.push_back(std::async(std::launch::async, [&] {
      for (int task = 0; task < 500; ++task) queue.sync([&] { ++count; });
    }));
  }
  callers.clear();
  queue.sync([&] { EXPECT_EQ(count, 2000); });
}

TEST(SerialQueue, RepeatsAndDropsWhatItMissed) {
  using std::chrono::milliseconds;
  std::atomic<int> firings = 0;
  std::promise<void> third;
  SerialQueue queue("test");
  queue.repeat(milliseconds(1), milliseconds(20), [&] {
    // The first takes five periods; one of those is made up for, the others are not.
    if (++firings == 1) std::this_thread::sleep_for(milliseconds(100));
    if (firings == 3) third.set_value();
  });
  const auto begin = std::chrono::steady_clock::now();
  third.get_future().wait();
  EXPECT_GE(std::chrono::steady_clock::now() - begin, milliseconds(119));
}

}  // namespace
}  // namespace orvanta
