// The text encoding of window titles from before UTF-8.
#pragma once

#include <string>
#include <string_view>

namespace orvanta::x11 {

/// COMPOUND_TEXT, the X Consortium's use of ISO 2022 ("Compound Text Encoding", X11R6), as UTF-8:
/// the character sets of alphabets and of Chinese, Japanese and Korean, and the UTF-8 that programs
/// of today put in between. What cannot be read becomes U+FFFD. (ICU's own converter for it loses
/// text after a change of set.)
std::string fromCompoundText(std::string_view bytes);

}  // namespace orvanta::x11
