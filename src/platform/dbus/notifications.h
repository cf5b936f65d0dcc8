// Quiet notes of the desktop that can be answered.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "dbus/service.h"

namespace orvanta::dbus {

struct Note {
  std::string slot;  ///< a note takes the place of the one before in its slot
  std::string summary;
  std::string body;                                          ///< plain text of anybody's
  std::vector<std::pair<std::string, std::string>> actions;  ///< key and label, the first first
};

/// Speaks to org.freedesktop.Notifications, and starts it for that. A note makes no sound, and is
/// answered once at most. Made and used on the main thread; never blocks it.
class Notifications {
 public:
  /// Gets the key of the action, or "default" for a click on the note itself, and the token with
  /// which a window may come to the front, "" where there is none.
  using Answered = std::function<void(const std::string& action, const std::string& token)>;
  /// Gets the note as a sentence where notes cannot be answered.
  using Plain = std::function<void(const std::string& sentence)>;

  /// `session` may be null: then nobody is told anything.
  explicit Notifications(const Bus& session);
  Notifications(const Notifications&) = delete;
  Notifications& operator=(const Notifications&) = delete;

  void show(Note note, Answered answered, Plain plain);

 private:
  struct Shown {
    std::string slot;
    Answered answered;
    std::string token;
  };

  void send(const Note& note, bool markup, const Answered& answered);

  Conversation conversation_;
  std::map<uint32_t, Shown> shown_;  // by the number that the desktop gave
};

}  // namespace orvanta::dbus
