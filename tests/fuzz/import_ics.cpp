// A calendar file.
#include "base/text.h"
#include "fuzz/imports.h"

namespace orvanta::fuzz {
namespace {

constexpr double kNow = 1795000000;  // until then what comes again does

}  // namespace

void target(std::string_view input) {
  const auto text = validUtf8(input);
  const auto imported = readCalendarFile(text, paris(), kNow);
  checkImported(imported);
  const auto carried = [&] {
    std::string lines;
    for (const char c : text) lines += c == '\n' ? "\r\n" : std::string(1, c);
    return lines;
  }();
  hold(readCalendarFile(carried, paris(), kNow).events.size() == imported.events.size() ||
           text.find('\r') != std::string::npos,
       "the kind of line end does not matter");
}

}  // namespace orvanta::fuzz
