// Text as menus and notes show it.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace orvanta {

/// A duration, short: "45 s" under a minute, "12 min" under an hour, else "1 h 02". `seconds` is
/// rounded to the nearest whole number, halves away from zero; one that is not finite or does not
/// fit is a mistake of the caller's and ends the program.
std::string fmtDur(double seconds);

/// `text`, which may be anything a window or a web page says, as one line of at most `most`
/// characters, the last then being "…". What is not UTF-8 becomes U+FFFD; control characters and
/// line ends become spaces; marks that turn the direction of the text around are dropped.
std::string oneLine(std::string_view text, std::size_t most);

/// `utf8` so that Pango and Qt, which read markup, show it as it is.
std::string asMarkup(const std::string& utf8);

}  // namespace orvanta
