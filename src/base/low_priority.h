// Work that gives way to everything else on the machine.
#pragma once

#include <functional>

namespace orvanta {

/// Runs `work` to its end on a thread of its own, which gets the processor and the disk when nobody
/// else wants them. Its own, because a thread that has lowered itself may not rise again.
void runAtLowPriority(const std::function<void()>& work);

}  // namespace orvanta
