// A second session of the user, on data that another one records into.
#pragma once

#include <sigc++/connection.h>

#include <functional>

#include "platform/session_events.h"
#include "storage/data_lock.h"

namespace orvanta {

/// Waits until the data are free. It looks at the lock every two seconds rather than sleep on it:
/// so a folder that is moved or restored meanwhile is found, and a network file system that cannot
/// wait does no harm. Main thread only.
class Turn {
 public:
  /// `come` gets the lock, once, and may destroy this. `sessionEnded` is called when the session
  /// ends before.
  Turn(DataLocation where, std::function<void(DataLock lock)> come,
       std::function<void()> sessionEnded);
  ~Turn();
  Turn(const Turn&) = delete;
  Turn& operator=(const Turn&) = delete;

 private:
  bool look();

  const DataLocation where_;
  const std::function<void(DataLock lock)> come_;
  SessionEvents session_;
  sigc::connection timer_;
};

}  // namespace orvanta
