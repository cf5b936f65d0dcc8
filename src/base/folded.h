// Text as it is looked for: neither case nor accents matter.
#pragma once

#include <string>
#include <string_view>

namespace orvanta {

/// `utf8` without case, accents and other marks, ligatures being their letters ("Œuvre" becomes
/// "oeuvre"), apostrophes straight and each blank a space; what is not UTF-8 becomes U+FFFD. What
/// comes of a text is what comes of its characters one after the other, so a part of a text is a
/// part of it when both are folded.
std::string folded(std::string_view utf8);

/// The same, at the end of `text`.
void appendFolded(std::string& text, std::string_view utf8);

}  // namespace orvanta
