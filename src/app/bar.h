// What status bars and scripts are shown while the program runs.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "app/menu_content.h"
#include "base/enum_text.h"

namespace orvanta {

/// The action of the program's (org.gtk.Actions) whose state is barState(): whoever follows it on
/// the session bus is told of each change and need not ask.
inline constexpr auto kBarAction = "bar";

/// One line of JSON: "class" (active, idle, paused, trouble), "text", "tooltip", "percentage" of
/// the first goal (null without any), "paused", "active" and "goals" in seconds, whole minutes of
/// them, so that it changes once a minute while nothing else does, "project", and "current" (null
/// where nothing is recorded) with "since", Unix seconds. `now` is when the facts were read.
std::string barState(const MenuFacts& facts, double now);

enum class BarFormat {
  Waybar,    ///< JSON, its texts as Pango markup
  I3blocks,  ///< JSON
  Text,      ///< the text alone
  Watch      ///< the state itself
};
template <>
inline constexpr std::array<std::string_view, 4> kTexts<BarFormat>{"waybar", "i3blocks", "text",
                                                                   "watch"};

/// A state as a bar reads it, one line without its end. "" is the state of a program that does not
/// run: class "off", no text.
std::string barLine(std::string_view state, BarFormat format);

}  // namespace orvanta
