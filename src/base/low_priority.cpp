#include "base/low_priority.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <thread>

namespace orvanta {

void runAtLowPriority(const std::function<void()>& work) {
  // <linux/ioprio.h> is not for programs; the C library has no name for this call.
  constexpr int kThisThread = 0;
  constexpr int kWhoThread = 1;
  constexpr int kIdleClass = 3 << 13;
  constexpr int kNicest = 19;
  std::jthread([&] {
    setpriority(PRIO_PROCESS, static_cast<id_t>(gettid()), kNicest);
    syscall(SYS_ioprio_set, kWhoThread, kThisThread, kIdleClass);
    work();
  }).join();
}

}  // namespace orvanta
