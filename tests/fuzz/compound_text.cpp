// A window title from before UTF-8.
#include "platform/x11/compound_text.h"

#include "base/text.h"
#include "fuzz/fuzz.h"

namespace orvanta::fuzz {

void target(std::string_view input) {
  const auto text = x11::fromCompoundText(input);
  holdUtf8(text, "the title is UTF-8");
  const bool plain = input.find_first_of(std::string_view("\0\x1b", 2)) == std::string_view::npos;
  if (plain && isAscii(input)) hold(text == input, "ASCII stays as it is", text);
  // Programs of today wrap what they have.
  if (input.find('\x1b') == std::string_view::npos) {
    const auto wrapped = x11::fromCompoundText("\x1b%G" + std::string(input) + "\x1b%@");
    hold(wrapped == validUtf8(input), "UTF-8 in between is read as such", wrapped);
  }
}

}  // namespace orvanta::fuzz
