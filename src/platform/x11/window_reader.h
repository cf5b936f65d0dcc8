// What an X11 window says about itself.
#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <optional>
#include <string>

namespace orvanta::x11 {

/// The names and the process of a window, as its program set them: hostile text, made valid UTF-8.
struct WindowFacts {
  std::string gtkApplicationId;  ///< "" when not set, like the next two
  std::string instance;          ///< first half of WM_CLASS
  std::string className;         ///< second half of WM_CLASS
  std::optional<std::string> title;
  int32_t pid = 0;  ///< 0 when the window does not tell

  friend bool operator==(const WindowFacts&, const WindowFacts&) = default;
};

/// Asks the window manager which window is active and windows what they are, by the properties of
/// EWMH (freedesktop.org's "Extended Window Manager Hints") and ICCCM. Not thread-safe.
class WindowReader {
 public:
  /// `connection` outlives the reader.
  explicit WindowReader(xcb_connection_t* connection);

  /// The active window; none when the manager names none, or still names one that is gone.
  std::optional<xcb_window_t> active() const;

  /// Absent when the window is gone.
  std::optional<WindowFacts> read(xcb_window_t window) const;

  /// Whether a change of this property can change an answer of the two above.
  bool matters(xcb_atom_t property) const;

 private:
  struct Atoms {
    xcb_atom_t activeWindow, clientList, wmPid, wmName, utf8String, compoundText, gtkApplicationId;
  };

  Atoms internAtoms() const;
  std::string textOf(const xcb_get_property_reply_t* reply) const;

  xcb_connection_t* connection_;
  xcb_window_t root_;
  Atoms atoms_;
};

}  // namespace orvanta::x11
