// The question what an absence was, when somebody is back.
#pragma once

#include <boost/json/object.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/main_thread.h"
#include "base/serial_queue.h"
#include "bridge/core.h"
#include "platform/dbus/notifications.h"

namespace orvanta {

/// Runs work where a route of this name is answered.
using PostRoute = std::function<void(const std::string& route, SerialQueue::Task task)>;

/// One note an absence, with the likeliest projects: where there are none, where the absence began
/// on another day, or is shorter than the user wants to be asked for, nothing. Never while the
/// screen is locked. An answer fills the absence as "moments.add" does, and a click on the note
/// itself shows its day. Main thread only.
class ReturnNote {
 public:
  /// Both outlive it.
  ReturnNote(Core& core, dbus::Notifications& notes, PostRoute post);

  void ask(const TimeRange& absence);

 private:
  void show(const TimeRange& absence, const std::vector<Project>& likely);
  void answered(const TimeRange& absence, const std::string& action, const std::string& token);
  void call(const std::string& route, boost::json::object body);

  Core& core_;
  dbus::Notifications& notes_;
  const PostRoute post_;
  MainThread mainThread_;
  // Where routes are answered this may be gone.
  std::shared_ptr<ReturnNote*> self_ = std::make_shared<ReturnNote*>(this);
};

}  // namespace orvanta
